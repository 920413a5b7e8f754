#pragma once

#include "database/Record.h"
#include "optimise/BlendChartData.h"
#include "optimise/CSTKOptParameters.h"
#include "optimise/OptimizationModel.h"
#include "optimise/OptimizationSettings.h"
#include "optimise/SourceUpdate.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The state and rules of the "Optimize Stockpiles" dialog (stockpiles and additives into a crude),
/// shared by the dialog, the command line and the tests: the shared settings with the constraints on
/// the crude, a second list of constraints on the material left in the stockpiles, the two source
/// lists, Optimize and OK.
///
/// Stockpiles are taken up to their Quantity and what they leave behind is held within its limits;
/// additives are bought as needed (no upper row) and leave nothing behind.
class StockpileOptimization final : public OptimizationSettings {
public:
    StockpileOptimization(ProjectDatabase& db, const CSTKOptParameters& parameters);

    // Constraints on the material left in the stockpiles: the same refusals, never the Target one
    // (the target is on the crude).
    const ConstraintList& leftConstraintList() const { return mLeft; }
    QStringList leftConstraintTexts() const { return mLeft.texts(); }
    std::optional<QString> addLeftConstraint(int element, double minimum, double maximum);
    std::optional<QString> modifyLeftConstraint(int row, int element, double minimum, double maximum);
    void removeLeftConstraint(int row);

    // Sources
    /// "NAME (SOURCE)", as the list shows a stockpile.
    static QString keyText(const RecordKey& key);
    /// The key a "NAME (SOURCE)" text names (the last " (" splits it), or nothing.
    static std::optional<RecordKey> parseKeyText(const QString& text);
    /// Every stockpile key once, by Name then Source. Throws DatabaseError.
    std::vector<RecordKey> stockpileKeys() const;
    /// Every additive, by name. Throws DatabaseError.
    QStringList additiveNames() const;

    const std::vector<RecordKey>& selectedStockpiles() const { return mStockpiles; }
    const QStringList& selectedAdditives() const { return mAdditives; }
    /// Both keep the order of their list, whoever passes them.
    void setSelectedStockpiles(std::vector<RecordKey> keys);
    void setSelectedAdditives(const QStringList& names);
    /// Selects by text, each a stockpile "NAME (SOURCE)" or else an additive name; the message for
    /// the first text that is neither (the selection is then unchanged). Throws DatabaseError.
    std::optional<QString> selectByText(const QStringList& texts);

    /// The whole record, for "View Source". Throws DatabaseError.
    std::optional<Record> stockpile(const RecordKey& key) const;
    std::optional<Record> additive(const QString& name) const;

    // Runs
    struct Result {
        BlendProblem problem;
        /// Per source of the problem: the stockpiles first (their keys), then the additives (Source empty).
        std::vector<RecordKey> keys;
        OptimizationOutcome outcome;
        QString report; ///< empty when the outcome carries a message
    };
    /// Loads the selected sources, writes the first programme to debugFile (when not empty), solves
    /// and builds the report. Throws DatabaseError.
    Result optimize(const QString& debugFile = {}) const;

    /// The crude of a solved run, and the tonnes it takes from each stockpile (additives are bought:
    /// nothing is taken from a table for them).
    static SourceUpdate::Blend crudeOf(const Result& result);
    static std::vector<SourceUpdate::Take> takesOf(const Result& result);
    /// The blend chart of a solved run: the crude against its limits.
    static BlendChartData chartOf(const Result& result);

    /// OK: the dialog's settings over `previous`.
    CSTKOptParameters parameters(const CSTKOptParameters& previous) const;

private:
    ProjectDatabase& mDb;
    ConstraintList mLeft;
    std::vector<RecordKey> mStockpiles;
    QStringList mAdditives;
};

} // namespace kilnova
