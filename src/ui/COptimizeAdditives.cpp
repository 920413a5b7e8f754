#include "ui/COptimizeAdditives.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "optimise/SOURCE.h"
#include "ui/ConstraintEditor.h"
#include "ui/NumberField.h"
#include "ui/OptimizationResultsWindow.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace kilnova {

namespace {

NumberField* numberField(const char* name)
{
    auto* f = new NumberField;
    f->setObjectName(QString::fromLatin1(name));
    return f;
}

QListWidget* sourceList(const char* name)
{
    auto* list = new QListWidget;
    list->setObjectName(QString::fromLatin1(name));
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    return list;
}

} // namespace

COptimizeAdditives::COptimizeAdditives(ProjectDatabase& db, const CClinkerOptParameters& parameters,
                                       const ClinkerProcessParameters& process, double freeLime,
                                       UserPrompt& ui, ResultsHandler showResults, QWidget* parent)
    : OptimizeDialog(ui, QStringLiteral("Optimize Clinker"), parent)
    , mOptimization(db, parameters, process, freeLime)
    , mParameters(parameters)
    , mShowResults(std::move(showResults))
    , mCrudeAndCoal(new QRadioButton(ClinkerOptimization::selectionChoices()[0]))
    , mStockpiles(new QRadioButton(ClinkerOptimization::selectionChoices()[1]))
    , mRawCaption(new QLabel)
    , mRaw(sourceList("raw"))
    , mAdditivesCaption(new QLabel(QStringLiteral("Additives")))
    , mAdditives(sourceList("additives"))
    , mCoal(sourceList("coal"))
    , mConstraints(new ConstraintEditor(QStringLiteral("Constraints on chemistry"), mOptimization, ui))
    , mTonnageMinimum(numberField("tonnageMinimum"))
    , mTonnageStockpile(new QComboBox)
    , mTonnageMaximum(numberField("tonnageMaximum"))
    , mTonnageConstraints(new QListWidget)
    , mTonnageBox(new QGroupBox(QStringLiteral("Constraints on stockpile tonnage")))
{
    mCrudeAndCoal->setObjectName("crudeAndCoal");
    mStockpiles->setObjectName("stockpileAdditivesAndCoal");
    mRawCaption->setObjectName("rawCaption");
    mTonnageStockpile->setObjectName("tonnageStockpile");
    mTonnageConstraints->setObjectName("tonnageConstraints");

    // Sources
    auto* kinds = new QButtonGroup(this);
    kinds->addButton(mCrudeAndCoal);
    kinds->addButton(mStockpiles);
    (mOptimization.stockpiles() ? mStockpiles : mCrudeAndCoal)->setChecked(true);
    auto* viewSource = new QPushButton(QStringLiteral("View Source"));
    auto* sourceBox = new QGroupBox(QStringLiteral("Selection of Sources:"));
    auto* sources = new QVBoxLayout(sourceBox);
    sources->addWidget(mCrudeAndCoal);
    sources->addWidget(mStockpiles);
    sources->addWidget(mRawCaption);
    sources->addWidget(mRaw);
    sources->addWidget(mAdditivesCaption);
    sources->addWidget(mAdditives);
    sources->addWidget(new QLabel(QStringLiteral("Coal")));
    sources->addWidget(mCoal);
    sources->addWidget(viewSource);

    // Stockpile tonnage constraints
    auto* limitEditor = new QGridLayout;
    limitEditor->addWidget(new QLabel(QStringLiteral("Min. tonnage")), 0, 0);
    limitEditor->addWidget(new QLabel(QStringLiteral("Stockpile")), 0, 1);
    limitEditor->addWidget(new QLabel(QStringLiteral("Max. Tonnage")), 0, 2);
    limitEditor->addWidget(mTonnageMinimum, 1, 0);
    limitEditor->addWidget(mTonnageStockpile, 1, 1);
    limitEditor->addWidget(mTonnageMaximum, 1, 2);
    auto* addLimit = new QPushButton(QStringLiteral("Add"));
    auto* modifyLimit = new QPushButton(QStringLiteral("Modify"));
    auto* removeLimit = new QPushButton(QStringLiteral("Remove"));
    addLimit->setObjectName("addTonnageConstraint");
    auto* limitButtons = new QHBoxLayout;
    for (QPushButton* b : {addLimit, modifyLimit, removeLimit})
        limitButtons->addWidget(b);
    auto* limitLayout = new QVBoxLayout(mTonnageBox);
    limitLayout->addLayout(limitEditor);
    limitLayout->addLayout(limitButtons);
    limitLayout->addWidget(mTonnageConstraints);

    auto* right = new QVBoxLayout;
    right->addLayout(objectiveLayout(QStringLiteral("Value:"), QStringLiteral("Requested Clinker Tonnage:")));
    right->addWidget(mConstraints);
    right->addWidget(mTonnageBox);
    auto* columns = new QHBoxLayout;
    columns->addWidget(sourceBox);
    columns->addLayout(right);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(dialogButtons());

    connect(mStockpiles, &QRadioButton::toggled, this, &COptimizeAdditives::selectionKindChanged);
    for (QListWidget* list : {mRaw, mAdditives, mCoal}) {
        connect(list, &QListWidget::itemSelectionChanged, this, &COptimizeAdditives::selectionChanged);
        // "View Source" shows the record last pointed at, in whichever list.
        connect(list, &QListWidget::currentItemChanged, this, [this, list] { mLastList = list; });
    }
    connect(mTonnageConstraints, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row < 0 || row >= mOptimization.tonnageConstraints().size())
            return;
        const CClinkerOptParameters::TonnageConstraint& t = mOptimization.tonnageConstraints()[row];
        mTonnageStockpile->setCurrentText(SOURCE::listText(t.stockpile, t.source));
        mTonnageMinimum->setValue(t.minimum);
        mTonnageMaximum->setValue(t.maximum);
    });
    connect(addLimit, &QPushButton::clicked, this, [this] { editTonnageConstraint(false); });
    connect(modifyLimit, &QPushButton::clicked, this, [this] { editTonnageConstraint(true); });
    connect(removeLimit, &QPushButton::clicked, this, [this] {
        mOptimization.removeTonnageConstraint(mTonnageConstraints->currentRow());
        showTonnageConstraints();
    });
    connect(viewSource, &QPushButton::clicked, this, [this] {
        if (const QListWidgetItem* item = mLastList ? mLastList->currentItem() : nullptr)
            viewRecord([&] { return mOptimization.source(item->text()); });
    });

    updateEnabling();
    showTonnageConstraints();
    refreshSources();
}

