#include "optimise/ClinkerConversion.h"

#include "ClinkerFixtures.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

constexpr std::size_t at(Element e)
{
    return static_cast<std::size_t>(elementIndex(e));
}

/// LOI 35, SO3 1, K2O 0.8, Na2O 0.2 and nothing else that matters here.
SOURCE raw(float loi, float so3 = 1.0f, float k2o = 0.8f, float na2o = 0.2f)
{
    return test::clinkerSource('R', "Meal", "Mill", 1000,
                               {-1, 14, 3, 2, 44, 1, loi, so3, k2o, na2o, 0.2f, 0.1f}, 4, 0.01f);
}

SOURCE coal(float loi, double ash)
{
    return test::clinkerSource('C', "Coal", "", 100, {-1, 50, 25, 8, 5, 1, loi, 1, 1, 0.5f, 1, 0.5f}, 90,
                               0.05f, ash, 12600);
}

ClinkerProcessParameters process(float fixedLoi, float so3, float k2o, float na2o, float ash = 0,
                                 float energy = 1500)
{
    return {fixedLoi, so3, k2o, na2o, energy, ash, 0};
}

TEST(ClinkerConversion, YieldsOfTheEdgeCasesWorkedByHand)
{
    struct Case {
        const char* what;
        SOURCE source;
        ClinkerProcessParameters process;
        double loss, yield, tonnageYield;
    };
    const std::vector<Case> cases = {
        {"everything retained: 100 - 35 = 65 %", raw(35), process(0, 100, 100, 100), 35, 0.65, 0.65},
        {"half the K2O leaves: 35 + 0.4", raw(35), process(0, 100, 50, 100), 35.4, 0.646, 0.646},
        {"SO3 missing: LOI alone, whatever the retentions", raw(35, -1), process(0, 50, 50, 50), 35, 0.65,
         0.65},
        {"the fixed LOI multiplies", raw(35), process(2, 100, 100, 100), 35, 0.98 * 0.65, 0.98 * 0.65},
        // LOI 0: the tonnage row counts only the volatile SO3, K2O and Na2O (na2o first, the same sum).
        {"no LOI, volatiles leave", raw(0, 2, 1, 1), process(0, 50, 50, 50), 2, 0.98, 0.98},
        // A negative LOI (a material that gains weight) is left out of the tonnage row only.
        {"LOI below 0", raw(-0.5f, 2, 1, 1), process(0, 50, 50, 50), 1.5, 0.985, 0.98},
        {"LOI 0 and K2O missing: a tonne for a tonne", raw(0, 2, -1, 1), process(0, 50, 50, 50), 0, 1.0, 1.0},
        // Coal: ash 10 %, with no ash recovery it makes no clinker at all.
        {"coal, recovery 0", coal(2, 10), process(0, 100, 100, 100, 0), 2, 0, 0},
        // Recovery 80 %, ash LOI 2, SO3 1 * 0.5, K2O 1 * 0.5 leave: 0.8 * 0.1 * 0.96; the tonnage row
        // leaves the volatiles out: 0.1 * 0.98 * 0.8.
        {"coal, recovery 80", coal(2, 10), process(0, 50, 50, 100, 80), 3, 0.8 * 0.1 * 0.97,
         0.1 * 0.98 * 0.8},
        {"coal without ash LOI", coal(0, 10), process(1, 100, 100, 100, 80), 0, 0.8 * 0.1 * 0.99,
         0.99 * 0.1 * 0.8},
    };
    for (const Case& c : cases) {
        const ClinkerConversion conversion(c.process);
        EXPECT_NEAR(conversion.effectiveLoss(c.source), c.loss, 1e-6) << c.what;
        EXPECT_NEAR(conversion.yield(c.source), c.yield, 1e-7) << c.what;
        EXPECT_NEAR(conversion.tonnageYield(c.source), c.tonnageYield, 1e-7) << c.what;
    }
}

TEST(ClinkerConversion, FactorsHeatAndWeights)
{
    const ClinkerConversion conversion(process(0, 80, 70, 100, 0, 700));
    // A crude enters as it is, less what leaves of its SO3 and K2O.
    const std::array<double, kElementCount> crude = conversion.factors(raw(35));
    EXPECT_EQ(crude[at(Element::SiO2)], 1.0);
    EXPECT_NEAR(crude[at(Element::SO3)], 0.8, 1e-12);
    EXPECT_NEAR(crude[at(Element::K2O)], 0.7, 1e-12);
    EXPECT_EQ(crude[at(Element::Na2O)], 1.0);
    EXPECT_EQ(conversion.heatShare(raw(35)), 0.0);

    // Only a coal's ash enters, even when none of it counts as clinker (recovery 0).
    const SOURCE c = coal(2, 10);
    const std::array<double, kElementCount> ash = conversion.factors(c);
    EXPECT_NEAR(ash[at(Element::SiO2)], 0.1, 1e-12);
    EXPECT_NEAR(ash[at(Element::SO3)], 0.08, 1e-12);
    // 12,600 BTU/lb are 7,000 KCal/kg: a tonne covers the heat of 10 t of clinker at 700 KCal/kg.
    EXPECT_DOUBLE_EQ(conversion.heatShare(c), 10.0);

    // The shared builder's weights: value φ, bound y, objective y·φ; a coal's Cost Factor by the tonne.
    const SourceWeights w = ClinkerConversion(process(0, 100, 100, 100, 50)).weights(c);
    EXPECT_NEAR(w.value[at(Element::CaO)], 0.1, 1e-12);
    EXPECT_NEAR(w.bound[at(Element::CaO)], 0.5 * 0.1 * 0.98, 1e-12);
    EXPECT_NEAR(w.objective[at(Element::CaO)], 0.5 * 0.1 * 0.98 * 0.1, 1e-12);
    EXPECT_NEAR(w.value[at(Element::CostFactor)], 0.1, 1e-12);
    EXPECT_EQ(w.bound[at(Element::CostFactor)], 1.0);
    EXPECT_EQ(w.objective[at(Element::CostFactor)], 1.0);
    const SourceWeights crudeWeights = ClinkerConversion(process(0, 100, 100, 100, 50)).weights(raw(35));
    EXPECT_NEAR(crudeWeights.bound[at(Element::CostFactor)], 0.65, 1e-12);
}

} // namespace
} // namespace kilnova
