#pragma once

#include <QJsonObject>
#include <QStringList>
#include <QTextStream>

#include <functional>
#include <memory>

namespace kilnova {

class OptimizeOptions;
struct CliProject;
struct ProjectSettings;

/// kilnova-cli optimize KIND PROJECT.knv [settings options] [--json] [--store NAME [--subtract]]: an
/// optimisation with the settings stored in the project, overridden for the run by the settings
/// options (and written back with --save), its report on standard output; --store keeps the blend
/// as a new record and --subtract also takes its tonnes out of the sources.
class OptimizeCommand final {
public:
    /// One optimisation kind as the command line drives it (blasts, coal).
    class Kind;

    OptimizeCommand(QTextStream& out, QTextStream& err);
    /// Arguments after "optimize"; returns the exit status (2 for a wrong command line or a bad
    /// option value, 1 when the optimisation or a store fails).
    int run(const QStringList& args);

    static QString usage();

private:
    /// The flow every kind shares: options, project, settings, run, report, store.
    int optimize(const QString& projectPath, const QStringList& args,
                 const std::function<std::unique_ptr<Kind>(CliProject&)>& makeKind);

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
