#include "project/CommandTable.h"
#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

TEST(CommandTable, HoldsEveryMenuCommandOnceWithItsId)
{
    QSet<int> ids;
    for (const CommandInfo& c : CommandTable::commands())
        ids.insert(static_cast<int>(c.id));
    EXPECT_EQ(CommandTable::commands().size(), 30u);
    EXPECT_EQ(ids.size(), 30);
    EXPECT_EQ(CommandTable::command(CommandId::ModifyBlasts).menuPath,
              QStringList({"Database", "Modify Table", "Blast"}));
    EXPECT_EQ(static_cast<int>(CommandId::ChemicalEquationParameters), 32808);
    EXPECT_EQ(CommandTable::command(CommandId::ChemicalEquationParameters).statusTip,
              "Set chemical equation parameters");
}

TEST(CommandTable, RefusesRecordCommandsWithoutDatabaseAndUnbuiltCommands)
{
    QTemporaryDir dir;
    CKilnovaDoc doc;
    // Settings and the database commands themselves run without a database.
    for (CommandId id : {CommandId::DatabaseCreate, CommandId::DatabaseConnect, CommandId::DatabaseStatus,
                         CommandId::ChemicalEquationParameters, CommandId::ClinkerProcessParameters})
        EXPECT_FALSE(CommandTable::refusal(id, doc)) << static_cast<int>(id);

    for (const CommandInfo& c : CommandTable::commands()) {
        const std::optional<QString> refusal = CommandTable::refusal(c.id, doc);
        if (!c.available) {
            EXPECT_EQ(refusal,
                      QStringLiteral("The command \"%1\" is not available yet in this version of Kilnova.")
                          .arg(c.menuPath.join(" > ")));
        } else if (c.needsDatabase) {
            EXPECT_TRUE(refusal && refusal->startsWith("This project is not connected to a database."));
        }
    }

    test::ScriptedPrompt ui;
    ui.fileAnswers = {dir.filePath("p.kndb")};
    doc.createDatabase(ui);
    ASSERT_TRUE(doc.isConnected());
    for (const CommandInfo& c : CommandTable::commands()) {
        if (c.available) {
            EXPECT_FALSE(CommandTable::refusal(c.id, doc)) << c.menuPath.join(" > ").toStdString();
        }
    }

    // A database file deleted under the open connection would swallow every write without a trace.
    ASSERT_TRUE(QFile::remove(dir.filePath("p.kndb")));
    const QString gone = QStringLiteral("The database file %1 is no longer there, so nothing was written. "
                                        "Connect the project to its database again.")
                             .arg(QDir::toNativeSeparators(dir.filePath("p.kndb")));
    for (const CommandInfo& c : CommandTable::commands()) {
        if (c.available && c.needsDatabase) {
            EXPECT_EQ(CommandTable::refusal(c.id, doc), gone) << c.menuPath.join(" > ").toStdString();
        } else if (c.available) {
            EXPECT_FALSE(CommandTable::refusal(c.id, doc)) << c.menuPath.join(" > ").toStdString();
        }
    }
    test::ScriptedPrompt status;
    doc.showStatus(status);
    EXPECT_EQ(status.messageTexts(), QStringList{gone});
}

} // namespace
} // namespace kilnova
