#include "UiTests.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/BackupBlastRecords.h"
#include "ui/BlastResultsWindow.h"
#include "ui/BlendChartView.h"
#include "ui/CBackupStockpileRecords.h"
#include "ui/COptimizeBlasts.h"
#include "ui/CPromptDlg.h"
#include "ui/NumberField.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

namespace kilnova::test {

class OptimizeBlastsTest : public QObject {
    Q_OBJECT

    QTemporaryDir mDir;
    std::unique_ptr<ProjectDatabase> mDb;

    void addBlast(const char* name, double east, float SiO2, float CaO)
    {
        Record b(Table::Blast);
        b.setValue("Name", name);
        b.setValue("Quantity", 1000.0);
        b.setValue("East", east);
        b.setValue("North", 0.0);
        b.setValue("Elevation", 0.0);
        Analysis a = missingAnalysis();
        a[elementIndex(Element::SiO2)] = SiO2;
        a[elementIndex(Element::CaO)] = CaO;
        a[elementIndex(Element::Al2O3)] = 3;
        a[elementIndex(Element::Fe2O3)] = 2;
        b.setAnalysis(a);
        RecordTable(*mDb, Table::Blast).add(b);
    }

    static void select(QListWidget* list, const QStringList& names)
    {
        for (int i = 0; i < list->count(); ++i)
            list->item(i)->setSelected(names.contains(list->item(i)->text()));
    }

private slots:
    void init()
    {
        mDb = ProjectDatabase::create(mDir.filePath("p.kndb"));
        addBlast("B1", 100, 10, 50);
        addBlast("B2", 200, 20, 40);
        addBlast("B3", 300, 15, 45);
    }
    void cleanup() { mDb.reset(); }

    void showsTheCoreStateAndRunsOptimize()
    {
        ScriptedPrompt ui;
        COptimizationParameters p;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 1000;
        std::optional<BlastOptimization::Result> shown;
        // The results window may store the blend and delete a blast it used up.
        COptimizeBlasts d(*mDb, p, ui, [this, &shown](const BlastOptimization::Result& r) {
            shown = r;
            RecordTable(*mDb, Table::Blast).removeRecord(*RecordTable(*mDb, Table::Blast).find({"B2", {}}));
        });
        auto* sources = d.findChild<QListWidget*>("sources");
        QCOMPARE(sources->count(), 3);
        QCOMPARE(d.findChild<QLabel*>("sourceCaption")->text(), QStringLiteral("Blasts"));

        // CaO 45 / (2.8 * 15 + 1.1 * 3 + 0.7 * 2) = 0.964.
        select(sources, {"B1", "B2"});
        QCOMPARE(
            d.findChild<QLineEdit*>("runningTotal")->text(),
            QStringLiteral("Quantity 2000.00; Titration -1.00; SiO2 15.00; Al2O3 3.00; Fe2O3 2.00; MS 3.00; "
                           "MA 1.50; LSF 0.96"));

        d.findChild<QPushButton*>("optimize")->click();
        QVERIFY2(shown.has_value(), qPrintable(ui.messageTexts().join("; ")));
        QVERIFY(shown->report.startsWith("Blast Optimization Results\r\n\r\nsuccessfully maximized CaO"));
        QCOMPARE(sources->count(), 2);
        QCOMPARE(d.optimization().selection(), QStringList{"B1"});

        // A duplicate constraint is refused with the system's text and the list keeps one entry.
        d.findChild<NumberField*>("minimum")->setText("12");
        d.findChild<NumberField*>("maximum")->setText("15");
        d.findChild<QComboBox*>("constraintElement")->setCurrentIndex(elementIndex(Element::SiO2));
        const auto buttons = d.findChildren<QPushButton*>();
        QPushButton* add =
            *std::find_if(buttons.begin(), buttons.end(), [](QPushButton* b) { return b->text() == "Add"; });
        add->click();
        add->click();
        QCOMPARE(d.findChild<QListWidget*>("constraints")->count(), 1);
        QCOMPARE(ui.messageTexts().last(),
                 QStringLiteral("A constraint on this variable has already been set"));
    }

