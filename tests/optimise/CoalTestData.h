#pragma once

#include "database/Record.h"
#include "optimise/CoalSource.h"

#include <vector>

namespace kilnova::test {

/// Two coals of 1000 t whose ashes differ: C1 has 10% ash with 50% SiO2, C2 30% ash with 30% SiO2.
/// Half a tonne of each makes a mix whose ash holds (10·50 + 30·30) / 40 = 35% SiO2, not the 40% of
/// the tonne-weighted mean.
inline std::vector<CoalSource> twoCoals()
{
    //        BTU    Ash Hum Vol Sul SiO2 Al2O3 Fe2O3 CaO MgO LOI SO3 K2O Na2O TiO2 P2O5
    //        MS MA LSF C3S C2S C3A NaEq Cost C4AF
    CoalSource c1{"C1",
                  1000.0,
                  {12000, 10, 8,    32,   1,   50,  25, 10, 5,  2,   1,  2, 1.5,
                   0.5,   1,  0.25, 1.43, 2.5, 0.1, -1, -1, 50, 1.5, 90, 30},
                  0.02};
    CoalSource c2{"C2",
                  1000.0,
                  {14000, 30,  7,    20,   2,    30,  15, 20, 20, 3,   2,  6, 1,
                   1.5,   0.5, 0.75, 0.86, 0.75, 0.4, -1, -1, 5,  2.2, 60, 61},
                  0.04};
    return {c1, c2};
}

/// A Coal record holding a coal's values.
inline Record coalRecord(const CoalSource& c)
{
    Record r(Table::Coal);
    r.setValue(QStringLiteral("Name"), c.name);
    r.setValue(QStringLiteral("Quantity"), c.tonnage);
    for (int k = 0; k < kCoalPropertyCount; ++k)
        r.setValue(CoalProperties::columnName(k), c.properties[static_cast<std::size_t>(k)]);
    r.setValue(QStringLiteral("Cl"), c.Cl);
    return r;
}

} // namespace kilnova::test
