#include "UiTests.h"

#include "common/ReportText.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "ui/CCombineBlasts.h"
#include "ui/CCombineResults.h"
#include "ui/NumberField.h"
#include "ui/ReportView.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace kilnova::test {

/// A user who takes a moment before reading each message, as the event loop of a message box runs
/// on, and notes whether a progress dialog is there: shown, or waiting for its timer to show itself
/// over the message.
class UnhurriedPrompt final : public UserPrompt {
public:
    QStringList shown;
    /// For each message, whether a progress dialog existed while it was open.
    QList<bool> underProgress;

    bool askYesNo(const QString&) override { return false; }
    void showMessage(const QString& text, Icon, const QString&) override
    {
        QTest::qWait(500);
        bool progress = false;
        for (QWidget* w : QApplication::allWidgets())
            progress = progress || qobject_cast<QProgressDialog*>(w) != nullptr;
        shown << text;
        underProgress << progress;
    }
    std::optional<QString> chooseFile(const FileRequest&) override { return std::nullopt; }
    std::optional<QString> askText(const QString&, const QString&) override { return std::nullopt; }
};

class CombineBlastsTest : public QObject {
    Q_OBJECT

    QTemporaryDir mDir;
    std::unique_ptr<ProjectDatabase> mDb;

    static QStringList texts(const QListWidget* list)
    {
        QStringList result;
        for (int i = 0; i < list->count(); ++i)
            result << list->item(i)->text();
        return result;
    }

    static CCombinationParameters stored()
    {
        CCombinationParameters p;
        p.targetTonnage = 600;
        p.targets[1] = {14, "SiO2", 1};
        p.inventoryRestriction = 1;
        p.inventoryRestrictionProperty = "MgO";
        p.classificationMode = CCombinationParameters::kInventoryGradeClosest;
        p.inventoryGradeProperty = "Cost Factor";
        return p;
    }

private slots:
    void init()
    {
        QVERIFY(mDir.isValid());
        mDb = ProjectDatabase::create(mDir.filePath("p.kndb"));
        RecordTable blasts(*mDb, Table::Blast);
        RecordTable deviations(*mDb, Table::StdBlast);
        for (const auto& [name, quantity, sio2] :
             {std::tuple{"B1", 100.0, 10.0}, std::tuple{"Empty", 0.0, 15.0}, std::tuple{"B3", 40.0, 20.0}}) {
            Record r(Table::Blast);
            r.setValue("Name", QString::fromLatin1(name));
            r.setValue("Quantity", quantity);
            r.setValue("SiO2", sio2);
            blasts.add(r);
            Record d(Table::StdBlast);
            d.setValue("Name", QString::fromLatin1(name));
            deviations.add(d);
        }
    }

    void cleanup() { mDb.reset(); }

    void showsTheSourcesAndSettingsOfItsCombiner()
    {
        ScriptedPrompt ui;
        CCombineBlasts dialog(*mDb, stored(), ui);
        QVERIFY(dialog.ready());
        QCOMPARE(texts(dialog.findChild<QListWidget*>("sources")),
                 QStringList({"B1   (100.00 t)", "B3   (40.00 t)"}));
        QCOMPARE(texts(dialog.findChild<QListWidget*>("targets")), QStringList({"SiO2 = 14.00"}));
        QCOMPARE(dialog.findChild<NumberField*>("tonnage")->text(), QStringLiteral("600"));
        QVERIFY(dialog.findChild<QCheckBox*>("inventoryRestriction")->isChecked());
        QCOMPARE(dialog.findChild<QComboBox*>("inventoryProperty")->currentText(), QStringLiteral("MgO"));
        QCOMPARE(dialog.findChild<QComboBox*>("inventoryGradeProperty")->currentText(),
                 QStringLiteral("Cost Factor"));
        QCOMPARE(dialog.findChild<QComboBox*>("combinedGradeProperty")->currentIndex(), -1);
        QCOMPARE(dialog.findChild<QComboBox*>("combinedGradeProperty")->count(), 22);
    }

