#include "database/Schema.h"

#include "chemistry/Elements.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace kilnova {

namespace {

ColumnDef text(const char* name, const char* defaultText)
{
    return {QString::fromLatin1(name), ColumnType::Text, QString::fromLatin1(defaultText)};
}

ColumnDef dbl(const char* name, double defaultValue)
{
    return {QString::fromLatin1(name), ColumnType::Double, defaultValue};
}

ColumnDef sgl(const char* name, double defaultValue)
{
    return {QString::fromLatin1(name), ColumnType::Single, defaultValue};
}

/// The 22 analysis columns, -1 each, CostFactor as given.
std::vector<ColumnDef> analysisBlock(double costFactorDefault)
{
    std::vector<ColumnDef> columns;
    for (int i = 0; i < kElementCount; ++i) {
        const QString name = QString::fromLatin1(elementColumnName(i).data(),
                                                 static_cast<qsizetype>(elementColumnName(i).size()));
        const bool isCost = i == elementIndex(Element::CostFactor);
        columns.push_back({name, ColumnType::Single, isCost ? costFactorDefault : -1.0});
    }
    return columns;
}

std::vector<ColumnDef> concat(std::vector<ColumnDef> head, const std::vector<ColumnDef>& tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

std::vector<ColumnDef> blastColumns()
{
    return concat({text("Name", "NewBlast"), dbl("East", -1), dbl("North", -1), dbl("Elevation", -1),
                   dbl("Quantity", 0)},
                  analysisBlock(0));
}

std::vector<ColumnDef> stockpileLike(const char* defaultName, double quantityDefault, double costDefault)
{
    return concat({text("Name", defaultName), text("Source", "unknown"), dbl("Quantity", quantityDefault)},
                  analysisBlock(costDefault));
}

std::vector<ColumnDef> stdBlastColumns()
{
    std::vector<ColumnDef> columns{text("Name", "NewBlast")};
    for (const char* c : {"Titration", "SiO2", "Al2O3", "Fe2O3", "CaO", "MgO", "LOI", "SO3", "K2O", "Na2O",
                          "TiO2", "P2O5", "Cl"})
        columns.push_back(sgl(c, 0));
    return columns;
}

std::vector<ColumnDef> coalColumns()
{
    std::vector<ColumnDef> columns{text("Name", "NewCoal"), dbl("Quantity", -1), dbl("BTU", -1),
                                   sgl("Ash", -1),          sgl("Humidity", -1), sgl("Volatiles", -1),
                                   sgl("Sulfur", -1)};
    for (const char* c : {"SiO2", "Al2O3", "Fe2O3", "CaO", "MgO", "LOI", "SO3", "K2O", "Na2O", "TiO2", "P2O5",
                          "MS", "MA", "LSF", "C3S", "C2S", "C3A", "NaEq"})
        columns.push_back(sgl(c, -1));
    columns.push_back(sgl("CostFactor", 0));
    columns.push_back(sgl("C4AF", 0));
    columns.push_back(sgl("Cl", 0));
    return columns;
}

std::vector<TableDef> buildTables()
{
    std::vector<TableDef> t;
    t.push_back({Table::Blast, "Blast", blastColumns(), true, KeyKind::Name, {}, {}});
    t.push_back({Table::BackupBlast, "backup-Blast", blastColumns(), false, KeyKind::Name, {}, {}});
    t.push_back({Table::TempBlast, "temp-Blast", blastColumns(), true, KeyKind::Name, {}, {}});
    t.push_back({Table::Stockpile,
                 "Stockpile",
                 stockpileLike("NewStockpile", 0, -1),
                 false,
                 KeyKind::NameAndSource,
                 {},
                 {}});
    t.push_back({Table::BackupStockpile,
                 "backup-Stockpile",
                 stockpileLike("NewStockpile", 0, -1),
                 false,
                 KeyKind::NameAndSource,
                 {},
                 {}});
    t.push_back(
        {Table::Crude, "Crude", stockpileLike("NewCrude", 0, -1), false, KeyKind::NameAndSource, {}, {}});
    t.push_back({Table::Clinker,
                 "Clinker",
                 stockpileLike("NewClinker", -1, 0),
                 false,
                 KeyKind::NameAndSource,
                 {},
                 {}});
    t.push_back({Table::Additives,
                 "Additives",
                 concat({text("Name", "NewAdditive")}, analysisBlock(0)),
                 false,
                 KeyKind::Name,
                 {},
                 {}});
    t.push_back({Table::StdBlast, "stdBlast", stdBlastColumns(), true, KeyKind::Name, Table::Blast,
                 "Blast-stdBlast"});
    t.push_back({Table::BackupStdBlast, "backup-stdBlast", stdBlastColumns(), false, KeyKind::Name, {}, {}});
    t.push_back({Table::TempStdBlast, "temp-stdBlast", stdBlastColumns(), true, KeyKind::Name,
                 Table::TempBlast, "tempBlast-tempstdBlast"});
    t.push_back({Table::Coal, "Coal", coalColumns(), false, KeyKind::Name, {}, {}});
    return t;
}

QString literal(const ColumnDef& column)
{
    if (column.type == ColumnType::Text)
        return "'" + column.defaultValue.toString().replace("'", "''") + "'";
    return QString::number(column.defaultValue.toDouble(), 'f', 1);
}

QString columnDdl(const ColumnDef& column)
{
    // Each CHECK is named after its column, so a refusal can tell the user which value was wrong.
    const QString name = Schema::quoted(column.name);
    switch (column.type) {
    case ColumnType::Text:
        // Required, no zero-length text, at most 50 characters, compared without regard to case.
        return QStringLiteral("%1 TEXT NOT NULL DEFAULT %2 COLLATE NOCASE CONSTRAINT %1 CHECK (length(%1) "
                              "BETWEEN 1 AND %3)")
            .arg(name, literal(column))
            .arg(Schema::kTextLength);
    case ColumnType::Single:
        // A value a 32-bit float cannot hold overflows, as it would in a Single field.
        return QStringLiteral("%1 REAL NOT NULL DEFAULT %2 CONSTRAINT %1 CHECK (abs(%1) <= %3)")
            .arg(name, literal(column),
                 QString::number(static_cast<double>(std::numeric_limits<float>::max()), 'g', 17));
    case ColumnType::Double:
        break;
    }
    return QStringLiteral("%1 REAL NOT NULL DEFAULT %2 CONSTRAINT %1 CHECK (abs(%1) <= %3)")
        .arg(name, literal(column), QString::number(std::numeric_limits<double>::max(), 'g', 17));
}

QString tableDdl(const TableDef& table)
{
    QStringList parts;
    for (const ColumnDef& column : table.columns)
        parts << columnDdl(column);
    if (table.primaryIndex)
        parts << QStringLiteral("CONSTRAINT [PrimaryIndex] PRIMARY KEY ([Name])");
    if (table.relatedTo) {
        parts << QStringLiteral("CONSTRAINT %1 FOREIGN KEY ([Name]) REFERENCES %2 ([Name]) ON UPDATE CASCADE "
                                "ON DELETE CASCADE")
                     .arg(Schema::quoted(table.relationName),
                          Schema::quoted(Schema::table(*table.relatedTo).name));
    }
    // STRICT makes the engine refuse text in a number column instead of storing it.
    return QStringLiteral("CREATE TABLE %1 (\n  %2\n) STRICT")
        .arg(Schema::quoted(table.name), parts.join(",\n  "));
}

} // namespace

int TableDef::columnIndex(const QString& column) const
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].name.compare(column, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

QStringList TableDef::columnNames() const
{
    QStringList names;
    for (const ColumnDef& c : columns)
        names << c.name;
    return names;
}

const std::vector<TableDef>& Schema::tables()
{
    static const std::vector<TableDef> all = [] {
        std::vector<TableDef> built = buildTables();
        for (TableDef& t : built) {
            QStringList columns;
            for (const ColumnDef& c : t.columns)
                columns << Schema::quoted(c.name);
            t.selectAll =
                QStringLiteral("SELECT rowid, %1 FROM %2").arg(columns.join(", "), Schema::quoted(t.name));
            for (int k = 0; k < kElementCount; ++k) {
                const auto name = elementColumnName(k);
                t.analysisColumns[static_cast<std::size_t>(k)] =
                    t.columnIndex(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())));
            }
        }
        return built;
    }();
    return all;
}

