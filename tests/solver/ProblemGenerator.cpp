#include "ProblemGenerator.h"

#include "solver/ClpSolve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace kilnova {

namespace {

using Range = std::array<double, 2>;

struct Material {
    Range siO2, al2O3, fe2O3, caO, mgO, sO3, k2O;
};

// Typical analyses of cement raw materials, in percent.
constexpr std::array<Material, 5> kMaterials{{
    {{2, 10}, {0.5, 3}, {0.2, 2}, {45, 54}, {0.5, 3}, {0, 0.5}, {0, 0.5}}, // limestone
    {{10, 30}, {3, 9}, {1, 5}, {25, 42}, {0.5, 3}, {0.1, 1}, {0.3, 1.5}},  // marl
    {{40, 65}, {12, 22}, {4, 9}, {0.5, 8}, {1, 4}, {0.1, 1.5}, {1, 4}},    // clay
    {{80, 97}, {0.5, 5}, {0.2, 2}, {0.1, 3}, {0, 1}, {0, 0.2}, {0, 1}},    // sand
    {{5, 20}, {1, 8}, {45, 80}, {0.5, 6}, {0, 3}, {0, 1}, {0, 0.5}},       // iron ore
}};

} // namespace

ProblemGenerator::ProblemGenerator(std::uint32_t seed)
    : mEngine(seed)
{
}

double ProblemGenerator::uniform(double low, double high)
{
    const double unit = static_cast<double>(mEngine() >> 8) / 16777216.0; // 24 bits, [0, 1)
    return low + (high - low) * unit;
}

int ProblemGenerator::integer(int low, int high)
{
    return low + static_cast<int>(mEngine() % static_cast<std::uint32_t>(high - low + 1));
}

bool ProblemGenerator::chance(double probability)
{
    return uniform(0.0, 1.0) < probability;
}

