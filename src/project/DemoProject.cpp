#include "project/DemoProject.h"

#include "chemistry/ChemistryFunctions.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "optimise/CoalProperties.h"
#include "optimise/SOURCE.h"
#include "project/DemoDataError.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <functional>
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

using LineError = std::function<DemoDataError(const QString&)>;

/// The properties a kind's settings file names: shown names or column names ("Cost Factor",
/// "CostFactor"), and how many of them, from the first, can be optimised.
struct PropertyNames {
    const QStringList& names;
    int optimisable;

    /// The property `value` names among the first `count`.
    int find(const QString& value, qsizetype count, const LineError& fail) const
    {
        for (qsizetype k = 0; k < count; ++k) {
            if (names[k] == value || QString(names[k]).remove(u' ') == value)
                return static_cast<int>(k);
        }
        throw fail(QStringLiteral("\"%1\" is not an element that can be used here.").arg(value));
    }

    /// A "Setting,PROPERTY,MIN,MAX" line into `list` and `order`; a second limit on a property is
    /// refused.
    void readLimit(const CsvFile& csv, const CsvLine& line, const LineError& fail,
                   std::vector<ConstraintEntry>& list, std::vector<int>& order) const
    {
        const int k = find(line.fields[1], names.size(), fail);
        const double minimum = number(csv, line, 2);
        const double maximum = number(csv, line, 3);
        list.resize(static_cast<std::size_t>(names.size()));
        ConstraintEntry& entry = list[static_cast<std::size_t>(k)];
        if (entry.isActive())
            throw fail(QStringLiteral("%1 is constrained twice.").arg(names[k]));
        if (minimum > maximum)
            throw fail(QStringLiteral("the minimum of %1 is above its maximum.").arg(names[k]));
        entry = {minimum, maximum, ConstraintEntry::format(minimum, names[k], maximum), 1};
        order.push_back(k);
    }
};

/// What every optimisation's settings file says alike: the mode, the optimised property, the target,
/// the tonnage and the constraints (also in the file's order).
struct SettingsFile {
    std::optional<qint32> mode;
    std::optional<int> property;
    double target = 0.0;
    double tonnage = 0.0;
    std::vector<ConstraintEntry> constraints;
    std::vector<int> order;

    /// Mode, optimised property (by `names`), target and tonnage into a kind's parameter block.
    template <typename Parameters> void applyObjective(Parameters& p, const QStringList& names) const
    {
        p.mode = mode.value_or(p.mode);
        if (property)
            p.optimizedElement = names[*property];
        p.target = target;
        p.requestedTonnage = tonnage;
    }

    /// The constraints of the 22 elements as the parameter blocks keep them.
    std::array<ConstraintEntry, kElementCount> elementConstraints() const
    {
        std::array<ConstraintEntry, kElementCount> list{};
        std::copy_n(constraints.begin(), std::min(constraints.size(), list.size()), list.begin());
        return list;
    }
};

/// The kind's own lines (its sources, further limits): true for a setting it knows.
using KindLines = std::function<bool(const CsvFile&, const CsvLine&, const LineError&)>;

/// The one reader of the optimisation settings files (Setting,Value,Minimum,Maximum): Mode, Element,
/// Target, Tonnage and Constraint lines here, any other line through `kindLines`. Maximize Tonnage is
/// a mode where `maximizeTonnage` says so.
SettingsFile readSettings(const QString& path, const PropertyNames& properties, const KindLines& kindLines,
                          bool maximizeTonnage = true)
{
    const QFileInfo info(path);
    const CsvFile csv = readCsv(info.path(), info.fileName());
    if (csv.header.size() != 4)
        throw DemoDataError(
            QStringLiteral("%1: the header must be Setting,Value,Minimum,Maximum.").arg(csv.name));
    std::map<QString, qint32> modes = {{"Minimize", COptimizationParameters::kMinimize},
                                       {"Maximize", COptimizationParameters::kMaximize},
                                       {"Target", COptimizationParameters::kTarget}};
    if (maximizeTonnage)
        modes.emplace("Maximize Tonnage", COptimizationParameters::kMaximizeTonnage);
    SettingsFile settings;
    settings.constraints.resize(static_cast<std::size_t>(properties.names.size()));
    for (const CsvLine& line : csv.lines) {
        const QString& setting = line.fields[0];
        const QString& value = line.fields[1];
        const LineError fail = [&](const QString& why) {
            return DemoDataError(QStringLiteral("%1 line %2: %3").arg(csv.name).arg(line.number).arg(why));
        };
        if (setting == "Mode") {
            const auto mode = modes.find(value);
            if (mode == modes.end())
                throw fail(QStringLiteral("\"%1\" is not a mode.").arg(value));
            settings.mode = mode->second;
        } else if (setting == "Element") {
            settings.property = properties.find(value, properties.optimisable, fail);
        } else if (setting == "Target") {
            settings.target = number(csv, line, 1);
        } else if (setting == "Tonnage") {
            settings.tonnage = number(csv, line, 1);
        } else if (setting == "Constraint") {
            properties.readLimit(csv, line, fail, settings.constraints, settings.order);
        } else if (!kindLines || !kindLines(csv, line, fail)) {
            throw fail(QStringLiteral("\"%1\" is not a setting.").arg(setting));
        }
    }
    if (settings.mode == COptimizationParameters::kTarget && settings.property &&
        settings.constraints[static_cast<std::size_t>(*settings.property)].isActive())
        throw DemoDataError(QStringLiteral("%1 constrains %2, the element it targets.")
                                .arg(csv.name, properties.names[*settings.property]));
    return settings;
}

