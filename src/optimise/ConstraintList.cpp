#include "optimise/ConstraintList.h"

#include "common/MessageTable.h"

#include <algorithm>

namespace kilnova {

ConstraintList::ConstraintList(QStringList names)
    : mNames(std::move(names))
    , mEntries(static_cast<std::size_t>(mNames.size()))
{
}

void ConstraintList::assign(const std::vector<ConstraintEntry>& entries, const std::vector<int>& order)
{
    mOrder.clear();
    for (std::size_t k = 0; k < mEntries.size(); ++k)
        mEntries[k] = k < entries.size() ? entries[k] : ConstraintEntry{};
    auto listed = [this](int k) {
        return std::find(mOrder.begin(), mOrder.end(), k) != mOrder.end();
    };
    for (int k : order) {
        if (k >= 0 && k < size() && mEntries[static_cast<std::size_t>(k)].isActive() && !listed(k))
            mOrder.push_back(k);
    }
    for (int k = 0; k < size(); ++k) {
        if (mEntries[static_cast<std::size_t>(k)].isActive() && !listed(k))
            mOrder.push_back(k);
    }
}

QStringList ConstraintList::texts() const
{
    QStringList texts;
    for (int k : mOrder)
        texts << mEntries[static_cast<std::size_t>(k)].text;
    return texts;
}

std::optional<QString> ConstraintList::check(int property, std::optional<int> replacing,
                                             std::optional<int> targeted) const
{
    for (std::size_t row = 0; row < mOrder.size(); ++row) {
        if (mOrder[row] == property && std::optional<int>(static_cast<int>(row)) != replacing)
            return message(Msg::ConstraintAlreadySet);
    }
    if (targeted && *targeted == property)
        return message(Msg::NoConstraintOnTargetElement);
    return std::nullopt;
}

ConstraintEntry ConstraintList::made(int property, double minimum, double maximum) const
{
    return {minimum, maximum, ConstraintEntry::format(minimum, mNames[property], maximum), 1};
}

std::optional<QString> ConstraintList::add(int property, double minimum, double maximum,
                                           std::optional<int> targeted)
{
    if (property < 0 || property >= size())
        return std::nullopt;
    if (auto refusal = check(property, std::nullopt, targeted))
        return refusal;
    mEntries[static_cast<std::size_t>(property)] = made(property, minimum, maximum);
    mOrder.push_back(property);
    return std::nullopt;
}

std::optional<QString> ConstraintList::modify(int row, int property, double minimum, double maximum,
                                              std::optional<int> targeted)
{
    if (row < 0 || row >= static_cast<int>(mOrder.size()))
        return add(property, minimum, maximum, targeted);
    if (property < 0 || property >= size())
        return std::nullopt;
    if (auto refusal = check(property, row, targeted))
        return refusal;
    const int old = mOrder[static_cast<std::size_t>(row)];
    mEntries[static_cast<std::size_t>(old)] = ConstraintEntry{};
    mEntries[static_cast<std::size_t>(property)] = made(property, minimum, maximum);
    mOrder[static_cast<std::size_t>(row)] = property;
    return std::nullopt;
}

void ConstraintList::remove(int row)
{
    if (row < 0 || row >= static_cast<int>(mOrder.size()))
        return;
    mEntries[static_cast<std::size_t>(mOrder[static_cast<std::size_t>(row)])] = ConstraintEntry{};
    mOrder.erase(mOrder.begin() + row);
}

} // namespace kilnova
