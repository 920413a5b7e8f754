// Set-up rules of ClpSolve: Initialize, the setters, the capacities and the debug dump.

#include "LpProblem.h"
#include "ProblemGenerator.h"

#include "solver/ClpSolve.h"
#include "solver/ProgrammeDump.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

namespace kilnova {
namespace {

TEST(ClpSolveSetup, InitializeChecksTheRowCounts)
{
    struct Case {
        int rows, columns, sense, atLeast, equal, atMost;
        bool accepted;
    };
    const Case cases[] = {
        {3, 2, 1, 1, 1, 2, false},                             // 1 + 1 + 2 is not 3
        {3, 2, 1, 1, 1, 1, true},   {2, 2, 1, -4, 0, 2, true}, // a negative count is taken as 0
        {2, 2, 1, 0, -1, 1, false},                            // ... so 0 + 0 + 1 misses a row
        {-2, 3, 1, 0, 0, 0, true},                             // no rows at all
        {0, 0, -1, 0, 0, 0, true},
    };
    for (const Case& c : cases) {
        ClpSolve solver;
        EXPECT_EQ(solver.Initialize(c.rows, c.columns, c.sense, c.atLeast, c.equal, c.atMost), c.accepted)
            << c.rows << " rows, counts " << c.atLeast << "/" << c.equal << "/" << c.atMost;
    }
}

TEST(ClpSolveSetup, RefusedInitializeLeavesAnEmptyProblem)
{
    ClpSolve solver;
    ASSERT_TRUE(solver.Initialize(2, 2, 1, 0, 0, 2));
    ASSERT_FALSE(solver.Initialize(3, 2, 1, 1, 1, 2));
    EXPECT_FALSE(solver.SetCoefficient(1, 1, 1.0));
    EXPECT_FALSE(solver.SetConstraint(1, 1.0, ClpSolve::kAtMost));
    EXPECT_FALSE(solver.SetObjectiveCoefficient(1, 1.0));
}

TEST(ClpSolveSetup, SettersRefuseArgumentsOutsideTheProblem)
{
    ClpSolve solver;
    ASSERT_TRUE(solver.Initialize(2, 3, 1, 1, 0, 1));
    struct Call {
        const char* what;
        std::function<bool()> call;
        bool accepted;
    };
    const Call calls[] = {
        {"coefficient 1,1", [&] { return solver.SetCoefficient(1, 1, 2.0); }, true},
        {"coefficient 2,3", [&] { return solver.SetCoefficient(2, 3, 2.0); }, true},
        {"coefficient 0,1", [&] { return solver.SetCoefficient(0, 1, 2.0); }, false},
        {"coefficient 3,1", [&] { return solver.SetCoefficient(3, 1, 2.0); }, false},
        {"coefficient 1,0", [&] { return solver.SetCoefficient(1, 0, 2.0); }, false},
        {"coefficient 1,4", [&] { return solver.SetCoefficient(1, 4, 2.0); }, false},
        {"constraint 1 at most", [&] { return solver.SetConstraint(1, 5.0, ClpSolve::kAtMost); }, true},
        {"constraint 2 at least", [&] { return solver.SetConstraint(2, 5.0, ClpSolve::kAtLeast); }, true},
        {"constraint 2 equal", [&] { return solver.SetConstraint(2, 5.0, ClpSolve::kEqual); }, true},
        {"constraint 0", [&] { return solver.SetConstraint(0, 5.0, ClpSolve::kAtMost); }, false},
        {"constraint 3", [&] { return solver.SetConstraint(3, 5.0, ClpSolve::kAtMost); }, false},
        {"constraint kind 2", [&] { return solver.SetConstraint(1, 5.0, 2); }, false},
        {"constraint kind -2", [&] { return solver.SetConstraint(1, 5.0, -2); }, false},
        {"objective 1", [&] { return solver.SetObjectiveCoefficient(1, 1.0); }, true},
        {"objective 3", [&] { return solver.SetObjectiveCoefficient(3, 1.0); }, true},
        {"objective 0", [&] { return solver.SetObjectiveCoefficient(0, 1.0); }, false},
        {"objective 4", [&] { return solver.SetObjectiveCoefficient(4, 1.0); }, false},
    };
    for (const Call& c : calls)
        EXPECT_EQ(c.call(), c.accepted) << c.what;
}

// A lost SetConstraint leaves its row an equality with right-hand side 0; Solve notices only when
// that changes the counts.
TEST(ClpSolveSetup, LostRowKindsAreCaughtOnlyThroughTheCounts)
{
    ClpSolve changed;
    ASSERT_TRUE(changed.Initialize(2, 1, 1, 0, 0, 2));
    changed.SetCoefficient(1, 1, 1.0);
    changed.SetConstraint(1, 4.0, ClpSolve::kAtMost);
    changed.SetConstraint(3, 4.0, ClpSolve::kAtMost); // lost: row 2 stays an equality
    changed.SetObjectiveCoefficient(1, 1.0);
    EXPECT_EQ(changed.Solve(), ClpSolve::kRowsInconsistent);

    ClpSolve unchanged;
    ASSERT_TRUE(unchanged.Initialize(2, 1, 1, 0, 1, 1));
    unchanged.SetCoefficient(1, 1, 1.0);
    unchanged.SetCoefficient(2, 1, 1.0);
    unchanged.SetConstraint(1, 4.0, ClpSolve::kAtMost);
    unchanged.SetConstraint(2, 3.0, 5); // lost: row 2 is solved as x1 = 0
    unchanged.SetObjectiveCoefficient(1, 1.0);
    ASSERT_EQ(unchanged.Solve(), ClpSolve::kOptimal);
    EXPECT_EQ(unchanged.GetObjectiveValue(), 0.0);
}

// The phase-1 start sums the values over positions up to the last tableau column; past the row
// capacity (n + at-least rows > m + 59) that read is out of range.
TEST(ClpSolveSetup, PhaseOneStartIsRangeCheckedAgainstTheRowCapacity)
{
    struct Case {
        int columns;
        int kind;
        double rhs;
        bool throws;
    };
    const Case cases[] = {
        {59, ClpSolve::kAtLeast, 1.0, false}, // n + 1 = m + 59: the last addressable position
        {60, ClpSolve::kAtLeast, 1.0, true},
        {60, ClpSolve::kAtMost, -1.0, true},  // flipped into an at-least row first
        {60, ClpSolve::kEqual, 1.0, false},   // one tableau column fewer
        {500, ClpSolve::kAtMost, 1.0, false}, // no phase 1 at all
    };
    for (const Case& c : cases) {
        ClpSolve solver;
        ASSERT_TRUE(solver.Initialize(1, c.columns, 1, c.kind == ClpSolve::kAtLeast,
                                      c.kind == ClpSolve::kEqual, c.kind == ClpSolve::kAtMost));
        for (int j = 1; j <= c.columns; ++j)
            solver.SetCoefficient(1, j, c.rhs < 0 ? -1.0 : 1.0);
        solver.SetConstraint(1, c.rhs, c.kind);
        if (c.throws)
            EXPECT_THROW(solver.Solve(), std::invalid_argument) << c.columns << " columns, kind " << c.kind;
        else
            EXPECT_NO_THROW(solver.Solve()) << c.columns << " columns, kind " << c.kind;
    }
}

class ClpSolveDump : public ::testing::Test {
protected:
    void SetUp() override
    {
        mDirectory = std::filesystem::temp_directory_path() /
                     ("kilnova-clpsolve-" + std::to_string(::getpid()) + "-" +
                      ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(mDirectory);
    }
    void TearDown() override { std::filesystem::remove_all(mDirectory); }

    static std::string read(const std::filesystem::path& file)
    {
        std::ifstream in(file, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

    std::filesystem::path mDirectory;
};

TEST_F(ClpSolveDump, WritesRowsKindsAndObjectiveInFixedColumns)
{
    ClpSolve solver;
    ASSERT_TRUE(solver.Initialize(2, 3, -1, 1, 0, 1));
    solver.SetCoefficient(1, 1, 1.5);
    solver.SetCoefficient(1, 2, -0.126);
    solver.SetCoefficient(1, 3, 12345.678);
    solver.SetCoefficient(2, 2, 1234567890.0); // wider than the field: no separator appears
    solver.SetConstraint(1, 250.0, ClpSolve::kAtMost);
    solver.SetConstraint(2, -3.0, ClpSolve::kAtLeast);
    solver.SetObjectiveCoefficient(1, 2.0);
    solver.SetObjectiveCoefficient(3, -0.004);
    const auto file = mDirectory / "debug.txt";
    solver.DumpToFile(file.string());

    const std::string expected = "      1.50     -0.13  12345.68    250.00 IBT:    1\n"
                                 "      0.001234567890.00      0.00     -3.00 IBT:   -1\n"
                                 "\n\n"
                                 "      2.00\n"
                                 "      0.00\n"
                                 "     -0.00\n";
    EXPECT_EQ(read(file), expected);
}

// The dump of a programme written out with printf itself, field by field: what the file must hold.
std::string printfDump(const LpProblem& p)
{
    char field[512];
    std::string text;
    for (std::size_t i = 0; i < p.rows.size(); ++i) {
        std::string line;
        for (const double a : p.rows[i]) {
            std::snprintf(field, sizeof field, "%10.2lf", a);
            line += field;
        }
        std::snprintf(field, sizeof field, "%10.2lf", p.rhs[i]);
        line += field;
        line += " IBT: ";
        std::snprintf(field, sizeof field, "%4d", p.kinds[i]);
        line += field;
        text += line + "\n";
    }
    text += "\n\n";
    for (const double c : p.objective) {
        std::snprintf(field, sizeof field, "%10.2lf\n", c);
        text += field;
    }
    return text;
}

TEST(ProgrammeDump, FieldsAreWhatPrintfWrites)
{
    std::vector<double> values = {0.0,          -0.0,  0.004,    0.005,     -0.005,       0.015,
                                  0.125,        0.375, 2.675,    -1e-9,     999999.995,   1e7,
                                  -1234567.891, 1e300, -1e-300,  5e-324,    0.1 + 0.2,    1.0 / 3,
                                  1e22,         -1e22, HUGE_VAL, -HUGE_VAL, std::nan(""), -std::nan("")};
    std::mt19937_64 engine(11);
    for (int k = 0; k < 20000; ++k) {
        // Hundredths and their neighbours, where rounding ties and near-ties lie, and wide values.
        const double hundredths =
            static_cast<double>(static_cast<std::int64_t>(engine() % 2000001) - 1000000) / 100;
        const double near = std::nextafter(hundredths + 0.005, k % 2 == 0 ? 1e9 : -1e9);
        values.push_back(k % 3 == 0 ? near : hundredths);
        values.push_back(std::bit_cast<double>(engine() & 0x7fefffffffffffffu) * (k % 2 == 0 ? 1 : -1));
    }
    char expected[512];
    for (const double v : values) {
        std::snprintf(expected, sizeof expected, "%10.2lf", v);
        std::string ours;
        ProgrammeDump::appendField(ours, v);
        ASSERT_EQ(ours, expected) << std::hexfloat << v;
    }
}

// Rows of every kind, signed right-hand sides, zeros and values wide and narrow: the dump is the
// printf dump before Solve and, after it, the printf dump of the rows as Solve leaves them
// (negated where the right-hand side was negative, zeros and all, then grouped by kind).
TEST_F(ClpSolveDump, IsThePrintfDumpBeforeAndAfterSolve)
{
    ProblemGenerator generator(606);
    for (int k = 0; k < 40; ++k) {
        LpProblem p = generator.general(generator.integer(1, 9), generator.integer(1, 9));
        for (auto& row : p.rows)
            for (double& a : row)
                a = generator.chance(0.2) ? a * 123456.789 : a / 7;
        ClpSolve solver;
        ASSERT_TRUE(p.loadInto(solver));
        const auto file = mDirectory / "debug.txt";
        solver.DumpToFile(file.string());
        ASSERT_EQ(read(file), printfDump(p)) << "problem " << k << " before Solve";

        solver.setPivotLimit(kTestPivotLimit);
        solver.Solve();
        LpProblem after = p;
        after.rows.clear();
        after.rhs.clear();
        after.kinds.clear();
        for (const int kind : {ClpSolve::kAtMost, ClpSolve::kEqual, ClpSolve::kAtLeast}) {
            for (std::size_t i = 0; i < p.rows.size(); ++i) {
                const bool flip = p.rhs[i] < 0.0;
                const int flipped = flip ? -p.kinds[i] : p.kinds[i];
                if (flipped != kind)
                    continue;
                std::vector<double> row = p.rows[i];
                if (flip)
                    for (double& a : row)
                        a = -a;
                after.addRow(row, kind, flip ? -p.rhs[i] : p.rhs[i]);
            }
        }
        solver.DumpToFile(file.string());
        ASSERT_EQ(read(file), printfDump(after)) << "problem " << k << " after Solve";
    }
}

// A dump of many rows goes to the file in many batches of pieces, and its formatted text passes
// the buffer that holds it between batches: none of that may show in the file. Full rows of
// element coefficients (every other one with a zero between each two numbers, a piece for each)
// and rows of one coefficient each (a few pieces of little text), in both orders, so that a batch
// ends now on many pieces, now on much text.
TEST_F(ClpSolveDump, AManyBatchDumpIsThePrintfDump)
{
    for (const bool fullRowsFirst : {true, false}) {
        ProblemGenerator generator(917);
        LpProblem p;
        p.columns = 300;
        auto fullRows = [&] {
            for (int i = 0; i < 120; ++i) {
                std::vector<double> row(static_cast<std::size_t>(p.columns));
                for (std::size_t j = 0; j < row.size(); ++j)
                    row[j] = (i % 2 == 1 && j % 2 == 0) || generator.chance(0.1) ? 0.0
                                                                                 : generator.uniform(-60, 60);
                p.addRow(row, i % 3 - 1, 0.0);
            }
        };
        auto unitRows = [&] {
            for (int j = 0; j < 1500; ++j) {
                std::vector<double> row(static_cast<std::size_t>(p.columns), 0.0);
                row[static_cast<std::size_t>(j % p.columns)] = 1.0;
                p.addRow(row, j % 2 == 0 ? ClpSolve::kAtLeast : ClpSolve::kAtMost,
                         generator.uniform(-10, 5000));
            }
        };
        if (fullRowsFirst) {
            fullRows();
            unitRows();
        } else {
            unitRows();
            fullRows();
        }
        for (int j = 0; j < p.columns; ++j)
            p.objective.push_back(generator.uniform(-1, 80));
        ClpSolve solver;
        ASSERT_TRUE(p.loadInto(solver));
        const auto file = mDirectory / "debug.txt";
        solver.DumpToFile(file.string());
        const std::string expected = printfDump(p);
        ASSERT_GT(expected.size(), 4'000'000u);
        EXPECT_TRUE(read(file) == expected)
            << "the dump differs from printf's, full rows first: " << fullRowsFirst;
    }
}

// A dump past its limit keeps the whole lines that fit and closes with a note giving the size of
// the whole dump.
TEST_F(ClpSolveDump, StopsAfterTheWholeLinesWithinItsLimit)
{
    LpProblem p;
    p.columns = 4;
    p.objective = {1, 2, 3, 4};
    for (int i = 0; i < 6; ++i)
        p.addRow({1.5 * i, 0, -2, 1e6}, i % 3 - 1, 100.0 * i);
    const std::string whole = printfDump(p); // 6 lines of 61 bytes, 2 blank, 4 of 11
    ASSERT_EQ(whole.size(), 6u * 61 + 2 + 4 * 11);
    ClpSolve solver;
    ASSERT_TRUE(p.loadInto(solver));
    const auto file = mDirectory / "debug.txt";
    struct Case {
        std::size_t limit;
        std::size_t kept; // bytes of the whole dump that stay
    };
    for (const Case c :
         {Case{1000, whole.size()}, Case{whole.size(), whole.size()}, Case{200, 183}, Case{60, 0},
          Case{6 * 61 + 1, 6 * 61 + 1}, Case{whole.size() - 1, 6 * 61 + 2 + 3 * 11}}) {
        solver.DumpToFile(file.string(), c.limit);
        const std::string text = read(file);
        const std::string note =
            c.kept == whole.size() ? std::string() : ProgrammeDump::cutNote(c.limit, whole.size(), 6, 4);
        EXPECT_EQ(text, whole.substr(0, c.kept) + note) << "limit " << c.limit;
        if (!note.empty()) {
            EXPECT_NE(note.find(std::to_string(whole.size()) + " bytes"), std::string::npos) << note;
            EXPECT_NE(note.find("6 rows of 4 columns"), std::string::npos) << note;
        }
    }
}

TEST_F(ClpSolveDump, DoesNothingWhenTheFileCannotBeOpened)
{
    ClpSolve solver;
    ASSERT_TRUE(solver.Initialize(1, 1, 1, 0, 0, 1));
    const auto file = mDirectory / "missing-folder" / "debug.txt";
    solver.DumpToFile(file.string());
    EXPECT_FALSE(std::filesystem::exists(file));
}

} // namespace
} // namespace kilnova
