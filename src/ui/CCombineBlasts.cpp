#include "ui/CCombineBlasts.h"

#include "common/ReportText.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "optimise/QuarryMapData.h"
#include "project/CKilnovaDoc.h"
#include "ui/CCombineResults.h"
#include "ui/NumberField.h"
#include "ui/QuarryMapLink.h"
#include "ui/QuarryMapPane.h"
#include "ui/QuarryMapView.h"
#include "ui/ReportWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace kilnova {

namespace {

enum TargetAction { kSet, kModify, kRemove };

QStringList propertyNames()
{
    QStringList names;
    for (int p = 0; p < kElementCount; ++p)
        names << QString::fromLatin1(elementDisplayName(p).data());
    return names;
}

QComboBox* propertyList(const char* objectName)
{
    auto* box = new QComboBox;
    box->setObjectName(QString::fromLatin1(objectName));
    box->addItems(propertyNames());
    return box;
}

NumberField* numberField(const char* objectName)
{
    auto* field = new NumberField;
    field->setObjectName(QString::fromLatin1(objectName));
    return field;
}

QPushButton* button(const QString& text, CCombineBlasts* receiver, void (CCombineBlasts::*slot)())
{
    auto* b = new QPushButton(text);
    QObject::connect(b, &QPushButton::clicked, receiver, slot);
    return b;
}

/// Shows a stored property name; a name that is not in the list shows no choice.
void choose(QComboBox* box, const QString& name)
{
    box->setCurrentIndex(box->findText(name));
}

} // namespace

CCombineBlasts::CCombineBlasts(ProjectDatabase& db, const CCombinationParameters& parameters, UserPrompt& ui,
                               QWidget* parent)
    : QDialog(parent)
    , mDb(db)
    , mPrompt(ui, [this] { mProgress.reset(); })
    , mCombiner(db, parameters, mPrompt)
    , mUi(ui)
    , mDatabaseName(QFileInfo(db.path()).fileName())
    , mMap(new QuarryMapPane(ui))
{
    setWindowTitle(QStringLiteral("Combine Blasts"));
    auto* left = new QVBoxLayout;
    left->addWidget(buildSources());
    left->addWidget(buildTargets());
    auto* right = new QVBoxLayout;
    right->addWidget(buildRestrictions());
    right->addWidget(buildClassification());
    right->addStretch();

    auto* buttons = new QHBoxLayout;
    auto* ok = button(QStringLiteral("OK"), this, &CCombineBlasts::accept);
    ok->setDefault(true);
    buttons->addWidget(button(QStringLiteral("Combine"), this, &CCombineBlasts::combine));
    buttons->addWidget(button(QStringLiteral("Update Blast Table"), this, &CCombineBlasts::updateBlastTable));
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(button(QStringLiteral("Cancel"), this, &CCombineBlasts::reject));
    right->addLayout(buttons);

    auto* columns = new QSplitter(Qt::Horizontal);
    for (QLayout* column : {static_cast<QLayout*>(left), static_cast<QLayout*>(right)}) {
        auto* pane = new QWidget;
        column->setContentsMargins(0, 0, 0, 0);
        pane->setLayout(column);
        columns->addWidget(pane);
        if (column == left)
            columns->addWidget(mMap);
    }
    columns->setStretchFactor(1, 1);
    columns->setChildrenCollapsible(false);
    columns->setSizes({380, 560, 440});
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(columns);
    mMapLink = new QuarryMapLink(
        mMap->view(),
        {mSources,
         Qt::UserRole,
         mFilter,
         {mEastMinimum, mEastMaximum, mNorthMinimum, mNorthMaximum, mElevationMinimum, mElevationMaximum}},
        [this] { takeSelection(); }, [this] { refreshSources(); }, this);

    showParameters();
    mReady = mCombiner.open();
    showSources();
    if (mReady)
        reloadMap();
    resize(1400, 700);
}

void CCombineBlasts::reloadMap()
{
    try {
        QuarryMapData data = QuarryMapData::load(mDb, Table::TempBlast);
        data.setTaken(mChosenNames, mChosenTonnes);
        mMap->view()->setData(std::move(data));
    } catch (const DatabaseError& e) {
        mUi.showMessage(e.message(), UserPrompt::Icon::Error, {});
        return;
    }
    mMapLink->showList();
}

CCombineBlasts::~CCombineBlasts() = default;

