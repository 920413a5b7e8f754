#include "UiTests.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/BlendChartView.h"
#include "ui/COptimizeStockpiles.h"
#include "ui/CUpdateActualStockpiles.h"
#include "ui/ConstraintEditor.h"
#include "ui/StockpileResultsWindow.h"

#include <QCheckBox>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

namespace kilnova::test {

class OptimizeStockpilesTest : public QObject {
    Q_OBJECT

    QTemporaryDir mDir;
    CKilnovaDoc mDoc;

    void addPile(ProjectDatabase& db, const char* name, double quantity, float SiO2, float CaO)
    {
        Record r(Table::Stockpile);
        r.setValue("Name", name);
        r.setValue("Source", "Quarry");
        r.setValue("Quantity", quantity);
        Analysis a = missingAnalysis();
        a[elementIndex(Element::SiO2)] = SiO2;
        a[elementIndex(Element::CaO)] = CaO;
        r.setAnalysis(a);
        RecordTable(db, Table::Stockpile).add(r);
    }

private slots:
    void init()
    {
        ScriptedPrompt ui;
        if (mDoc.isConnected())
            ui.yesNoAnswers = {true}; // a fresh database for each test
        ui.fileAnswers = {mDir.filePath("p.kndb")};
        mDoc.createDatabase(ui);
        QVERIFY(mDoc.database());
        addPile(*mDoc.database(), "Pile A", 100, 10, 50);
        addPile(*mDoc.database(), "Pile B", 100, 20, 40);
        Record sand(Table::Additives);
        sand.setValue("Name", "Sand");
        RecordTable(*mDoc.database(), Table::Additives).add(sand);
    }

    void showsTheStoredSettingsAndRunsThroughTheCore()
    {
        CSTKOptParameters p;
        p.mode = 1;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 100;
        p.stockpileCount = 1;
        p.sources = {"Pile B", "Quarry", "Sand"};
        p.remainderConstraints[elementIndex(Element::SiO2)] = {0, 16, "0.00 <= SiO2 <= 16.00", 1, 1};
        ScriptedPrompt ui;
        std::vector<StockpileOptimization::Result> shown;
        int chooserCalls = 0;
        COptimizeStockpiles dialog(
            *mDoc.database(), p, ui, [&shown](const StockpileOptimization::Result& r) { shown.push_back(r); },
            [&chooserCalls]() -> std::optional<QString> {
                ++chooserCalls;
                return std::nullopt;
            });

        // The lists show what is there, with the stored selection.
        QTreeWidget* piles = dialog.stockpileList();
        QCOMPARE(piles->topLevelItemCount(), 6);
        QCOMPARE(piles->topLevelItem(4)->text(0), QStringLiteral("Pile A"));
        QCOMPARE(piles->topLevelItem(5)->text(1), QStringLiteral("Quarry"));
        QVERIFY(!piles->topLevelItem(4)->isSelected());
        QVERIFY(piles->topLevelItem(5)->isSelected());
        QVERIFY(dialog.additiveList()->item(0)->isSelected());
        auto* left = dialog.findChild<ConstraintEditor*>("leftConstraints");
        QCOMPARE(left->list()->count(), 1);
        QCOMPARE(left->list()->item(0)->text(), QStringLiteral("0.00 <= SiO2 <= 16.00"));

        // The two quarry piles, as the user picks them: the left limit holds Pile A at 60 t.
        piles->topLevelItem(4)->setSelected(true);
        dialog.additiveList()->item(0)->setSelected(false);
        dialog.findChild<QPushButton*>("optimize")->click();
        QCOMPARE(ui.messageTexts(), QStringList{});
        QCOMPARE(shown.size(), std::size_t{1});
        QVERIFY(shown[0].report.contains("tonnes of Stockpile Pile A (Quarry) (60.00% of stockpile"));

        dialog.findChild<QPushButton*>("refreshActual")->click();
        QCOMPARE(chooserCalls, 1);
        QVERIFY2(ui.questions.isEmpty(), "a cancelled choice asks nothing");

        dialog.accept();
        QCOMPARE(dialog.parameters().stockpileCount, 2);
        QCOMPARE(dialog.parameters().sources, QStringList({"Pile A", "Quarry", "Pile B", "Quarry"}));
        QCOMPARE(dialog.parameters().remainderConstraints[elementIndex(Element::SiO2)].position, 1);
    }

