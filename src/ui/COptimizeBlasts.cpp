#include "ui/COptimizeBlasts.h"

#include "common/UserPrompt.h"
#include "optimise/ConstraintEntry.h"
#include "optimise/QuarryMapData.h"
#include "ui/ConstraintEditor.h"
#include "ui/NumberField.h"
#include "ui/OptimizationResultsWindow.h"
#include "ui/QuarryMapLink.h"
#include "ui/QuarryMapPane.h"
#include "ui/QuarryMapView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace kilnova {

namespace {
NumberField* numberField(const char* name)
{
    auto* f = new NumberField;
    f->setObjectName(QString::fromLatin1(name));
    return f;
}
} // namespace

COptimizeBlasts::COptimizeBlasts(ProjectDatabase& db, const COptimizationParameters& parameters,
                                 UserPrompt& ui, ResultsHandler showResults, QWidget* parent)
    : OptimizeDialog(ui, QStringLiteral("Optimize Blasts"), parent)
    , mDb(db)
    , mOptimization(db, parameters)
    , mParameters(parameters)
    , mShowResults(std::move(showResults))
    , mConstraints(new ConstraintEditor(QStringLiteral("Constraints"), mOptimization, ui))
    , mSourceCaption(new QLabel)
    , mSources(new QListWidget)
    , mFilter(new QCheckBox(QStringLiteral("Filter by coordinate")))
    , mRunningTotal(new QLineEdit)
    , mMap(new QuarryMapPane(ui))
{
    mSources->setObjectName("sources");
    mSourceCaption->setObjectName("sourceCaption");
    mFilter->setObjectName("filter");
    mRunningTotal->setObjectName("runningTotal");

    // Sources
    mSources->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mFilter->setChecked(mOptimization.coordinateFilter());
    auto* refresh = new QPushButton(QStringLiteral("Refresh"));
    auto* extent = new QPushButton(QStringLiteral("Extent"));
    extent->setToolTip(QStringLiteral("Set the bounds to the coordinates of all blasts"));
    auto* coordinates = new QGridLayout;
    coordinates->addWidget(new QLabel(QStringLiteral("Minimum")), 0, 1);
    coordinates->addWidget(new QLabel(QStringLiteral("Maximum")), 0, 2);
    const char* names[] = {"eastMinimum",  "eastMaximum",      "northMinimum",
                           "northMaximum", "elevationMinimum", "elevationMaximum"};
    const QStringList labels = {"East", "North", "Elev."};
    for (int i = 0; i < 6; ++i) {
        mBounds[static_cast<std::size_t>(i)] = numberField(names[i]);
        mBounds[static_cast<std::size_t>(i)]->setValue(mOptimization.bounds()[static_cast<std::size_t>(i)]);
        coordinates->addWidget(mBounds[static_cast<std::size_t>(i)], 1 + i / 2, 1 + i % 2);
    }
    for (int r = 0; r < 3; ++r)
        coordinates->addWidget(new QLabel(labels[r]), 1 + r, 0);
    auto* filterRow = new QHBoxLayout;
    filterRow->addWidget(mFilter);
    filterRow->addWidget(refresh);
    filterRow->addWidget(extent);
    auto* viewSource = new QPushButton(QStringLiteral("View Source"));
    auto* sourceBox = new QGroupBox(QStringLiteral("Sources"));
    auto* sourceLayout = new QVBoxLayout(sourceBox);
    sourceLayout->addWidget(mSourceCaption);
    sourceLayout->addWidget(mSources);
    sourceLayout->addLayout(filterRow);
    sourceLayout->addLayout(coordinates);
    sourceLayout->addWidget(viewSource);

    mRunningTotal->setReadOnly(true);
    auto* right = new QVBoxLayout;
    right->addLayout(objectiveLayout(QStringLiteral("Target:"), QStringLiteral("Requested tonnage:")));
    right->addWidget(mConstraints);
    auto* rightPane = new QWidget;
    rightPane->setLayout(right);
    right->setContentsMargins(0, 0, 0, 0);
    auto* columns = new QSplitter(Qt::Horizontal);
    columns->addWidget(sourceBox);
    columns->addWidget(mMap);
    columns->addWidget(rightPane);
    columns->setStretchFactor(1, 1);
    columns->setChildrenCollapsible(false);
    columns->setSizes({300, 640, 360});
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(columns, 1);
    layout->addWidget(new QLabel(QStringLiteral("Selected Blasts Running Total")));
    layout->addWidget(mRunningTotal);
    layout->addLayout(dialogButtons());

    connect(refresh, &QPushButton::clicked, this, [this] {
        reloadMap();
        refreshSources();
    });
    connect(extent, &QPushButton::clicked, this, [this] {
        guarded([this] { mOptimization.computeExtent(); });
        for (int i = 0; i < 6; ++i)
            mBounds[static_cast<std::size_t>(i)]->setValue(
                mOptimization.bounds()[static_cast<std::size_t>(i)]);
        mMapLink->showFilter();
    });
    connect(mSources, &QListWidget::itemSelectionChanged, this, &COptimizeBlasts::selectionChanged);
    connect(viewSource, &QPushButton::clicked, this, [this] {
        if (const QListWidgetItem* item = mSources->currentItem())
            viewRecord([&] { return mOptimization.source(item->text()); });
    });

    mMapLink = new QuarryMapLink(
        mMap->view(), {mSources, Qt::DisplayRole, mFilter, mBounds}, [this] { selectionChanged(); },
        [this] { refreshSources(); }, this);

    reloadMap();
    refreshSources();
    updateEnabling();
    resize(1320, 640);
}

