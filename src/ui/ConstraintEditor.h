#pragma once

#include <QGroupBox>

class QComboBox;
class QListWidget;

namespace kilnova {

class NumberField;
class OptimizationSettings;
class UserPrompt;

/// The constraint editor of every optimisation dialog: minimum "<=" property "<=" maximum with
/// "Add", "Modify" and "Remove", and the list of the limits in force. A thin view over the settings'
/// shared rules; a refusal ("A constraint on this variable has already been set") is shown to the
/// user and leaves the list as it was.
class ConstraintEditor final : public QGroupBox {
    Q_OBJECT
public:
    ConstraintEditor(OptimizationSettings& settings, UserPrompt& ui, QWidget* parent = nullptr);

    /// Shows the list as the settings hold it.
    void refresh();

private:
    void edit(bool modify);
    void rowChosen(int row);

    OptimizationSettings& mSettings;
    UserPrompt& mUi;
    NumberField* mMinimum;
    QComboBox* mProperty;
    NumberField* mMaximum;
    QListWidget* mList;
};

} // namespace kilnova
