#pragma once

#include "optimise/ConstraintList.h"

#include <QGroupBox>

#include <functional>
#include <optional>

class QComboBox;
class QListWidget;

namespace kilnova {

class NumberField;
class OptimizationSettings;
class UserPrompt;

/// A constraint list as the optimisation dialogs edit it: "MIN <= ELEMENT <= MAX" fields, Add,
/// Modify and Remove, and the list. The rules (the refusals) stay in the core object behind `Rules`;
/// a refusal is shown and the list kept.
class ConstraintEditor final : public QGroupBox {
    Q_OBJECT
public:
    struct Rules {
        std::function<const ConstraintList&()> list;
        std::function<std::optional<QString>(int element, double minimum, double maximum)> add;
        std::function<std::optional<QString>(int row, int element, double minimum, double maximum)> modify;
        std::function<void(int row)> remove;

        /// The rules of the settings' own constraint list.
        static Rules of(OptimizationSettings& settings);
    };

    ConstraintEditor(const QString& title, Rules rules, UserPrompt& ui, QWidget* parent = nullptr);
    ConstraintEditor(const QString& title, OptimizationSettings& settings, UserPrompt& ui,
                     QWidget* parent = nullptr)
        : ConstraintEditor(title, Rules::of(settings), ui, parent)
    {
    }

    QListWidget* list() const { return mList; }
    /// Shows the core's list again.
    void refresh();
    /// Add (or Modify the current row) with the values in the fields.
    void apply(bool modify);

private:
    Rules mRules;
    UserPrompt& mUi;
    NumberField* mMinimum;
    QComboBox* mElement;
    NumberField* mMaximum;
    QListWidget* mList;
};

} // namespace kilnova