    void modeEnablesItsFieldsAndOkStoresTheSettings()
    {
        ScriptedPrompt ui;
        COptimizationParameters p;
        COptimizeBlasts d(*mDb, p, ui, {});
        auto* mode = d.findChild<QComboBox*>("mode");
        mode->setCurrentIndex(2);
        QVERIFY(d.findChild<NumberField*>("target")->isEnabled());
        mode->setCurrentIndex(3);
        QVERIFY(!d.findChild<NumberField*>("target")->isEnabled());
        QVERIFY(!d.findChild<QComboBox*>("element")->isEnabled());
        QVERIFY(!d.findChild<NumberField*>("requestedTonnage")->isEnabled());

        mode->setCurrentIndex(0);
        d.findChild<QCheckBox*>("filter")->setChecked(true);
        d.findChild<NumberField*>("eastMinimum")->setText("150");
        d.findChild<NumberField*>("eastMaximum")->setText("abc");
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(ui.messageTexts().last(), QStringLiteral("Please enter a number."));
        d.findChild<NumberField*>("eastMaximum")->setText("350");
        d.refreshSources();
        QCOMPARE(d.findChild<QListWidget*>("sources")->count(), 2);
        QCOMPARE(d.findChild<QLabel*>("sourceCaption")->text(), QStringLiteral("Blasts (filtered)"));
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(d.parameters().mode, COptimizationParameters::kMinimize);
        QCOMPARE(d.parameters().coordinateFilter, 1);
        QCOMPARE(d.parameters().eastMinimum, 150.0);
    }

    void backupDialogsListTheirTableAndRestoreTheSelectedRows()
    {
        Record backup(Table::BackupBlast);
        backup.setValue("Name", "B1");
        backup.setValue("Quantity", 1500.0);
        RecordTable(*mDb, Table::BackupBlast).add(backup);
        ScriptedPrompt ui;
        BackupBlastRecords d(*mDb, ui);
        QCOMPARE(d.windowTitle(), QStringLiteral("Backup Blasts"));
        auto* list = d.findChild<QTableWidget*>("backups");
        QCOMPARE(list->columnCount(), static_cast<int>(Schema::table(Table::BackupBlast).columns.size()));
        QCOMPARE(list->horizontalHeaderItem(4)->text(), QStringLiteral("Quantity"));
        QCOMPARE(list->selectionMode(), QAbstractItemView::ExtendedSelection);
        QCOMPARE(d.rowCount(), 1);
        list->selectRow(0);
        ui.yesNoAnswers = {false, true};
        d.restoreSelected();
        QCOMPARE(d.rowCount(), 1);
        d.restoreSelected();
        QCOMPARE(d.rowCount(), 0);
        QCOMPARE(RecordTable(*mDb, Table::Blast).find({"B1", {}})->number("Quantity"), 1500.0);
        QCOMPARE(ui.questions.size(), 2);
        QCOMPARE(ui.messageTexts(),
                 QStringList{"1 of the 1 selected row(s) were restored into the Blast table."});

        // An empty stockpile backup still shows the stockpile columns.
        CBackupStockpileRecords stockpiles(*mDb, ui);
        QCOMPARE(stockpiles.windowTitle(), QStringLiteral("Backup Stockpiles"));
        auto* piles = stockpiles.findChild<QTableWidget*>("backups");
        QCOMPARE(piles->rowCount(), 0);
        QCOMPARE(piles->columnCount(),
                 static_cast<int>(Schema::table(Table::BackupStockpile).columns.size()));
        QCOMPARE(piles->horizontalHeaderItem(1)->text(), QStringLiteral("Source"));
    }

    void namePromptTakesOneToFiftyCharacters()
    {
        CPromptDlg prompt("Enter a name for this stockpile", {});
        QCOMPARE(prompt.findChild<QLabel*>("prompt")->text(),
                 QStringLiteral("Enter a name for this stockpile"));
        auto* name = prompt.findChild<QLineEdit*>("name");
        QPushButton* ok = prompt.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
        QVERIFY(!ok->isEnabled());
        QTest::keyClicks(name, QString(60, 'x'));
        QCOMPARE(prompt.text(), QString(50, 'x'));
        QVERIFY(ok->isEnabled());
        name->clear();
        QVERIFY(!ok->isEnabled());
        QTest::keyClick(name, Qt::Key_Return); // an empty name is not accepted
        QCOMPARE(prompt.result(), int(QDialog::Rejected));
        QTest::keyClicks(name, "Pile 'North'");
        ok->click();
        QCOMPARE(prompt.result(), int(QDialog::Accepted));
        QCOMPARE(prompt.text(), QStringLiteral("Pile 'North'"));
    }

