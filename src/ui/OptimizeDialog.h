#pragma once

#include "database/Record.h"
#include "optimise/OptimizationSettings.h"
#include "ui/OptimizationResultsWindow.h"

#include <QDialog>

#include <functional>
#include <optional>

class QComboBox;
class QGridLayout;
class QHBoxLayout;
class QListWidget;

namespace kilnova {

class NumberField;
class UserPrompt;

/// What the four optimisation dialogs share: the objective fields ("Optimize:" with its element,
/// the target and the requested tonnage), the Optimize / OK / Cancel row, reading the fields, one
/// run with its failure message, and reading the database with a message when that fails. Each
/// dialog adds its own sources and extra limits around these.
class OptimizeDialog : public QDialog {
    Q_OBJECT
public:
    virtual void optimize() = 0;

protected:
    OptimizeDialog(UserPrompt& ui, const QString& title, QWidget* parent);

    /// The settings the objective fields edit; the derived dialog owns them.
    virtual OptimizationSettings& settings() = 0;
    /// Enables the fields the chosen mode uses; by default the target in Target mode only.
    virtual void updateEnabling();
    /// Copies the edit fields into the settings; false (after telling the user) if one is not a
    /// number.
    virtual bool readFields();

    /// The objective grid over the settings: "Optimize:" mode and element, then the target and the
    /// requested tonnage under the given captions.
    QGridLayout* objectiveLayout(const QString& targetCaption, const QString& tonnageCaption);
    /// Optimize, OK and Cancel, right-aligned. Without `autoDefault` Enter in a field presses none.
    QHBoxLayout* dialogButtons(bool autoDefault = true);

    /// Runs a step that reads the database, telling the user if it fails.
    bool guarded(const std::function<void()>& step);
    /// "View Source": the record `read` finds, in a record view; nothing when there is none.
    void viewRecord(const std::function<std::optional<Record>()>& read);

    /// Reads the fields and runs one optimisation; the result when it solved, otherwise nothing
    /// after the user was told why.
    template <class Optimization>
    std::optional<typename Optimization::Result> run(const Optimization& optimization)
    {
        if (!readFields())
            return std::nullopt;
        typename Optimization::Result result;
        if (!guarded([&] { result = optimization.optimize(OptimizationSettings::debugFilePath()); }))
            return std::nullopt;
        if (!result.outcome.solved) {
            OptimizationResultsWindow::showFailure(mUi, result.outcome, optimization.propertyNames());
            return std::nullopt;
        }
        return result;
    }

    /// The names selected in a list, in list order.
    static QStringList selectedTexts(const QListWidget* list);
    /// Lists `texts`, selecting those in `chosen`, without signalling each change.
    static void fillList(QListWidget* list, const QStringList& texts, const QStringList& chosen,
                         Qt::CaseSensitivity cs = Qt::CaseSensitive);

    UserPrompt& mUi;
    QComboBox* mMode;
    QComboBox* mElement;
    NumberField* mTarget;
    NumberField* mTonnage;
};

} // namespace kilnova
