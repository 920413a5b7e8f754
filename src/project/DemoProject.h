#pragma once

#include "optimise/CCoalOptParameters.h"
#include "optimise/COptimizationParameters.h"

#include <QString>

namespace kilnova {

/// Builds the demo project from its data files: a fresh project database filled from one CSV file
/// per table (blasts.csv, blast-deviations.csv, stockpiles.csv, crude.csv, clinker.csv,
/// additives.csv, coal.csv) and a project file that uses it, with the blast optimisation settings
/// of blast-optimisation.csv and the coal optimisation settings of coal-optimisation.csv ready to run.
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
    /// The settings that coal-optimisation.csv describes (the project keeps no choice of coals).
    static CCoalOptParameters readCoalOptimisation(const QString& path);

    static QString databaseName() { return QStringLiteral("demo.kndb"); }
    static QString projectName() { return QStringLiteral("demo.knv"); }
};

} // namespace kilnova
