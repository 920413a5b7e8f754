#pragma once

#include <QJsonObject>
#include <QStringList>
#include <QTextStream>

#include <functional>

namespace kilnova {

class OptimizeOptions;
struct CliProject;
struct ProjectSettings;

/// kilnova-cli optimize KIND PROJECT.knv [settings options] [--json] [kind options]: an optimisation
/// with the settings stored in the project, overridden for the run by the settings options (and
/// written back with --save), its report on standard output.
class OptimizeCommand final {
public:
    OptimizeCommand(QTextStream& out, QTextStream& err);
    /// Arguments after "optimize"; returns the exit status (2 for a wrong command line or a bad
    /// option value, 1 when the optimisation or a store fails).
    int run(const QStringList& args);

    static QString usage();

private:
    int blasts(const QString& project, const QStringList& args);
    int stockpiles(const QString& project, const QStringList& args);

    int wrongUsage(const QString& problem);
    /// Writes the settings changed by `change` back into the project file (--save); false after
    /// telling why not.
    bool saveSettings(CliProject& project, const std::function<void(ProjectSettings&)>& change);
    /// The report (or the JSON) of a run; the message and 1 when it failed.
    int finish(bool json, const QJsonObject& result, bool solved, const QString& message,
               const QString& report);

    QTextStream& mOut;
    QTextStream& mErr;
};

} // namespace kilnova
