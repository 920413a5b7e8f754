#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <array>
#include <optional>
#include <vector>

namespace kilnova {

/// The tables of a project database, in the order in which a new database creates them.
enum class Table {
    Blast,
    BackupBlast,
    TempBlast,
    Stockpile,
    BackupStockpile,
    Crude,
    Clinker,
    Additives,
    StdBlast,
    BackupStdBlast,
    TempStdBlast,
    Coal,
};

enum class ColumnType { Text, Double, Single };

struct ColumnDef {
    QString name;
    ColumnType type;
    /// Number for Double and Single columns, text for Text columns.
    QVariant defaultValue;
};

/// How records of a table are found: by Name, or by the pair (Name, Source).
enum class KeyKind { Name, NameAndSource };

struct TableDef {
    Table id;
    QString name;
    std::vector<ColumnDef> columns;
    /// Unique "PrimaryIndex" on Name.
    bool primaryIndex = false;
    KeyKind key = KeyKind::Name;
    /// The table whose Name this one's Name follows (one-to-one, cascading updates and deletes).
    std::optional<Table> relatedTo;
    QString relationName;

    /// Column of each of the 22 analysis values in element order, -1 where the table has none.
    std::array<int, 22> analysisColumns{};

    /// "SELECT rowid, [Name], ... FROM [Table]", built once.
    QString selectAll = {};

    int columnIndex(const QString& column) const; ///< -1 when the table has no such column
    bool hasColumn(const QString& column) const { return columnIndex(column) >= 0; }
    QStringList columnNames() const;
};

/// The one description of the project database: every table, column, type, default, index and
/// relation. SQL text is generated from it, so names are written in one place only.
class Schema final {
public:
    static const std::vector<TableDef>& tables();
    static const TableDef& table(Table id);
    static std::optional<Table> tableByName(const QString& name);

    /// Bracketed for SQL: "[backup-Blast]".
    static QString quoted(const QString& identifier);
    /// Orders names as the database does for text columns: ASCII letters without regard to case,
    /// everything else by its UTF-8 bytes.
    static bool nameLess(const QString& a, const QString& b);

    /// The statements that build an empty database, in creation order, the four Actual stockpiles
    /// included.
    static QStringList creationStatements();

    /// Names of the four stockpiles every database starts with.
    static const QStringList& actualStockpileNames();
    static QString actualStockpileSource() { return QStringLiteral("Actual"); }

    static constexpr int kTextLength = 50;
};

} // namespace kilnova
