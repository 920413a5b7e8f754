#include "chemistry/Elements.h"

namespace kilnova {

namespace {

constexpr std::array<std::string_view, kElementCount> kColumnNames = {
    "Titration", "SiO2", "Al2O3", "Fe2O3", "CaO", "MgO", "LOI", "SO3",  "K2O",        "Na2O", "TiO2",
    "P2O5",      "MS",   "MA",    "LSF",   "C3S", "C2S", "C3A", "NaEq", "CostFactor", "C4AF", "Cl",
};

} // namespace

Analysis missingAnalysis()
{
    Analysis a;
    a.fill(static_cast<float>(kMissing));
    return a;
}

std::string_view elementColumnName(int index)
{
    return kColumnNames.at(static_cast<std::size_t>(index));
}

std::string_view elementDisplayName(int index)
{
    if (index == elementIndex(Element::CostFactor))
        return "Cost Factor";
    return elementColumnName(index);
}

std::string_view elementUnit(int index)
{
    switch (static_cast<Element>(index)) {
    case Element::MS:
    case Element::MA:
    case Element::LSF:
    case Element::CostFactor:
        return "";
    default:
        (void)elementColumnName(index); // out of range throws, as for the names
        return "%";
    }
}

std::optional<int> elementFromName(std::string_view name)
{
    for (int i = 0; i < kElementCount; ++i) {
        if (name == elementColumnName(i) || name == elementDisplayName(i))
            return i;
    }
    return std::nullopt;
}

} // namespace kilnova
