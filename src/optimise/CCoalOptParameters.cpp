#include "optimise/CCoalOptParameters.h"

#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"

namespace kilnova {

void CCoalOptParameters::serialize(ArchiveWriter& out) const
{
    out.writeInt32(mode);
    out.writeString(optimizedElement);
    out.writeDouble(target);
    out.writeDouble(requestedTonnage);
    for (const ConstraintEntry& c : constraints)
        c.serialize(out);
}

void CCoalOptParameters::load(ArchiveReader& in)
{
    mode = in.readInt32();
    optimizedElement = in.readString();
    target = in.readDouble();
    requestedTonnage = in.readDouble();
    for (ConstraintEntry& c : constraints)
        c.load(in);
}

QString CCoalOptParameters::describeConstraint(int entry, QStringView name) const
{
    return constraints.at(static_cast<std::size_t>(entry)).describe(name);
}

} // namespace kilnova
