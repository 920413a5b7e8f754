#pragma once

#include "combine/BlastCombiner.h"
#include "ui/ProgressPrompt.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QComboBox;
class QListWidget;
class QProgressDialog;
class QRadioButton;

namespace kilnova {

class CKilnovaDoc;
class NumberField;
class ProjectDatabase;
class QuarryMapLink;
class QuarryMapPane;
class UserPrompt;

/// "Combine Blasts": a view over a BlastCombiner. It shows the combiner's source list (and the
/// quarry map of the working blasts beside it), targets and settings, hands the controls' values to
/// it before each action and shows the results window.
class CCombineBlasts final : public QDialog {
    Q_OBJECT
public:
    /// The working copies are refreshed here; ready() tells whether that worked.
    CCombineBlasts(ProjectDatabase& db, const CCombinationParameters& parameters, UserPrompt& ui,
                   QWidget* parent = nullptr);
    ~CCombineBlasts() override;

    /// Optimize > Analyse Blast Combinations: runs the dialog over the document's database and
    /// keeps its settings in the document when the user presses OK.
    static void run(CKilnovaDoc& doc, UserPrompt& ui, QWidget* parent);

    bool ready() const { return mReady; }
    /// The project named on printed results ("demo.knv").
    void setProjectName(const QString& name) { mProjectName = name; }
    BlastCombiner& combiner() { return mCombiner; }
    /// The settings as OK left them.
    const CCombinationParameters& parameters() const { return mCombiner.parameters(); }

    /// Copies the controls into the combiner's settings; false (the user told) when a number is not one.
    bool readControls();

    void combine();
    void refreshSources();
    void viewSource();
    void updateBlastTable();
    /// Reads the working blasts of the map again.
    void reloadMap();
    QuarryMapPane* map() const { return mMap; }
    void accept() override;
    void reject() override;

private:
    QWidget* buildSources();
    QWidget* buildTargets();
    QWidget* buildRestrictions();
    QWidget* buildClassification();
    void showSources();
    void showTargets();
    void showParameters();
    void takeSelection();
    /// Set, Modify or Remove on the property chosen in the Chemistry list.
    void changeTarget(int action);

    ProjectDatabase& mDb;
    /// The progress of a run, from its first step until it ends or something is to be said.
    std::unique_ptr<QProgressDialog> mProgress;
    /// What the combiner says is never shown under the progress dialog.
    ProgressPrompt mPrompt;
    BlastCombiner mCombiner;
    UserPrompt& mUi;
    bool mReady = false;
    QString mProjectName;
    QString mDatabaseName;
    QuarryMapPane* mMap = nullptr;
    QuarryMapLink* mMapLink = nullptr;
    /// The pair chosen after the last Combine and its tonnes, labelled on the map.
    QStringList mChosenNames;
    std::vector<double> mChosenTonnes;

    QListWidget* mSources = nullptr;
    QCheckBox* mFilter = nullptr;
    NumberField* mEastMinimum = nullptr;
    NumberField* mEastMaximum = nullptr;
    NumberField* mNorthMinimum = nullptr;
    NumberField* mNorthMaximum = nullptr;
    NumberField* mElevationMinimum = nullptr;
    NumberField* mElevationMaximum = nullptr;
    NumberField* mTonnage = nullptr;
    QListWidget* mChemistry = nullptr;
    NumberField* mTargetValue = nullptr;
    QListWidget* mTargets = nullptr;
    QCheckBox* mQuantityOn = nullptr;
    NumberField* mQuantityMinimum = nullptr;
    QCheckBox* mCostOn = nullptr;
    NumberField* mCostMinimum = nullptr;
    QCheckBox* mCombinedOn = nullptr;
    NumberField* mCombinedLower = nullptr;
    QComboBox* mCombinedProperty = nullptr;
    NumberField* mCombinedUpper = nullptr;
    QCheckBox* mInventoryOn = nullptr;
    NumberField* mInventoryLower = nullptr;
    QComboBox* mInventoryProperty = nullptr;
    NumberField* mInventoryUpper = nullptr;
    QRadioButton* mByCombined = nullptr;
    QComboBox* mCombinedGradeProperty = nullptr;
    NumberField* mCombinedGradeTarget = nullptr;
    QRadioButton* mByInventory = nullptr;
    QComboBox* mInventoryGradeProperty = nullptr;
    NumberField* mInventoryGradeTarget = nullptr;
    QRadioButton* mByDeviation = nullptr;
    QComboBox* mDeviationProperty = nullptr;
};

} // namespace kilnova
