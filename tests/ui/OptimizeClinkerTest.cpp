#include "UiTests.h"

#include "common/MessageTable.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "optimise/ClinkerFixtures.h"
#include "project/CKilnovaDoc.h"
#include "project/CommandTable.h"
#include "support/ScriptedPrompt.h"
#include "ui/BlendChartView.h"
#include "ui/CClinkerOptResults.h"
#include "ui/CMainFrame.h"
#include "ui/COptimizeAdditives.h"
#include "ui/NumberField.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace kilnova::test {

class OptimizeClinkerTest : public QObject {
    Q_OBJECT

    QTemporaryDir mDir;
    std::unique_ptr<ProjectDatabase> mDb;

    static CClinkerOptParameters settings()
    {
        CClinkerOptParameters p;
        p.mode = CClinkerOptParameters::kMinimize;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 650;
        p.constraints[elementIndex(Element::SiO2)] = {0, 20.83, "0.00 <= SiO2 <= 20.83", 1};
        p.crudeSources = {"Meal A (Mill 1)", "Meal B (Mill 2)"};
        p.coalSources = {"Coal A"};
        return p;
    }

    static ClinkerProcessParameters kiln()
    {
        ClinkerProcessParameters p;
        p.EnergyConsumptionFactor = 700;
        return p;
    }

    static QPushButton* button(QWidget& w, const char* text)
    {
        for (QPushButton* b : w.findChildren<QPushButton*>()) {
            if (b->text() == QString::fromUtf8(text))
                return b;
        }
        return nullptr;
    }

private slots:
    void init()
    {
        mDb = ProjectDatabase::create(mDir.filePath("p.kndb"));
        addClinkerSources(*mDb);
    }
    void cleanup() { mDb.reset(); }

    void showsTheListsAndRunsOptimizeKeepingTheDialogOpen()
    {
        ScriptedPrompt ui;
        std::optional<ClinkerOptimization::Result> shown;
        COptimizeAdditives d(*mDb, settings(), kiln(), 0, ui,
                             [&shown](const ClinkerOptimization::Result& r) { shown = r; });
        QCOMPARE(d.windowTitle(), QStringLiteral("Optimize Clinker"));
        QCOMPARE(d.findChild<QLabel*>("rawCaption")->text(), QStringLiteral("Crude"));
        auto* raw = d.findChild<QListWidget*>("raw");
        QCOMPARE(raw->count(), 3);
        QCOMPARE(raw->selectedItems().size(), 2);
        QVERIFY(!d.findChild<QListWidget*>("additives")->isVisibleTo(&d));
        QCOMPARE(d.findChild<QListWidget*>("constraints")->count(), 1);

        d.show();
        d.findChild<QPushButton*>("optimize")->click();
        QVERIFY2(shown.has_value(), qPrintable(ui.messageTexts().join('\n')));
        QVERIFY(shown->report.startsWith("Clinker Optimization Results\r\n"));
        QVERIFY(d.isVisible());

        // The stockpile selection lists other tables and enables the tonnage constraints.
        d.findChild<QRadioButton*>("stockpileAdditivesAndCoal")->setChecked(true);
        QCOMPARE(d.findChild<QLabel*>("rawCaption")->text(), QStringLiteral("Stockpile"));
        QCOMPARE(raw->count(), 5);
        QVERIFY(raw->selectedItems().isEmpty());
        QVERIFY(d.findChild<QListWidget*>("additives")->isVisibleTo(&d));
        auto* pile = d.findChild<QComboBox*>("tonnageStockpile");
        pile->setCurrentText("Bed 1 (Quarry)");
        d.findChild<NumberField*>("tonnageMinimum")->setText("0");
        d.findChild<NumberField*>("tonnageMaximum")->setText("4000");
        auto* add = d.findChild<QPushButton*>("addTonnageConstraint");
        add->click();
        add->click();
        QCOMPARE(d.findChild<QListWidget*>("tonnageConstraints")->count(), 1);
        QCOMPARE(ui.messageTexts().last(), message(Msg::ConstraintAlreadySet));

        // Optimize with one source refuses with the shared message and shows no results.
        shown.reset();
        raw->item(4)->setSelected(true);
        d.findChild<QListWidget*>("coal")->item(0)->setSelected(false);
        d.findChild<QPushButton*>("optimize")->click();
        QVERIFY(!shown);
        QCOMPARE(ui.messageTexts().last(), message(Msg::SelectTwoSources));

        button(d, "OK")->click();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(d.parameters().sourceSelection, CClinkerOptParameters::kStockpileAdditivesAndCoal);
        QCOMPARE(d.parameters().crudeSources, QStringList{"Bed 1 (Quarry)"});
        QCOMPARE(d.parameters().coalSources, QStringList());
        QCOMPARE(d.parameters().tonnageConstraints.size(), 1);
    }

