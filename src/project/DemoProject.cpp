#include "project/DemoProject.h"

#include "chemistry/ChemistryFunctions.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "optimise/CoalProperties.h"
#include "project/DemoDataError.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTextStream>

#include <cmath>
#include <map>

namespace kilnova {

namespace {

struct CsvLine {
    int number;
    QStringList fields;
};

struct CsvFile {
    QString name;
    QStringList header;
    std::vector<CsvLine> lines;
};

/// One line of comma-separated fields; a field in double quotes may hold commas and "" for a quote.
QStringList splitFields(const QString& line)
{
    QStringList fields;
    QString field;
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (quoted) {
            if (c == u'"' && i + 1 < line.size() && line[i + 1] == u'"') {
                field += c;
                ++i;
            } else if (c == u'"') {
                quoted = false;
            } else {
                field += c;
            }
        } else if (c == u'"') {
            quoted = true;
        } else if (c == u',') {
            fields << field.trimmed();
            field.clear();
        } else {
            field += c;
        }
    }
    fields << field.trimmed();
    return fields;
}

CsvFile readCsv(const QString& dir, const QString& fileName)
{
    QFile file(QDir(dir).filePath(fileName));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw DemoDataError(QStringLiteral("The demo data file %1 cannot be read: %2")
                                .arg(QDir::toNativeSeparators(file.fileName()), file.errorString()));
    CsvFile csv{fileName, {}, {}};
    QTextStream in(&file);
    in.setEncoding(QStringConverter::Utf8);
    int number = 0;
    while (!in.atEnd()) {
        const QString line = in.readLine();
        ++number;
        if (line.trimmed().isEmpty() || line.trimmed().startsWith(u'#'))
            continue;
        const QStringList fields = splitFields(line);
        if (csv.header.isEmpty()) {
            csv.header = fields;
            continue;
        }
        if (fields.size() != csv.header.size())
            throw DemoDataError(QStringLiteral("%1 line %2: %3 fields where the header names %4.")
                                    .arg(fileName)
                                    .arg(number)
                                    .arg(fields.size())
                                    .arg(csv.header.size()));
        csv.lines.push_back({number, fields});
    }
    if (csv.header.isEmpty())
        throw DemoDataError(QStringLiteral("%1 has no header line.").arg(fileName));
    return csv;
}

double number(const CsvFile& csv, const CsvLine& line, int field)
{
    bool ok = false;
    const QString& text = line.fields[field];
    const double v = QLocale::c().toDouble(text, &ok);
    if (!ok || !std::isfinite(v))
        throw DemoDataError(QStringLiteral("%1 line %2: \"%3\" in column %4 is not a number.")
                                .arg(csv.name)
                                .arg(line.number)
                                .arg(text, csv.header[field]));
    return v;
}

std::vector<Record> records(const CsvFile& csv, Table table)
{
    const TableDef& def = Schema::table(table);
    const bool material = def.hasColumn(QStringLiteral("MS"));
    std::vector<int> columns;
    for (const QString& name : csv.header) {
        const int column = def.columnIndex(name);
        if (column < 0)
            throw DemoDataError(
                QStringLiteral("%1: the %2 table has no column \"%3\".").arg(csv.name, def.name, name));
        const std::optional<int> element = elementFromName(name.toStdString());
        const bool derived = material && element && *element >= elementIndex(Element::MS) &&
                             *element <= elementIndex(Element::C4AF) &&
                             *element != elementIndex(Element::CostFactor);
        if (derived)
            throw DemoDataError(QStringLiteral("%1: %2 is computed from the oxides; leave the column out.")
                                    .arg(csv.name, name));
        columns.push_back(column);
    }
    if (!columns.empty() && columns.front() != 0)
        throw DemoDataError(QStringLiteral("%1: the first column must be Name.").arg(csv.name));

    std::vector<Record> result;
    for (const CsvLine& line : csv.lines) {
        Record r(table);
        for (int f = 0; f < static_cast<int>(columns.size()); ++f) {
            const int c = columns[static_cast<std::size_t>(f)];
            if (def.columns[static_cast<std::size_t>(c)].type == ColumnType::Text)
                r.setValue(c, line.fields[f]);
            else
                r.setValue(c, number(csv, line, f));
        }
        if (material) {
            Analysis a = r.analysis();
            computeDerivedQuantities(a, 0.0);
            r.setAnalysis(a);
        }
        result.push_back(std::move(r));
    }
    return result;
}

/// What every optimisation settings file holds: "Setting,Value,Minimum,Maximum" lines for the mode,
/// the optimised property, the target, the tonnage, the sources (the kind's own setting name) and the
/// constraints, read against the kind's property names.
struct SettingsFile {
    std::optional<qint32> mode;
    std::optional<int> property;
    double target = 0.0;
    double tonnage = 0.0;
    QStringList sources;
    std::vector<ConstraintEntry> constraints;
};

SettingsFile readSettings(const QString& path, const QStringList& propertyNames, int optimisable,
                          const QString& sourceSetting, const QStringList& sourceNames)
{
    const QFileInfo info(path);
    const CsvFile csv = readCsv(info.path(), info.fileName());
    if (csv.header.size() != 4)
        throw DemoDataError(
            QStringLiteral("%1: the header must be Setting,Value,Minimum,Maximum.").arg(csv.name));
    const std::map<QString, qint32> modes = {{"Minimize", COptimizationParameters::kMinimize},
                                             {"Maximize", COptimizationParameters::kMaximize},
                                             {"Target", COptimizationParameters::kTarget},
                                             {"Maximize Tonnage", COptimizationParameters::kMaximizeTonnage}};
    SettingsFile settings;
    settings.constraints.resize(static_cast<std::size_t>(propertyNames.size()));
    for (const CsvLine& line : csv.lines) {
        const QString& setting = line.fields[0];
        const QString& value = line.fields[1];
        const auto fail = [&](const QString& why) {
            return DemoDataError(QStringLiteral("%1 line %2: %3").arg(csv.name).arg(line.number).arg(why));
        };
        // A property by its shown name or its column name ("Cost Factor", "CostFactor").
        const auto property = [&](qsizetype count) {
            for (qsizetype k = 0; k < count; ++k) {
                if (propertyNames[k] == value || QString(propertyNames[k]).remove(u' ') == value)
                    return static_cast<int>(k);
            }
            throw fail(QStringLiteral("\"%1\" is not an element that can be used here.").arg(value));
        };
        if (setting == "Mode") {
            const auto mode = modes.find(value);
            if (mode == modes.end())
                throw fail(QStringLiteral("\"%1\" is not a mode.").arg(value));
            settings.mode = mode->second;
        } else if (setting == "Element") {
            settings.property = property(optimisable);
        } else if (setting == "Target") {
            settings.target = number(csv, line, 1);
        } else if (setting == "Tonnage") {
            settings.tonnage = number(csv, line, 1);
        } else if (!sourceSetting.isEmpty() && setting == sourceSetting) {
            if (!sourceNames.contains(value))
                throw fail(QStringLiteral("there is no %1 \"%2\".").arg(sourceSetting.toLower(), value));
            settings.sources << value;
        } else if (setting == "Constraint") {
            const int k = property(propertyNames.size());
            const double minimum = number(csv, line, 2);
            const double maximum = number(csv, line, 3);
            ConstraintEntry& entry = settings.constraints[static_cast<std::size_t>(k)];
            if (entry.isActive())
                throw fail(QStringLiteral("%1 is constrained twice.").arg(propertyNames[k]));
            if (minimum > maximum)
                throw fail(QStringLiteral("the minimum of %1 is above its maximum.").arg(propertyNames[k]));
            entry = {minimum, maximum, ConstraintEntry::format(minimum, propertyNames[k], maximum), 1};
        } else {
            throw fail(QStringLiteral("\"%1\" is not a setting.").arg(setting));
        }
    }
    if (settings.mode == COptimizationParameters::kTarget && settings.property &&
        settings.constraints[static_cast<std::size_t>(*settings.property)].isActive())
        throw DemoDataError(QStringLiteral("%1 constrains %2, the element it targets.")
                                .arg(csv.name, propertyNames[*settings.property]));
    return settings;
}

} // namespace