BlendCase ProblemGenerator::blend(int sources, int constrained, BlendCase::Mode mode, bool reachable)
{
    BlendCase c;
    c.mode = mode;
    double available = 0.0;
    for (int j = 0; j < sources; ++j) {
        const Material& m = kMaterials[static_cast<std::size_t>(j < 2 ? j * 2 : integer(0, 4))];
        BlendCase::Source s;
        s.tonnage = std::round(uniform(200.0, 20000.0));
        auto draw = [this](const Range& r) {
            return static_cast<float>(std::round(uniform(r[0], r[1]) * 100) / 100);
        };
        auto& v = s.values;
        v[BlendCase::SiO2] = draw(m.siO2);
        v[BlendCase::Al2O3] = draw(m.al2O3);
        v[BlendCase::Fe2O3] = draw(m.fe2O3);
        v[BlendCase::CaO] = draw(m.caO);
        v[BlendCase::MgO] = draw(m.mgO);
        v[BlendCase::SO3] = draw(m.sO3);
        v[BlendCase::K2O] = draw(m.k2O);
        const double alFe = v[BlendCase::Al2O3] + v[BlendCase::Fe2O3];
        v[BlendCase::MS] = static_cast<float>(v[BlendCase::SiO2] / alFe);
        v[BlendCase::MA] = static_cast<float>(v[BlendCase::Al2O3] / v[BlendCase::Fe2O3]);
        v[BlendCase::LSF] = static_cast<float>(
            100.0 * v[BlendCase::CaO] /
            (2.8 * v[BlendCase::SiO2] + 1.18 * v[BlendCase::Al2O3] + 0.65 * v[BlendCase::Fe2O3]));
        available += s.tonnage;
        c.sources.push_back(s);
    }

    // A blend of the sources that the reachable requests are drawn around.
    std::array<double, BlendCase::ElementCount> reference{};
    double referenceTonnes = 0.0;
    if (reachable) {
        for (const auto& s : c.sources) {
            const double t = chance(0.3) ? 0.0 : s.tonnage * uniform(0.05, 0.9);
            referenceTonnes += t;
            for (int e = 0; e < BlendCase::MS; ++e)
                reference[static_cast<std::size_t>(e)] += t * s.values[static_cast<std::size_t>(e)];
        }
        if (referenceTonnes == 0.0) {
            referenceTonnes = c.sources[0].tonnage / 2;
            for (int e = 0; e < BlendCase::MS; ++e)
                reference[static_cast<std::size_t>(e)] =
                    referenceTonnes * c.sources[0].values[static_cast<std::size_t>(e)];
        }
        for (int e = 0; e < BlendCase::MS; ++e)
            reference[static_cast<std::size_t>(e)] /= referenceTonnes;
        const double si = reference[BlendCase::SiO2];
        const double al = reference[BlendCase::Al2O3];
        const double fe = reference[BlendCase::Fe2O3];
        reference[BlendCase::MS] = si / (al + fe);
        reference[BlendCase::MA] = al / fe;
        reference[BlendCase::LSF] = 100.0 * reference[BlendCase::CaO] / (2.8 * si + 1.18 * al + 0.65 * fe);
    }

    // Raw-meal-like ranges for the moduli, the sources' own range for the oxides.
    auto span = [&c](int e) {
        Range r{1e30, -1e30};
        for (const auto& s : c.sources) {
            r[0] = std::min(r[0], static_cast<double>(s.values[static_cast<std::size_t>(e)]));
            r[1] = std::max(r[1], static_cast<double>(s.values[static_cast<std::size_t>(e)]));
        }
        if (e == BlendCase::MS)
            r = {1.8, 3.2};
        else if (e == BlendCase::MA)
            r = {1.0, 2.6};
        else if (e == BlendCase::LSF)
            r = {85.0, 102.0};
        return r;
    };
    auto hundredths = [](double v) {
        return static_cast<float>(std::round(v * 100) / 100);
    };

    std::array<int, BlendCase::ElementCount> order{};
    std::iota(order.begin(), order.end(), 0);
    for (int i = BlendCase::ElementCount - 1; i > 0; --i)
        std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(integer(0, i))]);
    c.optimised = order[0];
    if (mode == BlendCase::Target) {
        const Range r = span(c.optimised);
        c.target =
            hundredths(reachable ? reference[static_cast<std::size_t>(c.optimised)] : uniform(r[0], r[1]));
    }
    // In Target mode the optimised element carries no constraint.
    const int first = mode == BlendCase::Target ? 1 : 0;
    std::vector<int> chosen(order.begin() + first,
                            order.begin() + first + std::min(constrained, BlendCase::ElementCount - first));
    std::sort(chosen.begin(), chosen.end());
    for (const int e : chosen) {
        const Range r = span(e);
        const double width = r[1] - r[0];
        BlendCase::Bound b;
        b.element = e;
        if (reachable) {
            // Rounded outwards, so the reference blend stays inside.
            const double v = reference[static_cast<std::size_t>(e)];
            b.minimum = static_cast<float>(std::floor((v - uniform(0.01, 0.3) * width) * 100) / 100);
            b.maximum = static_cast<float>(std::ceil((v + uniform(0.01, 0.3) * width) * 100) / 100);
        } else {
            const double centre = uniform(r[0] + 0.15 * width, r[1] - 0.15 * width);
            const double half = uniform(0.05, 0.5) * width;
            b.minimum = hundredths(centre - half);
            b.maximum = hundredths(centre + half);
        }
        c.bounds.push_back(b);
    }
    if (reachable)
        c.requestedTonnage = std::floor(referenceTonnes);
    else
        c.requestedTonnage = std::round(available * (chance(0.9) ? uniform(0.1, 0.9) : uniform(0.9, 1.1)));
    return c;
}

LpProblem ProblemGenerator::general(int rows, int columns)
{
    LpProblem lp;
    lp.columns = columns;
    lp.sense = chance(0.5) ? 1 : -1;
    for (int i = 0; i < rows; ++i) {
        std::vector<double> row;
        for (int j = 0; j < columns; ++j)
            row.push_back(chance(0.3) ? 0.0 : integer(-4, 9));
        const int kind = integer(-1, 1);
        lp.addRow(row, kind, integer(-10, 30));
    }
    for (int j = 0; j < columns; ++j)
        lp.objective.push_back(integer(-5, 9));
    return lp;
}

} // namespace kilnova
