#include "UiTests.h"

#include "common/MessageTable.h"
#include "optimise/ConstraintEntry.h"
#include "optimise/OptimizationModel.h"
#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/OptimizationResultsWindow.h"

#include <QFile>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>

namespace kilnova::test {

class ExplanationPanelTest : public QObject {
    Q_OBJECT

    /// B1 (SiO2 10, CaO 50) and B2 (SiO2 20, CaO 40), 1000 t each, CaO maximised with SiO2 at least 12.
    static OptimizationRequest twoBlasts(double tonnage)
    {
        OptimizationRequest r;
        Analysis b1 = missingAnalysis(), b2 = missingAnalysis();
        const auto at = [](Element e) {
            return static_cast<std::size_t>(elementIndex(e));
        };
        b1[at(Element::SiO2)] = 10;
        b1[at(Element::CaO)] = 50;
        b2[at(Element::SiO2)] = 20;
        b2[at(Element::CaO)] = 40;
        r.sources = {{"B1", 1000, b1}, {"B2", 1000, b2}};
        r.mode = 1;
        r.element = elementIndex(Element::CaO);
        r.requestedTonnage = tonnage;
        r.constraints[at(Element::SiO2)] = {12, 15, "12.00 <= SiO2 <= 15.00", 1};
        return r;
    }

private slots:
    void panelShowsTheBindingLimitsAndExportFollowsTheReport()
    {
        ScriptedPrompt ui;
        const OptimizationOutcome outcome = OptimizationModel().run(twoBlasts(1000));
        QVERIFY(outcome.solved);
        const QString report = QStringLiteral("Blast Optimization Results\r\n\r\nthe report\r\n");
        const CKilnovaDoc doc;
        OptimizationResultsWindow window(QStringLiteral("Results"), report, doc, ui);
        window.explain(outcome, elementNames());

        const auto* panel = window.findChild<QPlainTextEdit*>(QStringLiteral("explanation"));
        QVERIFY(panel);
        QVERIFY(panel->isReadOnly());
        QCOMPARE(panel->toPlainText(),
                 QStringLiteral("Limits that hold the answer\n\n"
                                "  SiO2 minimum 12.00: objective +10.00 per 0.01 lower\n"
                                "  Requested tonnage 1000.00 t: objective +48.00 per 1 t more"));
        // The report view still shows the report alone.
        QCOMPARE(window.findChild<QPlainTextEdit*>(QStringLiteral("report"))->toPlainText(),
                 QStringLiteral("Blast Optimization Results\n\nthe report\n"));

        QTemporaryDir dir;
        QVERIFY(window.writeText(dir.filePath("r.txt")));
        QFile f(dir.filePath("r.txt"));
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(f.readAll()),
                 report + QStringLiteral("\r\nLimits that hold the answer\r\n\r\n"
                                         "  SiO2 minimum 12.00: objective +10.00 per 0.01 lower\r\n"
                                         "  Requested tonnage 1000.00 t: objective +48.00 per 1 t more\r\n"));
        QVERIFY(window.writePdf(dir.filePath("r.pdf")));
        QVERIFY(QFileInfo(dir.filePath("r.pdf")).size() > 0);
    }

    void infeasibleMessageStaysAsItIsWithTheConflictUnderIt()
    {
        ScriptedPrompt ui;
        const OptimizationOutcome outcome = OptimizationModel().run(twoBlasts(3000));
        QVERIFY(!outcome.solved);
        OptimizationResultsWindow::showFailure(ui, outcome, elementNames());
        QCOMPARE(ui.messages.size(), std::size_t{1});
        QCOMPARE(ui.messages[0].text, message(Msg::Infeasible));
        QCOMPARE(
            ui.messages[0].details,
            QStringLiteral("Why no blend was found\n\nThese limits cannot hold together:\n"
                           "  Requested tonnage 3000.00 t: lower it to 2000.00 t\n"
                           "  Tonnages of the sources 2000.00 t: 1000.00 t missing; the fullest blend takes "
                           "all of B1, B2\n"
                           "Any one of these changes, every other limit kept, makes a blend possible."));
    }

    void aRunStoppedBeforeSolvingKeepsItsMessageAlone()
    {
        ScriptedPrompt ui;
        OptimizationRequest r = twoBlasts(1000);
        r.sources.pop_back();
        OptimizationResultsWindow::showFailure(ui, OptimizationModel().run(r), elementNames());
        QCOMPARE(ui.messages.size(), std::size_t{1});
        QCOMPARE(ui.messages[0].text, message(Msg::SelectTwoSources));
        QCOMPARE(ui.messages[0].details, QString());
    }
};

static RegisterUiTest<ExplanationPanelTest> registerExplanationPanelTest("ExplanationPanelTest");

} // namespace kilnova::test

#include "ExplanationPanelTest.moc"
