#include "tables/TableEditor.h"
#include "common/MessageTable.h"

#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <QFile>

namespace kilnova {
namespace {

using Part = RecordForm::Part;

class TableEditorTest : public test::TempProject {
protected:
    RecordTable table(Table t) { return RecordTable(*mDb, t); }

    void addBlast(const QString& name, double caoDeviation)
    {
        Record b(Table::Blast);
        b.setValue("Name", name);
        b.setValue("Quantity", 10000.0);
        table(Table::Blast).add(b);
        Record d(Table::StdBlast);
        d.setValue("Name", name);
        d.setValue("CaO", caoDeviation);
        table(Table::StdBlast).add(d);
    }

    void addNamed(Table t, const QString& name, const QString& source = {})
    {
        Record r(t);
        r.setValue("Name", name);
        if (!source.isEmpty())
            r.setValue("Source", source);
        table(t).add(r);
    }

    int rowNamed(TableEditor& editor, const QString& name, const QString& source = {})
    {
        for (int row = 0; row < editor.model().rowCount(); ++row) {
            const RecordKey key = editor.model().record(row).key();
            if (key.name == name && (source.isEmpty() || key.source == source))
                return row;
        }
        ADD_FAILURE() << "no row " << name.toStdString();
        return -1;
    }

    test::ScriptedPrompt ui;
};

TEST_F(TableEditorTest, AddingABlastStoresItsDerivedColumnsAndItsDeviations)
{
    TableEditor editor(*mDb, Table::Blast, ui);
    ASSERT_TRUE(editor.reload());
    RecordForm form = editor.newRecordForm();
    EXPECT_EQ(form.text(0), "NewBlast");
    form.setText("Name", "LS398-01");
    form.setText("Quantity", "42000");
    for (const auto& [column, text] :
         {std::pair{"SiO2", "5"}, {"Al2O3", "1.2"}, {"Fe2O3", "0.6"}, {"CaO", "50.5"}})
        form.setText(column, text);
    form.setText(form.fieldIndex(Part::Deviations, "CaO"), "0.9");
    form.setText(form.fieldIndex(Part::Deviations, "SiO2"), "0.45");

    ASSERT_TRUE(editor.save(form)) << ui.messageTexts().join('\n').toStdString();
    EXPECT_TRUE(ui.messages.empty());
    const std::optional<int> row = editor.rowOf(form.record());
    ASSERT_TRUE(row);
    EXPECT_EQ(editor.model().record(*row).name(), "LS398-01");

    const Record stored = *table(Table::Blast).find({"LS398-01", {}});
    EXPECT_NEAR(stored.number("MS"), 5 / 1.8, 1e-6);
    EXPECT_NEAR(stored.number("LSF"), 50.5 / (2.8 * 5 + 1.1 * 1.2 + 0.7 * 0.6), 1e-6);
    EXPECT_EQ(stored.number("NaEq"), -1.0) << "no alkalis, no sodium equivalent";
    EXPECT_EQ(stored.number("East"), -1.0);
    EXPECT_EQ(stored.number("Quantity"), 42000.0);
    const Record deviations = *table(Table::StdBlast).find({"LS398-01", {}});
    EXPECT_EQ(deviations.number("CaO"), double(0.9f));
    EXPECT_EQ(deviations.number("SiO2"), double(0.45f));
    EXPECT_EQ(deviations.number("MgO"), 0.0);

    // Saving the same form again rewrites the record it added.
    form.setText("Quantity", "41000");
    ASSERT_TRUE(editor.save(form));
    EXPECT_EQ(table(Table::Blast).count(), 1);
    EXPECT_EQ(table(Table::Blast).find({"LS398-01", {}})->number("Quantity"), 41000.0);
}

TEST_F(TableEditorTest, ARenamedBlastKeepsItsDeviationsWithTheEditsMadeToThem)
{
    addBlast("B1", 1.5);
    addBlast("B2", 0.7);
    TableEditor editor(*mDb, Table::Blast, ui);
    ASSERT_TRUE(editor.reload());
    std::optional<RecordForm> form = editor.formForRow(rowNamed(editor, "B1"));
    ASSERT_TRUE(form);
    EXPECT_EQ(form->text(form->fieldIndex(Part::Deviations, "CaO")), "1.5");
    form->setText("Name", "B1-east");
    form->setText(form->fieldIndex(Part::Deviations, "SiO2"), "0.3");
    ASSERT_TRUE(editor.save(*form)) << ui.messageTexts().join('\n').toStdString();

    EXPECT_EQ(table(Table::Blast).names(), QStringList({"B1-east", "B2"}));
    EXPECT_EQ(table(Table::StdBlast).names(), QStringList({"B1-east", "B2"}));
    const Record deviations = *table(Table::StdBlast).find({"B1-east", {}});
    EXPECT_EQ(deviations.number("CaO"), 1.5);
    EXPECT_EQ(deviations.number("SiO2"), double(0.3f));
    EXPECT_EQ(table(Table::StdBlast).find({"B2", {}})->number("CaO"), double(0.7f));
}

TEST_F(TableEditorTest, ABlastWithoutDeviationsGetsThemWhenModified)
{
    Record b(Table::Blast);
    b.setValue("Name", "Imported");
    table(Table::Blast).add(b);
    TableEditor editor(*mDb, Table::Blast, ui);
    ASSERT_TRUE(editor.reload());
    std::optional<RecordForm> form = editor.formForRow(0);
    ASSERT_TRUE(form);
    form->setText(form->fieldIndex(Part::Deviations, "LOI"), "0.4");
    ASSERT_TRUE(editor.save(*form));
    ASSERT_TRUE(table(Table::StdBlast).find({"Imported", {}}));
    EXPECT_EQ(table(Table::StdBlast).find({"Imported", {}})->number("LOI"), double(0.4f));
}

TEST_F(TableEditorTest, DuplicateNamesAreRefusedAndNothingIsWritten)
{
    struct Case {
        Table table;
        bool adding;
        QString name;
    };
    const Case cases[] = {
        {Table::Blast, true, "B1"},
        {Table::Blast, false, "b1"},
        {Table::Additives, true, "O'Neil sand"}, // a quote must not break the lookup
        {Table::Additives, false, "O'NEIL SAND"},
        {Table::Coal, true, "Petcoke"},
        {Table::Coal, false, "Petcoke"},
    };
    addBlast("B1", 1);
    addBlast("B2", 2);
    for (Table t : {Table::Additives, Table::Coal}) {
        addNamed(t, t == Table::Coal ? "Petcoke" : "O'Neil sand");
        addNamed(t, "Other");
    }
    for (const Case& c : cases) {
        const std::vector<Record> before = table(c.table).all();
        const std::vector<Record> deviationsBefore = table(Table::StdBlast).all();
        test::ScriptedPrompt user;
        TableEditor editor(*mDb, c.table, user);
        ASSERT_TRUE(editor.reload());
        RecordForm form =
            c.adding ? editor.newRecordForm() : *editor.formForRow(rowNamed(editor, before[1].name()));
        form.setText("Name", c.name);
        if (c.table == Table::Blast)
            form.setText(form.fieldIndex(Part::Deviations, "CaO"), "9");
        EXPECT_FALSE(editor.save(form)) << c.name.toStdString();
        EXPECT_EQ(user.messageTexts(),
                  QStringList{QStringLiteral("The %1 table already holds a record named \"%2\".")
                                  .arg(Schema::table(c.table).name, c.name)});
        EXPECT_EQ(table(c.table).all(), before);
        EXPECT_EQ(table(Table::StdBlast).all(), deviationsBefore);
    }

    // A stockpile is keyed by name and source, and the database lets such a pair repeat.
    addNamed(Table::Stockpile, "Bed A", "Quarry");
    TableEditor stockpiles(*mDb, Table::Stockpile, ui);
    RecordForm pile = stockpiles.newRecordForm();
    pile.setText("Name", "Bed A");
    pile.setText("Source", "Quarry");
    EXPECT_TRUE(stockpiles.save(pile));
    EXPECT_EQ(table(Table::Stockpile).findAll({"Bed A", "Quarry"}).size(), 2u);
}

TEST_F(TableEditorTest, ActualStockpilesKeepTheirKeysAndLendThemToNoOtherStockpile)
{
    addNamed(Table::Stockpile, "Bed A", "Quarry");
    struct Case {
        const char* opened; ///< the row opened for Modify; none for Add
        const char* name;
        const char* source;
        bool saved;
    };
    const Case cases[] = {
        {"Actual 1", "Actual 1", "Actual", true}, // contents may change
        {"Actual 2", "Actual 5", "Actual", false}, {"Actual 3", "Actual 3", "Quarry", false},
        {"Actual 4", "actual 4", "Actual", false}, {"Bed A", "Actual 4", "Actual", false},
        {"Bed A", "Bed B", "Quarry", true},        {nullptr, "ACTUAL 1", "actual", false},
        {nullptr, "Actual 1", "Quarry", true},
    };
    for (const Case& c : cases) {
        test::ScriptedPrompt user;
        TableEditor editor(*mDb, Table::Stockpile, user);
        ASSERT_TRUE(editor.reload());
        const std::vector<Record> before = table(Table::Stockpile).all();
        RecordForm form = c.opened ? *editor.formForRow(rowNamed(editor, c.opened)) : editor.newRecordForm();
        form.setText("Name", c.name);
        form.setText("Source", c.source);
        form.setText("Quantity", "1234");
        // A refused form saved a second time is refused again.
        for (int attempt = 0; attempt < (c.saved ? 1 : 2); ++attempt)
            EXPECT_EQ(editor.save(form), c.saved) << c.name << " " << c.source;
        if (c.saved) {
            EXPECT_TRUE(user.messages.empty());
            EXPECT_EQ(table(Table::Stockpile).find({c.name, c.source})->number("Quantity"), 1234.0);
        } else {
            EXPECT_EQ(user.messageTexts(),
                      QStringList(2, "The four Actual stockpiles keep their Name and Source, and no other "
                                     "stockpile may take them."));
            EXPECT_EQ(table(Table::Stockpile).all(), before);
        }
    }
    EXPECT_EQ(table(Table::Stockpile).names(),
              QStringList({"Actual 1", "Actual 2", "Actual 3", "Actual 4", "Bed B", "Actual 1"}));
}

TEST_F(TableEditorTest, ActualStockpilesAreKeptOncePerRowAndTheOthersDeleted)
{
    addNamed(Table::Stockpile, "North", "Quarry");
    addNamed(Table::Stockpile, "North", "Quarry"); // a duplicate key goes with it
    addNamed(Table::Stockpile, "South", "Quarry");
    addNamed(Table::Stockpile, "ACTUAL 2", "actual"); // the database would take Actual 2 with it
    TableEditor editor(*mDb, Table::Stockpile, ui);
    ASSERT_TRUE(editor.reload());

    struct Case {
        std::vector<int> rows;
        bool yes;
        int deleted;
        int refusals;
        QStringList remaining;
    };
    const QStringList all = {"Actual 1", "Actual 2", "Actual 3", "Actual 4",
                             "North",    "North",    "South",    "ACTUAL 2"};
    const std::vector<Case> cases = {
        {{0, 1, 2, 3}, true, 0, 4, all},
        {{4, 6}, false, 0, 0, all},
        {{7, 0, 4, 3}, true, 2, 3, {"Actual 1", "Actual 2", "Actual 3", "Actual 4", "South", "ACTUAL 2"}},
        {{4}, true, 1, 0, {"Actual 1", "Actual 2", "Actual 3", "Actual 4", "ACTUAL 2"}},
        {{}, true, 0, 0, {"Actual 1", "Actual 2", "Actual 3", "Actual 4", "ACTUAL 2"}},
    };
    for (const Case& c : cases) {
        ui = {};
        if (!c.rows.empty())
            ui.yesNoAnswers = {c.yes};
        EXPECT_EQ(editor.deleteRows(c.rows), c.deleted);
        EXPECT_EQ(ui.questions, c.rows.empty()
                                    ? QStringList{}
                                    : QStringList{"Are you sure you want to delete the selected records?"});
        EXPECT_EQ(ui.messageTexts(), QStringList(c.refusals, "You cannot delete any Actual stockpiles"));
        EXPECT_EQ(table(Table::Stockpile).names(), c.remaining);
        EXPECT_EQ(editor.model().rowCount(), c.remaining.size()) << "the list shows what the table holds";
    }
}

TEST_F(TableEditorTest, DeletingABlastTakesItsDeviations)
{
    addBlast("B1", 1);
    addBlast("B2", 2);
    addBlast("B3", 3);
    TableEditor editor(*mDb, Table::Blast, ui);
    ASSERT_TRUE(editor.reload());
    editor.model().sort(0, Qt::DescendingOrder);
    ui.yesNoAnswers = {true};
    EXPECT_EQ(editor.deleteRows({0, 2}), 2); // B3 and B1 in the sorted list
    EXPECT_EQ(table(Table::Blast).names(), QStringList{"B2"});
    EXPECT_EQ(table(Table::StdBlast).names(), QStringList{"B2"});
}

TEST_F(TableEditorTest, AFailingCommandLeavesTheDatabaseAsItWas)
{
    addBlast("B1", 1);
    addNamed(Table::Crude, "C1", "Mill");
    addNamed(Table::Crude, "C2", "Mill");
    // The engine refuses the second half of each command.
    ASSERT_EQ(rawExec("CREATE TRIGGER no_deviations BEFORE INSERT ON [stdBlast] "
                      "BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END"),
              "");
    ASSERT_EQ(rawExec("CREATE TRIGGER keep_c2 BEFORE DELETE ON [Crude] WHEN old.[Name] = 'C2' "
                      "BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END"),
              "");

    TableEditor blasts(*mDb, Table::Blast, ui);
    RecordForm form = blasts.newRecordForm();
    form.setText("Name", "B2");
    EXPECT_FALSE(blasts.save(form));
    EXPECT_EQ(ui.messageTexts(), QStringList{"The record \"B2\" was not saved: disk I/O error"});
    EXPECT_EQ(table(Table::Blast).names(), QStringList{"B1"})
        << "the blast went back out with its deviations";

    ui = {};
    TableEditor crude(*mDb, Table::Crude, ui);
    ASSERT_TRUE(crude.reload());
    ui.yesNoAnswers = {true};
    EXPECT_EQ(crude.deleteRows({0, 1}), 0);
    EXPECT_EQ(ui.messageTexts(), QStringList{"No record was deleted: disk I/O error"});
    EXPECT_EQ(table(Table::Crude).names(), QStringList({"C1", "C2"}));
}

TEST_F(TableEditorTest, ALockedDatabaseOrAVanishedRecordIsReportedAndNothingChanges)
{
    addNamed(Table::Coal, "Coal A");
    addNamed(Table::Coal, "Coal B");
    TableEditor editor(*mDb, Table::Coal, ui);
    ASSERT_TRUE(editor.reload());

    {
        // Another program is in the middle of writing.
        std::unique_ptr<ProjectDatabase> other = ProjectDatabase::open(mDb->path());
        other->exec("BEGIN IMMEDIATE");
        rawExec("PRAGMA busy_timeout = 100"); // the few seconds a user waits are not needed here
        ui.yesNoAnswers = {true};
        EXPECT_EQ(editor.deleteRows({0}), 0);
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text,
                  "No record was deleted: " +
                      message(Msg::DatabaseInUse, {QDir::toNativeSeparators(mDb->path())}));
        other->exec("ROLLBACK");
    }
    EXPECT_EQ(table(Table::Coal).count(), 2);

