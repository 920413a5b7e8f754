#include "ReferenceSimplex.h"

#include <cmath>

namespace kilnova {

namespace {

using Vector = std::vector<double>;
using Matrix = std::vector<Vector>;

class Method {
public:
    explicit Method(const LpProblem& p)
        : m(p.rowCount())
        , n(p.columns)
        , sense(p.sense == -1 ? -1 : 1)
        , atMost(p.count(1))
        , equal(p.count(0))
        , atLeast(p.count(-1))
        , a(static_cast<std::size_t>(m + 1), Vector(static_cast<std::size_t>(n + 1), 0.0))
        , b(static_cast<std::size_t>(m + 1), 0.0)
        , t(static_cast<std::size_t>(m + 1), 0)
        , c(static_cast<std::size_t>(n + 1), 0.0)
    {
        for (int i = 1; i <= m; ++i) {
            for (int j = 1; j <= n; ++j)
                a[u(i)][u(j)] = p.rows[u(i - 1)][u(j - 1)];
            b[u(i)] = p.rhs[u(i - 1)];
            t[u(i)] = p.kinds[u(i - 1)];
        }
        for (int j = 1; j <= n; ++j)
            c[u(j)] = p.objective[u(j - 1)];
    }

    ReferenceSimplex run(int pivotLimit)
    {
        ReferenceSimplex r;
        r.code = solve(pivotLimit);
        r.iterations = iterations;
        r.objective = objective;
        r.reported = sense * static_cast<double>(objective);
        for (int j = 1; j <= n; ++j) {
            std::optional<double> value;
            for (int i = 1; i <= m; ++i) {
                if (basis[u(i)] == j) {
                    value = xB[u(i)];
                    break;
                }
            }
            r.x.push_back(value);
        }
        return r;
    }

private:
    static std::size_t u(int i) { return static_cast<std::size_t>(i); }

    int solve(int pivotLimit)
    {
        iterations = 1;
        // Signs.
        for (int i = 1; i <= m; ++i) {
            if (!(b[u(i)] < 0.0))
                continue;
            if (t[u(i)] == 1) {
                t[u(i)] = -1;
                ++atLeast;
                --atMost;
            } else if (t[u(i)] == -1) {
                t[u(i)] = 1;
                --atLeast;
                ++atMost;
            }
            for (int j = 1; j <= n; ++j)
                a[u(i)][u(j)] = -a[u(i)][u(j)];
            b[u(i)] = -b[u(i)];
        }
        lastNonBasicStart = n + atLeast;
        lastRealColumn = lastNonBasicStart + atMost;
        totalColumns = lastRealColumn + atLeast + equal;

        // Stable reordering by kind.
        const Matrix backupA = a;
        const Vector backupB = b;
        const std::vector<int> backupT = t;
        int target = 1;
        for (const int kind : {1, 0, -1}) {
            for (int i = 1; i <= m; ++i) {
                if (backupT[u(i)] != kind)
                    continue;
                a[u(target)] = backupA[u(i)];
                b[u(target)] = backupB[u(i)];
                t[u(target)] = kind;
                ++target;
            }
        }

        // Initial basis.
        const auto columns = u(totalColumns + 1);
        binv.assign(u(m + 1), Vector(u(m + 1), 0.0));
        for (int i = 1; i <= m; ++i)
            binv[u(i)][u(i)] = 1.0;
        xB = b;
        basis.assign(u(m + 1), 0);
        nonBasic.assign(columns, 0);
        state.assign(columns, 0);
        cost.assign(columns, 0.0);
        reduced.assign(columns, 0.0);
        dual.assign(u(m + 1), 0.0);
        alpha.assign(u(m + 1), 0.0);
        if (m == atMost) {
            phase = 2;
            for (int i = 1; i <= m; ++i)
                basis[u(i)] = n + i;
        } else {
            phase = 1;
            for (int i = 1; i <= m; ++i)
                basis[u(i)] = n + atLeast + i;
            double sum = 0.0;
            for (int k = atMost + 1; k <= totalColumns; ++k)
                sum += k <= m ? xB[u(k)] : 0.0;
            objective = static_cast<float>(-sum);
        }
        for (int i = 1; i <= m; ++i)
            state[u(basis[u(i)])] = 1;
        for (int k = 1; k <= lastNonBasicStart; ++k) {
            nonBasic[u(k)] = k;
            state[u(k)] = 2;
        }

        costs();
        price();
        if (minReduced > -optimalityTolerance)
            return 1;
        do {
            if (iterations > pivotLimit)
                return 4;
            computeAlpha(entering);
            // Ratio test, start value and all.
            theta = 1e30f;
            int r = 0;
            for (int i = 1; i <= m; ++i) {
                const double ratio = alpha[u(i)] > 0.0 ? xB[u(i)] / alpha[u(i)] : 1e30;
                if (ratio < theta) {
                    theta = static_cast<float>(ratio);
                    r = i;
                }
            }
            if (r == 0)
                return 2;
            pivot(r, entering, enteringPosition);
            for (int i = 1; i <= m; ++i)
                xB[u(i)] = xB[u(i)] - static_cast<double>(theta) * alpha[u(i)];
            xB[u(r)] = theta;
            objective = static_cast<float>(static_cast<double>(objective) -
                                           static_cast<double>(minReduced) * static_cast<double>(theta));
            ++iterations;
            price();
            if (phase == 1 && minReduced > -optimalityTolerance) {
                if (std::fabs(static_cast<double>(objective)) > 0.03)
                    return 3;
                driveOutArtificials();
                phase = 2;
                costs();
                price();
            }
        } while (minReduced <= -optimalityTolerance);
        return 1;
    }

