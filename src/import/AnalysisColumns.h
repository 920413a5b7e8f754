#pragma once

#include "chemistry/Elements.h"

#include <QString>

namespace kilnova {

/// The measured values both importers keep to compute the derived columns from (SO3 is kept too,
/// though no formula uses it).
inline constexpr Element kKeptElements[] = {Element::SiO2, Element::Al2O3, Element::Fe2O3, Element::CaO,
                                            Element::SO3,  Element::K2O,   Element::Na2O};

/// The derived columns, in the order they are computed and set.
inline constexpr Element kDerivedElements[] = {Element::MS,  Element::MA,  Element::LSF,  Element::C3S,
                                               Element::C2S, Element::C3A, Element::NaEq, Element::C4AF};

/// The column name of an element ("CostFactor").
inline QString elementColumn(Element element)
{
    const auto name = elementColumnName(elementIndex(element));
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace kilnova
