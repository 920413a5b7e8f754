#pragma once

#include <QStringList>
#include <QTextStream>

namespace kilnova {

/// kilnova-cli optimize blasts PROJECT.knv [--select NAME…] [--json] [--store NAME [--subtract]
/// [--allow-duplicate]]:
/// the blast optimisation with the settings stored in the project, its report on standard output.
class OptimizeCommand final {
public:
    OptimizeCommand(QTextStream& out, QTextStream& err);
    /// Arguments after "optimize"; returns the exit status (2 for a wrong command line).
    int run(const QStringList& args);

    static const char* usage();

private:
    QTextStream& mOut;
    QTextStream& mErr;
};

} // namespace kilnova
