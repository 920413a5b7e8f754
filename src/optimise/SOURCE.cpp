#include "optimise/SOURCE.h"

namespace kilnova {

QString SOURCE::kindWord(char kind)
{
    switch (kind) {
    case kCrude:
        return QStringLiteral("Crude");
    case kStockpile:
        return QStringLiteral("Stockpile");
    case kAdditive:
        return QStringLiteral("Additive");
    case kCoal:
        return QStringLiteral("Coal");
    default:
        return QStringLiteral("unknown");
    }
}

Table SOURCE::table() const
{
    switch (kind) {
    case kStockpile:
        return Table::Stockpile;
    case kAdditive:
        return Table::Additives;
    case kCoal:
        return Table::Coal;
    default:
        return Table::Crude;
    }
}

char SOURCE::kindOf(Table table)
{
    switch (table) {
    case Table::Stockpile:
        return kStockpile;
    case Table::Additives:
        return kAdditive;
    case Table::Coal:
        return kCoal;
    default:
        return kCrude;
    }
}

SOURCE SOURCE::fromRecord(const Record& record)
{
    SOURCE s;
    s.kind = kindOf(record.table());
    s.name = record.name();
    if (record.definition().hasColumn(QStringLiteral("Source")))
        s.source = record.text(QStringLiteral("Source"));
    if (record.definition().hasColumn(QStringLiteral("Quantity")))
        s.quantity = record.number(QStringLiteral("Quantity"));
    s.values = record.analysis();
    if (s.kind == kCoal) {
        s.ash = record.number(QStringLiteral("Ash"));
        s.btu = record.number(QStringLiteral("BTU"));
    }
    return s;
}

QString SOURCE::listText(const QString& name, const QString& source)
{
    return source.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, source);
}

QString SOURCE::listText() const
{
    return listText(name, source);
}

} // namespace kilnova
