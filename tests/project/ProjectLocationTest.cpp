#include "project/ProjectLocation.h"
#include "common/MessageTable.h"
#include "database/RecordTable.h"
#include "project/CKilnovaDoc.h"
#include "project/ProjectFile.h"
#include "support/ScriptedPrompt.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using test::ScriptedPrompt;

class ProjectLocationTest : public testing::Test {
protected:
    QString path(const QString& name) const { return QDir::cleanPath(mDir.filePath(name)); }

    /// An empty file standing for a database or a project.
    void touch(const QString& name)
    {
        QDir().mkpath(QFileInfo(path(name)).absolutePath());
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    /// The folder "plant" with its project plant.knv, naming its database plant/db, which holds blast
    /// B1; then a copy of the whole folder as "copy" (the copy's project still names plant's database).
    void projectAndCopy(const QString& db = QStringLiteral("plant.kndb"))
    {
        QDir().mkpath(path("plant/" + QFileInfo(db).path()));
        auto database = ProjectDatabase::create(path("plant/" + db));
        Record b(Table::Blast);
        b.setValue("Name", "B1");
        RecordTable(*database, Table::Blast).add(b);
        database.reset();
        ProjectSettings settings;
        settings.databasePath = path("plant/" + db);
        ProjectFile::save(settings, path("plant/plant.knv"));
        for (const QString& file : {QStringLiteral("plant.knv"), db}) {
            QDir().mkpath(QFileInfo(path("copy/" + file)).absolutePath());
            ASSERT_TRUE(QFile::copy(path("plant/" + file), path("copy/" + file)));
        }
    }

    QStringList blasts(const QString& db) const
    {
        return RecordTable(*ProjectDatabase::open(path(db)), Table::Blast).names();
    }

    QTemporaryDir mDir;
};

TEST_F(ProjectLocationTest, DoubtsOnlyWhenAnotherDatabaseOfTheSameNameLiesBesideTheProject)
{
    touch("a/p.kndb");
    touch("b/p.kndb");
    touch("shared/s.kndb");
    touch("c/data/p.kndb");
    touch("d/data/p.kndb");
    struct Case {
        const char* what;
        QString document;
        QString stored;
        bool doubtful;
        std::optional<QString> beside;
    };
    const Case cases[] = {
        {"the database beside its project", path("a/p.knv"), path("a/p.kndb"), false, std::nullopt},
        {"a copied folder names the original's database", path("b/p.knv"), path("a/p.kndb"), true,
         path("b/p.kndb")},
        {"a moved folder names a database that is not there", path("b/p.knv"), path("gone/p.kndb"), true,
         path("b/p.kndb")},
        {"a shared database elsewhere, nothing beside", path("a/p.knv"), path("shared/s.kndb"), false,
         std::nullopt},
        {"moved, and nothing beside: the connection error says it", path("a/p.knv"), path("gone/x.kndb"),
         false, std::nullopt},
        {"a copied folder with the database in a sub-folder", path("d/p.knv"), path("c/data/p.kndb"), true,
         path("d/data/p.kndb")},
        {"a stored path with dots in it is the same file", path("a/p.knv"), path("a") + "/../a/p.kndb", false,
         std::nullopt},
        {"no database named yet", path("a/p.knv"), QString(), false, std::nullopt},
    };
    for (const Case& c : cases) {
        const ProjectLocation::Check check = ProjectLocation::check(c.document, c.stored);
        EXPECT_EQ(check.doubtful(), c.doubtful) << c.what;
        EXPECT_EQ(check.beside, c.beside) << c.what;
    }
}

TEST_F(ProjectLocationTest, SaveAsCopiesTheDatabaseOnlyFromTheProjectsOwnFolder)
{
    struct Case {
        const char* what;
        QString oldDocument;
        QString newDocument;
        QString database;
        std::optional<QString> target;
    };
    const Case cases[] = {
        {"beside the old project", "/w/a/p.knv", "/w/b/q.knv", "/w/a/p.kndb", "/w/b/p.kndb"},
        {"in a sub-folder of the old project", "/w/a/p.knv", "/w/b/q.knv", "/w/a/data/p.kndb",
         "/w/b/data/p.kndb"},
        {"the same folder", "/w/a/p.knv", "/w/a/q.knv", "/w/a/p.kndb", std::nullopt},
        {"a database elsewhere stays shared", "/w/a/p.knv", "/w/b/q.knv", "/w/shared/p.kndb", std::nullopt},
        {"a folder that only starts like the project's", "/w/a/p.knv", "/w/b/q.knv", "/w/ab/p.kndb",
         std::nullopt},
        {"a project never saved", "", "/w/b/q.knv", "/w/a/p.kndb", std::nullopt},
    };
    for (const Case& c : cases)
        EXPECT_EQ(ProjectLocation::copyTarget(c.oldDocument, c.newDocument, c.database), c.target) << c.what;
}

TEST_F(ProjectLocationTest, OpeningACopiedProjectAsksWhichDatabaseAndWritesOnlyThere)
{
    projectAndCopy();
    const QByteArray copyBytes = [this] {
        QFile f(path("copy/plant.knv"));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }();
    const QString question =
        message(Msg::DatabaseOutsideProject, {path("plant/plant.kndb"), path("copy/plant.kndb")});

    // The one the project names: everything as before, and nothing to save.
    {
        CKilnovaDoc doc;
        ScriptedPrompt ui;
        ui.choiceAnswers = {1};
        ASSERT_TRUE(doc.openDocument(path("copy/plant.knv"), ui));
        EXPECT_EQ(ui.questions, QStringList{question});
        EXPECT_EQ(ui.choices.at(0), QStringList({"The one beside the project", "The one the project names"}));
        EXPECT_EQ(doc.databasePath(), path("plant/plant.kndb"));
        EXPECT_FALSE(doc.isModified());
    }
    // The one beside: the copy gets its own data, the original keeps its own.
    CKilnovaDoc doc;
    ScriptedPrompt ui;
    ui.choiceAnswers = {0};
    ASSERT_TRUE(doc.openDocument(path("copy/plant.knv"), ui));
    EXPECT_EQ(doc.databasePath(), path("copy/plant.kndb"));
    EXPECT_TRUE(doc.isConnected());
    EXPECT_TRUE(doc.isModified()) << "the file still names the original's database";
    Record b(Table::Blast);
    b.setValue("Name", "B2");
    RecordTable(*doc.database(), Table::Blast).add(b);
    EXPECT_EQ(blasts("copy/plant.kndb"), QStringList({"B1", "B2"}));
    EXPECT_EQ(blasts("plant/plant.kndb"), QStringList({"B1"}));

    // Until it is saved the file is untouched; saved, it names its own database in the same layout.
    QFile file(path("copy/plant.knv"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), copyBytes);
    file.close();
    ASSERT_TRUE(doc.saveDocument(path("copy/plant.knv"), ui));
    ProjectFile::Loaded saved = ProjectFile::load(path("copy/plant.knv"));
    EXPECT_EQ(saved.settings.databasePath, path("copy/plant.kndb"));
    ProjectSettings expected = ProjectFile::parse(copyBytes).settings;
    expected.databasePath = path("copy/plant.kndb");
    EXPECT_EQ(ProjectFile::serialize(saved.settings), ProjectFile::serialize(expected));

    // Opened again, it asks nothing.
    CKilnovaDoc again;
    ScriptedPrompt quiet;
    ASSERT_TRUE(again.openDocument(path("copy/plant.knv"), quiet));
    EXPECT_TRUE(quiet.questions.isEmpty());
}

TEST_F(ProjectLocationTest, AMovedProjectFindsItsDatabaseOrSaysItCannotConnect)
{
    projectAndCopy("data/plant.kndb");
    ASSERT_TRUE(QDir(path("plant")).removeRecursively());
    {
        CKilnovaDoc doc;
        ScriptedPrompt ui;
        ui.choiceAnswers = {0};
        ASSERT_TRUE(doc.openDocument(path("copy/plant.knv"), ui));
        EXPECT_EQ(ui.questions, QStringList{message(Msg::DatabaseNotThere, {path("plant/data/plant.kndb"),
                                                                            path("copy/data/plant.kndb")})});
        EXPECT_EQ(ui.choices.at(0),
                  QStringList({"The one beside the project", "Leave the project unconnected"}));
        EXPECT_TRUE(doc.isConnected());
        EXPECT_EQ(doc.databasePath(), path("copy/data/plant.kndb"));
    }
    CKilnovaDoc doc;
    ScriptedPrompt ui;
    ui.choiceAnswers = {1};
    ASSERT_TRUE(doc.openDocument(path("copy/plant.knv"), ui));
    EXPECT_FALSE(doc.isConnected());
    EXPECT_EQ(ui.messageTexts(), QStringList{message(Msg::CannotConnect)});
}

TEST_F(ProjectLocationTest, SaveAsInAnotherFolderOffersToTakeTheDatabaseAlong)
{
    projectAndCopy();
    for (const bool copy : {false, true}) {
        SCOPED_TRACE(copy ? "copied" : "not copied");
        const QString folder = copy ? QStringLiteral("taken") : QStringLiteral("left");
        CKilnovaDoc doc;
        ScriptedPrompt ui;
        ASSERT_TRUE(doc.openDocument(path("plant/plant.knv"), ui));
        ui = {};
        ui.yesNoAnswers = {copy};
        ASSERT_TRUE(QDir().mkpath(path(folder)));
        ASSERT_TRUE(doc.saveDocumentAs(path(folder + "/new.knv"), ui));
        EXPECT_EQ(ui.questions,
                  QStringList{message(Msg::CopyDatabaseQuestion,
                                      {path("plant/plant.kndb"), path(folder + "/plant.kndb")})});
        const QString used = copy ? path("taken/plant.kndb") : path("plant/plant.kndb");
        EXPECT_EQ(doc.databasePath(), used);
        EXPECT_EQ(ProjectFile::load(path(folder + "/new.knv")).settings.databasePath, used);
        EXPECT_EQ(QFileInfo::exists(path(folder + "/plant.kndb")), copy);
        Record b(Table::Blast);
        b.setValue("Name", QStringLiteral("From %1").arg(folder));
        RecordTable(*doc.database(), Table::Blast).add(b);
    }
    // The copy was taken after "From left" was written; what follows goes to the copy alone.
    EXPECT_EQ(blasts("taken/plant.kndb"), QStringList({"B1", "From left", "From taken"}));
    EXPECT_EQ(blasts("plant/plant.kndb"), QStringList({"B1", "From left"}));

    // A database of that name in the new folder is never overwritten: nothing is offered.
    CKilnovaDoc doc;
    ScriptedPrompt ui;
    ASSERT_TRUE(doc.openDocument(path("plant/plant.knv"), ui));
    ASSERT_TRUE(doc.saveDocumentAs(path("taken/again.knv"), ui));
    EXPECT_TRUE(ui.questions.isEmpty());
    EXPECT_EQ(blasts("taken/plant.kndb"), QStringList({"B1", "From left", "From taken"}));
}

} // namespace
} // namespace kilnova
