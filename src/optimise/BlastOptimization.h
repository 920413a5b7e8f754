#pragma once

#include "database/Record.h"
#include "optimise/COptimizationParameters.h"
#include "optimise/OptimizationModel.h"
#include "optimise/SourceUpdate.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The state and rules of the "Optimize Blasts" dialog, shared by the dialog, the command line and
/// the tests: the mode and element, the constraint list, the source list with its coordinate
/// filter, the running total of the selection, Optimize and OK.
class BlastOptimization final {
public:
    /// The choices of "Optimize:", in their order.
    static const QStringList& modeChoices();
    /// Mode value of a choice position: Minimize -1, Maximize 1, Target 0, Maximize Tonnage 2; no
    /// choice (-1) gives -1.
    static int modeOfChoice(int position);
    static int choiceOfMode(int mode);

    BlastOptimization(ProjectDatabase& db, const COptimizationParameters& parameters);

    // Objective
    int modeChoice() const { return mModeChoice; }
    void setModeChoice(int position) { mModeChoice = position; }
    int mode() const { return modeOfChoice(mModeChoice); }
    int element() const { return mElement; }
    void setElement(int element) { mElement = element; }
    double target() const { return mTarget; }
    void setTarget(double target) { mTarget = target; }
    double requestedTonnage() const { return mRequestedTonnage; }
    void setRequestedTonnage(double tonnes) { mRequestedTonnage = tonnes; }
    bool targetEnabled() const { return mode() == 0; }
    /// Element choice and requested tonnage are off in Maximize Tonnage mode.
    bool elementAndTonnageEnabled() const { return mode() != 2; }

    // Constraints, in list order.
    const std::vector<int>& constraintElements() const { return mConstraintOrder; }
    const ConstraintEntry& constraint(int element) const
    {
        return mConstraints[static_cast<std::size_t>(element)];
    }
    QStringList constraintTexts() const;
    /// The refusal message, or nothing when the constraint was added at the end of the list.
    std::optional<QString> addConstraint(int element, double minimum, double maximum);
    /// Replaces the constraint at a list row in place.
    std::optional<QString> modifyConstraint(int row, int element, double minimum, double maximum);
    void removeConstraint(int row);

    // Sources
    bool coordinateFilter() const { return mFilter; }
    void setCoordinateFilter(bool on) { mFilter = on; }
    /// East min, East max, North min, North max, Elevation min, Elevation max.
    const std::array<double, 6>& bounds() const { return mBounds; }
    void setBounds(const std::array<double, 6>& bounds) { mBounds = bounds; }
    /// Sets the bounds to the smallest and largest coordinates of every blast.
    void computeExtent();
    /// Names of the blasts the filter lets through, in name order. Throws DatabaseError.
    QStringList sourceNames() const;
    QString sourceCaption() const;

    const QStringList& selection() const { return mSelection; }
    /// Keeps the names in the order of the source list, whoever passes them: the blend can depend
    /// on the order of the sources when several are equally good.
    void setSelection(const QStringList& names);
    /// "Quantity …; Titration …; …" over the selected blasts; empty with nothing selected.
    QString runningTotal() const;
    /// The selected blast's whole record, for "View Source".
    std::optional<Record> source(const QString& name) const;

    // Runs
    struct Result {
        OptimizationRequest request;
        OptimizationOutcome outcome;
        QString report; ///< empty when the outcome carries a message
    };
    /// Loads the selected blasts, writes the first programme to debugFile (when not empty; a failure
    /// to write it is silent), solves and builds the report. Throws DatabaseError.
    Result optimize(const QString& debugFile = {}) const;

    /// The blend of a solved run as a new stockpile, and the tonnes it takes from each blast.
    static SourceUpdate::Blend blendOf(const Result& result);
    static std::vector<SourceUpdate::Take> takesOf(const Result& result);

    /// The dialog's settings as OK stores them over `previous`: "Maximize Tonnage" keeps the mode that
    /// was stored before.
    COptimizationParameters parametersForOk(const COptimizationParameters& previous) const;
    /// OK: the settings to keep; the working copy of the combination analysis is emptied. Throws
    /// DatabaseError.
    COptimizationParameters accept(const COptimizationParameters& previous);

    /// The folder for debug.txt: a fixed per-user data folder.
    static QString debugFilePath();

private:
    std::optional<QString> checkConstraint(int element, std::optional<int> replacing) const;

    ProjectDatabase& mDb;
    int mModeChoice = 1;
    int mElement = 0;
    double mTarget = 0.0;
    double mRequestedTonnage = 0.0;
    std::array<ConstraintEntry, kElementCount> mConstraints{};
    std::vector<int> mConstraintOrder;
    bool mFilter = false;
    std::array<double, 6> mBounds{};
    QStringList mSelection;
};

} // namespace kilnova
