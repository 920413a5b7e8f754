#pragma once

#include "chemistry/ClinkerProcessParameters.h"
#include "database/Record.h"
#include "optimise/BlendChartData.h"
#include "optimise/CClinkerOptParameters.h"
#include "optimise/ClinkerBalance.h"
#include "optimise/ClinkerModel.h"
#include "optimise/OptimizationSettings.h"
#include "optimise/SourceUpdate.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The state and rules of the "Optimize Clinker" dialog, shared by the dialog, the command line and
/// the tests: the shared settings (mode, element, chemistry constraints), the two selections of
/// sources and their lists, the stockpile tonnage constraints, Optimize and OK. The process
/// parameters are a copy taken when the dialog opens.
class ClinkerOptimization final : public OptimizationSettings {
public:
    static const QStringList& modeChoices();
    /// The choices under "Selection of Sources:".
    static const QStringList& selectionChoices();

    ClinkerOptimization(ProjectDatabase& db, const CClinkerOptParameters& parameters,
                        const ClinkerProcessParameters& process, double freeLime);

    const ClinkerProcessParameters& process() const { return mProcess; }

    // Sources
    bool stockpiles() const { return mSelection == CClinkerOptParameters::kStockpileAdditivesAndCoal; }
    /// Switching the selection empties the choice in the first list, which then lists another table.
    void setStockpiles(bool stockpiles);
    /// The caption of the first list: "Crude" or "Stockpile".
    QString rawCaption() const;
    /// What each list offers, in list order ("Name (Source)" for crudes and stockpiles). The
    /// additives list is empty under "Crude + Coal". Throw DatabaseError.
    QStringList rawList() const;
    QStringList additiveList() const;
    QStringList coalList() const;
    const QStringList& rawSelection() const { return mRaw; }
    const QStringList& additiveSelection() const { return mAdditives; }
    const QStringList& coalSelection() const { return mCoal; }
    /// Each keeps the list's order, whoever passes the names.
    void setRawSelection(const QStringList& texts) { mRaw = inListOrder(texts); }
    void setAdditiveSelection(const QStringList& texts) { mAdditives = inListOrder(texts); }
    void setCoalSelection(const QStringList& texts) { mCoal = inListOrder(texts); }
    /// Sorts a name into its list by table: a crude or stockpile ("Name (Source)", or the name alone
    /// when only one record has it), an additive, a coal. False for a name no list holds or, alone,
    /// two records hold. Throws DatabaseError.
    bool select(const QString& name);
    /// The record behind a list text, for "View Source". Throws DatabaseError.
    std::optional<Record> source(const QString& listText) const;

    // Stockpile tonnage constraints, in list order.
    /// Every stockpile a tonnage constraint can name, in list order. Throws DatabaseError.
    std::vector<RecordKey> stockpileKeys() const;
    const QList<CClinkerOptParameters::TonnageConstraint>& tonnageConstraints() const { return mLimits; }
    QStringList tonnageConstraintTexts() const;
    /// "A constraint on this variable has already been set" for a second one on the same stockpile.
    std::optional<QString> addTonnageConstraint(const RecordKey& stockpile, double minimum, double maximum);
    std::optional<QString> modifyTonnageConstraint(int row, const RecordKey& stockpile, double minimum,
                                                   double maximum);
    void removeTonnageConstraint(int row);

    // Runs
    struct Result {
        ClinkerRequest request;
        OptimizationOutcome outcome;
        ClinkerBalance balance;
        QString report; ///< empty when the outcome carries a message
    };
    /// Loads the chosen sources, writes the first programme to debugFile (when not empty), solves and
    /// builds the report. A source no longer in its table gives a message. Throws DatabaseError.
    Result optimize(const QString& debugFile = {}) const;

    /// The clinker (Clinker table) and the raw mix (Crude table) of a solved run, unnamed.
    static SourceUpdate::Blend clinkerOf(const Result& result);
    static SourceUpdate::Blend crudeOf(const Result& result);
    /// The tonnes taken from each crude, stockpile and coal (additives are bought, not kept).
    static std::vector<SourceUpdate::Take> takesOf(const Result& result);
    /// The blend chart of a solved run: the limits and the optimised element are on the clinker.
    static BlendChartData chartOf(const Result& result);

    /// The settings OK stores over `previous`.
    CClinkerOptParameters parametersForOk(const CClinkerOptParameters& previous) const;

private:
    Table rawTable() const { return stockpiles() ? Table::Stockpile : Table::Crude; }
    QStringList listOf(Table table) const;
    /// The records of a table by list text; the first text not there is named in `missing`.
    std::vector<SOURCE> load(Table table, const QStringList& texts, QString& missing) const;
    std::optional<QString> checkLimit(const RecordKey& stockpile, std::optional<int> replacing) const;

    ProjectDatabase& mDb;
    ClinkerProcessParameters mProcess;
    double mFreeLime;
    qint32 mSelection;
    QStringList mRaw;
    QStringList mAdditives;
    QStringList mCoal;
    QList<CClinkerOptParameters::TonnageConstraint> mLimits;
};

} // namespace kilnova
