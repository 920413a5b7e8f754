#include "optimise/CoalProperties.h"

#include "optimise/ConstraintEntry.h"

namespace kilnova {

namespace {

/// The element of each property of the ash analysis, in property order from SiO2 (index 5) to C4AF.
constexpr Element kAshElements[] = {
    Element::SiO2, Element::Al2O3, Element::Fe2O3, Element::CaO,  Element::MgO,  Element::LOI,
    Element::SO3,  Element::K2O,   Element::Na2O,  Element::TiO2, Element::P2O5, Element::MS,
    Element::MA,   Element::LSF,   Element::C3S,   Element::C2S,  Element::C3A,  Element::NaEq,
};
constexpr int kFirstAshProperty = coalPropertyIndex(CoalProperty::SiO2);

} // namespace

const QStringList& CoalProperties::names()
{
    static const QStringList list = [] {
        QStringList all = {"BTU", "Ash", "Humidity", "Volatiles", "Sulfur"};
        for (Element e : kAshElements)
            all << elementName(elementIndex(e));
        all << elementName(elementIndex(Element::CostFactor)) << elementName(elementIndex(Element::C4AF));
        return all;
    }();
    return list;
}

QString CoalProperties::columnName(int property)
{
    return QString(names().at(property)).remove(u' ');
}

QString CoalProperties::unit(int property)
{
    if (const std::optional<Element> e = ashElement(property))
        return QString::fromLatin1(elementUnit(elementIndex(*e)).data());
    switch (static_cast<CoalProperty>(property)) {
    case CoalProperty::BTU:
        return QStringLiteral("BTU/lb");
    case CoalProperty::Ash:
    case CoalProperty::Humidity:
    case CoalProperty::Volatiles:
    case CoalProperty::Sulfur:
        return QStringLiteral("%");
    default:
        return QString::fromLatin1(elementUnit(elementIndex(Element::CostFactor)).data());
    }
}

std::optional<Element> CoalProperties::ashElement(int property)
{
    const int k = property - kFirstAshProperty;
    if (k >= 0 && k < static_cast<int>(std::size(kAshElements)))
        return kAshElements[k];
    if (property == coalPropertyIndex(CoalProperty::C4AF))
        return Element::C4AF;
    return std::nullopt;
}

PropertyLayout CoalProperties::layout()
{
    PropertyLayout l;
    l.count = kCoalPropertyCount;
    l.SiO2 = coalPropertyIndex(CoalProperty::SiO2);
    l.Al2O3 = coalPropertyIndex(CoalProperty::Al2O3);
    l.Fe2O3 = coalPropertyIndex(CoalProperty::Fe2O3);
    l.CaO = coalPropertyIndex(CoalProperty::CaO);
    l.MS = coalPropertyIndex(CoalProperty::MS);
    l.MA = coalPropertyIndex(CoalProperty::MA);
    l.LSF = coalPropertyIndex(CoalProperty::LSF);
    l.weightedRatioObjective = true;
    return l;
}

} // namespace kilnova
