#include "optimise/OptimizationSettings.h"

#include "common/MessageTable.h"
#include "database/Schema.h"

#include <QDir>
#include <QStandardPaths>

#include <algorithm>

namespace kilnova {

const QStringList& OptimizationSettings::modeChoiceNames()
{
    static const QStringList choices = {"Minimize", "Maximize", "Target", "Maximize Tonnage"};
    return choices;
}

int OptimizationSettings::modeOfChoice(int position)
{
    switch (position) {
    case 1:
        return 1;
    case 2:
        return 0;
    case 3:
        return 2;
    default:
        return -1;
    }
}

int OptimizationSettings::choiceOfMode(int mode)
{
    switch (mode) {
    case -1:
        return 0;
    case 1:
        return 1;
    case 0:
        return 2;
    case 2:
        return 3;
    default:
        return -1;
    }
}

QStringList OptimizationSettings::inListOrder(QStringList names)
{
    std::stable_sort(names.begin(), names.end(), Schema::nameLess);
    return names;
}

QString OptimizationSettings::debugFilePath()
{
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Kilnova");
    QDir().mkpath(folder);
    return folder + QStringLiteral("/debug.txt");
}

std::optional<QString> OptimizationSettings::sourceCountRefusal(qsizetype selected)
{
    if (selected < 2)
        return message(Msg::SelectTwoSources);
    return std::nullopt;
}

OptimizationSettings::OptimizationSettings(QStringList modeChoices, QStringList propertyNames,
                                           int optimisable)
    : mModeChoices(std::move(modeChoices))
    , mOptimisable(optimisable)
    , mConstraints(std::move(propertyNames))
{
}

std::optional<int> OptimizationSettings::propertyOfName(const QString& name) const
{
    const QStringList& names = propertyNames();
    for (qsizetype k = 0; k < names.size(); ++k) {
        if (names[k] == name || QString(names[k]).remove(u' ') == name)
            return static_cast<int>(k);
    }
    return std::nullopt;
}

void OptimizationSettings::loadSettings(int mode, int element, double target, double requestedTonnage,
                                        const std::vector<ConstraintEntry>& constraints,
                                        const std::vector<int>& order)
{
    mModeChoice = choiceOfMode(mode);
    mElement = element;
    mTarget = target;
    mRequestedTonnage = requestedTonnage;
    mConstraints.assign(constraints, order);
}

std::optional<int> OptimizationSettings::targeted() const
{
    return mode() == 0 ? std::optional<int>(mElement) : std::nullopt;
}

std::optional<QString> OptimizationSettings::addConstraint(int element, double minimum, double maximum)
{
    return mConstraints.add(element, minimum, maximum, targeted());
}

std::optional<QString> OptimizationSettings::modifyConstraint(int row, int element, double minimum,
                                                              double maximum)
{
    return mConstraints.modify(row, element, minimum, maximum, targeted());
}

void OptimizationSettings::removeConstraint(int row)
{
    mConstraints.remove(row);
}

std::array<ConstraintEntry, kElementCount> OptimizationSettings::elementConstraints() const
{
    std::array<ConstraintEntry, kElementCount> entries{};
    for (std::size_t k = 0; k < entries.size() && k < mConstraints.entries().size(); ++k)
        entries[k] = mConstraints.entries()[k];
    return entries;
}

} // namespace kilnova
