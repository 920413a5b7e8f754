#pragma once

#include "chemistry/Elements.h"
#include "optimise/BlendProblem.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kilnova {

/// The 25 properties of a coal, in the order of the coal optimisation's constraint entries, lists
/// and report: the fuel's own values (heat, ash, humidity, volatiles, sulfur), the analysis of its
/// ash with the moduli and phases, then its cost factor and C4AF (the Coal table's columns after
/// Quantity, without Cl).
enum class CoalProperty : int {
    BTU,
    Ash,
    Humidity,
    Volatiles,
    Sulfur,
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
};

inline constexpr int kCoalPropertyCount = 25;

constexpr int coalPropertyIndex(CoalProperty p)
{
    return static_cast<int>(p);
}

/// Names and roles of the 25 coal properties.
class CoalProperties final {
public:
    CoalProperties() = delete;

    /// The names the lists and the report show ("Cost Factor").
    static const QStringList& names();
    /// The Coal table's column of a property ("CostFactor").
    static QString columnName(int property);
    /// The unit a property's value is given in: BTU per pound, percent of the coal for ash, humidity,
    /// volatiles and sulfur, the element's own for the ash analysis; none for the cost factor.
    static QString unit(int property);
    /// The element a property of the ash analysis is (SiO2 … NaEq, C4AF); nothing for the fuel's own
    /// values, which count by the tonne of coal (BTU, Ash, Humidity, Volatiles, Sulfur, Cost Factor).
    static std::optional<Element> ashElement(int property);
    static bool inAshAnalysis(int property) { return ashElement(property).has_value(); }
    /// Where the ratios and their oxides lie among the 25; a ratio's objective counts by the ash, as
    /// the rest of the ash analysis does.
    static PropertyLayout layout();
};

} // namespace kilnova
