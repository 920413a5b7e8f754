#include "ui/COptimizeStockpiles.h"

#include "common/UserPrompt.h"
#include "database/ActualRefresh.h"
#include "ui/ConstraintEditor.h"
#include "ui/NumberField.h"
#include "ui/OptimizationResultsWindow.h"

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
    : OptimizeDialog(ui, QStringLiteral("Optimize Stockpiles"), parent)
    , mOptimization(db, parameters)
    , mParameters(parameters)
    , mDb(db)
    , mShowResults(std::move(showResults))
    , mChooseSource(std::move(chooseSource))
    , mStockpiles(new QTreeWidget)
    , mAdditives(new QListWidget)
{
    setObjectName(QStringLiteral("COptimizeStockpiles"));
    mStockpiles->setObjectName(QStringLiteral("stockpiles"));
    mAdditives->setObjectName(QStringLiteral("additives"));

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

    auto* right = new QVBoxLayout;
    right->addLayout(objectiveLayout(QStringLiteral("Target:"), QStringLiteral("Requested Crude Tonnage:")));
    right->addWidget(mProduct);
    right->addWidget(mLeft);
    auto* columns = new QHBoxLayout;
    columns->addLayout(sources, 1);
    columns->addLayout(right, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(dialogButtons(false));

    connect(mStockpiles, &QTreeWidget::itemSelectionChanged, this, &COptimizeStockpiles::selectionChanged);
    connect(mAdditives, &QListWidget::itemSelectionChanged, this, &COptimizeStockpiles::selectionChanged);
    connect(viewSource, &QPushButton::clicked, this, &COptimizeStockpiles::viewSource);
    connect(refreshActual, &QPushButton::clicked, this, &COptimizeStockpiles::refreshActual);

    updateEnabling();
    refreshSources();
    resize(1000, 640);
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
        mStockpiles->clear();
        for (const RecordKey& key : keys) {
            auto* item = new QTreeWidgetItem(mStockpiles, {key.name, key.source});
            item->setSelected(std::find(chosenPiles.begin(), chosenPiles.end(), key) != chosenPiles.end());
        }
    }
    fillList(mAdditives, additives, chosenAdditives);
    mStockpiles->header()->resizeSections(QHeaderView::ResizeToContents);
    selectionChanged();
}

void COptimizeStockpiles::selectionChanged()
{
    std::vector<RecordKey> piles;
    for (const QTreeWidgetItem* item : mStockpiles->selectedItems())
        piles.push_back({item->text(0), item->text(1)});
    mOptimization.setSelectedStockpiles(std::move(piles));
    mOptimization.setSelectedAdditives(selectedTexts(mAdditives));
}

void COptimizeStockpiles::viewSource()
{
    if (mAdditives->hasFocus() && mAdditives->currentItem()) {
        const QString name = mAdditives->currentItem()->text();
        viewRecord([&] { return mOptimization.additive(name); });
    } else if (const QTreeWidgetItem* item = mStockpiles->currentItem()) {
        const RecordKey key{item->text(0), item->text(1)};
        viewRecord([&] { return mOptimization.stockpile(key); });
    }
}

void COptimizeStockpiles::optimize()
{
    const std::optional<StockpileOptimization::Result> result = run(mOptimization);
    if (!result)
        return;
    if (mShowResults)
        mShowResults(*result);
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
