#include "combine/CombinationRequest.h"

#include "combine/CCombinationParameters.h"
#include "common/MessageTable.h"

namespace kilnova {

namespace {

std::optional<int> propertyIndex(const QString& name)
{
    return elementFromName(name.toStdString());
}

} // namespace

std::variant<CombinationRequest, QString> CombinationRequest::fromParameters(const CCombinationParameters& p,
                                                                             int period)
{
    // Without tonnes every pair would take nothing, and the shares and grades would be 0 / 0.
    if (!(p.targetTonnage > 0))
        return message(Msg::CombinationTonnageMissing);
    CombinationRequest r;
    r.tonnage = p.targetTonnage;
    r.period = period;
    for (int i = 0; i < kElementCount; ++i) {
        const CCombinationParameters::Target& target = p.targets[static_cast<std::size_t>(i)];
        if (!target.active)
            continue;
        // A pair gives two unknowns: the tonnage and one grade are all it can meet.
        if (r.targetProperty)
            return message(Msg::TooManyCombinationTargets);
        r.targetProperty = i;
        r.targetValue = target.value;
    }

    r.quantityOn = p.quantityRestriction != 0;
    r.quantityMinimumPercent = p.quantityMinimumPercent;
    r.costOn = p.costRestriction != 0;
    r.costMinimumPercent = p.costMinimumPercent;

    const auto bounds = [](qint32 on, const QString& property, float lower, float upper, const char* caption,
                           GradeBounds& out) -> std::optional<QString> {
        out.on = on != 0;
        out.lower = lower;
        out.upper = upper;
        if (!out.on)
            return std::nullopt;
        const std::optional<int> index = propertyIndex(property);
        if (!index)
            return message(Msg::CombinationPropertyMissing, {QString::fromLatin1(caption)});
        out.property = *index;
        return std::nullopt;
    };
    if (auto refusal = bounds(p.combinedRestriction, p.combinedRestrictionProperty, p.combinedLowerBound,
                              p.combinedUpperBound, "Combined grade", r.combined))
        return *refusal;
    if (auto refusal = bounds(p.inventoryRestriction, p.inventoryRestrictionProperty, p.inventoryLowerBound,
                              p.inventoryUpperBound, "Inventory grade", r.inventory))
        return *refusal;

    r.deviationProperty = propertyIndex(p.stdDeviationProperty);
    switch (p.classificationMode) {
    case CCombinationParameters::kCombinedGradeClosest:
        r.ranking = Ranking::CombinedGrade;
        if (const std::optional<int> index = propertyIndex(p.combinedGradeProperty))
            r.rankingProperty = *index;
        else
            return message(Msg::CombinationPropertyMissing,
                           {QStringLiteral("Combined blasts grade closest to")});
        r.rankingTarget = p.combinedGradeTarget;
        break;
    case CCombinationParameters::kInventoryGradeClosest:
        r.ranking = Ranking::InventoryGrade;
        if (const std::optional<int> index = propertyIndex(p.inventoryGradeProperty))
            r.rankingProperty = *index;
        else
            return message(Msg::CombinationPropertyMissing, {QStringLiteral("Inventory grade closest to")});
        r.rankingTarget = p.inventoryGradeTarget;
        break;
    case CCombinationParameters::kSmallestStdDeviation:
        r.ranking = Ranking::SmallestDeviation;
        if (!r.deviationProperty)
            return message(Msg::CombinationPropertyMissing,
                           {QStringLiteral("Smallest Combined Std. Deviation of grade")});
        r.rankingProperty = *r.deviationProperty;
        break;
    default:
        return message(Msg::CombinationPropertyMissing, {QStringLiteral("Classify solutions by")});
    }
    return r;
}

} // namespace kilnova
