#include "ui/CMainFrame.h"

#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "project/BackupCommands.h"
#include "project/CKilnovaDoc.h"
#include "ui/AboutBox.h"
#include "ui/BackupBlastRecords.h"
#include "ui/BlastResultsWindow.h"
#include "ui/CBackupStockpileRecords.h"
#include "ui/CChemicalEquationsParms.h"
#include "ui/CChooseDataSource.h"
#include "ui/CClinkerOptResults.h"
#include "ui/CClinkerProcess.h"
#include "ui/CCombineBlasts.h"
#include "ui/CKilnovaView.h"
#include "ui/COptimizeAdditives.h"
#include "ui/COptimizeBlasts.h"
#include "ui/COptimizeCoal.h"
#include "ui/COptimizeStockpiles.h"
#include "ui/CoalResultsWindow.h"
#include "ui/GuiImportDialogs.h"
#include "ui/GuiPrompt.h"
#include "ui/RecentFiles.h"
#include "ui/StockpileResultsWindow.h"
#include "ui/TableDialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QTimer>

namespace kilnova {

namespace {
const QString kProjectFilter = QStringLiteral("Kilnova Files (*.knv)");
}

CMainFrame::CMainFrame(CKilnovaDoc& doc, std::unique_ptr<UserPrompt> prompt, QWidget* parent)
    : QMainWindow(parent)
    , mDoc(doc)
    , mPrompt(prompt ? std::move(prompt) : std::make_unique<GuiPrompt>(this))
    , mView(new CKilnovaView(doc))
    , mPendingTimer(new QTimer(this))
{
    mPendingTimer->setSingleShot(true);
    mPendingTimer->setInterval(200);
    connect(mPendingTimer, &QTimer::timeout, this, &CMainFrame::openPendingWhenFree);
    setCentralWidget(mView);
    setAcceptDrops(true);
    registerHandlers();
    buildMenus();
    statusBar()->showMessage(tr("Ready"));
    afterCommand();
}

CMainFrame::~CMainFrame() = default;

void CMainFrame::buildMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&New"), QKeySequence::New, this, &CMainFrame::newProject);
    file->addAction(tr("&Open..."), QKeySequence::Open, this, &CMainFrame::openProjectDialog);
    file->addAction(tr("&Save"), QKeySequence::Save, this, &CMainFrame::save);
    file->addAction(tr("Save &As..."), QKeySequence::SaveAs, this, &CMainFrame::saveAs);
    file->addSeparator();
    mRecentMenu = file->addMenu(tr("Recent Files"));
    file->addSeparator();
    file->addAction(tr("E&xit"), QKeySequence::Quit, this, &QWidget::close);

    // Database, Import, Settings and Optimize hold the command table, submenus as the paths say.
    std::map<QString, QMenu*> menus;
    for (const CommandInfo& command : CommandTable::commands()) {
        QString key;
        QMenu* menu = nullptr;
        for (int i = 0; i + 1 < command.menuPath.size(); ++i) {
            key += "/" + command.menuPath[i];
            auto found = menus.find(key);
            if (found == menus.end()) {
                QMenu* created =
                    menu ? menu->addMenu(command.menuPath[i]) : menuBar()->addMenu(command.menuPath[i]);
                found = menus.emplace(key, created).first;
            }
            menu = found->second;
        }
        QAction* action = menu->addAction(command.menuPath.last());
        action->setData(static_cast<int>(command.id));
        action->setStatusTip(command.statusTip);
        const CommandId id = command.id;
        connect(action, &QAction::triggered, this, [this, id] { runCommand(id); });
        mActions[id] = action;
    }

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("&About Kilnova"), this, [this] { AboutBox::create(this)->exec(); });
    updateRecentFiles();
}