/// The entries with their rows in the list, in the order the file gave them.
std::array<CSTKOptParameters::Entry, kElementCount> stockpileEntries(const std::vector<ConstraintEntry>& list,
                                                                     const std::vector<int>& order)
{
    std::array<CSTKOptParameters::Entry, kElementCount> entries{};
    for (std::size_t k = 0; k < entries.size() && k < list.size(); ++k)
        entries[k] = {list[k].minimum, list[k].maximum, list[k].text, list[k].active, 0};
    for (std::size_t row = 0; row < order.size(); ++row)
        entries[static_cast<std::size_t>(order[row])].position = static_cast<qint32>(row + 1);
    return entries;
}

} // namespace

COptimizationParameters DemoProject::readBlastOptimisation(const QString& path, const QStringList& blastNames)
{
    COptimizationParameters p;
    // Cl can be constrained but not optimised.
    const SettingsFile file =
        readSettings(path, {elementNames(), elementIndex(Element::Cl)},
                     [&](const CsvFile&, const CsvLine& line, const LineError& fail) {
                         if (line.fields[0] != "Blast")
                             return false;
                         if (!blastNames.contains(line.fields[1]))
                             throw fail(QStringLiteral("there is no blast \"%1\".").arg(line.fields[1]));
                         p.selectedSources << line.fields[1];
                         return true;
                     });
    if (p.selectedSources.size() < 2)
        throw DemoDataError(
            QStringLiteral("%1 selects fewer than two blasts.").arg(QFileInfo(path).fileName()));
    file.applyObjective(p, elementNames());
    p.constraints = file.elementConstraints();
    return p;
}

CSTKOptParameters DemoProject::readStockpileOptimisation(const QString& path,
                                                         const std::vector<RecordKey>& stockpiles,
                                                         const QStringList& additives)
{
    const PropertyNames elements{elementNames(), elementIndex(Element::Cl)};
    std::vector<ConstraintEntry> left;
    std::vector<int> leftOrder;
    QStringList chosenPiles, chosenAdditives;
    qint32 pileCount = 0;
    const SettingsFile file =
        readSettings(path, elements, [&](const CsvFile& csv, const CsvLine& line, const LineError& fail) {
            const QString& setting = line.fields[0];
            const QString& value = line.fields[1];
            if (setting == "Stockpile") {
                // "NAME (SOURCE)", split at the last " (".
                const qsizetype open = value.lastIndexOf(QStringLiteral(" ("));
                const RecordKey key{value.left(open), value.mid(open + 2).chopped(1)};
                if (open <= 0 || !value.endsWith(u')') ||
                    std::find(stockpiles.begin(), stockpiles.end(), key) == stockpiles.end())
                    throw fail(QStringLiteral("there is no stockpile \"%1\".").arg(value));
                chosenPiles << key.name << key.source;
                ++pileCount;
            } else if (setting == "Additive") {
                if (!additives.contains(value))
                    throw fail(QStringLiteral("there is no additive \"%1\".").arg(value));
                chosenAdditives << value;
            } else if (setting == "Left") {
                elements.readLimit(csv, line, fail, left, leftOrder);
            } else {
                return false;
            }
            return true;
        });
    if (pileCount + chosenAdditives.size() < 2)
        throw DemoDataError(
            QStringLiteral("%1 selects fewer than two sources.").arg(QFileInfo(path).fileName()));
    CSTKOptParameters p;
    file.applyObjective(p, elementNames());
    p.productConstraints = stockpileEntries(file.constraints, file.order);
    p.remainderConstraints = stockpileEntries(left, leftOrder);
    p.stockpileCount = pileCount;
    p.sources = chosenPiles + chosenAdditives;
    return p;
}

