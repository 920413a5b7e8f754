#include "UiTests.h"

#include "support/ScriptedPrompt.h"
#include "ui/CClinkerProcess.h"
#include "ui/NumberField.h"

#include <QTest>

namespace kilnova::test {

class ClinkerProcessTest : public QObject {
    Q_OBJECT

private slots:
    void newDocumentValuesAreShown()
    {
        ScriptedPrompt ui;
        CClinkerProcess d(ClinkerProcessParameters{}, ui);
        QStringList shown;
        for (const char* name : {"FixedLOI", "SO3InClinker", "K2OInClinker", "Na2OInClinker",
                                 "EnergyConsumptionFactor", "AshRecoveryFactor", "FreeLime"})
            shown << d.findChild<NumberField*>(name)->text();
        QCOMPARE(shown, QStringList({"0", "100", "100", "100", "1500", "0", "0"}));
    }

    void retentionsMustLieWithinZeroAndHundred_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("K2O 100.5") << "K2OInClinker"
                                   << "100.5" << false;
        QTest::newRow("SO3 -0.1") << "SO3InClinker"
                                  << "-0.1" << false;
        QTest::newRow("Na2O 100") << "Na2OInClinker"
                                  << "100" << true;
        QTest::newRow("K2O 0") << "K2OInClinker"
                               << "0" << true;
        QTest::newRow("ash 250") << "AshRecoveryFactor"
                                 << "250" << true;
        QTest::newRow("fixed LOI -5") << "FixedLOI"
                                      << "-5" << true;
        QTest::newRow("free lime text") << "FreeLime"
                                        << "lots" << false;
    }

    void retentionsMustLieWithinZeroAndHundred()
    {
        QFETCH(QString, field);
        QFETCH(QString, value);
        QFETCH(bool, accepted);
        ScriptedPrompt ui;
        CClinkerProcess d(ClinkerProcessParameters{}, ui);
        d.findChild<NumberField*>(field)->setText(value);
        d.accept();
        QCOMPARE(d.result() == QDialog::Accepted, accepted);
        QCOMPARE(ui.messages.empty(), accepted);
        if (accepted)
            QCOMPARE(static_cast<double>(
                         d.parameters().*
                         (field == "AshRecoveryFactor" ? &ClinkerProcessParameters::AshRecoveryFactor
                          : field == "FixedLOI"        ? &ClinkerProcessParameters::FixedLOI
                          : field == "K2OInClinker"    ? &ClinkerProcessParameters::K2OInClinker
                                                       : &ClinkerProcessParameters::Na2OInClinker)),
                     value.toDouble());
        else
            QCOMPARE(d.parameters(), ClinkerProcessParameters{});
    }
};

static RegisterUiTest<ClinkerProcessTest> registerClinkerProcessTest("ClinkerProcessTest");

} // namespace kilnova::test

#include "ClinkerProcessTest.moc"
