#include "project/CKilnovaDoc.h"
#include "chemistry/ChemEquationCoefficients.h"
#include "common/MessageTable.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using test::ScriptedPrompt;

class CKilnovaDocTest : public testing::Test {
protected:
    QString path(const QString& name) const { return QDir::cleanPath(mDir.filePath(name)); }

    /// A document connected to a fresh database "p.kndb".
    void createDatabase(CKilnovaDoc& doc, const QString& name = "p.kndb")
    {
        ScriptedPrompt ui;
        ui.fileAnswers = {path(name)};
        doc.createDatabase(ui);
        ASSERT_TRUE(doc.isConnected());
    }

    static QString statusFor(const QString& dbPath, int blasts)
    {
        return QStringLiteral(
                   "Connected database name: %1\nNumber of records in Blast table: %2\nNumber of records "
                   "in Stockpile table: 4\nNumber of records in Crude table: 0\nNumber of records in "
                   "Clinker table: 0\nNumber of records in Additives table: 0\nNumber of records in Coal "
                   "table: 0")
            .arg(QDir::toNativeSeparators(dbPath))
            .arg(blasts);
    }

    QTemporaryDir mDir;
};

TEST_F(CKilnovaDocTest, CreateBuildsConnectsMarksModifiedAndShowsStatus)
{
    CKilnovaDoc doc;
    ScriptedPrompt ui;
    ui.fileAnswers = {path("p.kndb")};
    doc.createDatabase(ui);

    ASSERT_EQ(ui.fileRequests.size(), 1u);
    EXPECT_EQ(ui.fileRequests[0].title, "Open Kilnova Project Database");
    EXPECT_EQ(ui.fileRequests[0].filter, "Kilnova project databases (*.kndb)");
    EXPECT_TRUE(ui.fileRequests[0].forSaving);
    EXPECT_TRUE(doc.isConnected());
    EXPECT_TRUE(doc.isModified());
    EXPECT_EQ(doc.databasePath(), path("p.kndb"));
    EXPECT_EQ(ui.messageTexts(), QStringList{statusFor(path("p.kndb"), 0)});
    EXPECT_TRUE(ui.questions.isEmpty());
}

TEST_F(CKilnovaDocTest, CreateOrConnectWhileConnectedAsksFirst)
{
    const QString alreadyConnected =
        "This project is already connected to a database. Do you want overwrite this "
        "link with a new database?";
    for (bool create : {true, false}) {
        CKilnovaDoc doc;
        createDatabase(doc);
        doc.setModified(false);

        ScriptedPrompt no;
        no.yesNoAnswers = {false};
        create ? doc.createDatabase(no) : doc.connectDatabase(no);
        EXPECT_EQ(no.questions, QStringList{alreadyConnected});
        EXPECT_TRUE(no.fileRequests.empty()) << "No must end the command";
        EXPECT_TRUE(doc.isConnected());
        EXPECT_FALSE(doc.isModified());

        // Yes closes the old link even when the file dialog is then cancelled.
        ScriptedPrompt yesThenCancel;
        yesThenCancel.yesNoAnswers = {true};
        yesThenCancel.fileAnswers = {std::nullopt};
        create ? doc.createDatabase(yesThenCancel) : doc.connectDatabase(yesThenCancel);
        EXPECT_FALSE(doc.isConnected());
        EXPECT_EQ(doc.databasePath(), path("p.kndb"));
        EXPECT_TRUE(yesThenCancel.messages.empty());
        EXPECT_EQ(doc.isModified(), create) << "a cancelled Create still marks the document modified";
    }
}

TEST_F(CKilnovaDocTest, CreateOverTheConnectedFileStartsAFreshDatabase)
{
    CKilnovaDoc doc;
    createDatabase(doc);
    Record b(Table::Blast);
    b.setValue("Name", "B1");
    RecordTable(*doc.database(), Table::Blast).add(b);

    ScriptedPrompt ui;
    ui.yesNoAnswers = {true};
    ui.fileAnswers = {path("p.kndb")};
    doc.createDatabase(ui);
    ASSERT_TRUE(doc.isConnected());
    EXPECT_EQ(ui.messageTexts(), QStringList{statusFor(path("p.kndb"), 0)});
}

TEST_F(CKilnovaDocTest, FailuresAreReportedAndLeaveTheDocumentUnconnected)
{
    QFile notes(path("notes.kndb"));
    ASSERT_TRUE(notes.open(QIODevice::WriteOnly));
    notes.write("plain text, not a database");
    notes.close();

    struct Case {
        const char* what;
        bool create;
        QString file;
        QString expected;
    };
    const std::vector<Case> cases = {
        {"create in a missing folder", true, path("missing/p.kndb"),
         "Error: This database cannot be overwritten."},
        {"connect to a text file", false, path("notes.kndb"),
         "Error, cannot connect to the project database, try connecting manually to it."},
        {"connect to a vanished file", false, path("gone.kndb"),
         "Error, cannot connect to the project database, try connecting manually to it."},
    };
    for (const Case& c : cases) {
        CKilnovaDoc doc;
        ScriptedPrompt ui;
        ui.fileAnswers = {c.file};
        c.create ? doc.createDatabase(ui) : doc.connectDatabase(ui);
        EXPECT_FALSE(doc.isConnected()) << c.what;
        EXPECT_EQ(doc.databasePath(), c.file) << c.what;
        ASSERT_EQ(ui.messages.size(), 1u) << c.what;
        EXPECT_EQ(ui.messages[0].text, c.expected) << c.what;
        EXPECT_FALSE(ui.messages[0].details.isEmpty()) << c.what << ": the reason is given for support";
    }
    EXPECT_FALSE(QFile::exists(path("gone.kndb")));
}

