#include "ui/COptimizeAdditives.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "optimise/SOURCE.h"
#include "ui/ConstraintEditor.h"
#include "ui/NumberField.h"
#include "ui/OptimizationResultsWindow.h"
#include "ui/RecordView.h"

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

QStringList selected(const QListWidget* list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) {
        if (list->item(i)->isSelected())
            texts << list->item(i)->text();
    }
    return texts;
}

void fill(QListWidget* list, const QStringList& texts, const QStringList& chosen)
{
    const QSignalBlocker blocker(list);
    list->clear();
    list->addItems(texts);
    for (int i = 0; i < list->count(); ++i)
        list->item(i)->setSelected(chosen.contains(list->item(i)->text()));
}

} // namespace

COptimizeAdditives::COptimizeAdditives(ProjectDatabase& db, const CClinkerOptParameters& parameters,
                                       const ClinkerProcessParameters& process, double freeLime,
                                       UserPrompt& ui, ResultsHandler showResults, QWidget* parent)
    : QDialog(parent)
    , mOptimization(db, parameters, process, freeLime)
    , mParameters(parameters)
    , mUi(ui)
    , mShowResults(std::move(showResults))
    , mCrudeAndCoal(new QRadioButton(ClinkerOptimization::selectionChoices()[0]))
    , mStockpiles(new QRadioButton(ClinkerOptimization::selectionChoices()[1]))
    , mRawCaption(new QLabel)
    , mRaw(sourceList("raw"))
    , mAdditivesCaption(new QLabel(QStringLiteral("Additives")))
    , mAdditives(sourceList("additives"))
    , mCoal(sourceList("coal"))
    , mMode(new QComboBox)
    , mElement(new QComboBox)
    , mTarget(numberField("target"))
    , mTonnage(numberField("requestedTonnage"))
    , mConstraints(new ConstraintEditor(QStringLiteral("Constraints on chemistry"), mOptimization, ui))
    , mTonnageMinimum(numberField("tonnageMinimum"))
    , mTonnageStockpile(new QComboBox)
    , mTonnageMaximum(numberField("tonnageMaximum"))
    , mTonnageConstraints(new QListWidget)
    , mTonnageBox(new QGroupBox(QStringLiteral("Constraints on stockpile tonnage")))
{
    setWindowTitle(QStringLiteral("Optimize Clinker"));
    mCrudeAndCoal->setObjectName("crudeAndCoal");
    mStockpiles->setObjectName("stockpileAdditivesAndCoal");
    mRawCaption->setObjectName("rawCaption");
    mMode->setObjectName("mode");
    mElement->setObjectName("element");
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

    // Objective
    mMode->addItems(ClinkerOptimization::modeChoices());
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
    objective->addWidget(new QLabel(QStringLiteral("Value:")), 1, 0);
    objective->addWidget(mTarget, 1, 1);
    objective->addWidget(new QLabel(QStringLiteral("Requested Clinker Tonnage:")), 2, 0);
    objective->addWidget(mTonnage, 2, 1);

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

    auto* optimizeButton = new QPushButton(QStringLiteral("Optimize"));
    optimizeButton->setObjectName("optimize");
    auto* ok = new QPushButton(QStringLiteral("OK"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* b : {optimizeButton, ok, cancel})
        buttons->addWidget(b);

    auto* right = new QVBoxLayout;
    right->addLayout(objective);
    right->addWidget(mConstraints);
    right->addWidget(mTonnageBox);
    auto* columns = new QHBoxLayout;
    columns->addWidget(sourceBox);
    columns->addLayout(right);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(buttons);

    connect(mStockpiles, &QRadioButton::toggled, this, &COptimizeAdditives::selectionKindChanged);
    connect(mMode, &QComboBox::currentIndexChanged, this, [this](int index) {
        mOptimization.setModeChoice(index);
        mTarget->setEnabled(mOptimization.targetEnabled());
    });
    connect(mElement, &QComboBox::currentIndexChanged, this,
            [this](int index) { mOptimization.setElement(index); });
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
    connect(viewSource, &QPushButton::clicked, this, &COptimizeAdditives::viewSource);
    connect(optimizeButton, &QPushButton::clicked, this, &COptimizeAdditives::optimize);
    connect(ok, &QPushButton::clicked, this, &COptimizeAdditives::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    mTarget->setEnabled(mOptimization.targetEnabled());
    showTonnageConstraints();
    refreshSources();
}

bool COptimizeAdditives::guarded(const std::function<void()>& step)
{
    try {
        step();
        return true;
    } catch (const DatabaseError& e) {
        mUi.showMessage(e.message(), UserPrompt::Icon::Error, {});
        return false;
    }
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
    fill(mRaw, raw, mOptimization.rawSelection());
    fill(mAdditives, additives, mOptimization.additiveSelection());
    fill(mCoal, coal, mOptimization.coalSelection());
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
    mOptimization.setRawSelection(selected(mRaw));
    mOptimization.setAdditiveSelection(selected(mAdditives));
    mOptimization.setCoalSelection(selected(mCoal));
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

bool COptimizeAdditives::readFields()
{
    for (NumberField* f : {mTarget, mTonnage}) {
        if (!requireNumber(f, mUi))
            return false;
    }
    mOptimization.setTarget(*mTarget->value());
    mOptimization.setRequestedTonnage(*mTonnage->value());
    return true;
}

void COptimizeAdditives::viewSource()
{
    const QListWidgetItem* item = mLastList ? mLastList->currentItem() : nullptr;
    if (!item)
        return;
    std::optional<Record> record;
    if (guarded([&] { record = mOptimization.source(item->text()); }) && record)
        RecordView(*record, this).exec();
}

void COptimizeAdditives::optimize()
{
    if (!readFields())
        return;
    ClinkerOptimization::Result result;
    if (!guarded([&] { result = mOptimization.optimize(OptimizationSettings::debugFilePath()); }))
        return;
    if (!result.outcome.solved) {
        OptimizationResultsWindow::showFailure(mUi, result.outcome, elementNames());
        return;
    }
    if (result.balance.degenerated)
        mUi.showMessage(message(Msg::DegeneratedSolution), UserPrompt::Icon::Warning, {});
    if (mShowResults)
        mShowResults(result);
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