void CMainFrame::registerHandlers()
{
    // One line per command: the window only routes; the document and the dialogs do the work.
    mHandlers[CommandId::DatabaseCreate] = [this] {
        mDoc.createDatabase(*mPrompt);
    };
    mHandlers[CommandId::DatabaseConnect] = [this] {
        mDoc.connectDatabase(*mPrompt);
    };
    mHandlers[CommandId::DatabaseStatus] = [this] {
        mDoc.showStatus(*mPrompt);
    };
    mHandlers[CommandId::ChemicalEquationParameters] = [this] {
        editChemicalEquations();
    };
    mHandlers[CommandId::ClinkerProcessParameters] = [this] {
        editClinkerProcess();
    };
    mHandlers[CommandId::ImportBlastText] = [this] {
        GuiImportDialogs(this).importText(mDoc, ImportTarget::Blast, *mPrompt);
    };
    mHandlers[CommandId::ImportStockpileText] = [this] {
        GuiImportDialogs(this).importText(mDoc, ImportTarget::Stockpile, *mPrompt);
    };
    mHandlers[CommandId::ImportBlastWorkbook] = [this] {
        GuiImportDialogs(this).importWorkbook(mDoc, ImportTarget::Blast, *mPrompt);
    };
    mHandlers[CommandId::ImportStockpileWorkbook] = [this] {
        GuiImportDialogs(this).importWorkbook(mDoc, ImportTarget::Stockpile, *mPrompt);
    };
    mHandlers[CommandId::OptimizeBlasts] = [this] {
        optimizeBlasts();
    };
    mHandlers[CommandId::OptimizeClinker] = [this] {
        optimizeClinker();
    };
    mHandlers[CommandId::OptimizeStockpiles] = [this] {
        optimizeStockpiles();
    };
    mHandlers[CommandId::OptimizeCoal] = [this] {
        optimizeCoal();
    };
    mHandlers[CommandId::AnalyseBlastCombinations] = [this] {
        CCombineBlasts::run(mDoc, *mPrompt, this);
    };
    mHandlers[CommandId::RestoreBlastBackup] = [this] {
        restoreBackups(BackupRestore::Kind::Blasts);
    };
    mHandlers[CommandId::RestoreStockpileBackup] = [this] {
        restoreBackups(BackupRestore::Kind::Stockpiles);
    };
    mHandlers[CommandId::DeleteBlastBackup] = [this] {
        deleteBackups(BackupRestore::Kind::Blasts);
    };
    mHandlers[CommandId::DeleteStockpileBackup] = [this] {
        deleteBackups(BackupRestore::Kind::Stockpiles);
    };
    mHandlers[CommandId::ViewBlasts] = TableDialog::viewCommand(mDoc, Table::Blast, *mPrompt, this);
    mHandlers[CommandId::ViewAdditives] = TableDialog::viewCommand(mDoc, Table::Additives, *mPrompt, this);
    mHandlers[CommandId::ViewStockpiles] = TableDialog::viewCommand(mDoc, Table::Stockpile, *mPrompt, this);
    mHandlers[CommandId::ViewCrude] = TableDialog::viewCommand(mDoc, Table::Crude, *mPrompt, this);
    mHandlers[CommandId::ViewClinker] = TableDialog::viewCommand(mDoc, Table::Clinker, *mPrompt, this);
    mHandlers[CommandId::ViewCoal] = TableDialog::viewCommand(mDoc, Table::Coal, *mPrompt, this);
    mHandlers[CommandId::ModifyBlasts] = TableDialog::modifyCommand(mDoc, Table::Blast, *mPrompt, this);
    mHandlers[CommandId::ModifyAdditives] =
        TableDialog::modifyCommand(mDoc, Table::Additives, *mPrompt, this);
    mHandlers[CommandId::ModifyStockpiles] =
        TableDialog::modifyCommand(mDoc, Table::Stockpile, *mPrompt, this);
    mHandlers[CommandId::ModifyCrude] = TableDialog::modifyCommand(mDoc, Table::Crude, *mPrompt, this);
    mHandlers[CommandId::ModifyClinker] = TableDialog::modifyCommand(mDoc, Table::Clinker, *mPrompt, this);
    mHandlers[CommandId::ModifyCoal] = TableDialog::modifyCommand(mDoc, Table::Coal, *mPrompt, this);
}

QAction* CMainFrame::commandAction(CommandId id) const
{
    const auto found = mActions.find(id);
    return found == mActions.end() ? nullptr : found->second;
}