void COptimizeAdditives::refreshSources()
{
    QStringList raw, additives, coal;
    if (!guarded([&] {
            raw = mOptimization.rawList();
            additives = mOptimization.additiveList();
            coal = mOptimization.coalList();
            mStockpileKeys = mOptimization.stockpileKeys();
        }))
        return;
    mRawCaption->setText(mOptimization.rawCaption());
    fillList(mRaw, raw, mOptimization.rawSelection());
    fillList(mAdditives, additives, mOptimization.additiveSelection());
    fillList(mCoal, coal, mOptimization.coalSelection());
    const bool stockpiles = mOptimization.stockpiles();
    mAdditivesCaption->setVisible(stockpiles);
    mAdditives->setVisible(stockpiles);
    mTonnageBox->setEnabled(stockpiles);
    mTonnageStockpile->clear();
    for (const RecordKey& key : mStockpileKeys)
        mTonnageStockpile->addItem(SOURCE::listText(key.name, key.source));
}

void COptimizeAdditives::selectionKindChanged(bool stockpiles)
{
    mOptimization.setStockpiles(stockpiles);
    refreshSources();
}

void COptimizeAdditives::selectionChanged()
{
    mOptimization.setRawSelection(selectedTexts(mRaw));
    mOptimization.setAdditiveSelection(selectedTexts(mAdditives));
    mOptimization.setCoalSelection(selectedTexts(mCoal));
}

void COptimizeAdditives::showTonnageConstraints()
{
    const int row = mTonnageConstraints->currentRow();
    mTonnageConstraints->clear();
    mTonnageConstraints->addItems(mOptimization.tonnageConstraintTexts());
    mTonnageConstraints->setCurrentRow(std::min(row, mTonnageConstraints->count() - 1));
}

void COptimizeAdditives::editTonnageConstraint(bool modify)
{
    const int pile = mTonnageStockpile->currentIndex();
    if (pile < 0 || pile >= static_cast<int>(mStockpileKeys.size()))
        return;
    const std::optional<double> minimum = requireNumber(mTonnageMinimum, mUi);
    if (!minimum)
        return;
    const std::optional<double> maximum = requireNumber(mTonnageMaximum, mUi);
    if (!maximum)
        return;
    const RecordKey& key = mStockpileKeys[static_cast<std::size_t>(pile)];
    const std::optional<QString> refusal =
        modify ? mOptimization.modifyTonnageConstraint(mTonnageConstraints->currentRow(), key, *minimum,
                                                       *maximum)
               : mOptimization.addTonnageConstraint(key, *minimum, *maximum);
    if (refusal) {
        mUi.showMessage(*refusal, UserPrompt::Icon::Warning, {});
        return;
    }
    showTonnageConstraints();
}

void COptimizeAdditives::optimize()
{
    const std::optional<ClinkerOptimization::Result> result = run(mOptimization);
    if (!result)
        return;
    if (result->balance.degenerated)
        mUi.showMessage(message(Msg::DegeneratedSolution), UserPrompt::Icon::Warning, {});
    if (mShowResults)
        mShowResults(*result);
    // Storing may have reduced or deleted sources: list what is there now.
    refreshSources();
}

void COptimizeAdditives::accept()
{
    if (!readFields())
        return;
    mParameters = mOptimization.parametersForOk(mParameters);
    QDialog::accept();
}

} // namespace kilnova
