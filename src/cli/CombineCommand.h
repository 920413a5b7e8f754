#pragma once

#include <QStringList>
#include <QTextStream>

namespace kilnova {

/// "combine PROJECT.knv (--select NAME… | --all) [options]": the blast combination analysis with the
/// settings stored in the project, changed by the options given (CombineOptions), its report printed
/// to standard output. --save writes the settings back into the project.
class CombineCommand final {
public:
    /// Returned by run() when the arguments are wrong; problem() says how.
    static constexpr int kWrongUsage = -1;

    CombineCommand(QTextStream& out, QTextStream& err);

    /// The exit status: 0 report printed, 1 the analysis failed (its message on standard error).
    int run(const QStringList& args);
    const QString& problem() const { return mProblem; }

    static const char* usage();

private:
    QTextStream& mOut;
    QTextStream& mErr;
    QString mProblem;
};

} // namespace kilnova
