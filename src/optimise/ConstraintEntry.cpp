#include "optimise/ConstraintEntry.h"

#include "chemistry/Elements.h"
#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"
#include "common/PrintfFormat.h"

namespace kilnova {

void ConstraintEntry::serialize(ArchiveWriter& out) const
{
    out.writeDouble(minimum);
    out.writeDouble(maximum);
    out.writeString(text);
    out.writeInt32(active);
}

void ConstraintEntry::load(ArchiveReader& in)
{
    minimum = in.readDouble();
    maximum = in.readDouble();
    text = in.readString();
    active = in.readInt32();
}

QString ConstraintEntry::format(double minimum, QStringView name, double maximum)
{
    // printf's rounding, as in the reports that repeat these texts.
    return formatPrintf("%.2lf <= %s <= %.2lf", minimum, name.toUtf8().constData(), maximum);
}

QString elementName(int index)
{
    const std::string_view name = elementDisplayName(index);
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

const QStringList& elementNames()
{
    static const QStringList names = [] {
        QStringList all;
        for (int k = 0; k < 22; ++k)
            all << elementName(k);
        return all;
    }();
    return names;
}

} // namespace kilnova
