#include "optimise/ClinkerModel.h"
#include "common/MessageTable.h"
#include "optimise/ClinkerBalance.h"
#include "solver/ClpSolve.h"

#include "ClinkerFixtures.h"

#include <gtest/gtest.h>

#include <functional>

namespace kilnova {
namespace {

using Role = LinearProgramme::Role;
constexpr int kLSF = elementIndex(Element::LSF);

void constrain(ClinkerRequest& r, Element e, double minimum, double maximum)
{
    r.constraints[static_cast<std::size_t>(elementIndex(e))] = {minimum, maximum, "", 1};
}

/// Minimise CaO at 0 <= SiO2 <= 20.83 (and a limit on LOI, which is never a row).
ClinkerRequest limitedOnSilica()
{
    ClinkerRequest r = test::crudeAndCoal();
    constrain(r, Element::SiO2, 0, 20.83);
    constrain(r, Element::LOI, 0, 1);
    return r;
}

std::vector<double> floats(std::initializer_list<double> values)
{
    std::vector<double> v;
    for (double x : values)
        v.push_back(static_cast<double>(static_cast<float>(x)));
    return v;
}

TEST(ClinkerModel, RowsAndKindsWithCoalInEachMode)
{
    const ClinkerModel model;
    for (int mode : {-1, 1}) {
        ClinkerRequest r = limitedOnSilica();
        r.mode = mode;
        const LinearProgramme lp = model.shared().build(model.problem(r), 1);
        // 2 * (2 constraints + 3 sources) + 1 + 2 with coal; built: the SiO2 pair, six source rows, the
        // clinker tonnage and the heat; the three left over are empty.
        EXPECT_EQ(lp.rows, 13);
        EXPECT_EQ(lp.sense, mode);
        EXPECT_EQ((std::array{lp.countAtLeast, lp.countEqual, lp.countAtMost}), (std::array{4, 5, 4}));
        ASSERT_EQ(lp.rowList.size(), 13u);
        // Crudes: 13 - 20.83 * 0.65 and 15.2 - 13.5395; the coal's ash counts 10 % and makes no clinker.
        EXPECT_EQ(lp.rowList[0].coefficients, floats({13.0 - 13.5395, 15.2f - 13.5395, 5}));
        EXPECT_EQ(lp.rowList[0].role, Role::ElementMaximum);
        EXPECT_EQ(lp.rowList[1].coefficients, floats({13, 15.2f, 5}));
        EXPECT_EQ(lp.rowList[1].kind, ClpSolve::kAtLeast);
        for (int j = 0; j < 3; ++j) {
            EXPECT_EQ(lp.rowList[2 + 2 * j].role, Role::SourceMinimum);
            EXPECT_EQ(lp.rowList[3 + 2 * j].rhs, j < 2 ? 2000.0 : 500.0);
        }
        EXPECT_EQ(lp.rowList[8].role, Role::Tonnage);
        EXPECT_EQ(lp.rowList[8].rhs, 650.0);
        EXPECT_EQ(lp.rowList[8].coefficients, (std::vector<double>{0.65, 0.65, 0.0}));
        EXPECT_EQ(lp.rowList[9].role, Role::KindRow) << "the heat row";
        EXPECT_EQ(lp.rowList[9].kind, ClpSolve::kEqual);
        EXPECT_EQ(lp.rowList[9].rhs, 650.0);
        EXPECT_EQ(lp.rowList[9].coefficients[0], 0.0);
        EXPECT_DOUBLE_EQ(lp.rowList[9].coefficients[2], 10.0);
        for (std::size_t i = 10; i < 13; ++i)
            EXPECT_EQ(lp.rowList[i].role, Role::Unused);
        // CaO times yield and factor: 44 * 0.65, 40 * 0.65, and nothing for coal that makes no clinker.
        EXPECT_EQ(lp.objective, floats({44 * 0.65, 40 * 0.65, 0}));
    }

    ClinkerRequest target = limitedOnSilica();
    target.mode = 0;
    target.element = kLSF;
    target.target = 0.95;
    for (int programme : {1, 2}) {
        const LinearProgramme lp = model.shared().build(model.problem(target), programme);
        EXPECT_EQ(lp.rows, 14) << "one more in Target mode";
        EXPECT_EQ(lp.sense, programme == 1 ? -1 : 1);
        ASSERT_EQ(lp.rowList[2].role, Role::Target);
        EXPECT_EQ(lp.rowList[2].kind, programme == 1 ? ClpSolve::kAtLeast : ClpSolve::kAtMost);
        const float meal =
            static_cast<float>(44.0 - (static_cast<double>(0.7f) * 2 + static_cast<double>(1.1f) * 3 +
                                       static_cast<double>(2.8f) * 13) *
                                          0.95);
        EXPECT_EQ(lp.rowList[2].coefficients[0], static_cast<double>(meal));
        EXPECT_EQ(lp.objective[0], static_cast<double>(meal)) << "the deviation the programme drives to zero";
        EXPECT_EQ((std::array{lp.countAtLeast + lp.countEqual + lp.countAtMost}), (std::array{14}));
    }
}

TEST(ClinkerModel, AdditivesHaveNoUpperRowAndStockpileLimitsComeLast)
{
    const ClinkerModel model;
    ClinkerRequest r = test::stockpileAdditiveAndCoal();
    r.tonnageLimits = {{0, 1000, 4500}};
    const LinearProgramme lp = model.shared().build(model.problem(r), 1);
    // 2 * (0 + 3) + 1 + 2 + 2 for the limit; built: five source rows, tonnage, heat, the limit pair.
    EXPECT_EQ(lp.rows, 11);
    ASSERT_EQ(lp.rowList.size(), 11u);
    const std::vector<Role> roles = {Role::SourceMinimum, Role::SourceMaximum, Role::SourceMinimum,
                                     Role::SourceMinimum, Role::SourceMaximum, Role::Tonnage,
                                     Role::KindRow,       Role::TakenMaximum,  Role::TakenMinimum,
                                     Role::Unused,        Role::Unused};
    for (std::size_t i = 0; i < roles.size(); ++i)
        EXPECT_EQ(lp.rowList[i].role, roles[i]) << i;
    EXPECT_EQ(lp.rowList[2].index, 1) << "the sand's only row";
    EXPECT_EQ(lp.rowList[7].index, 0) << "the limit's stockpile";
    EXPECT_EQ(lp.rowList[8].index, 0);
    EXPECT_EQ(lp.rowList[7].coefficients, (std::vector<double>{1, 0, 0}));
    EXPECT_EQ(lp.rowList[7].rhs, 4500.0);
    EXPECT_EQ(lp.rowList[7].kind, ClpSolve::kAtMost);
    EXPECT_EQ(lp.rowList[8].rhs, 1000.0);
    EXPECT_EQ(lp.rowList[8].kind, ClpSolve::kAtLeast);
}

TEST(ClinkerModel, RefusalsAndTheirOrder)
{
    const ClinkerModel model;
    const QString noLoi = message(Msg::ClinkerMissingLoi);
    auto lacking = [](const char* name) {
        return message(Msg::MissingValueInSource, {name});
    };
    auto set = [](std::size_t source, Element e, float v) {
        return [=](ClinkerRequest& r) {
            r.sources[source].values[static_cast<std::size_t>(elementIndex(e))] = v;
        };
    };
    auto both = [](std::function<void(ClinkerRequest&)> a, std::function<void(ClinkerRequest&)> b) {
        return [=](ClinkerRequest& r) {
            a(r);
            b(r);
        };
    };
    struct Case {
        const char* what;
        std::function<void(ClinkerRequest&)> change;
        QString message;
    };
    const std::vector<Case> cases = {
        {"a later source without LOI", set(1, Element::LOI, -1), noLoi},
        {"the first source lacks the constrained SiO2, the second its LOI",
         both(set(0, Element::SiO2, -1), set(1, Element::LOI, -1)), lacking("Meal A")},
        {"the first lacks its LOI, the second the SiO2: the first is met first",
         both(set(0, Element::LOI, -1), set(1, Element::SiO2, -1)), noLoi},
        {"one source lacks both: the element first",
         both(set(1, Element::SiO2, -1), set(1, Element::LOI, -1)), lacking("Meal B")},
        {"coal has no Titration", [](ClinkerRequest& r) { constrain(r, Element::Titration, 0, 100); },
         lacking("Coal A")},
        {"the optimised element after the constraints", set(2, Element::CaO, -1), lacking("Coal A")},
        {"a coal without tonnage", [](ClinkerRequest& r) { r.sources[2].quantity = -1.0; },
         lacking("Coal A")},
        {"a coal without ash", [](ClinkerRequest& r) { r.sources[2].ash = -1; },
         message(Msg::ClinkerCoalWithoutAshOrBtu, {"Coal A"})},
        {"a coal without BTU", [](ClinkerRequest& r) { r.sources[2].btu = 0; },
         message(Msg::ClinkerCoalWithoutAshOrBtu, {"Coal A"})},
        {"energy factor 0", [](ClinkerRequest& r) { r.process.EnergyConsumptionFactor = 0; },
         message(Msg::ClinkerEnergyFactorNeeded)},
        {"fixed LOI 100", [](ClinkerRequest& r) { r.process.FixedLOI = 100; },
         message(Msg::ClinkerFixedLoiTooHigh)},
        {"fixed LOI first",
         [](ClinkerRequest& r) {
             r.process.FixedLOI = 100;
             r.process.EnergyConsumptionFactor = -1;
         },
         message(Msg::ClinkerFixedLoiTooHigh)},
        {"no clinker asked for", [](ClinkerRequest& r) { r.requestedTonnage = 0; },
         message(Msg::ClinkerTonnageNeeded)},
        {"coal alone", [](ClinkerRequest& r) { r.sources.erase(r.sources.begin(), r.sources.begin() + 2); },
         message(Msg::SelectTwoSources)},
        {"two coals and nothing else",
         [](ClinkerRequest& r) {
             r.sources.erase(r.sources.begin(), r.sources.begin() + 2);
             r.sources.push_back(r.sources[0]);
         },
         message(Msg::ClinkerCoalAlone)},
    };
    for (const Case& c : cases) {
        ClinkerRequest r = limitedOnSilica();
        c.change(r);
        const OptimizationOutcome out = model.run(r);
        EXPECT_FALSE(out.solved) << c.what;
        EXPECT_EQ(out.message, c.message) << c.what;
    }
}

TEST(ClinkerModel, TheDegeneracyBoundaryIsOneTenthOfAPercent)
{
    struct Case {
        double clinker, requested;
        bool degenerated;
    };
    for (const Case& c : {Case{1001, 1000, false}, Case{999, 1000, false}, Case{1001.0001, 1000, true},
                          Case{998.9, 1000, true}, Case{1000, 1000, false}})
        EXPECT_EQ(ClinkerBalance::isDegenerate(c.clinker, c.requested), c.degenerated) << c.clinker;
}

TEST(ClinkerModel, SolvesTheHandWorkedClinker)
{
    const ClinkerModel model;
    // 650 t of clinker need 1000 t of meal and 65 t of coal. Least CaO with SiO2 at most 20.83:
    // 13 a + 15.2 (1000 - a) + 325 = 20.83 * 650 takes a = 902.5 t of the limier Meal A.
    ClinkerRequest r = limitedOnSilica();
    const OptimizationOutcome out = model.run(r);
    ASSERT_TRUE(out.solved) << out.message.toStdString();
    EXPECT_NEAR(out.tonnes(0), 902.5, 0.01);
    EXPECT_NEAR(out.tonnes(1), 97.5, 0.01);
    EXPECT_NEAR(out.tonnes(2), 65, 1e-4);
    const ClinkerBalance b = ClinkerBalance::of(r, out, {});
    EXPECT_NEAR(b.clinkerTonnage, 650, 1e-3);
    EXPECT_FALSE(b.degenerated);

    // All the ash taken up: the coal's 6.5 t of ash (98 % of it after its LOI) now count as clinker,
    // so less meal is needed.
    r.process.AshRecoveryFactor = 100;
    const OptimizationOutcome withAsh = model.run(r);
    ASSERT_TRUE(withAsh.solved) << withAsh.message.toStdString();
    EXPECT_NEAR(withAsh.tonnes(2), 65, 1e-4);
    EXPECT_NEAR(0.65 * (withAsh.tonnes(0) + withAsh.tonnes(1)) + 0.1 * 0.98 * 65, 650, 1e-3);

    // Target LSF 0.95 over the meals without a silica limit: both programmes meet it.
    ClinkerRequest target = test::crudeAndCoal();
    target.mode = 0;
    target.element = kLSF;
    target.target = 0.95;
    const OptimizationOutcome hit = model.run(target);
    ASSERT_TRUE(hit.solved) << hit.message.toStdString();
    const ClinkerBalance t = ClinkerBalance::of(target, hit, {});
    EXPECT_NEAR(t.clinker[static_cast<std::size_t>(kLSF)], 0.95, 1e-4);
}

} // namespace
} // namespace kilnova
