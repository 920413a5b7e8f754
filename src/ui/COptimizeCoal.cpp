#include "ui/COptimizeCoal.h"

#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "ui/ConstraintEditor.h"
#include "ui/NumberField.h"
#include "ui/OptimizationResultsWindow.h"
#include "ui/RecordView.h"

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
    : QDialog(parent)
    , mOptimization(db, parameters)
    , mParameters(parameters)
    , mUi(ui)
    , mShowResults(std::move(showResults))
    , mSources(new QListWidget)
    , mMode(new QComboBox)
    , mProperty(new QComboBox)
    , mTarget(new NumberField)
    , mTonnage(new NumberField)
    , mConstraints(new ConstraintEditor(QStringLiteral("Constraints"), mOptimization, ui))
{
    setWindowTitle(QStringLiteral("Optimize Coal"));
    mSources->setObjectName("sources");
    mMode->setObjectName("mode");
    mProperty->setObjectName("element");
    mTarget->setObjectName("target");
    mTonnage->setObjectName("requestedTonnage");

    // The coals
    mSources->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* viewSource = new QPushButton(QStringLiteral("View Source"));
    auto* sources = new QVBoxLayout;
    sources->addWidget(new QLabel(QStringLiteral("Coal")));
    sources->addWidget(mSources);
    sources->addWidget(viewSource);

    // Objective
    mMode->addItems(mOptimization.modeChoiceList());
    mMode->setCurrentIndex(mOptimization.modeChoice());
    mProperty->addItems(mOptimization.propertyNames().mid(0, mOptimization.optimisableCount()));
    mProperty->setCurrentIndex(mOptimization.element());
    mTarget->setValue(mOptimization.target());
    mTonnage->setValue(mOptimization.requestedTonnage());
    auto* objective = new QGridLayout;
    objective->addWidget(new QLabel(QStringLiteral("Optimize:")), 0, 0);
    objective->addWidget(mMode, 0, 1);
    objective->addWidget(mProperty, 0, 2);
    objective->addWidget(new QLabel(QStringLiteral("Value:")), 1, 0);
    objective->addWidget(mTarget, 1, 1);
    objective->addWidget(new QLabel(QStringLiteral("Requested Coal Tonnage:")), 2, 0);
    objective->addWidget(mTonnage, 2, 1);

    auto* right = new QVBoxLayout;
    right->addLayout(objective);
    right->addWidget(mConstraints);
    auto* columns = new QHBoxLayout;
    columns->addLayout(sources);
    columns->addLayout(right, 1);

    auto* optimizeButton = new QPushButton(QStringLiteral("Optimize"));
    optimizeButton->setObjectName("optimize");
    auto* ok = new QPushButton(QStringLiteral("OK"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* b : {optimizeButton, ok, cancel})
        buttons->addWidget(b);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(buttons);

    connect(mMode, &QComboBox::currentIndexChanged, this, [this](int index) {
        mOptimization.setModeChoice(index);
        updateEnabling();
    });
    connect(mProperty, &QComboBox::currentIndexChanged, this,
            [this](int index) { mOptimization.setElement(index); });
    connect(mSources, &QListWidget::itemSelectionChanged, this, &COptimizeCoal::selectionChanged);
    connect(viewSource, &QPushButton::clicked, this, &COptimizeCoal::viewSource);
    connect(optimizeButton, &QPushButton::clicked, this, &COptimizeCoal::optimize);
    connect(ok, &QPushButton::clicked, this, &COptimizeCoal::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    refreshSources();
    updateEnabling();
}

bool COptimizeCoal::guarded(const std::function<void()>& step)
{
    try {
        step();
        return true;
    } catch (const DatabaseError& e) {
        mUi.showMessage(e.message(), UserPrompt::Icon::Error, {});
        return false;
    }
}

void COptimizeCoal::updateEnabling()
{
    mTarget->setEnabled(mOptimization.targetEnabled());
    // Maximize Tonnage has no tonnage row; its objective is still the chosen property's quantity.
    mTonnage->setEnabled(mOptimization.mode() != 2);
}

bool COptimizeCoal::readFields()
{
    for (NumberField* f : {mTarget, mTonnage}) {
        if (!requireNumber(f, mUi))
            return false;
    }
    mOptimization.setTarget(*mTarget->value());
    mOptimization.setRequestedTonnage(*mTonnage->value());
    return true;
}

void COptimizeCoal::refreshSources()
{
    QStringList names;
    if (!guarded([&] { names = mOptimization.sourceNames(); }))
        return;
    const QStringList selected = mOptimization.selection();
    const QSignalBlocker blocker(mSources);
    mSources->clear();
    mSources->addItems(names);
    for (int i = 0; i < mSources->count(); ++i)
        mSources->item(i)->setSelected(selected.contains(mSources->item(i)->text(), Qt::CaseInsensitive));
    selectionChanged();
}

void COptimizeCoal::selectionChanged()
{
    QStringList names;
    for (int i = 0; i < mSources->count(); ++i) {
        if (mSources->item(i)->isSelected())
            names << mSources->item(i)->text();
    }
    mOptimization.setSelection(names);
}

void COptimizeCoal::viewSource()
{
    const QListWidgetItem* item = mSources->currentItem();
    if (!item)
        return;
    std::optional<Record> record;
    if (guarded([&] { record = mOptimization.source(item->text()); }) && record)
        RecordView(*record, this).exec();
}

void COptimizeCoal::optimize()
{
    if (!readFields())
        return;
    CoalOptimization::Result result;
    if (!guarded([&] { result = mOptimization.optimize(OptimizationSettings::debugFilePath()); }))
        return;
    if (!result.outcome.solved) {
        OptimizationResultsWindow::showFailure(mUi, result.outcome, CoalProperties::names());
        return;
    }
    if (mShowResults)
        mShowResults(result);
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