COptimizationParameters DemoProject::readBlastOptimisation(const QString& path, const QStringList& blastNames)
{
    // Cl can be constrained but not optimised.
    const SettingsFile file =
        readSettings(path, elementNames(), elementIndex(Element::Cl), QStringLiteral("Blast"), blastNames);
    COptimizationParameters p;
    p.mode = file.mode.value_or(p.mode);
    if (file.property)
        p.optimizedElement = elementName(*file.property);
    p.target = file.target;
    p.requestedTonnage = file.tonnage;
    p.selectedSources = file.sources;
    std::copy(file.constraints.begin(), file.constraints.end(), p.constraints.begin());
    if (p.selectedSources.size() < 2)
        throw DemoDataError(
            QStringLiteral("%1 selects fewer than two blasts.").arg(QFileInfo(path).fileName()));
    return p;
}

CCoalOptParameters DemoProject::readCoalOptimisation(const QString& path)
{
    const SettingsFile file = readSettings(path, CoalProperties::names(), kCoalPropertyCount, {}, {});
    CCoalOptParameters p;
    p.mode = file.mode.value_or(p.mode);
    if (file.property)
        p.optimizedElement = CoalProperties::names()[*file.property];
    p.target = file.target;
    p.requestedTonnage = file.tonnage;
    std::copy(file.constraints.begin(), file.constraints.end(), p.constraints.begin());
    return p;
}

