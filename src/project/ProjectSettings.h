#pragma once

#include "chemistry/ChemEquationCoefficients.h"
#include "chemistry/ClinkerProcessParameters.h"
#include "combine/CCombinationParameters.h"
#include "import/ImportSpecification.h"
#include "optimise/CClinkerOptParameters.h"
#include "optimise/CCoalOptParameters.h"
#include "optimise/COptimizationParameters.h"
#include "optimise/CSTKOptParameters.h"

#include <QString>

namespace kilnova {

/// Everything a project file holds, with the values of a new document.
struct ProjectSettings {
    QString databasePath;
    ImportSpecification blastImportSpec = ImportSpecification::defaultBlast();
    ClinkerProcessParameters clinkerProcess;
    COptimizationParameters blastOptimization;
    CSTKOptParameters stockpileOptimization;
    CClinkerOptParameters clinkerOptimization;
    ImportSpecification stockpileImportSpec = ImportSpecification::defaultStockpile();
    CCombinationParameters combination;
    CCoalOptParameters coalOptimization;
    ChemEquationCoefficients chemistry;

    bool operator==(const ProjectSettings&) const = default;
};

} // namespace kilnova
