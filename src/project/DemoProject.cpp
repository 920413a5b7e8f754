#include "project/DemoProject.h"

#include "chemistry/ChemistryFunctions.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
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

int element(const CsvFile& csv, const CsvLine& line, int maxIndex)
{
    const std::optional<int> e = elementFromName(line.fields[1].toStdString());
    if (!e || *e > maxIndex)
        throw DemoDataError(QStringLiteral("%1 line %2: \"%3\" is not an element that can be used here.")
                                .arg(csv.name)
                                .arg(line.number)
                                .arg(line.fields[1]));
    return *e;
}

} // namespace

namespace {

/// The lines every optimisation's settings file has alike (Mode, Element, Target, Tonnage, Constraint),
/// read into `common`; any other line goes to `other`, which returns false for a setting it does not know.
struct CommonSettings {
    qint32 mode = COptimizationParameters::kMaximize;
    QString element = QStringLiteral("Titration");
    double target = 0.0;
    double tonnage = 0.0;
    std::array<ConstraintEntry, kElementCount> constraints{};
    std::vector<int> order; ///< the constrained elements in the file's order
};

using LineError = std::function<DemoDataError(const QString&)>;

/// A "Setting,ELEMENT,MIN,MAX" line as an entry of `list`; a second limit on an element is refused.
void readLimit(const CsvFile& csv, const CsvLine& line, const LineError& fail,
               std::array<ConstraintEntry, kElementCount>& list, std::vector<int>& order)
{
    const int e = element(csv, line, kElementCount - 1);
    const double minimum = number(csv, line, 2);
    const double maximum = number(csv, line, 3);
    ConstraintEntry& entry = list[static_cast<std::size_t>(e)];
    if (entry.isActive())
        throw fail(QStringLiteral("%1 is constrained twice.").arg(elementName(e)));
    if (minimum > maximum)
        throw fail(QStringLiteral("the minimum of %1 is above its maximum.").arg(elementName(e)));
    entry = {minimum, maximum, ConstraintEntry::format(minimum, elementName(e), maximum), 1};
    order.push_back(e);
}

CommonSettings readSettings(const CsvFile& csv,
                            const std::function<bool(const CsvLine&, const LineError&)>& other)
{
    if (csv.header.size() != 4)
        throw DemoDataError(
            QStringLiteral("%1: the header must be Setting,Value,Minimum,Maximum.").arg(csv.name));
    const std::map<QString, qint32> modes = {{"Minimize", COptimizationParameters::kMinimize},
                                             {"Maximize", COptimizationParameters::kMaximize},
                                             {"Target", COptimizationParameters::kTarget},
                                             {"Maximize Tonnage", COptimizationParameters::kMaximizeTonnage}};
    CommonSettings p;
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
            p.mode = mode->second;
        } else if (setting == "Element") {
            // Cl can be constrained but not optimised.
            p.element = elementName(element(csv, line, elementIndex(Element::C4AF)));
        } else if (setting == "Target") {
            p.target = number(csv, line, 1);
        } else if (setting == "Tonnage") {
            p.tonnage = number(csv, line, 1);
        } else if (setting == "Constraint") {
            readLimit(csv, line, fail, p.constraints, p.order);
        } else if (!other(line, fail)) {
            throw fail(QStringLiteral("\"%1\" is not a setting.").arg(setting));
        }
    }
    const std::optional<int> optimised = elementFromName(p.element.toStdString());
    if (p.mode == COptimizationParameters::kTarget &&
        p.constraints[static_cast<std::size_t>(*optimised)].isActive())
        throw DemoDataError(
            QStringLiteral("%1 constrains %2, the element it targets.").arg(csv.name, p.element));
    return p;
}

/// The entries with their rows in the list, in the order the file gave them.
std::array<CSTKOptParameters::Entry, kElementCount>
stockpileEntries(const std::array<ConstraintEntry, kElementCount>& list, const std::vector<int>& order)
{
    std::array<CSTKOptParameters::Entry, kElementCount> entries{};
    for (std::size_t k = 0; k < list.size(); ++k)
        entries[k] = {list[k].minimum, list[k].maximum, list[k].text, list[k].active, 0};
    for (std::size_t row = 0; row < order.size(); ++row)
        entries[static_cast<std::size_t>(order[row])].position = static_cast<qint32>(row + 1);
    return entries;
}

} // namespace

