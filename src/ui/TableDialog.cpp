#include "ui/TableDialog.h"

#include "project/CKilnovaDoc.h"
#include "ui/CModifyStockpiles.h"
#include "ui/MissingValueDelegate.h"
#include "ui/RecordDialog.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace kilnova {

TableDialog::TableDialog(ProjectDatabase& db, Table table, Mode mode, UserPrompt& ui, QWidget* parent)
    : QDialog(parent)
    , mUi(ui)
    , mEditor(db, table, ui)
    , mView(new QTableView)
    , mCount(new QLabel)
    , mLoaded(mEditor.reload())
{
    const QString name = Schema::table(table).name;
    setWindowTitle(mode == Mode::View ? QStringLiteral("%1 table").arg(name)
                                      : QStringLiteral("Modify the %1 table").arg(name));
    setObjectName(mode == Mode::View ? QStringLiteral("View") + name : QStringLiteral("Modify") + name);

    mView->setObjectName(QStringLiteral("records"));
    mView->setModel(&mEditor.model());
    mView->setItemDelegate(new MissingValueDelegate(mView));
    mView->setSelectionBehavior(QAbstractItemView::SelectRows);
    mView->setSelectionMode(mode == Mode::View ? QAbstractItemView::SingleSelection
                                               : QAbstractItemView::ExtendedSelection);
    mView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    mView->setAlternatingRowColors(true);
    mView->setWordWrap(false);
    // Table order until the user clicks a heading (the view would otherwise sort by the first
    // column at once).
    mView->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    mView->setSortingEnabled(true);
    mView->verticalHeader()->setDefaultSectionSize(mView->fontMetrics().height() + 6);
    // Column widths from the first rows only, so that a large table still opens at once.
    mView->horizontalHeader()->setResizeContentsPrecision(100);
    mView->resizeColumnsToContents();

    mCount->setObjectName(QStringLiteral("count"));
    auto* bottom = new QHBoxLayout;
    mButtons = bottom;
    bottom->addWidget(mCount, 1);
    if (mode == Mode::Modify) {
        auto* add = new QPushButton(QStringLiteral("Add"));
        mModify = new QPushButton(QStringLiteral("Modify"));
        mDelete = new QPushButton(QStringLiteral("Delete"));
        add->setObjectName(QStringLiteral("add"));
        mModify->setObjectName(QStringLiteral("modify"));
        mDelete->setObjectName(QStringLiteral("delete"));
        for (QPushButton* b : {add, mModify, mDelete}) {
            b->setAutoDefault(false);
            bottom->addWidget(b);
        }
        connect(add, &QPushButton::clicked, this, &TableDialog::addRecord);
        connect(mModify, &QPushButton::clicked, this, &TableDialog::modifyRecord);
        connect(mDelete, &QPushButton::clicked, this, &TableDialog::deleteRecords);
        connect(mView, &QTableView::doubleClicked, this, &TableDialog::modifyRecord);
        connect(mView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &TableDialog::updateButtons);
    }
    auto* done = new QPushButton(QStringLiteral("Done"));
    done->setObjectName(QStringLiteral("done"));
    done->setAutoDefault(false);
    bottom->addSpacing(12);
    bottom->addWidget(done);
    connect(done, &QPushButton::clicked, this, &QDialog::accept);
    connect(&mEditor.model(), &QAbstractItemModel::modelReset, this, &TableDialog::updateButtons);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(mView);
    layout->addLayout(bottom);
    resize(1100, 560);
    updateButtons();
}

std::vector<int> TableDialog::selectedRows() const
{
    std::vector<int> rows;
    for (const QModelIndex& index : mView->selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void TableDialog::selectRow(int row)
{
    mView->selectRow(row);
    mView->scrollTo(mEditor.model().index(row, 0));
}

void TableDialog::updateButtons()
{
    const int rows = mEditor.model().rowCount();
    mCount->setText(rows == 1 ? QStringLiteral("1 record") : QStringLiteral("%1 records").arg(rows));
    if (!mModify)
        return;
    const std::size_t selected = selectedRows().size();
    mModify->setEnabled(selected == 1);
    mDelete->setEnabled(selected > 0);
}

void TableDialog::editInForm(RecordForm form)
{
    RecordDialog dialog(mEditor, std::move(form), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (const std::optional<int> row = mEditor.rowOf(dialog.record()))
        selectRow(*row);
}

void TableDialog::addRecord()
{
    editInForm(mEditor.newRecordForm());
}

void TableDialog::modifyRecord()
{
    const std::vector<int> rows = selectedRows();
    if (rows.size() != 1)
        return;
    if (std::optional<RecordForm> form = mEditor.formForRow(rows.front()))
        editInForm(std::move(*form));
}

void TableDialog::deleteRecords()
{
    mEditor.deleteRows(selectedRows());
    updateButtons();
}

std::unique_ptr<TableDialog> TableDialog::create(ProjectDatabase& db, Table table, Mode mode, UserPrompt& ui,
                                                 QWidget* parent)
{
    std::unique_ptr<TableDialog> dialog;
    if (table == Table::Stockpile && mode == Mode::Modify)
        dialog = std::make_unique<CModifyStockpiles>(db, ui, parent);
    else
        dialog = std::make_unique<TableDialog>(db, table, mode, ui, parent);
    if (!dialog->isLoaded())
        return nullptr;
    return dialog;
}

namespace {

std::function<void()> tableCommand(CKilnovaDoc& doc, Table table, TableDialog::Mode mode, UserPrompt& ui,
                                   QWidget* parent)
{
    return [&doc, table, mode, &ui, parent] {
        // The command table refuses these commands while no database is connected.
        if (ProjectDatabase* db = doc.database()) {
            if (std::unique_ptr<TableDialog> dialog = TableDialog::create(*db, table, mode, ui, parent))
                dialog->exec();
        }
    };
}

} // namespace

std::function<void()> TableDialog::viewCommand(CKilnovaDoc& doc, Table table, UserPrompt& ui, QWidget* parent)
{
    return tableCommand(doc, table, Mode::View, ui, parent);
}

std::function<void()> TableDialog::modifyCommand(CKilnovaDoc& doc, Table table, UserPrompt& ui,
                                                 QWidget* parent)
{
    return tableCommand(doc, table, Mode::Modify, ui, parent);
}

} // namespace kilnova