void CMainFrame::runCommand(CommandId id)
{
    if (const std::optional<QString> refusal = CommandTable::refusal(id, mDoc)) {
        mPrompt->showMessage(*refusal, UserPrompt::Icon::Information, {});
        return;
    }
    const auto handler = mHandlers.find(id);
    if (handler != mHandlers.end())
        handler->second();
    afterCommand();
}

void CMainFrame::editChemicalEquations()
{
    CChemicalEquationsParms dialog(*mPrompt, this);
    if (dialog.exec() == QDialog::Accepted)
        mDoc.setModified();
}

void CMainFrame::optimizeBlasts()
{
    auto showResults = [this](const BlastOptimization::Result& result) {
        // Modal over the optimisation dialog, which stays open for another run.
        QWidget* over = QApplication::activeModalWidget();
        BlastResultsWindow window(result, mDoc, *mPrompt, over ? over : this);
        window.exec();
    };
    COptimizeBlasts dialog(*mDoc.database(), mDoc.settings().blastOptimization, *mPrompt, showResults, this);
    if (dialog.exec() == QDialog::Accepted) {
        mDoc.settings().blastOptimization = dialog.parameters();
        mDoc.setModified();
    }
}

void CMainFrame::optimizeClinker()
{
    auto showResults = [this](const ClinkerOptimization::Result& result) {
        QWidget* over = QApplication::activeModalWidget();
        CClinkerOptResults window(result, mDoc, *mPrompt, over ? over : this);
        window.exec();
    };
    // The dialog works on a copy of the process parameters taken now.
    const ClinkerProcessParameters process = mDoc.clinkerProcessForDialog();
    COptimizeAdditives dialog(*mDoc.database(), mDoc.settings().clinkerOptimization, process,
                              static_cast<double>(process.FreeLime), *mPrompt, showResults, this);
    if (dialog.exec() == QDialog::Accepted) {
        mDoc.settings().clinkerOptimization = dialog.parameters();
        mDoc.setModified();
    }
}

void CMainFrame::optimizeStockpiles()
{
    auto showResults = [this](const StockpileOptimization::Result& result) {
        QWidget* over = QApplication::activeModalWidget();
        StockpileResultsWindow window(result, mDoc, *mPrompt, over ? over : this);
        window.exec();
    };
    auto chooseSource = [this] {
        QWidget* over = QApplication::activeModalWidget();
        return CChooseDataSource::ask(over ? over : this);
    };
    COptimizeStockpiles dialog(*mDoc.database(), mDoc.settings().stockpileOptimization, *mPrompt, showResults,
                               chooseSource, this);
    if (dialog.exec() == QDialog::Accepted) {
        mDoc.settings().stockpileOptimization = dialog.parameters();
        mDoc.setModified();
    }
}

void CMainFrame::optimizeCoal()
{
    auto showResults = [this](const CoalOptimization::Result& result) {
        // Modal over the optimisation dialog, which stays open for another run.
        QWidget* over = QApplication::activeModalWidget();
        CoalResultsWindow window(result, mDoc, *mPrompt, over ? over : this);
        window.exec();
    };
    COptimizeCoal dialog(*mDoc.database(), mDoc.settings().coalOptimization, *mPrompt, showResults, this);
    if (dialog.exec() == QDialog::Accepted) {
        mDoc.settings().coalOptimization = dialog.parameters();
        mDoc.setModified();
    }
}

void CMainFrame::restoreBackups(BackupRestore::Kind kind)
{
    if (kind == BackupRestore::Kind::Blasts)
        BackupBlastRecords(*mDoc.database(), *mPrompt, this).exec();
    else
        CBackupStockpileRecords(*mDoc.database(), *mPrompt, this).exec();
}

void CMainFrame::deleteBackups(BackupRestore::Kind kind)
{
    BackupCommands::deleteBackups(*mDoc.database(), kind, *mPrompt);
}

void CMainFrame::editClinkerProcess()
{
    CClinkerProcess dialog(mDoc.clinkerProcessForDialog(), *mPrompt, this);
    // Its values reach the file with the next save; the dialog alone does not mark the project modified.
    if (dialog.exec() == QDialog::Accepted)
        mDoc.setClinkerProcess(dialog.parameters());
}

