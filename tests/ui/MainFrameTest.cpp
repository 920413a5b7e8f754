#include "UiTests.h"

#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/CMainFrame.h"

#include <QAction>
#include <QLabel>
#include <QMenuBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace kilnova::test {

class MainFrameTest : public QObject {
    Q_OBJECT

    struct Fixture {
        CKilnovaDoc doc;
        ScriptedPrompt* ui;
        std::unique_ptr<CMainFrame> frame;
        Fixture()
        {
            auto prompt = std::make_unique<ScriptedPrompt>();
            ui = prompt.get();
            frame = std::make_unique<CMainFrame>(doc, std::move(prompt));
        }
    };

    static QList<QAction*> allActions(QWidget* menuOwner)
    {
        QList<QAction*> result;
        for (QMenu* menu : menuOwner->findChildren<QMenu*>())
            result += menu->actions();
        return result;
    }

private slots:
    void init() { QSettings().clear(); }

    void everyCommandSitsInItsMenuWithItsId()
    {
        Fixture f;
        QCOMPARE(f.frame->windowTitle(), QStringLiteral("Untitled[*] - Kilnova"));
        QStringList topMenus;
        for (QAction* a : f.frame->menuBar()->actions())
            topMenus << a->text();
        QCOMPARE(topMenus, QStringList({"&File", "Database", "Import", "Settings", "Optimize", "&Help"}));
        for (const CommandInfo& c : CommandTable::commands()) {
            QAction* action = f.frame->commandAction(c.id);
            QVERIFY(action);
            QCOMPARE(action->text(), c.menuPath.last());
            QCOMPARE(action->data().toInt(), static_cast<int>(c.id));
            QVERIFY(allActions(f.frame.get()).contains(action));
        }
    }

    void unbuiltAndDatabaseCommandsAnswerInsteadOfRunning()
    {
        Fixture f;
        f.frame->commandAction(CommandId::OptimizeCoal)->trigger();
        QCOMPARE(
            f.ui->messageTexts(),
            QStringList{"The command \"Optimize > Coal\" is not available yet in this version of Kilnova."});
        QVERIFY(!f.doc.isModified());
    }

    void createThroughTheMenuConnectsAndShowsTheCounts()
    {
        QTemporaryDir dir;
        Fixture f;
        f.ui->fileAnswers = {dir.filePath("plant.kndb")};
        f.frame->commandAction(CommandId::DatabaseCreate)->trigger();
        QVERIFY(f.doc.isConnected());
        QCOMPARE(f.ui->messages.size(), std::size_t{1});
        QVERIFY(f.ui->messages[0].text.startsWith("Connected database name: "));
        QVERIFY(f.frame->isWindowModified());
        auto* counts = f.frame->findChild<QLabel*>("counts");
        QVERIFY(counts);
        QVERIFY(counts->text().contains("Stockpiles: 4"));
    }

    void saveAsAndReopenThroughTheFrameKeepTheRecentList()
    {
        QTemporaryDir dir;
        {
            Fixture f;
            f.ui->fileAnswers = {dir.filePath("plant.kndb"), dir.filePath("plant.knv")};
            f.frame->commandAction(CommandId::DatabaseCreate)->trigger();
            QVERIFY(f.frame->saveAs());
            QCOMPARE(f.frame->windowTitle(), QStringLiteral("plant.knv[*] - Kilnova"));
            QVERIFY(!f.frame->isWindowModified());
        }
        Fixture f;
        QVERIFY(f.frame->openProject(dir.filePath("plant.knv")));
        QVERIFY(f.doc.isConnected());
        QCOMPARE(QSettings().value("RecentFiles").toStringList(), QStringList{dir.filePath("plant.knv")});
    }
};

static RegisterUiTest<MainFrameTest> registerMainFrameTest("MainFrameTest");

} // namespace kilnova::test

#include "MainFrameTest.moc"
