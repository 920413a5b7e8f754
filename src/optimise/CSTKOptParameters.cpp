#include "optimise/CSTKOptParameters.h"

#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"

namespace kilnova {

namespace {

void writeEntries(ArchiveWriter& out, const std::array<CSTKOptParameters::Entry, kElementCount>& entries)
{
    for (const CSTKOptParameters::Entry& e : entries) {
        out.writeDouble(e.minimum);
        out.writeDouble(e.maximum);
        out.writeString(e.text);
        out.writeInt32(e.active);
        out.writeInt32(e.position);
    }
}

void readEntries(ArchiveReader& in, std::array<CSTKOptParameters::Entry, kElementCount>& entries)
{
    for (CSTKOptParameters::Entry& e : entries) {
        e.minimum = in.readDouble();
        e.maximum = in.readDouble();
        e.text = in.readString();
        e.active = in.readInt32();
        e.position = in.readInt32();
    }
}

} // namespace

void CSTKOptParameters::serialize(ArchiveWriter& out) const
{
    out.writeInt32(mode);
    out.writeString(optimizedElement);
    out.writeDouble(target);
    out.writeDouble(requestedTonnage);
    writeEntries(out, productConstraints);
    writeEntries(out, remainderConstraints);
    out.writeInt32(stockpileCount);
    out.writeStringList(sources);
}

void CSTKOptParameters::load(ArchiveReader& in)
{
    mode = in.readInt32();
    optimizedElement = in.readString();
    target = in.readDouble();
    requestedTonnage = in.readDouble();
    readEntries(in, productConstraints);
    readEntries(in, remainderConstraints);
    stockpileCount = in.readInt32();
    sources = in.readStringList();
}

QString CSTKOptParameters::describeProductConstraint(int element) const
{
    return productConstraints.at(static_cast<std::size_t>(element)).describe(elementName(element));
}

QString CSTKOptParameters::describeRemainderConstraint(int element) const
{
    return remainderConstraints.at(static_cast<std::size_t>(element)).describe(elementName(element));
}

} // namespace kilnova
