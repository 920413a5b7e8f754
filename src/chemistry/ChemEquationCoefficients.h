#pragma once

#include <string>

namespace kilnova {

/// The one program-wide set of coefficients of the derived-quantity equations. Coefficients are held
/// in single precision so that a saved and reloaded project computes bit-identical results.
struct ChemEquationCoefficients {
    float C3SCaO = 4.071f;
    float C3SSiO2 = -7.6f;
    float C3SAl2O3 = -6.718f;
    float C3SFe2O3 = -1.43f;
    int C3SUseFreeLime = 1;
    float C2SCaO = -3.0695f;
    float C2SSiO2 = 8.5974f;
    float C2SAl2O3 = 5.0654f;
    float C2SFe2O3 = 1.0782f;
    int C2SUseFreeLime = 1;
    float C3AAl2O3 = 2.65f;
    float C3AFe2O3 = -1.692f;
    float C4AFFe2O3 = 3.04f;
    float LSFCaO = 1.0f;
    float LSFSiO2 = 2.8f;
    float LSFAl2O3 = 1.1f;
    float LSFFe2O3 = 0.7f;
    float NaEqK2O = 0.658f;
    float NaEqNa2O = 1.0f;

    bool operator==(const ChemEquationCoefficients&) const = default;

    /// The equations as the "Display equations" button shows them, lines ending in "\r\n".
    std::string equationsText() const;
};

/// The coefficient set every computation and every optimisation row reads.
ChemEquationCoefficients& chemCoefficients();

/// Free lime in clinker (%), mirrored from the document's clinker process parameters; the clinker
/// optimisation passes it to the C3S and C2S equations.
float& ClinkerFreeLime();

} // namespace kilnova