TEST_F(CKilnovaDocTest, SavedDocumentReopensWithEverySettingAndItsDatabase)
{
    CKilnovaDoc doc;
    createDatabase(doc);
    doc.settings().blastOptimization.mode = -1;
    ClinkerProcessParameters process;
    process.FreeLime = 1.5f;
    process.AshRecoveryFactor = 250;
    doc.setClinkerProcess(process);
    chemCoefficients().C2SUseFreeLime = 0;
    chemCoefficients().LSFAl2O3 = 1.18f;
    ScriptedPrompt ui;
    ASSERT_TRUE(doc.saveDocument(path("p.knv"), ui));
    const ProjectSettings saved = doc.snapshot();

    chemCoefficients() = ChemEquationCoefficients{};
    ClinkerFreeLime() = 0;
    CKilnovaDoc reopened;
    ScriptedPrompt ui2;
    ASSERT_TRUE(reopened.openDocument(path("p.knv"), ui2));
    EXPECT_TRUE(reopened.isConnected());
    EXPECT_EQ(ui2.messageTexts(), QStringList{statusFor(path("p.kndb"), 0)});
    EXPECT_EQ(reopened.snapshot(), saved);
    EXPECT_EQ(chemCoefficients().C2SUseFreeLime, 0);
    EXPECT_EQ(chemCoefficients().LSFAl2O3, 1.18f);
    EXPECT_EQ(ClinkerFreeLime(), 1.5f);
    EXPECT_FALSE(reopened.isModified());
    EXPECT_EQ(reopened.displayName(), "p.knv");
    chemCoefficients() = ChemEquationCoefficients{};
}

TEST_F(CKilnovaDocTest, DocumentWhoseDatabaseMovedLoadsUnconnectedWithOneMessage)
{
    {
        CKilnovaDoc doc;
        createDatabase(doc);
        doc.settings().combination.targetTonnage = 1234.5;
        ScriptedPrompt ui;
        ASSERT_TRUE(doc.saveDocument(path("p.knv"), ui));
    }
    ASSERT_TRUE(QFile::rename(path("p.kndb"), path("moved.kndb")));

    CKilnovaDoc doc;
    ScriptedPrompt ui;
    ASSERT_TRUE(doc.openDocument(path("p.knv"), ui));
    EXPECT_FALSE(doc.isConnected());
    EXPECT_EQ(ui.messageTexts(),
              QStringList{"Error, cannot connect to the project database, try connecting manually to it."});
    EXPECT_EQ(doc.settings().combination.targetTonnage, 1234.5);

    ScriptedPrompt status;
    doc.showStatus(status);
    EXPECT_TRUE(status.messages.empty()) << "Status says nothing while not connected";
}

TEST_F(CKilnovaDocTest, DamagedProjectFileLeavesTheOpenDocumentAsItWas)
{
    CKilnovaDoc doc;
    createDatabase(doc);
    doc.settings().blastOptimization.target = 42;
    const ProjectSettings before = doc.snapshot();

    for (const QByteArray& bytes : {QByteArray(), QByteArray("\x05short"), QByteArray(3000, '\xA7')}) {
        QFile f(path("bad.knv"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
        f.close();
        ScriptedPrompt ui;
        EXPECT_FALSE(doc.openDocument(path("bad.knv"), ui));
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text,
                  message(Msg::CannotOpenProject, {QDir::toNativeSeparators(path("bad.knv"))}));
        EXPECT_TRUE(doc.isConnected());
        EXPECT_EQ(doc.snapshot(), before);
    }
}

TEST_F(CKilnovaDocTest, NewDocumentDropsTheDatabaseButKeepsTheParameters)
{
    CKilnovaDoc doc;
    createDatabase(doc);
    doc.settings().blastOptimization.requestedTonnage = 5000;
    doc.newDocument();
    EXPECT_FALSE(doc.isConnected());
    EXPECT_TRUE(doc.databasePath().isEmpty());
    EXPECT_EQ(doc.settings().blastOptimization.requestedTonnage, 5000);
    EXPECT_EQ(doc.displayName(), "Untitled");
}

TEST_F(CKilnovaDocTest, SavingIntoAMissingFolderIsReported)
{
    CKilnovaDoc doc;
    ScriptedPrompt ui;
    EXPECT_FALSE(doc.saveDocument(path("missing/p.knv"), ui));
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].icon, UserPrompt::Icon::Error);
    EXPECT_TRUE(doc.filePath().isEmpty());
}

} // namespace
} // namespace kilnova
