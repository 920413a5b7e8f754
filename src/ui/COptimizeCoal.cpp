#include "ui/COptimizeCoal.h"

#include "ui/ConstraintEditor.h"
#include "ui/NumberField.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kilnova {

COptimizeCoal::COptimizeCoal(ProjectDatabase& db, const CCoalOptParameters& parameters, UserPrompt& ui,
                             ResultsHandler showResults, QWidget* parent)
    : OptimizeDialog(ui, QStringLiteral("Optimize Coal"), parent)
    , mOptimization(db, parameters)
    , mParameters(parameters)
    , mShowResults(std::move(showResults))
    , mSources(new QListWidget)
    , mConstraints(new ConstraintEditor(QStringLiteral("Constraints"), mOptimization, ui))
{
    mSources->setObjectName("sources");

    // The coals
    mSources->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* viewSource = new QPushButton(QStringLiteral("View Source"));
    auto* sources = new QVBoxLayout;
    sources->addWidget(new QLabel(QStringLiteral("Coal")));
    sources->addWidget(mSources);
    sources->addWidget(viewSource);

    auto* right = new QVBoxLayout;
    right->addLayout(objectiveLayout(QStringLiteral("Value:"), QStringLiteral("Requested Coal Tonnage:")));
    right->addWidget(mConstraints);
    auto* columns = new QHBoxLayout;
    columns->addLayout(sources);
    columns->addLayout(right, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(dialogButtons());

    connect(mSources, &QListWidget::itemSelectionChanged, this, &COptimizeCoal::selectionChanged);
    connect(viewSource, &QPushButton::clicked, this, [this] {
        if (const QListWidgetItem* item = mSources->currentItem())
            viewRecord([&] { return mOptimization.source(item->text()); });
    });

    refreshSources();
    updateEnabling();
}

void COptimizeCoal::updateEnabling()
{
    OptimizeDialog::updateEnabling();
    // Maximize Tonnage has no tonnage row; its objective is still the chosen property's quantity.
    mTonnage->setEnabled(mOptimization.mode() != 2);
}

void COptimizeCoal::refreshSources()
{
    QStringList names;
    if (!guarded([&] { names = mOptimization.sourceNames(); }))
        return;
    fillList(mSources, names, mOptimization.selection(), Qt::CaseInsensitive);
    selectionChanged();
}

void COptimizeCoal::selectionChanged()
{
    mOptimization.setSelection(selectedTexts(mSources));
}

void COptimizeCoal::optimize()
{
    const std::optional<CoalOptimization::Result> result = run(mOptimization);
    if (!result)
        return;
    if (mShowResults)
        mShowResults(*result);
    // Storing the mix may have reduced or deleted coals and added one: list what is there now.
    refreshSources();
}

void COptimizeCoal::accept()
{
    if (!readFields())
        return;
    mParameters = mOptimization.parametersForOk(mParameters);
    QDialog::accept();
}

} // namespace kilnova
