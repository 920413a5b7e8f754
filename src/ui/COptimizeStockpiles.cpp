#include "ui/COptimizeStockpiles.h"

#include "common/UserPrompt.h"
#include "database/ActualRefresh.h"
#include "database/DatabaseError.h"
#include "ui/ConstraintEditor.h"
#include "ui/NumberField.h"
#include "ui/OptimizationResultsWindow.h"
#include "ui/RecordView.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kilnova {

COptimizeStockpiles::COptimizeStockpiles(ProjectDatabase& db, const CSTKOptParameters& parameters,
                                         UserPrompt& ui, ResultsHandler showResults,
                                         SourceChooser chooseSource, QWidget* parent)
    : QDialog(parent)
    , mOptimization(db, parameters)
    , mParameters(parameters)
    , mDb(db)
    , mUi(ui)
    , mShowResults(std::move(showResults))
    , mChooseSource(std::move(chooseSource))
    , mMode(new QComboBox)
    , mElement(new QComboBox)
    , mTarget(new NumberField)
    , mTonnage(new NumberField)
    , mStockpiles(new QTreeWidget)
    , mAdditives(new QListWidget)
{
    setWindowTitle(QStringLiteral("Optimize Stockpiles"));
    setObjectName(QStringLiteral("COptimizeStockpiles"));
    mMode->setObjectName(QStringLiteral("mode"));
    mElement->setObjectName(QStringLiteral("element"));
    mTarget->setObjectName(QStringLiteral("target"));
    mTonnage->setObjectName(QStringLiteral("requestedTonnage"));
    mStockpiles->setObjectName(QStringLiteral("stockpiles"));
    mAdditives->setObjectName(QStringLiteral("additives"));

    // Objective
    mMode->addItems(mOptimization.modeChoiceList());
    mMode->setCurrentIndex(mOptimization.modeChoice());
    for (int k = 0; k < mOptimization.optimisableCount(); ++k)
        mElement->addItem(elementName(k));
    mElement->setCurrentIndex(mOptimization.element());
    mTarget->setValue(mOptimization.target());
    mTonnage->setValue(mOptimization.requestedTonnage());
    auto* objective = new QGridLayout;
    objective->addWidget(new QLabel(QStringLiteral("Optimize:")), 0, 0);
    objective->addWidget(mMode, 0, 1);
    objective->addWidget(mElement, 0, 2);
    objective->addWidget(new QLabel(QStringLiteral("Target:")), 1, 0);
    objective->addWidget(mTarget, 1, 1);
    objective->addWidget(new QLabel(QStringLiteral("Requested Crude Tonnage:")), 2, 0);
    objective->addWidget(mTonnage, 2, 1);

    // The two constraint lists: one on the crude, one on what stays in the stockpiles.
    StockpileOptimization& o = mOptimization;
    mProduct = new ConstraintEditor(QStringLiteral("Constraints on crude"), o, ui);
    mProduct->setObjectName(QStringLiteral("productConstraints"));
    mLeft = new ConstraintEditor(
        QStringLiteral("Constraints on material left in stockpiles"),
        {[&o]() -> const ConstraintList& { return o.leftConstraintList(); },
         [&o](int e, double min, double max) { return o.addLeftConstraint(e, min, max); },
         [&o](int row, int e, double min, double max) { return o.modifyLeftConstraint(row, e, min, max); },
         [&o](int row) {
             o.removeLeftConstraint(row);
         }},
        ui);
    mLeft->setObjectName(QStringLiteral("leftConstraints"));

    // Sources
    mStockpiles->setColumnCount(2);
    mStockpiles->setHeaderLabels({QStringLiteral("Name"), QStringLiteral("Source")});
    mStockpiles->setRootIsDecorated(false);
    mStockpiles->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mAdditives->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* viewSource = new QPushButton(QStringLiteral("View Source"));
    auto* refreshActual = new QPushButton(QStringLiteral("Refresh Actual"));
    viewSource->setObjectName(QStringLiteral("viewSource"));
    refreshActual->setObjectName(QStringLiteral("refreshActual"));
    refreshActual->setToolTip(
        QStringLiteral("Replace the four Actual stockpiles by those of the plant's database"));
    auto* sourceButtons = new QHBoxLayout;
    sourceButtons->addWidget(viewSource);
    sourceButtons->addWidget(refreshActual);
    auto* sources = new QVBoxLayout;
    sources->addWidget(new QLabel(QStringLiteral("Stockpiles")));
    sources->addWidget(mStockpiles, 3);
    sources->addWidget(new QLabel(QStringLiteral("Additives")));
    sources->addWidget(mAdditives, 1);
    sources->addLayout(sourceButtons);

    auto* optimizeButton = new QPushButton(QStringLiteral("Optimize"));
    auto* ok = new QPushButton(QStringLiteral("OK"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    optimizeButton->setObjectName(QStringLiteral("optimize"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* b : {optimizeButton, ok, cancel}) {
        b->setAutoDefault(false);
        buttons->addWidget(b);
    }

    auto* right = new QVBoxLayout;
    right->addLayout(objective);
    right->addWidget(mProduct);
    right->addWidget(mLeft);
    auto* columns = new QHBoxLayout;
    columns->addLayout(sources, 1);
    columns->addLayout(right, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(buttons);

    connect(mMode, &QComboBox::currentIndexChanged, this, [this](int index) {
        mOptimization.setModeChoice(index);
        mTarget->setEnabled(mOptimization.targetEnabled());
    });
    connect(mElement, &QComboBox::currentIndexChanged, this,
            [this](int index) { mOptimization.setElement(index); });
    connect(mStockpiles, &QTreeWidget::itemSelectionChanged, this, &COptimizeStockpiles::selectionChanged);
    connect(mAdditives, &QListWidget::itemSelectionChanged, this, &COptimizeStockpiles::selectionChanged);
    connect(viewSource, &QPushButton::clicked, this, &COptimizeStockpiles::viewSource);
    connect(refreshActual, &QPushButton::clicked, this, &COptimizeStockpiles::refreshActual);
    connect(optimizeButton, &QPushButton::clicked, this, &COptimizeStockpiles::optimize);
    connect(ok, &QPushButton::clicked, this, &COptimizeStockpiles::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    mTarget->setEnabled(mOptimization.targetEnabled());
    refreshSources();
    resize(1000, 640);
}

bool COptimizeStockpiles::guarded(const std::function<void()>& step)
{
    try {
        step();
        return true;
    } catch (const DatabaseError& e) {
        mUi.showMessage(e.message(), UserPrompt::Icon::Error, {});
        return false;
    }
}

bool COptimizeStockpiles::readFields()
{
    for (NumberField* f : {mTarget, mTonnage}) {
        if (!requireNumber(f, mUi))
            return false;
    }
    mOptimization.setTarget(*mTarget->value());
    mOptimization.setRequestedTonnage(*mTonnage->value());
    return true;
}

void COptimizeStockpiles::refreshSources()
{
    std::vector<RecordKey> keys;
    QStringList additives;
    if (!guarded([&] {
            keys = mOptimization.stockpileKeys();
            additives = mOptimization.additiveNames();
        }))
        return;
    const std::vector<RecordKey> chosenPiles = mOptimization.selectedStockpiles();
    const QStringList chosenAdditives = mOptimization.selectedAdditives();
    {
        const QSignalBlocker pilesBlocked(mStockpiles);
        const QSignalBlocker additivesBlocked(mAdditives);
        mStockpiles->clear();
        for (const RecordKey& key : keys) {
            auto* item = new QTreeWidgetItem(mStockpiles, {key.name, key.source});
            item->setSelected(std::find(chosenPiles.begin(), chosenPiles.end(), key) != chosenPiles.end());
        }
        mAdditives->clear();
        mAdditives->addItems(additives);
        for (int i = 0; i < mAdditives->count(); ++i)
            mAdditives->item(i)->setSelected(chosenAdditives.contains(mAdditives->item(i)->text()));
    }
    mStockpiles->header()->resizeSections(QHeaderView::ResizeToContents);
    selectionChanged();
}

void COptimizeStockpiles::selectionChanged()
{
    std::vector<RecordKey> piles;
    for (const QTreeWidgetItem* item : mStockpiles->selectedItems())
        piles.push_back({item->text(0), item->text(1)});
    QStringList additives;
    for (const QListWidgetItem* item : mAdditives->selectedItems())
        additives << item->text();
    mOptimization.setSelectedStockpiles(std::move(piles));
    mOptimization.setSelectedAdditives(additives);
}

void COptimizeStockpiles::viewSource()
{
    std::optional<Record> record;
    if (mAdditives->hasFocus() && mAdditives->currentItem()) {
        const QString name = mAdditives->currentItem()->text();
        guarded([&] { record = mOptimization.additive(name); });
    } else if (const QTreeWidgetItem* item = mStockpiles->currentItem()) {
        const RecordKey key{item->text(0), item->text(1)};
        guarded([&] { record = mOptimization.stockpile(key); });
    }
    if (record)
        RecordView(*record, this).exec();
}

void COptimizeStockpiles::optimize()
{
    if (!readFields())
        return;
    StockpileOptimization::Result result;
    if (!guarded([&] { result = mOptimization.optimize(OptimizationSettings::debugFilePath()); }))
        return;
    if (!result.outcome.solved) {
        OptimizationResultsWindow::showFailure(mUi, result.outcome, elementNames());
        return;
    }
    if (mShowResults)
        mShowResults(result);
    // Storing the crude may have reduced or deleted stockpiles: list what is there now.
    refreshSources();
}

void COptimizeStockpiles::refreshActual()
{
    const std::optional<QString> connection = mChooseSource ? mChooseSource() : std::nullopt;
    if (!connection)
        return;
    if (ActualRefresh::run(mDb, mUi, *connection))
        refreshSources();
}

void COptimizeStockpiles::accept()
{
    if (!readFields())
        return;
    mParameters = mOptimization.parameters(mParameters);
    QDialog::accept();
}

} // namespace kilnova
