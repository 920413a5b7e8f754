#pragma once

#include "chemistry/Elements.h"

#include <array>
#include <vector>

namespace kilnova {

struct ChemEquationCoefficients;
struct ClinkerRequest;
struct OptimizationOutcome;

/// The figures of a solved clinker optimisation (ClinkerModel.h says how each is made): the tonnes
/// of crude and clinker, the clinker each source makes, the compositions of clinker, crude and coal
/// mix, the two costs, and whether the clinker strays from the request.
struct ClinkerBalance {
    /// A clinker tonnage that differs from the request by more than this share is suspect.
    static constexpr double kDegeneracyShare = 0.001;

    double requested = 0.0;
    double crudeTonnage = 0.0;
    double clinkerTonnage = 0.0;
    std::vector<double> clinkerOf; ///< per source, the clinker tonnes it makes (0 when not taken)
    std::array<double, kElementCount> clinker{};
    std::array<double, kElementCount> crude{};
    std::array<double, kElementCount> coal{};
    bool coalUsed = false;
    double crudeCost = 0.0;
    double clinkerCost = 0.0;
    bool degenerated = false;

    /// The tonnage the "Are needed" line states: the clinker made when it strays, else the request.
    double areNeeded() const { return degenerated ? clinkerTonnage : requested; }

    /// |clinker − requested| / requested above kDegeneracyShare.
    static bool isDegenerate(double clinker, double requested);

    static ClinkerBalance of(const ClinkerRequest& request, const OptimizationOutcome& outcome,
                             const ChemEquationCoefficients& coefficients);
};

} // namespace kilnova
