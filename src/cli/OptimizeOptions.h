#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace kilnova {

class OptimizationSettings;

/// The command-line options of every `optimize` command, parsed in one place: the settings that
/// override the stored ones for the run (--mode, --element, --value, --tonnage, --constraint,
/// --select), --save to write them back into the project, --json, --explain, and the options a kind declares
/// for itself (a store name, a choice of sources, further limits).
class OptimizeOptions final {
public:
    enum class Arity {
        Flag,     ///< --subtract
        One,      ///< --store NAME
        Repeated, ///< --tonnage-limit TEXT, any number of times
    };
    struct KindOption {
        QString name;
        Arity arity;
    };

    explicit OptimizeOptions(std::vector<KindOption> kindOptions = {});

    /// Parses the arguments after the project file. False for a wrong command line or a bad value;
    /// problem() says which.
    bool parse(const QStringList& args);
    /// Applies --mode, --element, --value, --tonnage and --constraint (which replaces the stored list)
    /// over `settings`, with the settings' own rules. False when a value is refused; problem() says
    /// which option and why.
    bool applyTo(OptimizationSettings& settings);
    const QString& problem() const { return mProblem; }
    /// Replaces a list of limits by those given with `option`, each "MIN <= PROPERTY <= MAX" (a
    /// property as `names` calls it), through `clear` and `add` (the list's own rules). False when one
    /// is malformed or refused; problem() says which and why.
    bool applyLimits(const QString& option, const QStringList& texts, const OptimizationSettings& names,
                     const std::function<void()>& clear,
                     const std::function<std::optional<QString>(int, double, double)>& add);

    bool json() const { return mJson; }
    /// --explain: the explanation of the outcome after the report or message, or in the JSON.
    bool explain() const { return mExplain; }
    bool save() const { return mSave; }
    /// The names after --select, when given.
    const std::optional<QStringList>& selection() const { return mSelection; }

    bool flag(const QString& name) const { return mKind.contains(name); }
    std::optional<QString> value(const QString& name) const;
    QStringList values(const QString& name) const { return mKind.value(name); }

    /// "--mode minimize|maximize|target|max-tonnage ..." for the usage text.
    static const char* settingsUsage();

    /// "MIN <= NAME <= MAX" (numbers in C notation) as its three parts, or nothing.
    struct Limit {
        double minimum;
        QString name;
        double maximum;
    };
    static std::optional<Limit> parseLimit(const QString& text);
    static std::optional<double> parseNumber(const QString& text);

private:
    bool fail(const QString& problem);

    std::vector<KindOption> mKindOptions;
    QString mProblem;
    bool mJson = false;
    bool mExplain = false;
    bool mSave = false;
    std::optional<QString> mMode;
    std::optional<QString> mElement;
    std::optional<double> mValue;
    std::optional<double> mTonnage;
    std::optional<QStringList> mConstraints;
    std::optional<QStringList> mSelection;
    QMap<QString, QStringList> mKind;
};

} // namespace kilnova