void CCombineBlasts::run(CKilnovaDoc& doc, UserPrompt& ui, QWidget* parent)
{
    CCombineBlasts dialog(*doc.database(), doc.settings().combination, ui, parent);
    dialog.setProjectName(doc.displayName());
    if (!dialog.ready())
        return;
    if (dialog.exec() == QDialog::Accepted) {
        doc.settings().combination = dialog.parameters();
        doc.setModified();
    }
}

QWidget* CCombineBlasts::buildSources()
{
    auto* box = new QGroupBox(QStringLiteral("Sources"));
    mSources = new QListWidget;
    mSources->setObjectName(QStringLiteral("sources"));
    mSources->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mSources->setMinimumHeight(180);
    connect(mSources, &QListWidget::itemSelectionChanged, this, &CCombineBlasts::takeSelection);
    mFilter = new QCheckBox(QStringLiteral("Filter by coordinate"));
    mFilter->setObjectName(QStringLiteral("coordinateFilter"));
    mEastMinimum = numberField("eastMinimum");
    mEastMaximum = numberField("eastMaximum");
    mNorthMinimum = numberField("northMinimum");
    mNorthMaximum = numberField("northMaximum");
    mElevationMinimum = numberField("elevationMinimum");
    mElevationMaximum = numberField("elevationMaximum");

    auto* grid = new QGridLayout;
    grid->addWidget(mFilter, 0, 0);
    grid->addWidget(button(QStringLiteral("Refresh"), this, &CCombineBlasts::refreshSources), 0, 2);
    grid->addWidget(new QLabel(QStringLiteral("Minimum")), 1, 1);
    grid->addWidget(new QLabel(QStringLiteral("Maximum")), 1, 2);
    const std::pair<const char*, std::pair<NumberField*, NumberField*>> rows[] = {
        {"East", {mEastMinimum, mEastMaximum}},
        {"North", {mNorthMinimum, mNorthMaximum}},
        {"Elevation", {mElevationMinimum, mElevationMaximum}},
    };
    int row = 2;
    for (const auto& [label, fields] : rows) {
        grid->addWidget(new QLabel(QString::fromLatin1(label)), row, 0);
        grid->addWidget(fields.first, row, 1);
        grid->addWidget(fields.second, row, 2);
        ++row;
    }
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(mSources);
    layout->addLayout(grid);
    layout->addWidget(button(QStringLiteral("View Source"), this, &CCombineBlasts::viewSource));
    return box;
}

