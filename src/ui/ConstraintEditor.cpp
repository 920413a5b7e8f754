#include "ui/ConstraintEditor.h"

#include "common/UserPrompt.h"
#include "optimise/OptimizationSettings.h"
#include "ui/NumberField.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kilnova {

ConstraintEditor::Rules ConstraintEditor::Rules::of(OptimizationSettings& settings)
{
    return {[&settings]() -> const ConstraintList& { return settings.constraintList(); },
            [&settings](int e, double min, double max) { return settings.addConstraint(e, min, max); },
            [&settings](int row, int e, double min, double max) {
                return settings.modifyConstraint(row, e, min, max);
            },
            [&settings](int row) {
                settings.removeConstraint(row);
            }};
}

ConstraintEditor::ConstraintEditor(const QString& title, Rules rules, UserPrompt& ui, QWidget* parent)
    : QGroupBox(title, parent)
    , mRules(std::move(rules))
    , mUi(ui)
    , mMinimum(new NumberField)
    , mElement(new QComboBox)
    , mMaximum(new NumberField)
    , mList(new QListWidget)
{
    mMinimum->setObjectName(QStringLiteral("minimum"));
    mElement->setObjectName(QStringLiteral("constraintElement"));
    mMaximum->setObjectName(QStringLiteral("maximum"));
    mList->setObjectName(QStringLiteral("constraints"));
    mElement->addItems(mRules.list().names());

    auto* fields = new QHBoxLayout;
    fields->addWidget(mMinimum);
    fields->addWidget(new QLabel(QStringLiteral("<=")));
    fields->addWidget(mElement);
    fields->addWidget(new QLabel(QStringLiteral("<=")));
    fields->addWidget(mMaximum);
    auto* add = new QPushButton(QStringLiteral("Add"));
    auto* modify = new QPushButton(QStringLiteral("Modify"));
    auto* remove = new QPushButton(QStringLiteral("Remove"));
    add->setObjectName(QStringLiteral("add"));
    modify->setObjectName(QStringLiteral("modify"));
    remove->setObjectName(QStringLiteral("remove"));
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {add, modify, remove}) {
        b->setAutoDefault(false);
        buttons->addWidget(b);
    }
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);
    layout->addWidget(mList);

    connect(mList, &QListWidget::currentRowChanged, this, [this](int row) {
        const ConstraintList& list = mRules.list();
        if (row < 0 || row >= static_cast<int>(list.order().size()))
            return;
        const int element = list.order()[static_cast<std::size_t>(row)];
        mElement->setCurrentIndex(element);
        mMinimum->setValue(list.entry(element).minimum);
        mMaximum->setValue(list.entry(element).maximum);
    });
    connect(add, &QPushButton::clicked, this, [this] { apply(false); });
    connect(modify, &QPushButton::clicked, this, [this] { apply(true); });
    connect(remove, &QPushButton::clicked, this, [this] {
        mRules.remove(mList->currentRow());
        refresh();
    });
    refresh();
}

void ConstraintEditor::refresh()
{
    const int row = mList->currentRow();
    const QSignalBlocker blocker(mList);
    mList->clear();
    mList->addItems(mRules.list().texts());
    mList->setCurrentRow(std::min(row, mList->count() - 1));
}

void ConstraintEditor::apply(bool modify)
{
    const std::optional<double> minimum = requireNumber(mMinimum, mUi);
    if (!minimum)
        return;
    const std::optional<double> maximum = requireNumber(mMaximum, mUi);
    if (!maximum)
        return;
    const int element = mElement->currentIndex();
    const std::optional<QString> refusal =
        modify ? mRules.modify(mList->currentRow(), element, *minimum, *maximum)
               : mRules.add(element, *minimum, *maximum);
    if (refusal) {
        mUi.showMessage(*refusal, UserPrompt::Icon::Warning, {});
        return;
    }
    refresh();
}

} // namespace kilnova
