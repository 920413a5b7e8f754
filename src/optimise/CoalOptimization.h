#pragma once

#include "database/Record.h"
#include "optimise/BlendChartData.h"
#include "optimise/CCoalOptParameters.h"
#include "optimise/CoalSource.h"
#include "optimise/CoalSummary.h"
#include "optimise/OptimizationModel.h"
#include "optimise/OptimizationSettings.h"
#include "optimise/SourceUpdate.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The state and rules of the "Optimize Coal" dialog, shared by the dialog, the command line and the
/// tests: the shared settings over the 25 coal properties, the coals chosen, Optimize and OK.
///
/// The model is the shared one with coals as sources (x ≤ the coal's Quantity, the tonnage row).
/// The fuel's own values count by the tonne of coal: Σ (v − b)·x. The ash analysis counts by the
/// tonnes of ash: Σ Ash·(v − b)·x, the moduli linearised on their oxides with the same weight, so a
/// limit on SiO2 is a limit on the SiO2 of the mixed ash; objectives are weighted alike.
class CoalOptimization final : public OptimizationSettings {
public:
    CoalOptimization(ProjectDatabase& db, const CCoalOptParameters& parameters);

    /// Every coal by name. Throws DatabaseError.
    QStringList sourceNames() const;
    const QStringList& selection() const { return mSelection; }
    /// Keeps the names in the order of the source list, whoever passes them.
    void setSelection(const QStringList& names);
    /// The coal's whole record, for "View Source".
    std::optional<Record> source(const QString& name) const;

    struct Result {
        std::vector<CoalSource> coals;
        int mode = 1;
        int property = 0;
        OptimizationOutcome outcome;
        CoalSummary mix;
        QString report; ///< empty when the outcome carries a message
    };
    /// Loads the chosen coals, writes the first programme to debugFile (when not empty; a failure to
    /// write it is silent), solves and builds the report. Throws DatabaseError.
    Result optimize(const QString& debugFile = {}) const;

    /// The problem of these coals with the settings as they stand.
    BlendProblem problemOf(const std::vector<CoalSource>& coals) const;

    /// The mix of a solved run as a new Coal record, and the tonnes it takes from each coal.
    static SourceUpdate::Blend blendOf(const Result& result);
    static std::vector<SourceUpdate::Take> takesOf(const Result& result);
    /// The blend chart of a solved run: the mix against its limits, each property in its unit and
    /// with the report's decimals; the ash analysis is that of the mixed ash, as the report gives it.
    static BlendChartData chartOf(const Result& result);
    /// A property as the report prints it: "BTU" in BTU/lb, two decimals.
    static BlendChartData::Quantity quantityOf(int property);
    /// The subtraction question, saying that a coal's change cannot be restored.
    static QString subtractQuestion();

    /// The dialog's settings as OK stores them over `previous` (every mode, Maximize Tonnage too).
    CCoalOptParameters parametersForOk(const CCoalOptParameters& previous) const;

private:
    /// The refusal that stops a run before solving, or nothing.
    std::optional<QString> tonnageRefusal(const std::vector<CoalSource>& coals) const;

    ProjectDatabase& mDb;
    QStringList mSelection;
};

} // namespace kilnova