    void cancelKeepsNothing()
    {
        ScriptedPrompt ui;
        COptimizeAdditives d(*mDb, settings(), kiln(), 0, ui, {});
        d.findChild<QComboBox*>("mode")->setCurrentIndex(2);
        button(d, "Cancel")->click();
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(d.parameters(), settings());
    }

    void theMenuCommandOpensTheDialogWithTheProjectsSettings()
    {
        CKilnovaDoc doc;
        auto prompt = std::make_unique<ScriptedPrompt>();
        ScriptedPrompt& ui = *prompt;
        ui.fileAnswers = {mDir.filePath("p.kndb")};
        mDb.reset();
        doc.connectDatabase(ui);
        doc.settings().clinkerOptimization = settings();
        CMainFrame frame(doc, std::move(prompt));
        QString title;
        int chosen = -1;
        // The dialog is modal: look at it, then press OK, from the event loop it runs.
        QTimer::singleShot(0, [&] {
            auto* dialog = qobject_cast<COptimizeAdditives*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            title = dialog->windowTitle();
            chosen = static_cast<int>(dialog->findChild<QListWidget*>("raw")->selectedItems().size());
            dialog->findChild<QComboBox*>("mode")->setCurrentIndex(1);
            button(*dialog, "OK")->click();
        });
        frame.runCommand(CommandId::OptimizeClinker);
        QCOMPARE(title, QStringLiteral("Optimize Clinker"));
        QCOMPARE(chosen, 2);
        // Only the Status of the connection was shown: no refusal of the command.
        QCOMPARE(ui.messageTexts().mid(1), QStringList());
        QCOMPARE(doc.settings().clinkerOptimization.mode, CClinkerOptParameters::kMaximize);
        QVERIFY(doc.isModified());
    }

    void resultsWindowStoresTheClinkerAndTheCrude()
    {
        CKilnovaDoc doc;
        ScriptedPrompt ui;
        ui.fileAnswers = {mDir.filePath("p.kndb")};
        mDb.reset();
        doc.connectDatabase(ui);
        QVERIFY(doc.database());
        const ClinkerOptimization::Result result =
            ClinkerOptimization(*doc.database(), settings(), kiln(), 0).optimize();
        QVERIFY(result.outcome.solved);

        CClinkerOptResults window(result, doc, ui);
        QCOMPARE(window.windowTitle(), QStringLiteral("Clinker Optimization Results"));
        for (const char* caption : {"OK", "Print", "Save as PDF…", "Save as text…"})
            QVERIFY2(button(window, caption), caption);
        QCOMPARE(window.pageHeader().database, QStringLiteral("p.kndb"));
        // The chart's rows: the SiO2 limit and the optimised CaO, of the clinker.
        auto* chart = window.findChild<BlendChartView*>();
        QVERIFY(chart);
        QCOMPARE(chart->chart().rows.size(), std::size_t{2});
        QCOMPARE(chart->chart().rows[0].element, elementIndex(Element::SiO2));
        QCOMPARE(chart->chart().rows[0].binding, BlendChartData::Binding::Maximum);
        QCOMPARE(chart->chart().tonnage, 650.0); // as the report says, not 650.000000115
        auto* store = window.findChild<QPushButton*>("storeClinker");
        ui.textAnswers = {QStringLiteral("K-650"), QStringLiteral("Meal AB")};
        ui.yesNoAnswers = {true};
        store->click();
        QVERIFY2(!store->isEnabled(), "a second store would take the tonnes twice");
        QCOMPARE(ui.questions.mid(ui.questions.size() - 3),
                 QStringList({"Enter a name for this clinker", "Enter a name for this Crude",
                              message(Msg::SubtractQuantities)}));
        ProjectDatabase& db = *doc.database();
        QVERIFY(RecordTable(db, Table::Clinker).find({"K-650", " "}));
        QVERIFY(RecordTable(db, Table::Crude).find({"Meal AB", " "}));
        QVERIFY(std::abs(RecordTable(db, Table::Coal).find({"Coal A", {}})->number("Quantity") - 435) < 1e-3);
    }
};

static RegisterUiTest<OptimizeClinkerTest> registerOptimizeClinkerTest("OptimizeClinkerTest");

} // namespace kilnova::test

#include "OptimizeClinkerTest.moc"
