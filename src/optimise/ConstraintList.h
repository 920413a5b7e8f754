#pragma once

#include "optimise/ConstraintEntry.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

/// The list of limits an optimisation dialog edits: one entry per property (the 22 elements, or a
/// kind's own properties), and the order in which the list shows the limits in force. Add and Modify
/// refuse a second limit on a property ("A constraint on this variable has already been set") and,
/// when told which property is being targeted, a limit on it ("You cannot add a constraint on the
/// optimized element in Target mode").
class ConstraintList final {
public:
    /// The properties' display names, in property order.
    explicit ConstraintList(QStringList names);

    int size() const { return static_cast<int>(mEntries.size()); }
    const QStringList& names() const { return mNames; }
    const ConstraintEntry& entry(int property) const { return mEntries[static_cast<std::size_t>(property)]; }
    const std::vector<ConstraintEntry>& entries() const { return mEntries; }
    /// Takes stored entries; the list then shows those in force in the order given (properties in
    /// force that `order` leaves out follow in property order; one not in force is ignored).
    void assign(const std::vector<ConstraintEntry>& entries, const std::vector<int>& order = {});

    /// The properties with a limit, in list order.
    const std::vector<int>& order() const { return mOrder; }
    QStringList texts() const;

    /// The refusal message, or nothing when the limit was added at the end of the list.
    std::optional<QString> add(int property, double minimum, double maximum,
                               std::optional<int> targeted = std::nullopt);
    /// Replaces the limit at a list row in place (adds when there is no such row).
    std::optional<QString> modify(int row, int property, double minimum, double maximum,
                                  std::optional<int> targeted = std::nullopt);
    void remove(int row);

private:
    std::optional<QString> check(int property, std::optional<int> replacing,
                                 std::optional<int> targeted) const;
    ConstraintEntry made(int property, double minimum, double maximum) const;

    QStringList mNames;
    std::vector<ConstraintEntry> mEntries;
    std::vector<int> mOrder;
};

} // namespace kilnova