    ui = {};
    table(Table::Coal).remove({"Coal B", {}}); // deleted behind the dialog's back
    std::optional<RecordForm> form = editor.formForRow(1);
    ASSERT_TRUE(form);
    form->setText("BTU", "12000");
    EXPECT_FALSE(editor.save(*form));
    EXPECT_EQ(
        ui.messageTexts(),
        QStringList{
            "The record \"Coal B\" was not saved: The record \"Coal B\" is no longer in the Coal table."});
    EXPECT_EQ(table(Table::Coal).names(), QStringList{"Coal A"});
}

TEST_F(TableEditorTest, ARemovedDatabaseFileIsReportedInsteadOfWrittenInto)
{
    addNamed(Table::Additives, "Sand");
    TableEditor editor(*mDb, Table::Additives, ui);
    ASSERT_TRUE(editor.reload());
    ASSERT_TRUE(QFile::remove(mDb->path()));
    const QString gone = QStringLiteral("The database file %1 is no longer there, so nothing was written. "
                                        "Connect the project to its database again.")
                             .arg(mDb->path());

    RecordForm form = editor.newRecordForm();
    form.setText("Name", "Bauxite");
    EXPECT_FALSE(editor.save(form));
    ui.yesNoAnswers = {true};
    EXPECT_EQ(editor.deleteRows({0}), 0);
    EXPECT_EQ(ui.messageTexts(), QStringList({gone, gone}));
    EXPECT_EQ(editor.model().rowCount(), 1);
}

} // namespace
} // namespace kilnova
