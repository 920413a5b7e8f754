#include "optimise/COptimizationParameters.h"

#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"

namespace kilnova {

void COptimizationParameters::serialize(ArchiveWriter& out) const
{
    out.writeInt32(mode);
    out.writeString(optimizedElement);
    out.writeDouble(target);
    out.writeDouble(requestedTonnage);
    for (const ConstraintEntry& c : constraints)
        c.serialize(out);
    out.writeInt32(coordinateFilter);
    for (double bound :
         {eastMinimum, eastMaximum, northMinimum, northMaximum, elevationMinimum, elevationMaximum})
        out.writeDouble(bound);
    out.writeStringList(selectedSources);
    out.writeStringList(otherSources);
}

void COptimizationParameters::load(ArchiveReader& in)
{
    mode = in.readInt32();
    optimizedElement = in.readString();
    target = in.readDouble();
    requestedTonnage = in.readDouble();
    for (ConstraintEntry& c : constraints)
        c.load(in);
    coordinateFilter = in.readInt32();
    for (double* bound :
         {&eastMinimum, &eastMaximum, &northMinimum, &northMaximum, &elevationMinimum, &elevationMaximum})
        *bound = in.readDouble();
    selectedSources = in.readStringList();
    otherSources = in.readStringList();
}

QString COptimizationParameters::describeConstraint(int element) const
{
    return constraints.at(static_cast<std::size_t>(element)).describe(elementName(element));
}

} // namespace kilnova
