#include "UiTests.h"

#include "database/RecordTable.h"
#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/CMainFrame.h"
#include "ui/CModifyStockpiles.h"
#include "ui/RecordDialog.h"
#include "ui/TableDialog.h"

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace kilnova::test {

class TableDialogsTest : public QObject {
    Q_OBJECT

    struct Project {
        QTemporaryDir dir;
        std::unique_ptr<ProjectDatabase> db = ProjectDatabase::create(dir.filePath("plant.kndb"));

        void addBlast(const QString& name, double quantity, double cao)
        {
            Record b(Table::Blast);
            b.setValue("Name", name);
            b.setValue("Quantity", quantity);
            b.setValue("CaO", cao);
            RecordTable(*db, Table::Blast).add(b);
            Record d(Table::StdBlast);
            d.setValue("Name", name);
            d.setValue("CaO", 0.5);
            RecordTable(*db, Table::StdBlast).add(d);
        }
    };

    static QStringList column(const QTableView* view, int c)
    {
        QStringList texts;
        for (int row = 0; row < view->model()->rowCount(); ++row)
            texts << view->model()->index(row, c).data().toString();
        return texts;
    }

    /// Runs action, which opens a modal dialog, and hands that dialog to inside once it is shown.
    static void whileModal(const std::function<void()>& action, const std::function<void(QWidget*)>& inside)
    {
        bool reached = false;
        QTimer::singleShot(0, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            QVERIFY(modal);
            reached = true;
            inside(modal);
            if (modal->isVisible())
                modal->close();
        });
        action();
        QVERIFY(reached);
    }

private slots:
    void init() { QSettings().clear(); }

    void viewListsEveryRecordSortableWithoutEditing()
    {
        Project p;
        p.addBlast("B10", 300, 50.5);
        p.addBlast("B9", 100, -1);
        p.addBlast("A1", 200, 48.25);
        ScriptedPrompt ui;
        std::unique_ptr<TableDialog> d =
            TableDialog::create(*p.db, Table::Blast, TableDialog::Mode::View, ui, nullptr);
        QVERIFY(d);
        QCOMPARE(d->windowTitle(), QStringLiteral("Blast table"));
        QTableView* view = d->view();
        QCOMPARE(column(view, 0), QStringList({"B10", "B9", "A1"})); // table order until a heading is clicked
        QCOMPARE(view->model()->headerData(5, Qt::Horizontal).toString(), QStringLiteral("Titration"));
        QCOMPARE(d->findChild<QLabel*>("count")->text(), QStringLiteral("3 records"));
        QVERIFY(!d->findChild<QPushButton*>("add"));
        QVERIFY(!d->findChild<QPushButton*>("delete"));
        QVERIFY(d->findChild<QPushButton*>("done"));

        const int cao = Schema::table(Table::Blast).columnIndex("CaO");
        QTest::mouseClick(view->horizontalHeader()->viewport(), Qt::LeftButton, {},
                          QPoint(view->horizontalHeader()->sectionViewportPosition(cao) + 5, 5));
        QCOMPARE(column(view, 0), QStringList({"B9", "A1", "B10"}));
        QCOMPARE(column(view, cao), QStringList({"-1", "48.25", "50.50"}));
        QVERIFY(view->model()->index(0, cao).data(RecordListModel::kMissingRole).toBool());
    }

    void addingABlastThroughTheFormShowsItsDerivedColumnsAndSelectsIt()
    {
        Project p;
        p.addBlast("B1", 100, 50);
        ScriptedPrompt ui;
        std::unique_ptr<TableDialog> d =
            TableDialog::create(*p.db, Table::Blast, TableDialog::Mode::Modify, ui, nullptr);
        d->show();
        whileModal([&] { QTest::mouseClick(d->findChild<QPushButton*>("add"), Qt::LeftButton); },
                   [&](QWidget* modal) {
                       auto* form = qobject_cast<RecordDialog*>(modal);
                       QVERIFY(form);
                       form->field("Name")->setText("LS410-07");
                       // New records start with every analysis value missing (-1).
                       for (const auto& [column, text] :
                            {std::pair{"SiO2", "5"}, {"Al2O3", "1.2"}, {"Fe2O3", "0.6"}}) {
                           form->field(column)->selectAll();
                           QTest::keyClicks(form->field(column), text);
                       }
                       QCOMPARE(form->field("MS")->text(), QStringLiteral("2.778")); // 5 / 1.8, as typed
                       QVERIFY(form->field("MS")->isReadOnly());
                       form->field("std_CaO")->selectAll();
                       QTest::keyClicks(form->field("std_CaO"), "0.8");
                       form->accept();
                       QCOMPARE(form->result(), int(QDialog::Accepted));
                   });
        QVERIFY(ui.messages.empty());
        QCOMPARE(d->findChild<QLabel*>("count")->text(), QStringLiteral("2 records"));
        QCOMPARE(d->selectedRows(), std::vector<int>{1});
        QCOMPARE(d->view()->model()->index(1, 0).data().toString(), QStringLiteral("LS410-07"));
        const std::optional<Record> stdBlast = RecordTable(*p.db, Table::StdBlast).find({"LS410-07", {}});
        QVERIFY(stdBlast);
        QCOMPARE(stdBlast->number("CaO"), double(0.8f));
    }

    void aRefusedFormStaysOpenAndWritesNothing_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        QTest::newRow("letters") << "CaO"
                                 << "fifty"
                                 << "CaO must be a number; \"fifty\" is not one.";
        QTest::newRow("long name") << "Name" << QString(51, 'n')
                                   << "Name may hold at most 50 characters; \"" + QString(51, 'n') +
                                          "\" has 51.";
        QTest::newRow("duplicate") << "Name"
                                   << "b1"
                                   << "The Blast table already holds a record named \"b1\".";
    }

    void aRefusedFormStaysOpenAndWritesNothing()
    {
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(QString, message);
        Project p;
        p.addBlast("B1", 100, 50);
        ScriptedPrompt ui;
        TableEditor editor(*p.db, Table::Blast, ui);
        QVERIFY(editor.reload());
        RecordDialog form(editor, editor.newRecordForm());
        form.field("Name")->setText("B2");
        form.field(field)->setText(text);
        form.accept();
        QVERIFY(form.result() != QDialog::Accepted);
        QCOMPARE(ui.messageTexts(), QStringList{message});
        QCOMPARE(form.field(field)->text(), text);
        QCOMPARE(RecordTable(*p.db, Table::Blast).names(), QStringList{"B1"});
    }

    void modifyStockpilesDeletesAllButTheActualRows()
    {
        Project p;
        Record pile(Table::Stockpile);
        pile.setValue("Name", "Bed A");
        RecordTable(*p.db, Table::Stockpile).add(pile);
        ScriptedPrompt ui;
        std::unique_ptr<TableDialog> d =
            TableDialog::create(*p.db, Table::Stockpile, TableDialog::Mode::Modify, ui, nullptr);
        QVERIFY(qobject_cast<CModifyStockpiles*>(d.get()));
        d->show();
        d->view()->selectAll();
        ui.yesNoAnswers = {true};
        QTest::mouseClick(d->findChild<QPushButton*>("delete"), Qt::LeftButton);
        QCOMPARE(ui.questions, QStringList{"Are you sure you want to delete the selected records?"});
        QCOMPARE(ui.messageTexts(), QStringList(4, "You cannot delete any Actual stockpiles"));
        QCOMPARE(column(d->view(), 0), QStringList({"Actual 1", "Actual 2", "Actual 3", "Actual 4"}));
        QCOMPARE(d->findChild<QLabel*>("count")->text(), QStringLiteral("4 records"));
    }

    void everyViewAndModifyCommandOpensItsTable()
    {
        QTemporaryDir dir;
        CKilnovaDoc doc;
        auto prompt = std::make_unique<ScriptedPrompt>();
        ScriptedPrompt* ui = prompt.get();
        CMainFrame frame(doc, std::move(prompt));
        ui->fileAnswers = {dir.filePath("plant.kndb")};
        frame.commandAction(CommandId::DatabaseCreate)->trigger();
        QVERIFY(doc.isConnected());

        const std::pair<CommandId, const char*> commands[] = {
            {CommandId::ViewBlasts, "Blast table"},
            {CommandId::ViewAdditives, "Additives table"},
            {CommandId::ViewStockpiles, "Stockpile table"},
            {CommandId::ViewCrude, "Crude table"},
            {CommandId::ViewClinker, "Clinker table"},
            {CommandId::ViewCoal, "Coal table"},
            {CommandId::ModifyBlasts, "Modify the Blast table"},
            {CommandId::ModifyAdditives, "Modify the Additives table"},
            {CommandId::ModifyStockpiles, "Modify the Stockpile table"},
            {CommandId::ModifyCrude, "Modify the Crude table"},
            {CommandId::ModifyClinker, "Modify the Clinker table"},
            {CommandId::ModifyCoal, "Modify the Coal table"},
        };
        for (const auto& [id, title] : commands) {
            whileModal(
                [&, id = id] { frame.commandAction(id)->trigger(); },
                [&, title = title](QWidget* modal) { QCOMPARE(modal->windowTitle(), QString(title)); });
        }
        QCOMPARE(ui->messages.size(), std::size_t{1}); // the Status after Create, nothing since
    }
};

static RegisterUiTest<TableDialogsTest> registerTableDialogsTest("TableDialogsTest");

} // namespace kilnova::test

#include "TableDialogsTest.moc"
