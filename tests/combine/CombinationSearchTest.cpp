#include "combine/CombinationSearch.h"

#include "CombinationRun.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

// Small series worked out by hand. Blasts carry only the values a case needs; every other value is 0.

namespace kilnova {
namespace {

constexpr int SiO2 = elementIndex(Element::SiO2);
constexpr int CaO = elementIndex(Element::CaO);
constexpr int MgO = elementIndex(Element::MgO);
constexpr int Cl = elementIndex(Element::Cl);

BLASTSD blast(const char* name, double quantity, std::initializer_list<std::pair<Element, float>> values)
{
    BLASTSD b;
    b.Name = QString::fromLatin1(name);
    b.Quantity = quantity;
    for (const auto& [element, value] : values)
        b.Values[static_cast<std::size_t>(elementIndex(element))] = value;
    return b;
}

/// Tonnage T with a target on SiO2, no restriction, ranked by combined CaO closest to 0.
CombinationRequest request(double tonnage, std::optional<double> sio2Target)
{
    CombinationRequest r;
    r.tonnage = tonnage;
    if (sio2Target) {
        r.targetProperty = SiO2;
        r.targetValue = *sio2Target;
    }
    r.ranking = CombinationRequest::Ranking::CombinedGrade;
    r.rankingProperty = CaO;
    return r;
}

using test::CombinationRun;

CombinationRun run(const CombinationRequest& r, std::vector<BLASTSD> series)
{
    const CombinationSearch search(r, std::move(series));
    return *test::collect([&search](ReportSink& sink) { return std::optional(search.run(sink)); });
}

TEST(CombinationSearch, SolvesTheTwoTonnagesOfAPairOrRejectsIt)
{
    struct Case {
        const char* what;
        double tonnage;
        std::optional<double> target;
        float sio2First, sio2Second;
        double quantitySecond;
        bool succeeds;
        double first, second;
    };
    // -4·x1 + 6·x2 = 0 and x1 + x2 = 1000 give 600 and 400.
    const Case cases[] = {
        {"target between the two", 1000, 14, 10, 20, 1000, true, 600, 400},
        {"second blast holds exactly what is needed", 1000, 14, 10, 20, 400, true, 600, 400},
        {"second blast holds less, though the first could cover it", 1000, 14, 10, 20, 399.99, false, 0, 0},
        {"target above both: one tonnage negative", 1000, 25, 10, 20, 1000, false, 0, 0},
        {"target below both", 1000, 5, 10, 20, 1000, false, 0, 0},
        {"identical values: the second pivot is zero", 1000, 14, 12, 12, 1000, false, 0, 0},
        // (1000, 0) would solve it, but the zero leading coefficient fails the pair.
        {"first blast at the target: the first pivot is zero", 1000, 10, 10, 20, 1000, false, 0, 0},
        {"second blast at the target: all from it", 1000, 20, 10, 20, 1000, true, 0, 1000},
        {"no target: the tonnage alone, from the first blast", 700, std::nullopt, 10, 20, 1000, true, 700, 0},
        {"no target and more than the first blast holds", 1200, std::nullopt, 10, 20, 5000, false, 0, 0},
    };
    for (const Case& c : cases) {
        const CombinationRun out = run(request(c.tonnage, c.target),
                                       {blast("A", 1000, {{Element::SiO2, c.sio2First}}),
                                        blast("B", c.quantitySecond, {{Element::SiO2, c.sio2Second}})});
        ASSERT_EQ(out.successes.size(), c.succeeds ? 1u : 0u) << c.what;
        if (!c.succeeds) {
            EXPECT_EQ(out.bestIndex, -1) << c.what;
            continue;
        }
        EXPECT_EQ(out.successes[0], (CSuccessfulComb{{"A", "B"}, {c.first, c.second}})) << c.what;
        EXPECT_EQ(out.bestIndex, 0) << c.what;
    }
}

TEST(CombinationSearch, EachRestrictionRejectsAtItsBoundary)
{
    // A and B give 600 t and 400 t at SiO2 14: combined CaO 46, Cost Factor (600 + 800)/1000 = 1.4, so
    // the cost shares are 600/1400 = 42.86 % and 800/1400 = 57.14 %. C cannot pair (it would have to
    // give 266.7 t of its 100 t) but it is in the inventory: CaO left (93000 - 46000) / 1100 = 42.727.
    // A lacks MgO, so the combined MgO is missing.
    const std::vector<BLASTSD> series = {
        blast("A", 1000,
              {{Element::SiO2, 10}, {Element::CaO, 50}, {Element::CostFactor, 1}, {Element::MgO, -1}}),
        blast("B", 1000,
              {{Element::SiO2, 20}, {Element::CaO, 40}, {Element::CostFactor, 2}, {Element::MgO, 2}}),
        blast("C", 100,
              {{Element::SiO2, 25}, {Element::CaO, 30}, {Element::CostFactor, 1}, {Element::MgO, 1}}),
    };
    using Bounds = CombinationRequest::GradeBounds;
    struct Case {
        const char* what;
        void (*apply)(CombinationRequest&);
        bool passes;
    };
    const Case cases[] = {
        {"quantity: 40 % is not below 40",
         [](CombinationRequest& r) {
             r.quantityOn = true;
             r.quantityMinimumPercent = 40;
         },
         true},
        {"quantity: 40 % is below 40.5",
         [](CombinationRequest& r) {
             r.quantityOn = true;
             r.quantityMinimumPercent = 40.5;
         },
         false},
        {"cost: 42.86 % is not below 42.8",
         [](CombinationRequest& r) {
             r.costOn = true;
             r.costMinimumPercent = 42.8;
         },
         true},
        {"cost: 42.86 % is below 42.9",
         [](CombinationRequest& r) {
             r.costOn = true;
             r.costMinimumPercent = 42.9;
         },
         false},
        {"combined: lower bound is inclusive",
         [](CombinationRequest& r) {
             r.combined = Bounds{true, CaO, 46, 47};
         },
         true},
        {"combined: upper bound is exclusive",
         [](CombinationRequest& r) {
             r.combined = Bounds{true, CaO, 45, 46};
         },
         false},
        {"combined: a missing grade never passes",
         [](CombinationRequest& r) {
             r.combined = Bounds{true, MgO, -2, 2};
         },
         false},
        {"combined: chloride never passes",
         [](CombinationRequest& r) {
             r.combined = Bounds{true, Cl, -10, 10};
         },
         false},
        {"inventory: 42.727 within",
         [](CombinationRequest& r) {
             r.inventory = Bounds{true, CaO, 42.7f, 42.8f};
         },
         true},
        {"inventory: 42.727 below",
         [](CombinationRequest& r) {
             r.inventory = Bounds{true, CaO, 42.8f, 43};
         },
         false},
        {"inventory: a missing value anywhere in the series",
         [](CombinationRequest& r) {
             r.inventory = Bounds{true, MgO, -2, 5};
         },
         false},
    };
    for (const Case& c : cases) {
        CombinationRequest r = request(1000, 14);
        c.apply(r);
        const CombinationRun out = run(r, series);
        ASSERT_EQ(out.successes.size(), c.passes ? 1u : 0u) << c.what;
        if (c.passes) {
            EXPECT_EQ(out.successes[0].Names, (std::array<QString, 2>{"A", "B"})) << c.what;
        }
    }
}

TEST(CombinationSearch, RanksStrictlySoTheFirstOfEqualPairsStaysBest)
{
    // With SiO2 14 from 1000 t, (A, X) takes 600 t of A and 400 t of X; (B, C) cannot pair.
    // Combined CaO of (A, X) = 30 + 0.4·CaO(X); combined CaO deviation √(30² + (0.4·CaO(X))²);
    // CaO left by (A, B) in the other 2000 t: 10 + 0.3·CaO(B) + 0.5·CaO(C).
    struct Case {
        const char* what;
        CombinationRequest::Ranking ranking;
        float cao1, cao2;
        int best;
    };
    const Case cases[] = {
        {"mode 0: equal distances, the first stays", CombinationRequest::Ranking::CombinedGrade, 40, 40, 0},
        {"mode 0: 46 and 44 are both 1 from 45", CombinationRequest::Ranking::CombinedGrade, 40, 35, 0},
        {"mode 0: a strictly closer pair replaces", CombinationRequest::Ranking::CombinedGrade, 40, 37.5, 1},
        {"mode 2: equal deviations, the first stays", CombinationRequest::Ranking::SmallestDeviation, 40, 40,
         0},
        {"mode 2: a smaller deviation replaces", CombinationRequest::Ranking::SmallestDeviation, 40, 35, 1},
        {"mode 2: a larger one does not", CombinationRequest::Ranking::SmallestDeviation, 35, 40, 0},
        // Mode 1 keeps the inventory distance of (A, B), |62 - 45| = 17 with CaO(C) 80 or 17.5 with 81,
        // and compares the combined distance of (A, C) with it: 17 does not replace, 17.4 does.
        {"mode 1: combined distance equal to the kept one, the first stays",
         CombinationRequest::Ranking::InventoryGrade, 40, 80, 0},
        {"mode 1: combined distance below the kept one replaces", CombinationRequest::Ranking::InventoryGrade,
         40, 81, 1},
    };
    for (const Case& c : cases) {
        CombinationRequest r = request(1000, 14);
        r.ranking = c.ranking;
        r.rankingProperty = CaO;
        r.rankingTarget = 45;
        r.deviationProperty = CaO;
        const CombinationRun out = run(r, {blast("A", 1000, {{Element::SiO2, 10}, {Element::CaO, 50}}),
                                           blast("B", 1000, {{Element::SiO2, 20}, {Element::CaO, c.cao1}}),
                                           blast("C", 1000, {{Element::SiO2, 20}, {Element::CaO, c.cao2}})});
        ASSERT_EQ(out.successes.size(), 2u) << c.what;
        EXPECT_EQ(out.bestIndex, c.best) << c.what;
        EXPECT_TRUE(
            out.report.contains(QStringLiteral("Best Solution found: Combination #%1\r\n").arg(c.best + 1)))
            << c.what;
    }
}

TEST(CombinationSearch, InventoryRankingComparesTheCombinedGradeButKeepsTheInventoryGrade)
{
    // 600 t at SiO2 14 out of 2600 t. Pairs, combined CaO and CaO left in the other 2000 t:
    //   #1 (B1, B2) 360/240: 46.000, (118900 - 27600) / 2000 = 45.65  -> |46 - 46.2| = 0.2 < 1e39, keeps 0.55
    //   #2 (B1, B3) 200/400: 46.667, 45.45 -> 0.4667 < 0.55 replaces although both its grades are farther;
    //   keeps 0.75 #3 (B3, B4) 300/300: 46.500, 45.50 -> 0.3 < 0.75 replaces; keeps 0.70
    CombinationRequest r = request(600, 14);
    r.ranking = CombinationRequest::Ranking::InventoryGrade;
    r.rankingProperty = CaO;
    r.rankingTarget = 46.2f;
    const CombinationRun out = run(r, {blast("B1", 1000, {{Element::SiO2, 10}, {Element::CaO, 50}}),
                                       blast("B2", 800, {{Element::SiO2, 20}, {Element::CaO, 40}}),
                                       blast("B3", 500, {{Element::SiO2, 16}, {Element::CaO, 45}}),
                                       blast("B4", 300, {{Element::SiO2, 12}, {Element::CaO, 48}})});
    ASSERT_EQ(out.successes.size(), 3u);
    EXPECT_EQ(out.bestIndex, 2);
    const QStringList values = {"0.5500", "0.7500", "0.7000"};
    qsizetype from = 0;
    for (const QString& value : values) {
        from = out.report.indexOf("Classification ranking value\r\n: " + value + "  Titration", from);
        EXPECT_GE(from, 0) << value.toStdString();
    }
}

TEST(CombinationSearch, ReportsProgressPerBlastAndStopsWhenCancelled)
{
    std::vector<BLASTSD> series;
    for (const char* name : {"A", "B", "C", "D"})
        series.push_back(blast(name, 1000, {{Element::SiO2, name[0] == 'A' ? 10.0f : 20.0f}}));
    const CombinationSearch search(request(1000, 14), series);

    std::vector<std::pair<long long, long long>> calls;
    ReportText doneText;
    const CombinationOutcome done = search.run(doneText, [&calls](long long d, long long total) {
        calls.emplace_back(d, total);
        return true;
    });
    EXPECT_FALSE(done.cancelled);
    EXPECT_EQ(done.pairs.size(), 3u);
    EXPECT_EQ(calls, (std::vector<std::pair<long long, long long>>{{0, 6}, {3, 6}, {5, 6}}));

    int asked = 0;
    ReportText cancelledText;
    const CombinationOutcome cancelled =
        search.run(cancelledText, [&asked](long long, long long) { return ++asked < 2; });
    EXPECT_TRUE(cancelled.cancelled);
    EXPECT_TRUE(cancelled.pairs.empty());
    EXPECT_EQ(cancelledText.size(), 0) << "the header waits for a successful pair";
    EXPECT_EQ(asked, 2);
}

} // namespace
} // namespace kilnova
