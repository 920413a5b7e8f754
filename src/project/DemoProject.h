#pragma once

#include "chemistry/ClinkerProcessParameters.h"
#include "database/Record.h"
#include "optimise/CClinkerOptParameters.h"
#include "optimise/CCoalOptParameters.h"
#include "optimise/COptimizationParameters.h"
#include "optimise/CSTKOptParameters.h"

#include <QString>

namespace kilnova {

/// Builds the demo project from its data files: a fresh project database filled from one CSV file
/// per table (blasts.csv, blast-deviations.csv, stockpiles.csv, crude.csv, clinker.csv,
/// additives.csv, coal.csv) and a project file that uses it, with the blast optimisation settings
/// of blast-optimisation.csv, the stockpile optimisation settings of stockpile-optimisation.csv, the
/// kiln of clinker-process.csv, the clinker optimisation settings of clinker-optimisation.csv and
/// the coal optimisation settings of coal-optimisation.csv ready to run.
///
/// A table file has "#" comment lines, a header naming database columns and one record per line;
/// missing columns keep their defaults and the derived columns are computed from the oxides. A
/// stockpile whose Name and Source already exist (the Actual ones) is rewritten rather than added.
class DemoProject final {
public:
    DemoProject() = delete;

    /// Writes outDir/demo.kndb and outDir/demo.knv (replacing them). All records are written in one
    /// transaction; on failure neither file is left behind. Throws DemoDataError for a data file
    /// that cannot be read, DatabaseError or ProjectFileError.
    static void build(const QString& dataDir, const QString& outDir);

    /// The settings that blast-optimisation.csv describes; blasts named there must be in blastNames.
    static COptimizationParameters readBlastOptimisation(const QString& path, const QStringList& blastNames);
    /// The settings that stockpile-optimisation.csv describes: its Stockpile lines ("NAME (SOURCE)") must
    /// name one of `stockpiles`, its Additive lines one of `additives`; Left lines limit what stays in the
    /// stockpiles as Constraint lines limit the crude.
    static CSTKOptParameters readStockpileOptimisation(const QString& path,
                                                       const std::vector<RecordKey>& stockpiles,
                                                       const QStringList& additives);

    /// The seven figures of clinker-process.csv (Parameter,Value; every one of them once).
    static ClinkerProcessParameters readClinkerProcess(const QString& path);
    /// The settings that clinker-optimisation.csv describes; a Crude, Stockpile, Additive or Coal line
    /// names a source as its list shows it ("Name (Source)" for crudes and stockpiles), which must be
    /// among `listed` (the list texts of the demo's records).
    static CClinkerOptParameters readClinkerOptimisation(const QString& path, const QStringList& listed);
    /// The settings that coal-optimisation.csv describes (the project keeps no choice of coals).
    static CCoalOptParameters readCoalOptimisation(const QString& path);

    static QString databaseName() { return QStringLiteral("demo.kndb"); }
    static QString projectName() { return QStringLiteral("demo.knv"); }
};

} // namespace kilnova
