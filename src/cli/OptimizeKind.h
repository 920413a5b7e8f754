#pragma once

#include "cli/OptimizeOptions.h"
#include "common/UserError.h"
#include "database/Schema.h"
#include "optimise/BlendChartData.h"
#include "optimise/SourceUpdate.h"

#include <QJsonObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kilnova {

class OptimizationSettings;
struct OptimizationOutcome;
struct CliProject;
struct ProjectSettings;

/// One optimisation kind as `kilnova-cli optimize` drives it (blasts, clinker…). The command's one
/// flow parses the options, opens the project, lets the kind take its own options, runs it, writes
/// the report, the chart and the stored records; the kind says what is particular to it.
class OptimizeKind {
public:
    /// An option that stores one new record of a solved run, and the table it goes to.
    struct Store {
        QString option;
        Table table;
    };

    /// What the command line knows of a kind before a project is open.
    struct Entry {
        QString word; ///< "blasts", "clinker"
        /// Its lines in the usage text.
        QString usage;
        /// Options of its own, besides the settings options and its store options.
        std::vector<OptimizeOptions::KindOption> options;
        std::vector<Store> stores;
        std::function<std::unique_ptr<OptimizeKind>(CliProject&)> make;
    };
    static const std::vector<Entry>& entries();

    virtual ~OptimizeKind() = default;

    /// A request the kind cannot carry out, though the command line is right (a source the database
    /// does not hold): said as it is, exit status 1.
    class Refused : public UserError {
    public:
        using UserError::UserError;
    };

    virtual OptimizationSettings& settings() = 0;
    /// Takes --select and the kind's own options, once the settings options are applied. The
    /// problem with them (a wrong command line), or nothing. Throws Refused and DatabaseError.
    virtual std::optional<QString> configure(OptimizeOptions& options) = 0;
    /// The settings as --save writes them into the project.
    virtual void keep(ProjectSettings& settings) const = 0;
    /// Runs; the outcome stays with the kind. Throws DatabaseError.
    virtual void optimize() = 0;
    virtual bool solved() const = 0;
    virtual QString message() const = 0;
    virtual const OptimizationOutcome& outcome() const = 0;
    /// The message of a failed run as the command line says it.
    virtual QString failure() const { return message(); }
    virtual QString report() const = 0;
    virtual QJsonObject json() const = 0;
    /// Said on the error stream after a solved run's report.
    virtual QStringList warnings() const { return {}; }
    /// The blend chart of a solved run.
    virtual BlendChartData chart() const = 0;
    /// The new record the entry's store option `store` keeps (its name still empty), and what the
    /// run takes from its sources, with what it read of them.
    virtual SourceUpdate::Blend blend(std::size_t store) const = 0;
    virtual std::vector<SourceUpdate::Take> takes() const = 0;
};

} // namespace kilnova
