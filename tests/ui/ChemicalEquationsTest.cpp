#include "UiTests.h"

#include "support/ScriptedPrompt.h"
#include "ui/CChemicalEquationsParms.h"
#include "ui/NumberField.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTest>

namespace kilnova::test {

class ChemicalEquationsTest : public QObject {
    Q_OBJECT

    static NumberField* cell(QWidget& d, const char* name) { return d.findChild<NumberField*>(name); }

private slots:
    void cleanup() { chemCoefficients() = ChemEquationCoefficients{}; }

    void opensOnTheSharedSetAndResetsToDefaults()
    {
        chemCoefficients().C2SCaO = -2.5f;
        chemCoefficients().C3SUseFreeLime = 0;
        ScriptedPrompt ui;
        CChemicalEquationsParms d(ui);
        QCOMPARE(cell(d, "C2S_CaO")->text(), QStringLiteral("-2.5"));
        QVERIFY(!d.findChild<QCheckBox*>("C3S_UseFreeLime")->isChecked());
        QCOMPARE(cell(d, "C3A_CaO"), nullptr); // only the cells of the equations exist

        d.findChild<QPushButton*>("resetValues")->click();
        QCOMPARE(cell(d, "C2S_CaO")->text(), QStringLiteral("-3.0695"));
        QCOMPARE(cell(d, "C2S_Al2O3")->text(), QStringLiteral("5.0654"));
        QVERIFY(d.findChild<QCheckBox*>("C3S_UseFreeLime")->isChecked());
        QCOMPARE(chemCoefficients().C2SCaO, -2.5f); // untouched until OK
    }

    void displayEquationsShowsTheCellsAsTheyStand()
    {
        ScriptedPrompt ui;
        CChemicalEquationsParms d(ui);
        cell(d, "LSF_SiO2")->setText("2.65");
        d.findChild<QCheckBox*>("C2S_UseFreeLime")->setChecked(false);
        d.findChild<QPushButton*>("displayEquations")->click();
        QCOMPARE(ui.messages.size(), std::size_t{1});
        const QString text = ui.messages[0].text;
        QVERIFY2(text.contains("LSF = 1.000 CaO / (2.650 %SiO2 + 1.100 %Al2O3 + 0.700 %Fe2O3)\r\n"),
                 qPrintable(text));
        QVERIFY2(text.contains("C2S = -3.069 %CaO + 8.597 %SiO2"), qPrintable(text));
        QCOMPARE(chemCoefficients().LSFSiO2, 2.8f);
    }

    void okCopiesTheCellsAndRefusesText()
    {
        ScriptedPrompt ui;
        CChemicalEquationsParms d(ui);
        cell(d, "NaEq_K2O")->setText("abc");
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(ui.messageTexts(), QStringList{"Please enter a number."});
        QCOMPARE(chemCoefficients().NaEqK2O, 0.658f);

        cell(d, "NaEq_K2O")->setText("0.7");
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(chemCoefficients().NaEqK2O, 0.7f);
    }
};

static RegisterUiTest<ChemicalEquationsTest> registerChemicalEquationsTest("ChemicalEquationsTest");

} // namespace kilnova::test

#include "ChemicalEquationsTest.moc"
