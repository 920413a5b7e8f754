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

ConstraintEditor::ConstraintEditor(const QString& title, OptimizationSettings& settings, UserPrompt& ui,
                                   QWidget* parent)
    : QGroupBox(title, parent)
    , mSettings(settings)
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
    mElement->addItems(settings.constraintList().names());

    auto* editor = new QHBoxLayout;
    editor->addWidget(mMinimum);
    editor->addWidget(new QLabel(QStringLiteral("<=")));
    editor->addWidget(mElement);
    editor->addWidget(new QLabel(QStringLiteral("<=")));
    editor->addWidget(mMaximum);
    auto* add = new QPushButton(QStringLiteral("Add"));
    auto* modify = new QPushButton(QStringLiteral("Modify"));
    auto* remove = new QPushButton(QStringLiteral("Remove"));
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {add, modify, remove})
        buttons->addWidget(b);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(editor);
    layout->addLayout(buttons);
    layout->addWidget(mList);

    connect(mList, &QListWidget::currentRowChanged, this, [this](int row) {
        const std::vector<int>& order = mSettings.constraintElements();
        if (row < 0 || row >= static_cast<int>(order.size()))
            return;
        const int element = order[static_cast<std::size_t>(row)];
        mElement->setCurrentIndex(element);
        mMinimum->setValue(mSettings.constraint(element).minimum);
        mMaximum->setValue(mSettings.constraint(element).maximum);
    });
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

void ConstraintEditor::edit(bool modify)
{
    const std::optional<double> minimum = requireNumber(mMinimum, mUi);
    if (!minimum)
        return;
    const std::optional<double> maximum = requireNumber(mMaximum, mUi);
    if (!maximum)
        return;
    const int element = mElement->currentIndex();
    const std::optional<QString> refusal =
        modify ? mSettings.modifyConstraint(mList->currentRow(), element, *minimum, *maximum)
               : mSettings.addConstraint(element, *minimum, *maximum);
    if (refusal) {
        mUi.showMessage(*refusal, UserPrompt::Icon::Warning, {});
        return;
    }
    refresh();
}

} // namespace kilnova