    void handsTheControlsToTheCombiner()
    {
        ScriptedPrompt ui;
        CCombineBlasts dialog(*mDb, stored(), ui);
        auto* sources = dialog.findChild<QListWidget*>("sources");
        sources->item(1)->setSelected(true);
        sources->item(0)->setSelected(true);
        QCOMPARE(dialog.combiner().selectedNames(), QStringList({"B1", "B3"}));

        dialog.findChild<NumberField*>("tonnage")->setText("750");
        dialog.findChild<QCheckBox*>("costRestriction")->setChecked(true);
        dialog.findChild<QComboBox*>("combinedGradeProperty")->setCurrentIndex(4);
        QVERIFY(dialog.readControls());
        QCOMPARE(dialog.parameters().targetTonnage, 750.0);
        QCOMPARE(dialog.parameters().costRestriction, 1);
        QCOMPARE(dialog.parameters().combinedGradeProperty, QStringLiteral("CaO"));
        QCOMPARE(dialog.parameters().inventoryRestrictionProperty, QStringLiteral("MgO"));

        dialog.findChild<NumberField*>("costMinimum")->setText("a lot");
        QVERIFY(!dialog.readControls());
        QCOMPARE(ui.messageTexts(), QStringList{"Please enter a number."});
        QCOMPARE(dialog.parameters().targetTonnage, 750.0);
    }

    void okAndCancelEmptyTheWorkingBlasts()
    {
        for (const bool ok : {true, false}) {
            ScriptedPrompt ui;
            CCombineBlasts dialog(*mDb, stored(), ui);
            QCOMPARE(mDb->count(Table::TempBlast), 3L);
            dialog.findChild<NumberField*>("tonnage")->setText("800");
            if (ok)
                dialog.accept();
            else
                dialog.reject();
            QCOMPARE(mDb->count(Table::TempBlast), 0L);
            QCOMPARE(mDb->count(Table::TempStdBlast), 3L);
            QCOMPARE(dialog.result(), ok ? int(QDialog::Accepted) : int(QDialog::Rejected));
            if (ok)
                QCOMPARE(dialog.parameters().targetTonnage, 800.0);
        }
    }

    void combineShowsTheResultsAndUpdateBlastsTakesThePairOut()
    {
        // 100 t at SiO2 14 take 60 t of B1 and all 40 t of B3.
        ScriptedPrompt ui;
        CCombinationParameters p = stored();
        p.targetTonnage = 100;
        p.classificationMode = CCombinationParameters::kCombinedGradeClosest;
        p.combinedGradeProperty = "SiO2";
        p.inventoryRestriction = 0;
        CCombineBlasts dialog(*mDb, p, ui);
        auto* sources = dialog.findChild<QListWidget*>("sources");
        sources->selectAll();
        QString shown;
        QTimer::singleShot(0, this, [&shown] {
            if (auto* window = qobject_cast<CCombineResults*>(QApplication::activeModalWidget())) {
                shown = window->reportText();
                window->updateBlasts();
            }
        });
        dialog.combine();
        QVERIFY(shown.startsWith("Blast Combination Analysis Results\r\n"));
        QVERIFY(
            shown.contains("          60.00 tonnes of Blast B1\r\n          40.00 tonnes of Blast B3\r\n"));
        QCOMPARE(texts(sources), QStringList({"B1   (40.00 t)"}));
        QCOMPARE(dialog.combiner().period(), 2);
        QVERIFY(ui.messages.empty());
    }

