#include "../optimise/CoalTestData.h"
#include "UiTests.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/BlendChartView.h"
#include "ui/CMainFrame.h"
#include "ui/COptimizeCoal.h"
#include "ui/CoalResultsWindow.h"
#include "ui/NumberField.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace kilnova::test {

class OptimizeCoalTest : public QObject {
    Q_OBJECT

    QTemporaryDir mDir;
    std::unique_ptr<CKilnovaDoc> mDoc;

    ProjectDatabase& db() { return *mDoc->database(); }

    static void select(QListWidget* list, const QStringList& names)
    {
        for (int i = 0; i < list->count(); ++i)
            list->item(i)->setSelected(names.contains(list->item(i)->text()));
    }

    static QPushButton* button(QWidget* w, const QString& text)
    {
        for (QPushButton* b : w->findChildren<QPushButton*>()) {
            if (b->text() == text)
                return b;
        }
        return nullptr;
    }

private slots:
    void cleanup() { mDoc.reset(); }
    void init()
    {
        mDoc.reset();
        mDoc = std::make_unique<CKilnovaDoc>();
        ScriptedPrompt ui;
        ui.fileAnswers = {mDir.filePath("plant.kndb")};
        mDoc->createDatabase(ui);
        QVERIFY(mDoc->database());
        for (const CoalSource& c : twoCoals())
            RecordTable(db(), Table::Coal).add(coalRecord(c));
    }

    void theDialogShowsTheCorePropertiesAndRunsOptimize()
    {
        ScriptedPrompt ui;
        CCoalOptParameters p;
        p.mode = -1;
        p.optimizedElement = "Cost Factor";
        p.requestedTonnage = 1000;
        std::optional<CoalOptimization::Result> shown;
        COptimizeCoal d(db(), p, ui, [&shown](const CoalOptimization::Result& r) { shown = r; });
        QCOMPARE(d.windowTitle(), QStringLiteral("Optimize Coal"));
        const QStringList labels = [&d] {
            QStringList all;
            for (const QLabel* l : d.findChildren<QLabel*>())
                all << l->text();
            return all;
        }();
        for (const char* label : {"Coal", "Optimize:", "Value:", "Requested Coal Tonnage:"})
            QVERIFY2(labels.contains(label), label);
        auto* property = d.findChild<QComboBox*>("element");
        auto* constraintProperty = d.findChild<QComboBox*>("constraintElement");
        QCOMPARE(property->count(), 25);
        QCOMPARE(constraintProperty->count(), 25);
        QCOMPARE(constraintProperty->itemText(0), QStringLiteral("BTU"));
        QCOMPARE(constraintProperty->itemText(5), QStringLiteral("SiO2"));
        QCOMPARE(property->currentText(), QStringLiteral("Cost Factor"));

        auto* sources = d.findChild<QListWidget*>("sources");
        QCOMPARE(sources->count(), 2);
        QCOMPARE(sources->selectionMode(), QAbstractItemView::ExtendedSelection);
        select(sources, {"C1"});
        button(&d, "Optimize")->click();
        QCOMPARE(ui.messageTexts(), QStringList{"Please, select at least 2 sources"});
        QVERIFY(!shown);

        select(sources, {"C1", "C2"});
        d.findChild<NumberField*>("minimum")->setText("36");
        d.findChild<NumberField*>("maximum")->setText("100");
        constraintProperty->setCurrentIndex(coalPropertyIndex(CoalProperty::SiO2));
        button(&d, "Add")->click();
        button(&d, "Add")->click();
        QCOMPARE(ui.messageTexts().last(),
                 QStringLiteral("A constraint on this variable has already been set"));
        QCOMPARE(d.findChild<QListWidget*>("constraints")->count(), 1);
        QCOMPARE(d.findChild<QListWidget*>("constraints")->item(0)->text(),
                 QStringLiteral("36.00 <= SiO2 <= 100.00"));

        button(&d, "Optimize")->click();
        QVERIFY2(shown.has_value(), qPrintable(ui.messageTexts().join("; ")));
        QVERIFY(
            shown->report.startsWith("Coal Optimization Results\r\n\r\nsuccessfully minimized Cost Factor"));
        QVERIFY(std::abs(shown->outcome.tonnes(0) - 562.5) < 1e-3);
    }