    void costs()
    {
        for (int j = 1; j <= totalColumns; ++j) {
            if (phase == 1)
                cost[u(j)] = j <= lastRealColumn ? 0.0 : -1.0;
            else
                cost[u(j)] = j <= n ? sense * c[u(j)] : 0.0;
        }
        if (phase == 2) {
            double z = 0.0;
            for (int i = 1; i <= m; ++i)
                z += cost[u(basis[u(i)])] * xB[u(i)];
            objective = static_cast<float>(z);
        }
    }

    void price()
    {
        for (int i = 1; i <= m; ++i) {
            double sum = 0.0;
            for (int k = 1; k <= m; ++k)
                sum += cost[u(basis[u(k)])] * binv[u(k)][u(i)];
            dual[u(i)] = sum;
        }
        for (int k = 1; k <= lastNonBasicStart; ++k) {
            const int j = nonBasic[u(k)];
            if (j <= n) {
                double sum = 0.0;
                for (int i = 1; i <= m; ++i)
                    sum += dual[u(i)] * a[u(i)][u(j)];
                reduced[u(j)] = sum - cost[u(j)];
            } else if (j <= n + atLeast) {
                reduced[u(j)] = -dual[u(atMost + equal + (j - n))] - cost[u(j)];
            } else if (j <= lastRealColumn) {
                reduced[u(j)] = dual[u(j - n - atLeast)] - cost[u(j)];
            } else {
                reduced[u(j)] = 0.0;
            }
        }
        minReduced = 1e30f;
        entering = 0;
        enteringPosition = 0;
        for (int k = 1; k <= lastNonBasicStart; ++k) {
            const int j = nonBasic[u(k)];
            if (state[u(j)] == 3)
                continue;
            if (reduced[u(j)] < minReduced) {
                minReduced = static_cast<float>(reduced[u(j)]);
                entering = j;
                enteringPosition = k;
            }
        }
    }

    // alpha = Binv x a_j; a slack or surplus column is +e_r or -e_r, multiplied out like any other.
    void computeAlpha(int j)
    {
        Vector column(u(m + 1), 0.0);
        if (j <= n) {
            for (int k = 1; k <= m; ++k)
                column[u(k)] = a[u(k)][u(j)];
        } else if (j <= n + atLeast) {
            column[u(atMost + equal + (j - n))] = -1.0;
        } else {
            column[u(j - n - atLeast)] = 1.0;
        }
        for (int i = 1; i <= m; ++i) {
            double sum = 0.0;
            for (int k = 1; k <= m; ++k)
                sum += binv[u(i)][u(k)] * column[u(k)];
            alpha[u(i)] = sum;
        }
    }

    void pivot(int r, int j, int position)
    {
        const int leaving = basis[u(r)];
        nonBasic[u(position)] = leaving;
        basis[u(r)] = j;
        state[u(j)] = 1;
        state[u(leaving)] = leaving > lastRealColumn ? 3 : 2;
        Vector eta(u(m + 1), 0.0);
        for (int i = 1; i <= m; ++i)
            eta[u(i)] = i == r ? 1.0 / alpha[u(r)] : -alpha[u(i)] / alpha[u(r)];
        for (int i = 1; i <= m; ++i) {
            if (i == r)
                continue;
            for (int k = 1; k <= m; ++k)
                binv[u(i)][u(k)] += eta[u(i)] * binv[u(r)][u(k)];
        }
        for (int k = 1; k <= m; ++k)
            binv[u(r)][u(k)] *= eta[u(r)];
    }

    void driveOutArtificials()
    {
        for (int i = 1; i <= m; ++i) {
            if (basis[u(i)] <= lastRealColumn)
                continue;
            for (int k = 1; k <= lastNonBasicStart; ++k) {
                const int j = nonBasic[u(k)];
                if (j > lastRealColumn)
                    continue;
                double value = 0.0;
                if (j <= n) {
                    for (int k = 1; k <= m; ++k)
                        value += binv[u(i)][u(k)] * a[u(k)][u(j)];
                }
                if (std::fabs(value) > pivotTolerance) {
                    computeAlpha(j);
                    pivot(i, j, k);
                    break;
                }
            }
        }
    }

    const int m;
    const int n;
    const int sense;
    int atMost;
    int equal;
    int atLeast;
    Matrix a;
    Vector b;
    std::vector<int> t;
    Vector c;

    int lastNonBasicStart = 0;
    int lastRealColumn = 0;
    int totalColumns = 0;
    Matrix binv;
    Vector xB, cost, reduced, dual, alpha;
    std::vector<int> basis, nonBasic, state;
    float minReduced = 0.0f;
    float objective = 0.0f;
    float theta = 0.0f;
    const float pivotTolerance = 0.0001f;
    const float optimalityTolerance = 0.000001f;
    int phase = 1;
    int iterations = 0;
    int entering = 0;
    int enteringPosition = 0;
};

} // namespace

ReferenceSimplex ReferenceSimplex::solve(const LpProblem& problem, int pivotLimit)
{
    return Method(problem).run(pivotLimit);
}

} // namespace kilnova
