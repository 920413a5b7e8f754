#include "optimise/CClinkerOptParameters.h"

#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"

namespace kilnova {

namespace {

// Two empty strings, two doubles and an empty text: the least a stored tonnage constraint takes.
constexpr qsizetype kMinTonnageConstraintSize = 1 + 1 + 8 + 8 + 1;

} // namespace

QString CClinkerOptParameters::TonnageConstraint::describe() const
{
    return ConstraintEntry::format(minimum, QStringLiteral("%1 (%2)").arg(stockpile, source), maximum);
}

void CClinkerOptParameters::serialize(ArchiveWriter& out) const
{
    out.writeInt32(mode);
    out.writeString(optimizedElement);
    out.writeDouble(target);
    out.writeDouble(requestedTonnage);
    for (const ConstraintEntry& c : constraints)
        c.serialize(out);
    out.writeInt32(sourceSelection);
    out.writeInt32(static_cast<qint32>(tonnageConstraints.size()));
    for (const TonnageConstraint& t : tonnageConstraints) {
        out.writeString(t.stockpile);
        out.writeString(t.source);
        out.writeDouble(t.minimum);
        out.writeDouble(t.maximum);
        out.writeString(t.text);
    }
    out.writeStringList(crudeSources);
    out.writeStringList(additiveSources);
    out.writeStringList(coalSources);
}

void CClinkerOptParameters::load(ArchiveReader& in)
{
    mode = in.readInt32();
    optimizedElement = in.readString();
    target = in.readDouble();
    requestedTonnage = in.readDouble();
    for (ConstraintEntry& c : constraints)
        c.load(in);
    sourceSelection = in.readInt32();
    const qint32 count = in.readCount(kMinTonnageConstraintSize);
    tonnageConstraints.clear();
    tonnageConstraints.reserve(count);
    for (qint32 i = 0; i < count; ++i) {
        TonnageConstraint t;
        t.stockpile = in.readString();
        t.source = in.readString();
        t.minimum = in.readDouble();
        t.maximum = in.readDouble();
        t.text = in.readString();
        tonnageConstraints.append(std::move(t));
    }
    crudeSources = in.readStringList();
    additiveSources = in.readStringList();
    coalSources = in.readStringList();
}

QString CClinkerOptParameters::describeConstraint(int element) const
{
    return constraints.at(static_cast<std::size_t>(element)).describe(elementName(element));
}

} // namespace kilnova
