#pragma once

#include "optimise/BlastOptimization.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace kilnova {

class ConstraintEditor;
class NumberField;
class UserPrompt;

/// "Optimize Blasts": a thin view over BlastOptimization. Optimize shows the report through the
/// showResults callback (the results window); OK hands the settings back through parameters().
class COptimizeBlasts final : public QDialog {
    Q_OBJECT
public:
    using ResultsHandler = std::function<void(const BlastOptimization::Result&)>;

    COptimizeBlasts(ProjectDatabase& db, const COptimizationParameters& parameters, UserPrompt& ui,
                    ResultsHandler showResults, QWidget* parent = nullptr);

    BlastOptimization& optimization() { return mOptimization; }
    /// The settings OK stored.
    const COptimizationParameters& parameters() const { return mParameters; }

    void optimize();
    void accept() override;
    void refreshSources();

private:
    /// Copies the edit fields into the core object; false (after telling the user) if one is not a number.
    bool readFields();
    void updateEnabling();
    void selectionChanged();
    void viewSource();
    /// Runs a step that reads the database, telling the user if it fails.
    bool guarded(const std::function<void()>& step);

    BlastOptimization mOptimization;
    COptimizationParameters mParameters;
    UserPrompt& mUi;
    ResultsHandler mShowResults;

    QComboBox* mMode;
    QComboBox* mElement;
    NumberField* mTarget;
    NumberField* mTonnage;
    ConstraintEditor* mConstraints;
    QLabel* mSourceCaption;
    QListWidget* mSources;
    QCheckBox* mFilter;
    std::array<NumberField*, 6> mBounds{};
    QLineEdit* mRunningTotal;
};

} // namespace kilnova
