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

ConstraintEditor::ConstraintEditor(OptimizationSettings& settings, UserPrompt& ui, QWidget* parent)
    : QGroupBox(QStringLiteral("Constraints"), parent)
    , mSettings(settings)
    , mUi(ui)
    , mMinimum(new NumberField)
    , mProperty(new QComboBox)
    , mMaximum(new NumberField)
    , mList(new QListWidget)
{
    mMinimum->setObjectName("minimum");
    mMaximum->setObjectName("maximum");
    mProperty->setObjectName("constraintElement");
    mList->setObjectName("constraints");
    mProperty->addItems(settings.propertyNames());

    auto* editor = new QHBoxLayout;
    editor->addWidget(mMinimum);
    editor->addWidget(new QLabel(QStringLiteral("<=")));
    editor->addWidget(mProperty);
    editor->addWidget(new QLabel(QStringLiteral("<=")));
    editor->addWidget(mMaximum);
    auto* add = new QPushButton(QStringLiteral("Add"));
    auto* modify = new QPushButton(QStringLiteral("Modify"));
    auto* remove = new QPushButton(QStringLiteral("Remove"));
    add->setObjectName("addConstraint");
    modify->setObjectName("modifyConstraint");
    remove->setObjectName("removeConstraint");
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {add, modify, remove})
        buttons->addWidget(b);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(editor);
    layout->addLayout(buttons);
    layout->addWidget(mList);

    connect(mList, &QListWidget::currentRowChanged, this, &ConstraintEditor::rowChosen);
    connect(add, &QPushButton::clicked, this, [this] { edit(false); });
    connect(modify, &QPushButton::clicked, this, [this] { edit(true); });
    connect(remove, &QPushButton::clicked, this, [this] {
        mSettings.removeConstraint(mList->currentRow());
        refresh();
    });
    refresh();
}

void ConstraintEditor::refresh()
{
    const int row = mList->currentRow();
    mList->clear();
    mList->addItems(mSettings.constraintTexts());
    mList->setCurrentRow(std::min(row, mList->count() - 1));
}

void ConstraintEditor::rowChosen(int row)
{
    if (row < 0 || row >= static_cast<int>(mSettings.constraintElements().size()))
        return;
    const int property = mSettings.constraintElements()[static_cast<std::size_t>(row)];
    mProperty->setCurrentIndex(property);
    mMinimum->setValue(mSettings.constraint(property).minimum);
    mMaximum->setValue(mSettings.constraint(property).maximum);
}

void ConstraintEditor::edit(bool modify)
{
    const std::optional<double> minimum = requireNumber(mMinimum, mUi);
    if (!minimum)
        return;
    const std::optional<double> maximum = requireNumber(mMaximum, mUi);
    if (!maximum)
        return;
    const int property = mProperty->currentIndex();
    const std::optional<QString> refusal =
        modify ? mSettings.modifyConstraint(mList->currentRow(), property, *minimum, *maximum)
               : mSettings.addConstraint(property, *minimum, *maximum);
    if (refusal) {
        mUi.showMessage(*refusal, UserPrompt::Icon::Warning, {});
        return;
    }
    refresh();
}

} // namespace kilnova
