#pragma once

#include "common/UserPrompt.h"
#include "database/BackupRestore.h"
#include "project/CommandTable.h"

#include <QMainWindow>

#include <functional>
#include <map>
#include <memory>

class QMenu;
class QTimer;

namespace kilnova {

class CKilnovaDoc;
class CKilnovaView;

/// The main window: the File menu, every command of the command table routed to its handler, the
/// project view, recent files and dropped project files. It routes; the document does the work.
class CMainFrame final : public QMainWindow {
    Q_OBJECT
public:
    /// Questions and messages go through prompt; by default message boxes over this window.
    explicit CMainFrame(CKilnovaDoc& doc, std::unique_ptr<UserPrompt> prompt = {}, QWidget* parent = nullptr);
    ~CMainFrame() override;

    /// Opens a project file after offering to save the current one; false if it was not opened.
    bool openProject(const QString& path);
    /// A project handed over by another start of Kilnova: the window comes to the front and opens
    /// it as File > Open does, once no dialog of this window is open any more. Empty: only show.
    void openRequested(const QStringList& files);
    /// Runs a menu command, or says why it cannot run now.
    void runCommand(CommandId id);
    QAction* commandAction(CommandId id) const;

    bool save();
    bool saveAs();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void registerHandlers();
    void buildMenus();
    void newProject();
    void openProjectDialog();
    /// Offers to save a modified project; false when the user cancels.
    bool maybeSave();
    void afterCommand();
    void updateRecentFiles();
    void openPendingWhenFree();
    void editChemicalEquations();
    void editClinkerProcess();
    void optimizeClinker();
    void optimizeBlasts();
    void optimizeStockpiles();
    void optimizeCoal();
    void restoreBackups(BackupRestore::Kind kind);
    void deleteBackups(BackupRestore::Kind kind);

    CKilnovaDoc& mDoc;
    std::unique_ptr<UserPrompt> mPrompt;
    CKilnovaView* mView;
    QMenu* mRecentMenu = nullptr;
    std::map<CommandId, QAction*> mActions;
    std::map<CommandId, std::function<void()>> mHandlers;
    /// The latest project handed over while a dialog was open; it waits for the dialog to close.
    QString mPendingOpen;
    QTimer* mPendingTimer;
    bool mOpening = false;
};

} // namespace kilnova