QWidget* CCombineBlasts::buildTargets()
{
    auto* box = new QGroupBox(QStringLiteral("Targets"));
    mTonnage = numberField("tonnage");
    mChemistry = new QListWidget;
    mChemistry->setObjectName(QStringLiteral("chemistry"));
    mChemistry->addItems(propertyNames());
    mChemistry->setCurrentRow(0);
    mChemistry->setMinimumWidth(110);
    mTargetValue = numberField("targetValue");
    mTargets = new QListWidget;
    mTargets->setObjectName(QStringLiteral("targets"));
    // Choosing a set target puts its property and value back into the editing controls.
    connect(mTargets, &QListWidget::currentRowChanged, this, [this](int row) {
        const std::vector<int> set = mCombiner.targetProperties();
        if (row < 0 || row >= static_cast<int>(set.size()))
            return;
        const int property = set[static_cast<std::size_t>(row)];
        mChemistry->setCurrentRow(property);
        mTargetValue->setValue(mCombiner.parameters().targets[static_cast<std::size_t>(property)].value);
    });

    auto* tonnage = new QHBoxLayout;
    tonnage->addWidget(new QLabel(QStringLiteral("Tonnage:")));
    tonnage->addWidget(mTonnage);
    auto* value = new QHBoxLayout;
    value->addWidget(new QLabel(QStringLiteral("=")));
    value->addWidget(mTargetValue);
    auto* actions = new QHBoxLayout;
    for (const auto& [text, action] :
         {std::pair{"Set", kSet}, std::pair{"Modify", kModify}, std::pair{"Remove", kRemove}}) {
        auto* b = new QPushButton(QString::fromLatin1(text));
        connect(b, &QPushButton::clicked, this, [this, action = action] { changeTarget(action); });
        actions->addWidget(b);
    }
    auto* grid = new QGridLayout(box);
    grid->addLayout(tonnage, 0, 0, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Chemistry")), 1, 0);
    grid->addWidget(mChemistry, 2, 0, 3, 1);
    grid->addLayout(value, 2, 1);
    grid->addLayout(actions, 3, 1);
    grid->addWidget(mTargets, 4, 1);
    return box;
}

QWidget* CCombineBlasts::buildRestrictions()
{
    auto* box = new QGroupBox(QStringLiteral("Restrictions"));
    auto* grid = new QGridLayout(box);
    mQuantityOn = new QCheckBox(QStringLiteral("Blast quantity   >="));
    mQuantityOn->setObjectName(QStringLiteral("quantityRestriction"));
    mQuantityMinimum = numberField("quantityMinimum");
    mCostOn = new QCheckBox(QStringLiteral("Blast Cost Proportion >="));
    mCostOn->setObjectName(QStringLiteral("costRestriction"));
    mCostMinimum = numberField("costMinimum");
    grid->addWidget(mQuantityOn, 0, 0);
    grid->addWidget(mQuantityMinimum, 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("%")), 0, 2);
    grid->addWidget(mCostOn, 1, 0);
    grid->addWidget(mCostMinimum, 1, 1);
    grid->addWidget(new QLabel(QStringLiteral("%")), 1, 2);

    mCombinedOn = new QCheckBox(QStringLiteral("Combined grade "));
    mCombinedOn->setObjectName(QStringLiteral("combinedRestriction"));
    mCombinedLower = numberField("combinedLower");
    mCombinedProperty = propertyList("combinedProperty");
    mCombinedUpper = numberField("combinedUpper");
    mInventoryOn = new QCheckBox(QStringLiteral("Inventory grade"));
    mInventoryOn->setObjectName(QStringLiteral("inventoryRestriction"));
    mInventoryLower = numberField("inventoryLower");
    mInventoryProperty = propertyList("inventoryProperty");
    mInventoryUpper = numberField("inventoryUpper");
    int row = 2;
    for (const auto& [check, lower, property, upper] :
         {std::tuple{mCombinedOn, mCombinedLower, mCombinedProperty, mCombinedUpper},
          std::tuple{mInventoryOn, mInventoryLower, mInventoryProperty, mInventoryUpper}}) {
        auto* line = new QHBoxLayout;
        line->addWidget(lower);
        line->addWidget(new QLabel(QStringLiteral("<=")));
        line->addWidget(property);
        line->addWidget(new QLabel(QStringLiteral("<")));
        line->addWidget(upper);
        grid->addWidget(check, row, 0);
        grid->addLayout(line, row, 1, 1, 2);
        ++row;
    }
    return box;
}

QWidget* CCombineBlasts::buildClassification()
{
    auto* box = new QGroupBox(QStringLiteral("Classify solutions by"));
    mByCombined = new QRadioButton(QStringLiteral("Combined blasts grade closest to"));
    mByCombined->setObjectName(QStringLiteral("byCombinedGrade"));
    mCombinedGradeProperty = propertyList("combinedGradeProperty");
    mCombinedGradeTarget = numberField("combinedGradeTarget");
    mByInventory = new QRadioButton(QStringLiteral("Inventory grade closest to"));
    mByInventory->setObjectName(QStringLiteral("byInventoryGrade"));
    mInventoryGradeProperty = propertyList("inventoryGradeProperty");
    mInventoryGradeTarget = numberField("inventoryGradeTarget");
    mByDeviation = new QRadioButton(QStringLiteral("Smallest Combined Std. Deviation of grade"));
    mByDeviation->setObjectName(QStringLiteral("byStdDeviation"));
    mDeviationProperty = propertyList("stdDeviationProperty");

    auto* grid = new QGridLayout(box);
    grid->addWidget(mByCombined, 0, 0);
    grid->addWidget(mCombinedGradeProperty, 0, 1);
    grid->addWidget(mCombinedGradeTarget, 0, 2);
    grid->addWidget(mByInventory, 1, 0);
    grid->addWidget(mInventoryGradeProperty, 1, 1);
    grid->addWidget(mInventoryGradeTarget, 1, 2);
    grid->addWidget(mByDeviation, 2, 0);
    grid->addWidget(mDeviationProperty, 2, 1);
    return box;
}