void CMainFrame::afterCommand()
{
    setWindowTitle(mDoc.displayName() + QStringLiteral("[*] - Kilnova"));
    setWindowModified(mDoc.isModified());
    mView->refresh();
}

void CMainFrame::newProject()
{
    if (!maybeSave())
        return;
    mDoc.newDocument();
    afterCommand();
}

void CMainFrame::openProjectDialog()
{
    UserPrompt::FileRequest request;
    request.title = tr("Open");
    request.filter = kProjectFilter;
    request.defaultSuffix = QStringLiteral("knv");
    request.initialPath = mDoc.filePath();
    if (const std::optional<QString> path = mPrompt->chooseFile(request))
        openProject(*path);
}

bool CMainFrame::openProject(const QString& path)
{
    if (!maybeSave())
        return false;
    const bool opened = mDoc.openDocument(path, *mPrompt);
    if (opened)
        RecentFiles().add(path);
    else if (!QFileInfo::exists(path))
        RecentFiles().remove(path);
    updateRecentFiles();
    afterCommand();
    return opened;
}

void CMainFrame::openRequested(const QStringList& files)
{
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    raise();
    activateWindow();
    if (files.isEmpty())
        return;
    mPendingOpen = files.first();
    // Not from inside the socket's signal: the question about unsaved changes opens an event loop.
    mPendingTimer->start(0);
}

void CMainFrame::openPendingWhenFree()
{
    if (mPendingOpen.isEmpty())
        return;
    // A dialog of this window is open, or the question of an earlier open: the user finishes it first.
    if (mOpening || QApplication::activeModalWidget()) {
        mPendingTimer->start(200);
        return;
    }
    const QString path = std::exchange(mPendingOpen, QString());
    mOpening = true;
    openProject(path);
    mOpening = false;
}

bool CMainFrame::save()
{
    if (mDoc.filePath().isEmpty())
        return saveAs();
    const bool saved = mDoc.saveDocument(mDoc.filePath(), *mPrompt);
    afterCommand();
    return saved;
}

bool CMainFrame::saveAs()
{
    UserPrompt::FileRequest request;
    request.title = tr("Save As");
    request.filter = kProjectFilter;
    request.defaultSuffix = QStringLiteral("knv");
    request.initialPath =
        mDoc.filePath().isEmpty() ? QDir::home().filePath(QStringLiteral("Untitled.knv")) : mDoc.filePath();
    request.forSaving = true;
    const std::optional<QString> path = mPrompt->chooseFile(request);
    if (!path)
        return false;
    const bool saved = mDoc.saveDocumentAs(*path, *mPrompt);
    if (saved) {
        RecentFiles().add(*path);
        updateRecentFiles();
    }
    afterCommand();
    return saved;
}

bool CMainFrame::maybeSave()
{
    if (!mDoc.isModified())
        return true;
    switch (mPrompt->askYesNoCancel(message(Msg::SaveChangesQuestion, {mDoc.displayName()}))) {
    case UserPrompt::Answer::Yes:
        return save();
    case UserPrompt::Answer::No:
        return true;
    case UserPrompt::Answer::Cancel:
        break;
    }
    return false;
}

void CMainFrame::updateRecentFiles()
{
    mRecentMenu->clear();
    const QStringList files = RecentFiles().files();
    for (int i = 0; i < files.size(); ++i) {
        const QString path = files[i];
        mRecentMenu->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(QDir::toNativeSeparators(path)), this,
                               [this, path] { openProject(path); });
    }
    mRecentMenu->setEnabled(!files.isEmpty());
}

void CMainFrame::closeEvent(QCloseEvent* event)
{
    if (maybeSave())
        event->accept();
    else
        event->ignore();
}

void CMainFrame::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void CMainFrame::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (!urls.isEmpty() && urls.first().isLocalFile()) {
        event->acceptProposedAction();
        openProject(urls.first().toLocalFile());
    }
}

} // namespace kilnova