void DemoProject::build(const QString& dataDir, const QString& outDir)
{
    // Every file is read before anything is written, so bad data leaves nothing behind.
    const std::pair<Table, const char*> files[] = {
        {Table::Blast, "blasts.csv"},
        {Table::StdBlast, "blast-deviations.csv"},
        {Table::Stockpile, "stockpiles.csv"},
        {Table::Crude, "crude.csv"},
        {Table::Clinker, "clinker.csv"},
        {Table::Additives, "additives.csv"},
        {Table::Coal, "coal.csv"},
    };
    std::vector<std::pair<Table, std::vector<Record>>> tables;
    QStringList blastNames;
    for (const auto& [table, file] : files) {
        tables.emplace_back(table, records(readCsv(dataDir, QString::fromLatin1(file)), table));
        if (table == Table::Blast) {
            for (const Record& r : tables.back().second)
                blastNames << r.name();
        }
    }
    const COptimizationParameters optimisation =
        readBlastOptimisation(QDir(dataDir).filePath(QStringLiteral("blast-optimisation.csv")), blastNames);
    const CCoalOptParameters coalOptimisation =
        readCoalOptimisation(QDir(dataDir).filePath(QStringLiteral("coal-optimisation.csv")));

    if (!QDir().mkpath(outDir))
        throw DemoDataError(
            QStringLiteral("The folder %1 cannot be made.").arg(QDir::toNativeSeparators(outDir)));
    const QDir out(outDir);
    const QString databasePath = QDir::cleanPath(out.absoluteFilePath(databaseName()));
    try {
        std::unique_ptr<ProjectDatabase> db = ProjectDatabase::create(databasePath);
        Transaction transaction(*db);
        for (const auto& [table, list] : tables) {
            RecordTable target(*db, table);
            for (const Record& r : list) {
                std::optional<Record> existing =
                    table == Table::Stockpile ? target.find(r.key()) : std::optional<Record>();
                if (existing) {
                    Record replacement = r;
                    replacement.setRowId(existing->rowId());
                    target.update(replacement);
                } else {
                    target.add(r);
                }
            }
        }
        transaction.commit();
    } catch (...) {
        QFile::remove(databasePath);
        throw;
    }

    ProjectSettings settings;
    settings.databasePath = databasePath;
    settings.blastOptimization = optimisation;
    settings.coalOptimization = coalOptimisation;
    try {
        ProjectFile::save(settings, out.absoluteFilePath(projectName()));
    } catch (...) {
        QFile::remove(databasePath);
        throw;
    }
}

} // namespace kilnova
