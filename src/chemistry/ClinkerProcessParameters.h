#pragma once

#include <string>

namespace kilnova {

/// How the kiln turns raw meal and fuel into clinker. Seven single-precision figures owned by the
/// project document; FreeLime is mirrored into ClinkerFreeLime() whenever it is set.
struct ClinkerProcessParameters {
    float FixedLOI = 0.0f;
    float SO3InClinker = 100.0f;
    float K2OInClinker = 100.0f;
    float Na2OInClinker = 100.0f;
    float EnergyConsumptionFactor = 1500.0f;
    float AshRecoveryFactor = 0.0f;
    float FreeLime = 0.0f;

    bool operator==(const ClinkerProcessParameters&) const = default;

    /// The values the dialog starts from before a document fills it: a new document's, except the ash
    /// recovery, 100. A new document takes up none of the coal's ash until the user says so.
    static constexpr ClinkerProcessParameters dialogDefaults()
    {
        ClinkerProcessParameters p;
        p.AshRecoveryFactor = 100.0f;
        return p;
    }

    /// The three retentions (SO3, K2O, Na2O in clinker) are shares: 0 to 100 inclusive.
    static constexpr bool isValidRetention(double percent) { return percent >= 0.0 && percent <= 100.0; }

    /// The block printed at the head of the clinker optimisation report.
    std::string reportBlock() const;
};

} // namespace kilnova
