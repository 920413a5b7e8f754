#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace kilnova {

/// The 22 analysis values of every material record, in their fixed order. This is the column order
/// of the analysis block of the material tables and the order of every per-element array and list.
enum class Element : int {
    Titration,
    SiO2,
    Al2O3,
    Fe2O3,
    CaO,
    MgO,
    LOI,
    SO3,
    K2O,
    Na2O,
    TiO2,
    P2O5,
    MS,
    MA,
    LSF,
    C3S,
    C2S,
    C3A,
    NaEq,
    CostFactor,
    C4AF,
    Cl,
};

inline constexpr int kElementCount = 22;

/// A stored value of -1 means "not measured" or "cannot be computed".
inline constexpr double kMissing = -1.0;

using Analysis = std::array<float, kElementCount>;

/// An analysis with every value missing.
Analysis missingAnalysis();

constexpr int elementIndex(Element e)
{
    return static_cast<int>(e);
}

/// Column name in the database ("CostFactor").
std::string_view elementColumnName(int index);
/// Name shown in lists and reports ("Cost Factor").
std::string_view elementDisplayName(int index);
/// Unit a value is given in: "%" for the oxides, phases, NaEq and Cl; empty for the moduli and the
/// cost factor, which are ratios.
std::string_view elementUnit(int index);
/// Index of a display or column name, if it is one of the 22.
std::optional<int> elementFromName(std::string_view name);

} // namespace kilnova
