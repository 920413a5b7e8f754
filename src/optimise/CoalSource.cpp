#include "optimise/CoalSource.h"

#include "database/Record.h"

namespace kilnova {

CoalSource CoalSource::fromRecord(const Record& coal)
{
    CoalSource c;
    c.name = coal.name();
    c.tonnage = coal.number(QStringLiteral("Quantity"));
    for (int k = 0; k < kCoalPropertyCount; ++k)
        c.properties[static_cast<std::size_t>(k)] = coal.number(CoalProperties::columnName(k));
    c.Cl = coal.number(QStringLiteral("Cl"));
    c.read = coal.analysis();
    return c;
}

Analysis CoalSource::ashAnalysis() const
{
    Analysis a = missingAnalysis();
    for (int k = 0; k < kCoalPropertyCount; ++k) {
        if (const std::optional<Element> e = CoalProperties::ashElement(k))
            a[static_cast<std::size_t>(elementIndex(*e))] =
                static_cast<float>(properties[static_cast<std::size_t>(k)]);
    }
    a[static_cast<std::size_t>(elementIndex(Element::Cl))] = static_cast<float>(Cl);
    return a;
}

} // namespace kilnova
