#include "UiTests.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "project/CKilnovaDoc.h"
#include "project/ProjectFile.h"
#include "support/ScriptedPrompt.h"
#include "ui/CMainFrame.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>

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

    static QAction* fileAction(CMainFrame& frame, const QString& text)
    {
        for (QAction* a : frame.menuBar()->actions().first()->menu()->actions()) {
            if (a->text() == text)
                return a;
        }
        return nullptr;
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
        // Whichever command is not built yet says so.
        const auto& commands = CommandTable::commands();
        const auto unbuilt =
            std::find_if(commands.begin(), commands.end(), [](const CommandInfo& c) { return !c.available; });
        if (unbuilt != commands.end()) {
            f.frame->commandAction(unbuilt->id)->trigger();
            QCOMPARE(f.ui->messageTexts(),
                     QStringList{
                         QStringLiteral("The command \"%1\" is not available yet in this version of Kilnova.")
                             .arg(unbuilt->menuPath.join(" > "))});
        }
        f.frame->commandAction(CommandId::ViewBlasts)->trigger();
        QCOMPARE(f.ui->messageTexts().last(),
                 QStringLiteral("This project is not connected to a database. Use "
                                "Database > Connect or Database > Create first."));
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

    // OK in Chemical Equation Parameters marks the project modified; OK in Clinker Process Parameters
    // takes the values (and the free lime for the equations) without doing so.
    void settingsDialogsStoreTheirValuesAndOnlyTheEquationsMarkTheProject()
    {
        Fixture f;
        auto answerNextDialog = [](const char* field, const QString& value) {
            QTimer::singleShot(0, [field, value] {
                auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
                QVERIFY(dialog);
                dialog->findChild<QLineEdit*>(field)->setText(value);
                dialog->accept();
            });
        };
        answerNextDialog("FreeLime", "1.5");
        f.frame->commandAction(CommandId::ClinkerProcessParameters)->trigger();
        QCOMPARE(f.doc.settings().clinkerProcess.FreeLime, 1.5f);
        QCOMPARE(ClinkerFreeLime(), 1.5f);
        QVERIFY(!f.doc.isModified());

        answerNextDialog("LSF_Al2O3", "1.18");
        f.frame->commandAction(CommandId::ChemicalEquationParameters)->trigger();
        QCOMPARE(chemCoefficients().LSFAl2O3, 1.18f);
        QVERIFY(f.doc.isModified());
        QVERIFY(f.frame->isWindowModified());
        QVERIFY(f.ui->messages.empty());
        chemCoefficients() = ChemEquationCoefficients{};
        ClinkerFreeLime() = 0;
    }

    void newAsksWhetherToSaveAModifiedProject()
    {
        QTemporaryDir dir;
        Fixture f;
        f.ui->fileAnswers = {dir.filePath("plant.kndb")};
        f.frame->commandAction(CommandId::DatabaseCreate)->trigger();
        QVERIFY(f.doc.isModified());
        QAction* newProject = fileAction(*f.frame, "&New");
        QVERIFY(newProject);

        f.ui->yesNoCancelAnswers = {UserPrompt::Answer::Cancel};
        newProject->trigger();
        QCOMPARE(f.ui->questions, QStringList{"Save changes to Untitled?"});
        QVERIFY(f.doc.isConnected());

        // Yes saves under a name chosen first, then starts the new project.
        f.ui->yesNoCancelAnswers = {UserPrompt::Answer::Yes};
        f.ui->fileAnswers = {dir.filePath("plant.knv")};
        newProject->trigger();
        QCOMPARE(f.ui->fileRequests.back().forSaving, true);
        QVERIFY(!f.doc.isConnected());
        QVERIFY(f.doc.databasePath().isEmpty());
        QCOMPARE(f.frame->windowTitle(), QStringLiteral("Untitled[*] - Kilnova"));
        QCOMPARE(ProjectFile::load(dir.filePath("plant.knv")).settings.databasePath,
                 dir.filePath("plant.kndb"));

        // No drops the changes.
        f.doc.settings().blastOptimization.target = 7;
        f.doc.setModified();
        f.ui->yesNoCancelAnswers = {UserPrompt::Answer::No};
        newProject->trigger();
        QCOMPARE(f.ui->questions.size(), qsizetype{3});
        QVERIFY(!f.doc.isModified());
        QCOMPARE(ProjectFile::load(dir.filePath("plant.knv")).settings.blastOptimization.target, 0.0);
    }

    void aProjectFileDroppedOnTheWindowIsOpened()
    {
        QTemporaryDir dir;
        const QString project = dir.filePath("plant.knv");
        {
            CKilnovaDoc doc;
            ScriptedPrompt ui;
            ui.fileAnswers = {dir.filePath("plant.kndb")};
            doc.createDatabase(ui);
            QVERIFY(doc.saveDocument(project, ui));
        }
        Fixture f;
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(project)});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(f.frame.get(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(f.frame.get(), &drop);
        QVERIFY(f.doc.isConnected());
        QCOMPARE(f.doc.filePath(), project);
        QCOMPARE(f.frame->windowTitle(), QStringLiteral("plant.knv[*] - Kilnova"));
        QCOMPARE(f.ui->messages.size(), std::size_t{1});
        QVERIFY(f.ui->messages[0].text.startsWith("Connected database name: "));
    }
};

static RegisterUiTest<MainFrameTest> registerMainFrameTest("MainFrameTest");

} // namespace kilnova::test

#include "MainFrameTest.moc"