    void aMessageIsNeverShownUnderTheProgressDialog()
    {
        struct Case {
            const char* what;
            QStringList selected;
            double tonnage;
            QString message;
        };
        const Case cases[] = {
            {"refused before the run", {"B1"}, 100, "Please, select at least 2 sources"},
            {"told after the run", {"B1", "B3"}, 1e6, "0 successful combinations of 2 blasts were found"},
        };
        for (const Case& c : cases) {
            UnhurriedPrompt ui;
            CCombinationParameters p = stored();
            p.targetTonnage = c.tonnage;
            CCombineBlasts dialog(*mDb, p, ui);
            for (const QString& name : c.selected)
                dialog.combiner().setSelected(name, true);
            dialog.combine();
            QCOMPARE(ui.shown, QStringList{c.message});
            QVERIFY2(!ui.underProgress.value(0, true), c.what);
            QVERIFY2(dialog.findChildren<QProgressDialog*>().isEmpty(), c.what);
        }
    }

    void resultsPreselectTheBestAndUpdateBlastsRaisesThePeriod()
    {
        ScriptedPrompt ui;
        CombinationOutcome outcome;
        outcome.names = {"A", "B", "C"};
        outcome.pairs = {{{0, 1}, {1, 2}}, {{0, 2}, {3, 4}}, {{1, 2}, {5, 6}}};
        outcome.bestIndex = 1;
        CCombineResults results(outcome, ReportText::fromString("Blast Combination Analysis Results\r\n"), 3,
                                ui);
        QCOMPARE(results.windowTitle(), QStringLiteral("Combination results"));
        QCOMPARE(results.findChild<QPlainTextEdit*>("report")->toPlainText(),
                 QStringLiteral("Blast Combination Analysis Results\n"));
        auto* choice = results.findChild<QSpinBox*>("combination");
        QCOMPARE(choice->minimum(), 1);
        QCOMPARE(choice->maximum(), 3);
        QCOMPARE(choice->value(), 2);
        QCOMPARE(results.chosenIndex(), 1);
        choice->setValue(3);
        QCOMPARE(results.period(), 3);
        results.updateBlasts();
        QCOMPARE(results.period(), 4);
        QCOMPARE(results.chosenIndex(), 2);
        QCOMPARE(outcome.combination(results.chosenIndex()), (CSuccessfulComb{{"B", "C"}, {5, 6}}));
        QCOMPARE(results.result(), int(QDialog::Accepted));
    }

    // Hundreds of thousands of pairs: the report stays in its temporary file, the window shows it
    // through a view that reads the lines in sight, and any pair can be chosen by its number.
    void aReportOfManyPairsIsShownAPageAtATime()
    {
        ScriptedPrompt ui;
        auto report = std::make_shared<ReportText>(1 << 16);
        const int pairs = 300000;
        std::string block;
        for (int i = 1; i <= pairs; ++i) {
            block += "Successful combination #" + std::to_string(i) + "\r\n";
            if (block.size() > (1 << 16)) {
                report->write(block);
                block.clear();
            }
        }
        report->write(block);
        QVERIFY(report->onDisk());
        CombinationOutcome outcome;
        outcome.names = {"A", "B"};
        outcome.pairs.assign(pairs, SuccessfulPair{{0, 1}, {1, 2}});
        outcome.pairs.back().tonnes = {7, 8};
        outcome.bestIndex = 0;
        CCombineResults results(outcome, report, 1, ui);
        results.show();
        QVERIFY(QTest::qWaitForWindowExposed(&results));
        auto* view = results.findChild<ReportView*>("report");
        QVERIFY(view);
        QVERIFY(!results.findChild<QPlainTextEdit*>("report"));
        view->scrollToLine(report->lineCount());
        QCOMPARE(view->firstVisibleLine() + view->visibleLines(), static_cast<qsizetype>(pairs));
        view->repaint();
        auto* choice = results.findChild<QSpinBox*>("combination");
        QCOMPARE(choice->maximum(), pairs);
        choice->setValue(pairs);
        QCOMPARE(outcome.combination(results.chosenIndex()), (CSuccessfulComb{{"A", "B"}, {7, 8}}));
    }
};

static RegisterUiTest<CombineBlastsTest> registerCombineBlastsTest("CombineBlastsTest");

} // namespace kilnova::test

#include "CombineBlastsTest.moc"
