#include "chemistry/ClinkerProcessParameters.h"

#include <cstdio>

namespace kilnova {

std::string ClinkerProcessParameters::reportBlock() const
{
    auto d = [](float v) {
        return static_cast<double>(v);
    };
    char buffer[1024];
    std::snprintf(buffer, sizeof buffer,
                  "Clinker process parameters\r\n"
                  "        Fixed LOI of the clinker:    %.2f%%\r\n"
                  "        %%Original SO3 in clinker:    %.2f%%\r\n"
                  "        %%Original K2O in clinker:    %.2f%%\r\n"
                  "        %%Original Na2O in clinker:    %.2f%%\r\n"
                  "        Clinker Energy Consumption Factor:  %.2f KCal/Kg\r\n"
                  "        Clinker Ash Recovery Factor:    %.2f%%\r\n"
                  "        Free Lime in clinker:    %.2f%%\r\n\r\n",
                  d(FixedLOI), d(SO3InClinker), d(K2OInClinker), d(Na2OInClinker), d(EnergyConsumptionFactor),
                  d(AshRecoveryFactor), d(FreeLime));
    return buffer;
}

} // namespace kilnova