COptimizationParameters DemoProject::readBlastOptimisation(const QString& path, const QStringList& blastNames)
{
    const QFileInfo info(path);
    const CsvFile csv = readCsv(info.path(), info.fileName());
    COptimizationParameters p;
    const CommonSettings common = readSettings(csv, [&](const CsvLine& line, const LineError& fail) {
        if (line.fields[0] != "Blast")
            return false;
        if (!blastNames.contains(line.fields[1]))
            throw fail(QStringLiteral("there is no blast \"%1\".").arg(line.fields[1]));
        p.selectedSources << line.fields[1];
        return true;
    });
    if (p.selectedSources.size() < 2)
        throw DemoDataError(QStringLiteral("%1 selects fewer than two blasts.").arg(csv.name));
    p.mode = common.mode;
    p.optimizedElement = common.element;
    p.target = common.target;
    p.requestedTonnage = common.tonnage;
    p.constraints = common.constraints;
    return p;
}

CSTKOptParameters DemoProject::readStockpileOptimisation(const QString& path,
                                                         const std::vector<RecordKey>& stockpiles,
                                                         const QStringList& additives)
{
    const QFileInfo info(path);
    const CsvFile csv = readCsv(info.path(), info.fileName());
    std::array<ConstraintEntry, kElementCount> left{};
    std::vector<int> leftOrder;
    QStringList chosenPiles, chosenAdditives;
    qint32 pileCount = 0;
    const CommonSettings common = readSettings(csv, [&](const CsvLine& line, const LineError& fail) {
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
            readLimit(csv, line, fail, left, leftOrder);
        } else {
            return false;
        }
        return true;
    });
    if (pileCount + chosenAdditives.size() < 2)
        throw DemoDataError(QStringLiteral("%1 selects fewer than two sources.").arg(csv.name));
    CSTKOptParameters p;
    p.mode = common.mode;
    p.optimizedElement = common.element;
    p.target = common.target;
    p.requestedTonnage = common.tonnage;
    p.productConstraints = stockpileEntries(common.constraints, common.order);
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
    const QFileInfo info(path);
    const CsvFile csv = readCsv(info.path(), info.fileName());
    if (csv.header.size() != 4)
        throw DemoDataError(
            QStringLiteral("%1: the header must be Setting,Value,Minimum,Maximum.").arg(csv.name));
    const std::map<QString, qint32> modes = {{"Minimize", CClinkerOptParameters::kMinimize},
                                             {"Maximize", CClinkerOptParameters::kMaximize},
                                             {"Target", CClinkerOptParameters::kTarget}};
    CClinkerOptParameters p;
    for (const CsvLine& line : csv.lines) {
        const QString& setting = line.fields[0];
        const QString& value = line.fields[1];
        const auto fail = [&](const QString& why) {
            return DemoDataError(QStringLiteral("%1 line %2: %3").arg(csv.name).arg(line.number).arg(why));
        };
        if (setting == "Selection") {
            if (value == "Crude + Coal")
                p.sourceSelection = CClinkerOptParameters::kCrudeAndCoal;
            else if (value == "Stockpile + Additives + Coal")
                p.sourceSelection = CClinkerOptParameters::kStockpileAdditivesAndCoal;
            else
                throw fail(QStringLiteral("\"%1\" is not a selection of sources.").arg(value));
        } else if (setting == "Mode") {
            const auto mode = modes.find(value);
            if (mode == modes.end())
                throw fail(QStringLiteral("\"%1\" is not a mode.").arg(value));
            p.mode = mode->second;
        } else if (setting == "Element") {
            p.optimizedElement = elementName(element(csv, line, kElementCount - 1));
        } else if (setting == "Target") {
            p.target = number(csv, line, 1);
        } else if (setting == "Tonnage") {
            p.requestedTonnage = number(csv, line, 1);
        } else if (setting == "Crude" || setting == "Stockpile" || setting == "Additive" ||
                   setting == "Coal") {
            if (!listed.contains(value))
                throw fail(QStringLiteral("there is no source \"%1\".").arg(value));
            (setting == "Coal"       ? p.coalSources
             : setting == "Additive" ? p.additiveSources
                                     : p.crudeSources)
                << value;
        } else if (setting == "Constraint") {
            const int e = element(csv, line, kElementCount - 1);
            const double minimum = number(csv, line, 2);
            const double maximum = number(csv, line, 3);
            ConstraintEntry& entry = p.constraints[static_cast<std::size_t>(e)];
            if (entry.isActive())
                throw fail(QStringLiteral("%1 is constrained twice.").arg(elementName(e)));
            entry = {minimum, maximum, ConstraintEntry::format(minimum, elementName(e), maximum), 1};
        } else {
            throw fail(QStringLiteral("\"%1\" is not a setting.").arg(setting));
        }
    }
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
    try {
        ProjectFile::save(settings, out.absoluteFilePath(projectName()));
    } catch (...) {
        QFile::remove(databasePath);
        throw;
    }
}

} // namespace kilnova