void COptimizeBlasts::reloadMap()
{
    QuarryMapData data;
    if (!guarded([&] { data = QuarryMapData::load(mDb, Table::Blast); }))
        return;
    if (mLastRun)
        data.setTaken(mLastRun->request, mLastRun->outcome);
    mMap->view()->setData(std::move(data));
    mMapLink->showList();
}

void COptimizeBlasts::updateEnabling()
{
    OptimizeDialog::updateEnabling();
    mElement->setEnabled(mOptimization.elementAndTonnageEnabled());
    mTonnage->setEnabled(mOptimization.elementAndTonnageEnabled());
}

bool COptimizeBlasts::readFields()
{
    if (!OptimizeDialog::readFields())
        return false;
    std::array<double, 6> bounds{};
    for (std::size_t i = 0; i < 6; ++i) {
        const std::optional<double> v = requireNumber(mBounds[i], mUi);
        if (!v)
            return false;
        bounds[i] = *v;
    }
    mOptimization.setBounds(bounds);
    mOptimization.setCoordinateFilter(mFilter->isChecked());
    return true;
}

void COptimizeBlasts::refreshSources()
{
    if (!readFields())
        return;
    QStringList names;
    if (!guarded([&] { names = mOptimization.sourceNames(); }))
        return;
    const QStringList selected = mOptimization.selection();
    fillList(mSources, names, selected, Qt::CaseInsensitive);
    if (const QList<QListWidgetItem*> shown = mSources->selectedItems(); !shown.isEmpty())
        mSources->scrollToItem(shown.first());
    mSourceCaption->setText(mOptimization.sourceCaption());
    selectionChanged();
    if (mMapLink)
        mMapLink->showList();
}

void COptimizeBlasts::selectionChanged()
{
    mOptimization.setSelection(selectedTexts(mSources));
    if (mMapLink)
        mMapLink->showSelection();
    QString total;
    guarded([&] { total = mOptimization.runningTotal(); });
    mRunningTotal->setText(total);
}

void COptimizeBlasts::optimize()
{
    const std::optional<BlastOptimization::Result> result = run(mOptimization);
    if (!result)
        return;
    mLastRun = result;
    mMap->view()->editData().setTaken(result->request, result->outcome);
    if (mShowResults)
        mShowResults(*result);
    // Storing the blend may have reduced or deleted blasts: list and map what is there now.
    reloadMap();
    refreshSources();
}

void COptimizeBlasts::accept()
{
    if (!readFields())
        return;
    if (!guarded([this] { mParameters = mOptimization.accept(mParameters); }))
        return;
    QDialog::accept();
}

} // namespace kilnova