    void storeCrudeSubtractsFromThePiles()
    {
        StockpileOptimization o(*mDoc.database(), CSTKOptParameters{});
        o.setSelectedStockpiles({{"Pile A", "Quarry"}, {"Pile B", "Quarry"}});
        o.setModeChoice(1);
        o.setElement(elementIndex(Element::CaO));
        o.setRequestedTonnage(150);
        const StockpileOptimization::Result r = o.optimize();
        QVERIFY(r.outcome.solved);
        ScriptedPrompt ui;
        StockpileResultsWindow window(r, mDoc, ui);
        QVERIFY(!window.pageHeader().database.isEmpty());
        // Maximised CaO without limits: the chart has the optimised element's row alone.
        auto* chart = window.findChild<BlendChartView*>();
        QVERIFY(chart);
        QCOMPARE(chart->chart().rows.size(), std::size_t{1});
        QCOMPARE(chart->chart().rows[0].element, elementIndex(Element::CaO));
        auto* store = window.findChild<QPushButton*>("storeCrude");
        QVERIFY(store);
        ui.textAnswers = {QStringLiteral("Crude 1")};
        ui.yesNoAnswers = {true};
        store->click();
        QVERIFY(!store->isEnabled());
        QCOMPARE(ui.questions.first(), QStringLiteral("Enter a name for this Crude"));
        // 150 t of the most CaO: Pile A whole, 50 t of Pile B.
        QVERIFY(!RecordTable(*mDoc.database(), Table::Stockpile).find({"Pile A", "Quarry"}));
        QVERIFY(std::abs(RecordTable(*mDoc.database(), Table::Stockpile)
                             .find({"Pile B", "Quarry"})
                             ->number("Quantity") -
                         50.0) < 1e-3);
    }

    void updateActualBlendsTheChosenSourcesOrStaysOpen()
    {
        const std::vector<RecordKey> keys = StockpileOptimization(*mDoc.database(), {}).stockpileKeys();
        ScriptedPrompt ui;
        CUpdateActualStockpiles dialog(*mDoc.database(), ui, keys, {{"Pile A", "Quarry"}});
        QCOMPARE(dialog.destinationList()->currentItem()->text(), QStringLiteral("Actual 1 (Actual)"));
        QCOMPARE(dialog.request().sources, (std::vector<RecordKey>{{"Pile A", "Quarry"}}));

        // Pile A also as the destination: refused, the dialog stays.
        dialog.destinationList()->setCurrentRow(4);
        dialog.show();
        dialog.accept();
        QVERIFY(dialog.isVisible());
        QCOMPARE(
            ui.messageTexts(),
            QStringList{"The stockpile \"Pile A (Quarry)\" cannot be added to itself: nothing was blended."});

        dialog.destinationList()->setCurrentRow(1);
        dialog.deleteSources()->setChecked(true);
        dialog.accept();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(
            RecordTable(*mDoc.database(), Table::Stockpile).find({"Actual 2", "Actual"})->number("Quantity"),
            100.0);
        QVERIFY(!RecordTable(*mDoc.database(), Table::Stockpile).find({"Pile A", "Quarry"}));
    }

    void updateActualRefusesAStockpileChangedWhileTheDialogIsOpen()
    {
        const std::vector<RecordKey> keys = StockpileOptimization(*mDoc.database(), {}).stockpileKeys();
        ScriptedPrompt ui;
        CUpdateActualStockpiles dialog(*mDoc.database(), ui, keys, {{"Pile A", "Quarry"}});
        RecordTable table(*mDoc.database(), Table::Stockpile);
        Record pile = *table.find({"Pile A", "Quarry"});
        pile.setValue("Quantity", 90.0); // taken meanwhile by another window or program
        table.update(pile);
        const std::vector<Record> before = table.all();

        dialog.show();
        dialog.accept();
        QVERIFY(dialog.isVisible());
        QCOMPARE(ui.messageTexts(),
                 QStringList{"The stockpile \"Pile A\" from \"Quarry\" has changed since it was chosen for "
                             "Update Actual Stockpiles, so nothing was blended. Open Update Actual "
                             "Stockpiles again."});
        QVERIFY(table.all() == before);
    }
};

static RegisterUiTest<OptimizeStockpilesTest> registerOptimizeStockpilesTest("OptimizeStockpilesTest");

} // namespace kilnova::test

#include "OptimizeStockpilesTest.moc"
