#pragma once

#include "optimise/ClinkerOptimization.h"

#include <QDialog>

#include <functional>

class QComboBox;
class QLabel;
class QListWidget;
class QRadioButton;

namespace kilnova {

class ConstraintEditor;
class NumberField;
class UserPrompt;

/// "Optimize Clinker": a thin view over ClinkerOptimization. Optimize shows the report through the
/// showResults callback (the results window) and leaves the dialog open; OK hands the settings back
/// through parameters(); Cancel keeps nothing.
class COptimizeAdditives final : public QDialog {
    Q_OBJECT
public:
    using ResultsHandler = std::function<void(const ClinkerOptimization::Result&)>;

    COptimizeAdditives(ProjectDatabase& db, const CClinkerOptParameters& parameters,
                       const ClinkerProcessParameters& process, double freeLime, UserPrompt& ui,
                       ResultsHandler showResults, QWidget* parent = nullptr);

    ClinkerOptimization& optimization() { return mOptimization; }
    /// The settings OK stored.
    const CClinkerOptParameters& parameters() const { return mParameters; }

    void optimize();
    void accept() override;
    /// Lists every table's records again, keeping the choice.
    void refreshSources();

private:
    bool readFields();
    void selectionChanged();
    void selectionKindChanged(bool stockpiles);
    void showTonnageConstraints();
    void editTonnageConstraint(bool modify);
    void viewSource();
    bool guarded(const std::function<void()>& step);

    ClinkerOptimization mOptimization;
    CClinkerOptParameters mParameters;
    UserPrompt& mUi;
    ResultsHandler mShowResults;
    std::vector<RecordKey> mStockpileKeys;

    QRadioButton* mCrudeAndCoal;
    QRadioButton* mStockpiles;
    QLabel* mRawCaption;
    QListWidget* mRaw;
    QLabel* mAdditivesCaption;
    QListWidget* mAdditives;
    QListWidget* mCoal;
    QListWidget* mLastList = nullptr;
    QComboBox* mMode;
    QComboBox* mElement;
    NumberField* mTarget;
    NumberField* mTonnage;
    ConstraintEditor* mConstraints;
    NumberField* mTonnageMinimum;
    QComboBox* mTonnageStockpile;
    NumberField* mTonnageMaximum;
    QListWidget* mTonnageConstraints;
    QWidget* mTonnageBox;
};

} // namespace kilnova
