#pragma once

#include <QGroupBox>

class QComboBox;
class QListWidget;

namespace kilnova {

class NumberField;
class OptimizationSettings;
class UserPrompt;

/// The constraint list of an optimisation dialog: minimum "<=" property "<=" maximum with "Add",
/// "Modify" and "Remove" over the list. The rules (and the refusals the user is shown) are those
/// of the settings it edits.
class ConstraintEditor final : public QGroupBox {
    Q_OBJECT
public:
    ConstraintEditor(const QString& title, OptimizationSettings& settings, UserPrompt& ui,
                     QWidget* parent = nullptr);

    /// Shows the list as the settings hold it.
    void refresh();

private:
    void edit(bool modify);

    OptimizationSettings& mSettings;
    UserPrompt& mUi;
    NumberField* mMinimum;
    QComboBox* mElement;
    NumberField* mMaximum;
    QListWidget* mList;
};

} // namespace kilnova
