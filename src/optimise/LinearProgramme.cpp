#include "optimise/LinearProgramme.h"

namespace kilnova {

std::vector<double> LinearProgramme::Row::dense(int columns) const
{
    if (boundColumn < 0)
        return coefficients;
    std::vector<double> all(static_cast<std::size_t>(columns), 0.0);
    all.at(static_cast<std::size_t>(boundColumn)) = 1.0;
    return all;
}

} // namespace kilnova
