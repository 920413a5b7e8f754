#pragma once

#include <QString>

#include <optional>
#include <variant>

namespace kilnova {

class CCombinationParameters;

/// The settings of one combination run, with every property name resolved to its index and the
/// rules that make a run impossible checked up front.
struct CombinationRequest {
    enum class Ranking { CombinedGrade = 0, InventoryGrade = 1, SmallestDeviation = 2 };

    /// A grade restriction: lower <= grade[property] < upper, compared in single precision.
    struct GradeBounds {
        bool on = false;
        int property = 0;
        float lower = 0.0f;
        float upper = 0.0f;
    };

    double tonnage = 0.0;
    /// The one property with a target; without one only the tonnage is met.
    std::optional<int> targetProperty;
    double targetValue = 0.0;
    bool quantityOn = false;
    double quantityMinimumPercent = 0.0;
    bool costOn = false;
    double costMinimumPercent = 0.0;
    GradeBounds combined;
    GradeBounds inventory;
    Ranking ranking = Ranking::CombinedGrade;
    /// The property ranked on in modes 0 and 1, and its target value.
    int rankingProperty = 0;
    float rankingTarget = 0.0f;
    /// The property whose combined deviation is computed for every pair (ranked on in mode 2).
    std::optional<int> deviationProperty;
    int period = 1;

    bool needsInventory() const { return inventory.on || ranking == Ranking::InventoryGrade; }

    /// The request for these parameters, or the message that says why they cannot run: no tonnes to
    /// make, more than one target, or a restriction or ranking switched on without a property.
    static std::variant<CombinationRequest, QString> fromParameters(const CCombinationParameters& p,
                                                                    int period);
};

} // namespace kilnova