void CCombineBlasts::showParameters()
{
    const CCombinationParameters& p = mCombiner.parameters();
    mFilter->setChecked(p.coordinateFilter != 0);
    mEastMinimum->setValue(p.eastMinimum);
    mEastMaximum->setValue(p.eastMaximum);
    mNorthMinimum->setValue(p.northMinimum);
    mNorthMaximum->setValue(p.northMaximum);
    mElevationMinimum->setValue(p.elevationMinimum);
    mElevationMaximum->setValue(p.elevationMaximum);
    mTonnage->setValue(p.targetTonnage);
    mQuantityOn->setChecked(p.quantityRestriction != 0);
    mQuantityMinimum->setValue(p.quantityMinimumPercent);
    mCostOn->setChecked(p.costRestriction != 0);
    mCostMinimum->setValue(p.costMinimumPercent);
    mCombinedOn->setChecked(p.combinedRestriction != 0);
    mCombinedLower->setValue(static_cast<double>(p.combinedLowerBound));
    choose(mCombinedProperty, p.combinedRestrictionProperty);
    mCombinedUpper->setValue(static_cast<double>(p.combinedUpperBound));
    mInventoryOn->setChecked(p.inventoryRestriction != 0);
    mInventoryLower->setValue(static_cast<double>(p.inventoryLowerBound));
    choose(mInventoryProperty, p.inventoryRestrictionProperty);
    mInventoryUpper->setValue(static_cast<double>(p.inventoryUpperBound));
    mByCombined->setChecked(p.classificationMode == CCombinationParameters::kCombinedGradeClosest);
    mByInventory->setChecked(p.classificationMode == CCombinationParameters::kInventoryGradeClosest);
    mByDeviation->setChecked(p.classificationMode == CCombinationParameters::kSmallestStdDeviation);
    choose(mCombinedGradeProperty, p.combinedGradeProperty);
    mCombinedGradeTarget->setValue(static_cast<double>(p.combinedGradeTarget));
    choose(mInventoryGradeProperty, p.inventoryGradeProperty);
    mInventoryGradeTarget->setValue(static_cast<double>(p.inventoryGradeTarget));
    choose(mDeviationProperty, p.stdDeviationProperty);
    showTargets();
}

bool CCombineBlasts::readControls()
{
    CCombinationParameters p = mCombiner.parameters();
    const std::pair<NumberField*, double*> doubles[] = {
        {mEastMinimum, &p.eastMinimum},
        {mEastMaximum, &p.eastMaximum},
        {mNorthMinimum, &p.northMinimum},
        {mNorthMaximum, &p.northMaximum},
        {mElevationMinimum, &p.elevationMinimum},
        {mElevationMaximum, &p.elevationMaximum},
        {mTonnage, &p.targetTonnage},
        {mQuantityMinimum, &p.quantityMinimumPercent},
        {mCostMinimum, &p.costMinimumPercent},
    };
    for (const auto& [field, target] : doubles) {
        const std::optional<double> v = requireNumber(field, mUi);
        if (!v)
            return false;
        *target = *v;
    }
    const std::pair<NumberField*, float*> floats[] = {
        {mCombinedLower, &p.combinedLowerBound},        {mCombinedUpper, &p.combinedUpperBound},
        {mInventoryLower, &p.inventoryLowerBound},      {mInventoryUpper, &p.inventoryUpperBound},
        {mCombinedGradeTarget, &p.combinedGradeTarget}, {mInventoryGradeTarget, &p.inventoryGradeTarget},
    };
    for (const auto& [field, target] : floats) {
        const std::optional<double> v = requireNumber(field, mUi);
        if (!v)
            return false;
        *target = static_cast<float>(*v);
    }
    p.coordinateFilter = mFilter->isChecked() ? 1 : 0;
    p.quantityRestriction = mQuantityOn->isChecked() ? 1 : 0;
    p.costRestriction = mCostOn->isChecked() ? 1 : 0;
    p.combinedRestriction = mCombinedOn->isChecked() ? 1 : 0;
    p.combinedRestrictionProperty = mCombinedProperty->currentText();
    p.inventoryRestriction = mInventoryOn->isChecked() ? 1 : 0;
    p.inventoryRestrictionProperty = mInventoryProperty->currentText();
    p.classificationMode = mByDeviation->isChecked()   ? CCombinationParameters::kSmallestStdDeviation
                           : mByInventory->isChecked() ? CCombinationParameters::kInventoryGradeClosest
                                                       : CCombinationParameters::kCombinedGradeClosest;
    p.combinedGradeProperty = mCombinedGradeProperty->currentText();
    p.inventoryGradeProperty = mInventoryGradeProperty->currentText();
    p.stdDeviationProperty = mDeviationProperty->currentText();
    mCombiner.parameters() = p;
    return true;
}

