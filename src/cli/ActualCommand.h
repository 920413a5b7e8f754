#pragma once

#include <QStringList>
#include <QTextStream>

namespace kilnova {

/// kilnova-cli actual update|refresh: the Actual stockpiles blended into or replaced from a data
/// source, as Database > Modify Table > Stockpiles and "Refresh Actual" do.
class ActualCommand final {
public:
    static constexpr int kWrongUsage = 2;

    ActualCommand(QTextStream& out, QTextStream& err);
    /// Arguments after "actual"; 0 done, 1 refused or failed (nothing changed), kWrongUsage for a
    /// wrong command line (problem() says why).
    int run(const QStringList& args);
    const QString& problem() const { return mProblem; }

    static const char* usage();

private:
    int update(const QString& project, const QStringList& args);
    int refresh(const QString& project, const QStringList& args);
    int wrongUsage(const QString& problem);

    QTextStream& mOut;
    QTextStream& mErr;
    QString mProblem;
};

} // namespace kilnova
