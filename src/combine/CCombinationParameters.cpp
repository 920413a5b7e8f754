#include "combine/CCombinationParameters.h"

#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"
#include "common/PrintfFormat.h"
#include "optimise/ConstraintEntry.h"

namespace kilnova {

void CCombinationParameters::serialize(ArchiveWriter& out) const
{
    out.writeDouble(targetTonnage);
    for (const Target& t : targets) {
        out.writeDouble(t.value);
        out.writeString(t.property);
        out.writeInt32(t.active);
    }
    out.writeInt32(coordinateFilter);
    for (double bound :
         {eastMinimum, eastMaximum, northMinimum, northMaximum, elevationMinimum, elevationMaximum})
        out.writeDouble(bound);
    out.writeInt32(costRestriction);
    out.writeDouble(costMinimumPercent);
    out.writeInt32(quantityRestriction);
    out.writeDouble(quantityMinimumPercent);
    out.writeFloat(combinedUpperBound);
    out.writeFloat(combinedLowerBound);
    out.writeInt32(inventoryRestriction);
    out.writeFloat(inventoryUpperBound);
    out.writeFloat(inventoryLowerBound);
    out.writeString(inventoryRestrictionProperty);
    out.writeString(combinedRestrictionProperty);
    out.writeInt32(combinedRestriction);
    out.writeInt32(classificationMode);
    out.writeFloat(combinedGradeTarget);
    out.writeString(stdDeviationProperty);
    out.writeString(combinedGradeProperty);
    out.writeFloat(inventoryGradeTarget);
    out.writeString(inventoryGradeProperty);
}

void CCombinationParameters::load(ArchiveReader& in)
{
    targetTonnage = in.readDouble();
    for (Target& t : targets) {
        t.value = in.readDouble();
        t.property = in.readString();
        t.active = in.readInt32();
    }
    coordinateFilter = in.readInt32();
    for (double* bound :
         {&eastMinimum, &eastMaximum, &northMinimum, &northMaximum, &elevationMinimum, &elevationMaximum})
        *bound = in.readDouble();
    costRestriction = in.readInt32();
    costMinimumPercent = in.readDouble();
    quantityRestriction = in.readInt32();
    quantityMinimumPercent = in.readDouble();
    combinedUpperBound = in.readFloat();
    combinedLowerBound = in.readFloat();
    inventoryRestriction = in.readInt32();
    inventoryUpperBound = in.readFloat();
    inventoryLowerBound = in.readFloat();
    inventoryRestrictionProperty = in.readString();
    combinedRestrictionProperty = in.readString();
    combinedRestriction = in.readInt32();
    classificationMode = in.readInt32();
    combinedGradeTarget = in.readFloat();
    stdDeviationProperty = in.readString();
    combinedGradeProperty = in.readString();
    inventoryGradeTarget = in.readFloat();
    inventoryGradeProperty = in.readString();
}

QString CCombinationParameters::describeTarget(int property) const
{
    const Target& t = targets.at(static_cast<std::size_t>(property));
    return formatPrintf("%s = %.2lf", elementName(property).toUtf8().constData(), t.value);
}

} // namespace kilnova