    void resultsWindowStoresTheBlendOnce()
    {
        QTemporaryDir dir;
        CKilnovaDoc doc;
        ScriptedPrompt ui;
        ui.fileAnswers = {dir.filePath("plant.kndb")};
        doc.createDatabase(ui);
        QVERIFY(doc.database());
        ProjectDatabase& db = *doc.database();
        for (auto [name, SiO2, CaO] : {std::tuple{"B1", 10.0f, 50.0f}, {"B2", 20.0f, 40.0f}}) {
            Record b(Table::Blast);
            b.setValue("Name", name);
            b.setValue("Quantity", 1000.0);
            Analysis a = missingAnalysis();
            a[elementIndex(Element::SiO2)] = SiO2;
            a[elementIndex(Element::CaO)] = CaO;
            b.setAnalysis(a);
            RecordTable(db, Table::Blast).add(b);
        }
        COptimizationParameters p;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 1000;
        p.selectedSources = {"B1", "B2"};
        BlastOptimization o(db, p);
        QVERIFY(!o.addConstraint(elementIndex(Element::SiO2), 12, 15));
        const BlastOptimization::Result result = o.optimize();
        QVERIFY(result.outcome.solved);

        BlastResultsWindow window(result, doc, ui);
        QCOMPARE(window.windowTitle(), QStringLiteral("Blast Optimization Results"));
        // Beside the report, the chart: SiO2 held at its minimum of 12 (800 t of B1, 200 t of B2), and CaO.
        QVERIFY(window.findChild<BlendChartView*>("blendChart"));
        QCOMPARE(window.chart()->rows.size(), std::size_t{2});
        QCOMPARE(window.chart()->rows[0].binding, BlendChartData::Binding::Minimum);
        QVERIFY(std::abs(window.chart()->rows[0].value - 12.0) < 1e-9);
        QVERIFY(window.chart()->rows[1].optimised);
        QCOMPARE(window.pageHeader().project, QStringLiteral("Untitled"));
        QCOMPARE(window.pageHeader().database, QStringLiteral("plant.kndb"));
        QVERIFY(window.pageHeader().run.isValid());
        QStringList captions;
        for (const QPushButton* b : window.findChildren<QPushButton*>())
            captions << b->text();
        for (const char* caption : {"OK", "Print", "Save as PDF…", "Save as text…"})
            QVERIFY2(captions.contains(QString::fromUtf8(caption)), caption);

        auto* store = window.findChild<QPushButton*>("storeBlend");
        ui.textAnswers = {std::nullopt};
        store->click();
        QVERIFY(store->isEnabled());
        QCOMPARE(db.count(Table::Stockpile), 4);

        ui.textAnswers = {QStringLiteral("Pile 7")};
        ui.yesNoAnswers = {true};
        store->click();
        QVERIFY2(!store->isEnabled(), "a second store would take the tonnes twice");
        QCOMPARE(ui.questions.mid(ui.questions.size() - 2),
                 QStringList({"Enter a name for this stockpile",
                              "Would you like to update the source records by subtracting the quantities "
                              "(Blast, Stockpile, Crude, Coal) taken by this optimisation?"}));
        const std::optional<Record> pile = RecordTable(db, Table::Stockpile).find({"Pile 7", " "});
        QVERIFY(pile);
        QVERIFY(std::abs(pile->number("Quantity") - 1000.0) < 1e-3);
        QVERIFY(std::abs(RecordTable(db, Table::Blast).find({"B1", {}})->number("Quantity") - 200.0) < 1e-3);
        QCOMPARE(db.count(Table::BackupBlast), 2);
    }
};

static RegisterUiTest<OptimizeBlastsTest> registerOptimizeBlastsTest("OptimizeBlastsTest");

} // namespace kilnova::test

#include "OptimizeBlastsTest.moc"
