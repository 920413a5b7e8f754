#pragma once

#include "database/Record.h"
#include "optimise/COptimizationParameters.h"
#include "optimise/OptimizationModel.h"
#include "optimise/OptimizationSettings.h"
#include "optimise/SourceUpdate.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The state and rules of the "Optimize Blasts" dialog, shared by the dialog, the command line and
/// the tests: the shared settings (mode, element, constraint list), the source list with its
/// coordinate filter, the running total of the selection, Optimize and OK.
class BlastOptimization final : public OptimizationSettings {
public:
    /// The choices of "Optimize:", in their order.
    static const QStringList& modeChoices();

    BlastOptimization(ProjectDatabase& db, const COptimizationParameters& parameters);

    /// Element choice and requested tonnage are off in Maximize Tonnage mode.
    bool elementAndTonnageEnabled() const { return mode() != 2; }

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

private:
    ProjectDatabase& mDb;
    bool mFilter = false;
    std::array<double, 6> mBounds{};
    QStringList mSelection;
};

} // namespace kilnova
