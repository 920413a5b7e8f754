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

QString RenderStyle::heading(const QString& name, const QString& unit)
{
    return unit.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, unit);
}

QString RenderStyle::elementHeading(int element)
{
    return heading(QString::fromLatin1(elementDisplayName(element).data()),
                   QString::fromLatin1(elementUnit(element).data()));
}

QString RenderStyle::valueText(double value, const QString& unit, int decimals)
{
    if (value == kMissing)
        return QStringLiteral("missing");
    const QString number = QString::number(value, 'f', decimals);
    return unit.isEmpty() ? number : number + ' ' + unit;
}

QString RenderStyle::valueText(int element, double value)
{
    return valueText(value, QString::fromLatin1(elementUnit(element).data()), 2);
}

} // namespace kilnova
