#include "render/RenderStyle.h"

#include "chemistry/Elements.h"

namespace kilnova {

QFont RenderStyle::font(int pixels, bool bold)
{
    QFont f;
    f.setPixelSize(pixels);
    f.setBold(bold);
    return f;
}

QString RenderStyle::elementHeading(int element)
{
    const QString name = QString::fromLatin1(elementDisplayName(element).data());
    const QString unit = QString::fromLatin1(elementUnit(element).data());
    return unit.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, unit);
}

QString RenderStyle::valueText(int element, double value)
{
    if (value == kMissing)
        return QStringLiteral("missing");
    const QString number = QString::number(value, 'f', 2);
    const QString unit = QString::fromLatin1(elementUnit(element).data());
    return unit.isEmpty() ? number : number + ' ' + unit;
}

} // namespace kilnova