void CCombineBlasts::showSources()
{
    const QSignalBlocker blocker(mSources);
    mSources->clear();
    for (const WorkingBlastTables::Source& s : mCombiner.sources()) {
        auto* item = new QListWidgetItem(BlastCombiner::sourceText(s), mSources);
        item->setData(Qt::UserRole, s.name);
        item->setSelected(mCombiner.isSelected(s.name));
    }
    if (mMapLink)
        mMapLink->showList();
}

void CCombineBlasts::takeSelection()
{
    for (int row = 0; row < mSources->count(); ++row) {
        const QListWidgetItem* item = mSources->item(row);
        mCombiner.setSelected(item->data(Qt::UserRole).toString(), item->isSelected());
    }
    if (mMapLink)
        mMapLink->showSelection();
}

void CCombineBlasts::showTargets()
{
    mTargets->clear();
    for (int property : mCombiner.targetProperties())
        mTargets->addItem(mCombiner.parameters().describeTarget(property));
}

void CCombineBlasts::changeTarget(int action)
{
    const int property = mChemistry->currentRow();
    if (property < 0)
        return;
    if (action == kRemove) {
        mCombiner.removeTarget(property);
    } else {
        const std::optional<double> value = requireNumber(mTargetValue, mUi);
        if (!value)
            return;
        if (action == kSet)
            mCombiner.setTarget(property, *value);
        else
            mCombiner.modifyTarget(property, *value);
    }
    showTargets();
}

void CCombineBlasts::refreshSources()
{
    if (!readControls())
        return;
    mCombiner.refreshSources();
    showSources();
}

void CCombineBlasts::viewSource()
{
    const QListWidgetItem* item = mSources->currentItem();
    if (!item)
        return;
    const QString text = mCombiner.describeSource(item->data(Qt::UserRole).toString());
    if (text.isEmpty())
        return;
    ReportWindow window(QStringLiteral("View Source"), text, mUi, this);
    window.exec();
}

void CCombineBlasts::combine()
{
    if (!readControls())
        return;
    const QDateTime ran = QDateTime::currentDateTime();
    // The progress dialog is made at the first step of the search, not before: the checks before it
    // may refuse, and their message must be the only window the user sees.
    // The report goes to storage that spills to a temporary file: a run of hundreds of thousands
    // of pairs is never held whole.
    const auto report = std::make_shared<ReportText>();
    const std::optional<CombinationOutcome> outcome =
        mCombiner.combine(*report, [this](long long done, long long total) {
            if (!mProgress) {
                mProgress = std::make_unique<QProgressDialog>(QStringLiteral("Analysing blast combinations…"),
                                                              QStringLiteral("Cancel"), 0, 1000, this);
                mProgress->setWindowModality(Qt::WindowModal);
                mProgress->setMinimumDuration(400);
            }
            mProgress->setValue(total > 0 ? static_cast<int>(done * 1000 / total) : 0);
            return !mProgress->wasCanceled();
        });
    mProgress.reset();
    if (!outcome)
        return;
    CCombineResults results(*outcome, report, mCombiner.period(), mUi, this);
    results.setPageHeader({mProjectName, mDatabaseName, ran});
    results.exec();
    mChosenNames.clear();
    mChosenTonnes.clear();
    if (results.chosenIndex() >= 0) {
        const CSuccessfulComb chosen = outcome->combination(results.chosenIndex());
        mCombiner.applyResults(chosen, results.period());
        for (std::size_t i = 0; i < chosen.Names.size(); ++i) {
            mChosenNames << chosen.Names[i];
            mChosenTonnes.push_back(chosen.Quantities[i]);
        }
    }
    showSources();
    reloadMap();
}

void CCombineBlasts::updateBlastTable()
{
    mCombiner.updateBlastTable();
}

void CCombineBlasts::accept()
{
    if (!readControls())
        return;
    mCombiner.close();
    QDialog::accept();
}

void CCombineBlasts::reject()
{
    mCombiner.close();
    QDialog::reject();
}

} // namespace kilnova
