#pragma once

#include "optimise/CoalOptimization.h"

#include <QDialog>

#include <functional>

class QComboBox;
class QListWidget;

namespace kilnova {

class ConstraintEditor;
class NumberField;
class UserPrompt;

/// "Optimize Coal": a thin view over CoalOptimization. The coals to mix, the objective over the 25
/// coal properties, the requested tonnage and the constraint editor; Optimize shows the report
/// through the showResults callback (the results window); OK hands the settings back through
/// parameters().
class COptimizeCoal final : public QDialog {
    Q_OBJECT
public:
    using ResultsHandler = std::function<void(const CoalOptimization::Result&)>;

    COptimizeCoal(ProjectDatabase& db, const CCoalOptParameters& parameters, UserPrompt& ui,
                  ResultsHandler showResults, QWidget* parent = nullptr);

    CoalOptimization& optimization() { return mOptimization; }
    /// The settings OK stored.
    const CCoalOptParameters& parameters() const { return mParameters; }

    void optimize();
    void accept() override;
    /// Lists the coals again, keeping those chosen that are still there.
    void refreshSources();

private:
    /// Copies the edit fields into the core object; false (after telling the user) if one is not a number.
    bool readFields();
    void updateEnabling();
    void selectionChanged();
    void viewSource();
    /// Runs a step that reads the database, telling the user if it fails.
    bool guarded(const std::function<void()>& step);

    CoalOptimization mOptimization;
    CCoalOptParameters mParameters;
    UserPrompt& mUi;
    ResultsHandler mShowResults;

    QListWidget* mSources;
    QComboBox* mMode;
    QComboBox* mProperty;
    NumberField* mTarget;
    NumberField* mTonnage;
    ConstraintEditor* mConstraints;
};

} // namespace kilnova
