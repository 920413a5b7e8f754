#include "UiTests.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "ui/BackupDialog.h"
#include "ui/COptimizeBlasts.h"
#include "ui/NumberField.h"

#include <QCheckBox>
#include <QComboBox>
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
        COptimizeBlasts d(*mDb, p, ui, [&shown](const BlastOptimization::Result& r) { shown = r; });
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

    void backupDialogRestoresTheSelectedRows()
    {
        Record backup(Table::BackupBlast);
        backup.setValue("Name", "B1");
        backup.setValue("Quantity", 1500.0);
        RecordTable(*mDb, Table::BackupBlast).add(backup);
        ScriptedPrompt ui;
        BackupDialog d(*mDb, BackupRestore::Kind::Blasts, ui);
        QCOMPARE(d.windowTitle(), QStringLiteral("Backup Blasts"));
        QCOMPARE(d.rowCount(), 1);
        d.findChild<QTableWidget*>("backups")->selectRow(0);
        d.restoreSelected();
        QCOMPARE(d.rowCount(), 0);
        QCOMPARE(RecordTable(*mDb, Table::Blast).find({"B1", {}})->number("Quantity"), 1500.0);
        QVERIFY(ui.messages.empty());
    }
};

static RegisterUiTest<OptimizeBlastsTest> registerOptimizeBlastsTest("OptimizeBlastsTest");

} // namespace kilnova::test

#include "OptimizeBlastsTest.moc"
