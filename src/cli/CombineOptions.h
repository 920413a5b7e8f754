#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace kilnova {

class CCombinationParameters;

/// The arguments of "combine": the project, the blasts, and options that set what the "Combine
/// Blasts" dialog sets. Each option given replaces that part of the settings stored in the project;
/// the rest stay as stored.
class CombineOptions final {
public:
    QString project;
    QStringList selected;
    bool all = false;
    std::optional<int> period;
    bool save = false;

    /// Reads the arguments after "combine". Returns the problem when they are wrong.
    std::optional<QString> parse(const QStringList& args);
    /// Sets what the options say in the stored settings.
    void applyTo(CCombinationParameters& parameters) const;

    static const char* usage();

private:
    std::optional<QString> option(const QString& name, const QString& value);

    std::vector<std::function<void(CCombinationParameters&)>> mChanges;
    bool mTargetsCleared = false;
};

} // namespace kilnova
