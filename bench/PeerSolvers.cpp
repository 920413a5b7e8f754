#include "PeerSolvers.h"

#include "solver/BoundedSimplex.h"
#include "solver/ClpSolve.h"

#include <ClpSimplex.hpp>
#include <benchmark/benchmark.h>
#include <glpk.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kilnova::bench {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotOptimal = std::numeric_limits<double>::quiet_NaN();

} // namespace

PreparedProblem prepare(const SparseProblem& problem)
{
    PreparedProblem p;
    p.rows = problem.rowCount();
    p.columns = problem.columns;
    p.sense = problem.sense;
    p.minimise = problem.sense == -1;
    p.objective = problem.objective;
    p.kinds = problem.kinds;
    p.rhs = problem.rhs;
    p.tripletRow.push_back(0);
    p.tripletColumn.push_back(0);
    p.tripletValue.push_back(0.0);
    std::vector<std::vector<std::pair<int, double>>> byColumn(static_cast<std::size_t>(p.columns));
    for (int i = 0; i < p.rows; ++i) {
        for (const auto& [j, a] : problem.rows[static_cast<std::size_t>(i)]) {
            byColumn[static_cast<std::size_t>(j)].emplace_back(i, a);
            p.tripletRow.push_back(i + 1);
            p.tripletColumn.push_back(j + 1);
            p.tripletValue.push_back(a);
        }
    }
    for (const auto& column : byColumn) {
        p.columnStart.push_back(static_cast<int>(p.value.size()));
        for (const auto& [i, a] : column) {
            p.rowIndex.push_back(i);
            p.value.push_back(a);
        }
    }
    p.columnStart.push_back(static_cast<int>(p.value.size()));
    for (int i = 0; i < p.rows; ++i) {
        const double b = problem.rhs[static_cast<std::size_t>(i)];
        const int kind = problem.kinds[static_cast<std::size_t>(i)];
        p.rowLower.push_back(kind == kilnova::ClpSolve::kAtMost ? -kInfinity : b);
        p.rowUpper.push_back(kind == kilnova::ClpSolve::kAtLeast ? kInfinity : b);
    }
    return p;
}

namespace {

template <typename Solver> bool load(const PreparedProblem& p, Solver& solver)
{
    const auto count = [&p](int kind) {
        return static_cast<int>(std::count(p.kinds.begin(), p.kinds.end(), kind));
    };
    if (!solver.Initialize(p.rows, p.columns, p.sense, count(-1), count(0), count(1)))
        return false;
    for (std::size_t t = 1; t < p.tripletValue.size(); ++t)
        solver.SetCoefficient(p.tripletRow[t], p.tripletColumn[t], p.tripletValue[t]);
    for (int i = 0; i < p.rows; ++i)
        solver.SetConstraint(i + 1, p.rhs[static_cast<std::size_t>(i)], p.kinds[static_cast<std::size_t>(i)]);
    for (int j = 0; j < p.columns; ++j)
        solver.SetObjectiveCoefficient(j + 1, p.objective[static_cast<std::size_t>(j)]);
    return true;
}

} // namespace

double solveWithKilnova(const PreparedProblem& p)
{
    {
        ClpSolve classic;
        load(p, classic);
        classic.setStopOnRay(true); // as the optimisations solve
        if (classic.Solve() == ClpSolve::kOptimal) {
            for (int j = 1; j <= p.columns; ++j) {
                double value = 0.0;
                benchmark::DoNotOptimize(classic.GetVariableValue(j, value));
                benchmark::DoNotOptimize(value);
            }
            return classic.GetObjectiveValue();
        }
    }
    return solveWithSecondMethod(p);
}

double solveWithSecondMethod(const PreparedProblem& p)
{
    BoundedSimplex second;
    load(p, second);
    if (second.Solve() != BoundedSimplex::Status::Optimal)
        return kNotOptimal;
    for (int j = 1; j <= p.columns; ++j)
        benchmark::DoNotOptimize(second.value(j));
    return second.objective();
}

double solveWithClp(const PreparedProblem& p, double seconds)
{
    ClpSimplex model;
    model.setLogLevel(0);
    if (seconds > 0)
        model.setMaximumSeconds(seconds);
    // Column bounds default to [0, +inf), as in the caller's problem.
    model.loadProblem(p.columns, p.rows, p.columnStart.data(), p.rowIndex.data(), p.value.data(), nullptr,
                      nullptr, p.objective.data(), p.rowLower.data(), p.rowUpper.data());
    model.setOptimizationDirection(p.minimise ? 1.0 : -1.0);
    model.dual();
    if (!model.isProvenOptimal())
        return kNotOptimal;
    const double* x = model.primalColumnSolution();
    for (int j = 0; j < p.columns; ++j)
        benchmark::DoNotOptimize(x[j]);
    return model.objectiveValue();
}

double solveWithGlpk(const PreparedProblem& p, double seconds, int* iterations)
{
    glp_term_out(GLP_OFF);
    glp_prob* lp = glp_create_prob();
    glp_set_obj_dir(lp, p.minimise ? GLP_MIN : GLP_MAX);
    glp_add_rows(lp, p.rows);
    glp_add_cols(lp, p.columns);
    for (int i = 1; i <= p.rows; ++i) {
        const auto u = static_cast<std::size_t>(i - 1);
        const int kind = p.kinds[u];
        const int type = kind == kilnova::ClpSolve::kAtMost    ? GLP_UP
                         : kind == kilnova::ClpSolve::kAtLeast ? GLP_LO
                                                               : GLP_FX;
        const double b = kind == kilnova::ClpSolve::kAtMost ? p.rowUpper[u] : p.rowLower[u];
        glp_set_row_bnds(lp, i, type, b, b);
    }
    for (int j = 1; j <= p.columns; ++j) {
        glp_set_col_bnds(lp, j, GLP_LO, 0.0, 0.0);
        glp_set_obj_coef(lp, j, p.objective[static_cast<std::size_t>(j - 1)]);
    }
    glp_load_matrix(lp, static_cast<int>(p.tripletValue.size()) - 1, p.tripletRow.data(),
                    p.tripletColumn.data(), p.tripletValue.data());
    glp_smcp parm;
    glp_init_smcp(&parm);
    parm.msg_lev = GLP_MSG_OFF;
    if (seconds > 0)
        parm.tm_lim = static_cast<int>(seconds * 1000);
    double result = kNotOptimal;
    const int code = glp_simplex(lp, &parm);
    if (iterations != nullptr)
        *iterations = glp_get_it_cnt(lp);
    if (code == 0 && glp_get_status(lp) == GLP_OPT) {
        for (int j = 1; j <= p.columns; ++j)
            benchmark::DoNotOptimize(glp_get_col_prim(lp, j));
        result = glp_get_obj_val(lp);
    }
    glp_delete_prob(lp);
    return result;
}

} // namespace kilnova::bench
