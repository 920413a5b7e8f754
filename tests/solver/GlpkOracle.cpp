#include "GlpkOracle.h"

#include "solver/ClpSolve.h"

#include <glpk.h>

#include <memory>
#include <stdexcept>

namespace kilnova {

namespace {

struct ProblemDeleter {
    void operator()(glp_prob* p) const { glp_delete_prob(p); }
};
using GlpkProblem = std::unique_ptr<glp_prob, ProblemDeleter>;

void setRowBounds(glp_prob* lp, int row, int kind, double rhs)
{
    if (kind == ClpSolve::kAtMost)
        glp_set_row_bnds(lp, row, GLP_UP, 0.0, rhs);
    else if (kind == ClpSolve::kAtLeast)
        glp_set_row_bnds(lp, row, GLP_LO, rhs, 0.0);
    else
        glp_set_row_bnds(lp, row, GLP_FX, rhs, rhs);
}

// Loads rows x >= 0 columns; `extra` adds one more column per row with its coefficient per row.
GlpkProblem load(const LpProblem& p, const std::vector<double>& rowSign, const std::vector<int>& kinds,
                 const std::vector<double>& artificial)
{
    glp_term_out(GLP_OFF);
    GlpkProblem lp(glp_create_prob());
    const int m = p.rowCount();
    const int n = p.columns;
    const int extra = artificial.empty() ? 0 : m;
    if (m > 0)
        glp_add_rows(lp.get(), m);
    if (n + extra > 0)
        glp_add_cols(lp.get(), n + extra);
    for (int j = 1; j <= n + extra; ++j)
        glp_set_col_bnds(lp.get(), j, GLP_LO, 0.0, 0.0);
    std::vector<int> ia{0};
    std::vector<int> ja{0};
    std::vector<double> ar{0.0};
    for (int i = 1; i <= m; ++i) {
        const auto ui = static_cast<std::size_t>(i - 1);
        setRowBounds(lp.get(), i, kinds[ui], rowSign[ui] * p.rhs[ui]);
        for (int j = 1; j <= n; ++j) {
            const double a = rowSign[ui] * p.rows[ui][static_cast<std::size_t>(j - 1)];
            if (a != 0.0) {
                ia.push_back(i);
                ja.push_back(j);
                ar.push_back(a);
            }
        }
        if (extra > 0 && artificial[ui] != 0.0) {
            ia.push_back(i);
            ja.push_back(n + i);
            ar.push_back(artificial[ui]);
        }
    }
    glp_load_matrix(lp.get(), static_cast<int>(ia.size()) - 1, ia.data(), ja.data(), ar.data());
    return lp;
}

int solveWithSimplex(glp_prob* lp)
{
    glp_smcp parm;
    glp_init_smcp(&parm);
    parm.msg_lev = GLP_MSG_OFF;
    parm.presolve = GLP_OFF;
    if (glp_simplex(lp, &parm) != 0)
        throw std::runtime_error("glp_simplex failed");
    return glp_get_status(lp);
}

} // namespace

GlpkOracle GlpkOracle::solve(const LpProblem& problem)
{
    const std::vector<double> sign(static_cast<std::size_t>(problem.rowCount()), 1.0);
    GlpkProblem lp = load(problem, sign, problem.kinds, {});
    glp_set_obj_dir(lp.get(), problem.sense == -1 ? GLP_MIN : GLP_MAX);
    for (int j = 1; j <= problem.columns; ++j)
        glp_set_obj_coef(lp.get(), j, problem.objective[static_cast<std::size_t>(j - 1)]);

    GlpkOracle result;
    const int status = solveWithSimplex(lp.get());
    if (status == GLP_OPT) {
        result.verdict = Verdict::Optimal;
        result.objective = glp_get_obj_val(lp.get());
        for (int j = 1; j <= problem.columns; ++j)
            result.x.push_back(glp_get_col_prim(lp.get(), j));
    } else if (status == GLP_UNBND) {
        result.verdict = Verdict::Unbounded;
    } else if (status == GLP_NOFEAS) {
        result.verdict = Verdict::Infeasible;
    } else {
        throw std::runtime_error("unexpected GLPK status");
    }
    return result;
}

double GlpkOracle::leastArtificialSum(const LpProblem& problem)
{
    const auto m = static_cast<std::size_t>(problem.rowCount());
    std::vector<double> sign(m, 1.0);
    std::vector<int> kinds = problem.kinds;
    std::vector<double> artificial(m, 0.0);
    for (std::size_t i = 0; i < m; ++i) {
        if (problem.rhs[i] < 0.0) {
            sign[i] = -1.0;
            kinds[i] = -kinds[i];
        }
        if (kinds[i] != ClpSolve::kAtMost)
            artificial[i] = 1.0;
    }
    GlpkProblem lp = load(problem, sign, kinds, artificial);
    glp_set_obj_dir(lp.get(), GLP_MIN);
    for (std::size_t i = 0; i < m; ++i)
        glp_set_obj_coef(lp.get(), problem.columns + static_cast<int>(i) + 1, artificial[i]);
    if (solveWithSimplex(lp.get()) != GLP_OPT)
        throw std::runtime_error("phase-1 problem without optimum");
    return glp_get_obj_val(lp.get());
}

} // namespace kilnova