const TableDef& Schema::table(Table id)
{
    for (const TableDef& t : tables()) {
        if (t.id == id)
            return t;
    }
    throw std::logic_error("unknown table");
}

std::optional<Table> Schema::tableByName(const QString& name)
{
    for (const TableDef& t : tables()) {
        if (t.name.compare(name, Qt::CaseInsensitive) == 0)
            return t.id;
    }
    return std::nullopt;
}

bool Schema::nameLess(const QString& a, const QString& b)
{
    const QByteArray x = a.toUtf8(), y = b.toUtf8();
    auto folded = [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return u >= 'A' && u <= 'Z' ? u + ('a' - 'A') : u;
    };
    return std::lexicographical_compare(x.begin(), x.end(), y.begin(), y.end(),
                                        [&](char l, char r) { return folded(l) < folded(r); });
}

QString Schema::quoted(const QString& identifier)
{
    return "[" + identifier + "]";
}

const QStringList& Schema::actualStockpileNames()
{
    static const QStringList names = {"Actual 1", "Actual 2", "Actual 3", "Actual 4"};
    return names;
}

QStringList Schema::creationStatements()
{
    QStringList statements;
    for (const TableDef& t : tables()) {
        statements << tableDdl(t);
        if (t.id == Table::BackupStockpile) {
            for (const QString& name : actualStockpileNames()) {
                statements
                    << QStringLiteral(
                           "INSERT INTO [Stockpile] ([Name], [Source], [Quantity]) VALUES ('%1', '%2', 0.0)")
                           .arg(name, actualStockpileSource());
            }
        }
    }
    return statements;
}

} // namespace kilnova