    void modeEnablesItsFieldsAndOkStoresTheSettings()
    {
        ScriptedPrompt ui;
        COptimizeCoal d(db(), CCoalOptParameters{}, ui, {});
        auto* mode = d.findChild<QComboBox*>("mode");
        auto* target = d.findChild<NumberField*>("target");
        auto* tonnage = d.findChild<NumberField*>("requestedTonnage");
        struct State {
            int choice;
            bool target;
            bool tonnage;
        };
        for (const State s : {State{0, false, true}, State{2, true, true}, State{3, false, false}}) {
            mode->setCurrentIndex(s.choice);
            QCOMPARE(target->isEnabled(), s.target);
            QCOMPARE(tonnage->isEnabled(), s.tonnage);
            QVERIFY(d.findChild<QComboBox*>("element")->isEnabled());
        }
        d.findChild<QComboBox*>("element")->setCurrentIndex(coalPropertyIndex(CoalProperty::Sulfur));
        tonnage->setText("abc");
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(ui.messageTexts().last(), QStringLiteral("Please enter a number."));
        tonnage->setText("2500");
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(d.parameters().mode, 2);
        QCOMPARE(d.parameters().optimizedElement, QStringLiteral("Sulfur"));
        QCOMPARE(d.parameters().requestedTonnage, 2500.0);
    }

    void theMenuCommandOpensTheDialogAndOkKeepsItsSettings()
    {
        CMainFrame frame(*mDoc, std::make_unique<ScriptedPrompt>());
        mDoc->setModified(false);
        bool opened = false;
        QTimer::singleShot(0, [&opened] {
            QWidget* modal = QApplication::activeModalWidget();
            auto* dialog = qobject_cast<COptimizeCoal*>(modal);
            if (!dialog) {
                if (modal)
                    modal->close();
                return;
            }
            opened = true;
            dialog->findChild<NumberField*>("requestedTonnage")->setText("750");
            dialog->accept();
        });
        frame.commandAction(CommandId::OptimizeCoal)->trigger();
        QVERIFY(opened);
        QCOMPARE(mDoc->settings().coalOptimization.requestedTonnage, 750.0);
        QVERIFY(mDoc->isModified());
    }

    void resultsWindowStoresTheCoalOnce()
    {
        CCoalOptParameters p;
        p.mode = -1;
        p.optimizedElement = "Cost Factor";
        p.requestedTonnage = 1000;
        CoalOptimization o(db(), p);
        o.setSelection({"C1", "C2"});
        QVERIFY(!o.addConstraint(coalPropertyIndex(CoalProperty::SiO2), 36, 100));
        const CoalOptimization::Result result = o.optimize();
        QVERIFY(result.outcome.solved);

        ScriptedPrompt ui;
        CoalResultsWindow window(result, *mDoc, ui);
        QCOMPARE(window.windowTitle(), QStringLiteral("Coal Optimization Results"));
        QVERIFY(!window.pageHeader().database.isEmpty());
        for (const char* caption : {"OK", "Print", "Save as PDF…", "Save as text…", "Store coal…"})
            QVERIFY2(button(&window, QString::fromUtf8(caption)), caption);
        // Beside the report, the chart: the ash's SiO2 held at its minimum of 36, and the cost.
        auto* chart = window.findChild<BlendChartView*>();
        QVERIFY(chart);
        QCOMPARE(chart->chart().rows.size(), std::size_t{2});
        QCOMPARE(chart->chart().rows[0].quantity.name, QStringLiteral("SiO2"));
        QCOMPARE(chart->chart().rows[0].binding, BlendChartData::Binding::Minimum);
        QCOMPARE(chart->chart().rows[1].quantity.name, QStringLiteral("Cost Factor"));
        QVERIFY(chart->chart().rows[1].optimised);
        QVERIFY(window.chart()); // printed after the report's pages

        auto* store = window.findChild<QPushButton*>("storeCoal");
        ui.textAnswers = {std::nullopt};
        store->click();
        QVERIFY(store->isEnabled());
        QCOMPARE(db().count(Table::Coal), 2);

        ui.textAnswers = {QStringLiteral("Mix 1")};
        ui.yesNoAnswers = {true};
        store->click();
        QVERIFY2(!store->isEnabled(), "a second store would take the tonnes twice");
        QCOMPARE(ui.questions.last(), CoalOptimization::subtractQuestion());
        QVERIFY(ui.questions.last().endsWith("subtracted quantities cannot be restored."));
        const std::optional<Record> mix = RecordTable(db(), Table::Coal).find({"Mix 1", {}});
        QVERIFY(mix);
        QVERIFY(std::abs(mix->number("BTU") - 12875) < 1e-2);
        QVERIFY(std::abs(RecordTable(db(), Table::Coal).find({"C1", {}})->number("Quantity") - 437.5) < 1e-3);
    }
};

static RegisterUiTest<OptimizeCoalTest> registerOptimizeCoalTest("OptimizeCoalTest");

} // namespace kilnova::test

#include "OptimizeCoalTest.moc"