ClinkerProcessParameters DemoProject::readClinkerProcess(const QString& path)
{
    const QFileInfo info(path);
    const CsvFile csv = readCsv(info.path(), info.fileName());
    if (csv.header.size() != 2)
        throw DemoDataError(QStringLiteral("%1: the header must be Parameter,Value.").arg(csv.name));
    ClinkerProcessParameters p;
    const std::map<QString, float*> fields = {{"FixedLOI", &p.FixedLOI},
                                              {"SO3InClinker", &p.SO3InClinker},
                                              {"K2OInClinker", &p.K2OInClinker},
                                              {"Na2OInClinker", &p.Na2OInClinker},
                                              {"EnergyConsumptionFactor", &p.EnergyConsumptionFactor},
                                              {"AshRecoveryFactor", &p.AshRecoveryFactor},
                                              {"FreeLime", &p.FreeLime}};
    QStringList seen;
    for (const CsvLine& line : csv.lines) {
        const auto field = fields.find(line.fields[0]);
        if (field == fields.end() || seen.contains(line.fields[0]))
            throw DemoDataError(
                QStringLiteral("%1 line %2: \"%3\" is not a clinker process parameter, or is given "
                               "twice.")
                    .arg(csv.name)
                    .arg(line.number)
                    .arg(line.fields[0]));
        const double v = number(csv, line, 1);
        const bool retention = field->first.endsWith(QStringLiteral("InClinker"));
        if (retention && !ClinkerProcessParameters::isValidRetention(v))
            throw DemoDataError(QStringLiteral("%1 line %2: a retention lies within 0 and 100.")
                                    .arg(csv.name)
                                    .arg(line.number));
        *field->second = static_cast<float>(v);
        seen << line.fields[0];
    }
    if (seen.size() != static_cast<qsizetype>(fields.size()))
        throw DemoDataError(
            QStringLiteral("%1 must give all seven clinker process parameters.").arg(csv.name));
    return p;
}

CClinkerOptParameters DemoProject::readClinkerOptimisation(const QString& path, const QStringList& listed)
{
    CClinkerOptParameters p;
    // Every element can be optimised in a clinker; Maximize Tonnage is no clinker mode.
    const SettingsFile file = readSettings(
        path, {elementNames(), kElementCount},
        [&](const CsvFile&, const CsvLine& line, const LineError& fail) {
            const QString& setting = line.fields[0];
            const QString& value = line.fields[1];
            if (setting == "Selection") {
                if (value == "Crude + Coal")
                    p.sourceSelection = CClinkerOptParameters::kCrudeAndCoal;
                else if (value == "Stockpile + Additives + Coal")
                    p.sourceSelection = CClinkerOptParameters::kStockpileAdditivesAndCoal;
                else
                    throw fail(QStringLiteral("\"%1\" is not a selection of sources.").arg(value));
            } else if (setting == "Crude" || setting == "Stockpile" || setting == "Additive" ||
                       setting == "Coal") {
                if (!listed.contains(value))
                    throw fail(QStringLiteral("there is no source \"%1\".").arg(value));
                (setting == "Coal"       ? p.coalSources
                 : setting == "Additive" ? p.additiveSources
                                         : p.crudeSources)
                    << value;
            } else {
                return false;
            }
            return true;
        },
        false);
    file.applyObjective(p, elementNames());
    p.constraints = file.elementConstraints();
    return p;
}

CCoalOptParameters DemoProject::readCoalOptimisation(const QString& path)
{
    // The project keeps no choice of coals.
    const SettingsFile file = readSettings(path, {CoalProperties::names(), kCoalPropertyCount}, {});
    CCoalOptParameters p;
    file.applyObjective(p, CoalProperties::names());
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
    QStringList blastNames, additiveNames;
    // The four Actual stockpiles exist in every database.
    std::vector<RecordKey> stockpileKeys;
    for (const QString& name : Schema::actualStockpileNames())
        stockpileKeys.push_back({name, Schema::actualStockpileSource()});
    for (const auto& [table, file] : files) {
        tables.emplace_back(table, records(readCsv(dataDir, QString::fromLatin1(file)), table));
        for (const Record& r : tables.back().second) {
            if (table == Table::Blast)
                blastNames << r.name();
            else if (table == Table::Additives)
                additiveNames << r.name();
            else if (table == Table::Stockpile)
                stockpileKeys.push_back(r.key());
        }
    }
    const COptimizationParameters optimisation =
        readBlastOptimisation(QDir(dataDir).filePath(QStringLiteral("blast-optimisation.csv")), blastNames);
    const ClinkerProcessParameters process =
        readClinkerProcess(QDir(dataDir).filePath(QStringLiteral("clinker-process.csv")));
    QStringList listed;
    for (const auto& [table, list] : tables) {
        for (const Record& r : list)
            listed << SOURCE::fromRecord(r).listText();
    }
    const CClinkerOptParameters clinker =
        readClinkerOptimisation(QDir(dataDir).filePath(QStringLiteral("clinker-optimisation.csv")), listed);
    const CSTKOptParameters stockpileOptimisation = readStockpileOptimisation(
        QDir(dataDir).filePath(QStringLiteral("stockpile-optimisation.csv")), stockpileKeys, additiveNames);
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
    settings.clinkerProcess = process;
    settings.clinkerOptimization = clinker;
    settings.stockpileOptimization = stockpileOptimisation;
    settings.coalOptimization = coalOptimisation;
    try {
        ProjectFile::save(settings, out.absoluteFilePath(projectName()));
    } catch (...) {
        QFile::remove(databasePath);
        throw;
    }
}

} // namespace kilnova
