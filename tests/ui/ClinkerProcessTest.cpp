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

    void theDialogsOwnStartTakesUpAllTheAsh()
    {
        ScriptedPrompt ui;
        CClinkerProcess d(ui);
        QCOMPARE(d.findChild<NumberField*>("AshRecoveryFactor")->text(), QStringLiteral("100"));
        QCOMPARE(d.findChild<NumberField*>("EnergyConsumptionFactor")->text(), QStringLiteral("1500"));
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

    // Fields are checked in the order FixedLOI, K2O, Na2O, SO3, ash, energy, free lime, which is not
    // the order they are shown in; the first failing one is reported and gets the focus.
    void firstFailingFieldInCheckingOrderIsReported_data()
    {
        QTest::addColumn<QStringList>("entries"); // field, value, field, value...
        QTest::addColumn<QString>("reported");
        QTest::addColumn<QString>("message");
        const QString range = QStringLiteral("Please enter a number between 0 and 100.");
        const QString number = QStringLiteral("Please enter a number.");
        QTest::newRow("K2O before SO3")
            << QStringList{"SO3InClinker", "101", "K2OInClinker", "101"} << "K2OInClinker" << range;
        QTest::newRow("Na2O before SO3")
            << QStringList{"SO3InClinker", "200", "Na2OInClinker", "-1"} << "Na2OInClinker" << range;
        QTest::newRow("SO3 before energy")
            << QStringList{"EnergyConsumptionFactor", "abc", "SO3InClinker", "100.01"} << "SO3InClinker"
            << range;
        QTest::newRow("fixed LOI first")
            << QStringList{"K2OInClinker", "101", "FixedLOI", "x"} << "FixedLOI" << number;
        QTest::newRow("ash before energy")
            << QStringList{"EnergyConsumptionFactor", "y", "AshRecoveryFactor", "x"} << "AshRecoveryFactor"
            << number;
    }

    void firstFailingFieldInCheckingOrderIsReported()
    {
        QFETCH(QStringList, entries);
        QFETCH(QString, reported);
        QFETCH(QString, message);
        ScriptedPrompt ui;
        ClinkerProcessParameters before;
        before.FreeLime = 2.0f;
        CClinkerProcess d(before, ui);
        d.show();
        for (qsizetype i = 0; i + 1 < entries.size(); i += 2)
            d.findChild<NumberField*>(entries[i])->setText(entries[i + 1]);
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(ui.messageTexts(), QStringList{message});
        QVERIFY(d.focusWidget());
        QCOMPARE(d.focusWidget()->objectName(), reported);
        QCOMPARE(d.parameters(), before);
    }
};

static RegisterUiTest<ClinkerProcessTest> registerClinkerProcessTest("ClinkerProcessTest");

} // namespace kilnova::test

#include "ClinkerProcessTest.moc"
