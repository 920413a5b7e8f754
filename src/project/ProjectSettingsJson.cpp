#include "project/ProjectSettingsJson.h"

#include "optimise/CoalProperties.h"
#include "project/ProjectSettings.h"

#include <QJsonArray>

#include <charconv>

namespace kilnova {

namespace {

// The double whose shortest form equals the float's shortest form, so 4.071f shows as 4.071.
double readable(float value)
{
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    double result = value;
    std::from_chars(buffer, end, result); // leaves result alone for inf and nan
    return result;
}

QString modeName(qint32 mode)
{
    switch (mode) {
    case -1:
        return QStringLiteral("Minimize");
    case 1:
        return QStringLiteral("Maximize");
    case 0:
        return QStringLiteral("Target");
    case 2:
        return QStringLiteral("Maximize Tonnage");
    default:
        return QStringLiteral("unknown");
    }
}

QJsonObject objective(qint32 mode, const QString& element, double target, double tonnage)
{
    return {{"mode", mode},
            {"modeName", modeName(mode)},
            {"optimizedElement", element},
            {"target", target},
            {"requestedTonnage", tonnage}};
}

QJsonObject entryJson(double minimum, double maximum, const QString& text)
{
    return {{"minimum", minimum}, {"maximum", maximum}, {"text", text}};
}

/// Each entry under the name of what it constrains: an element, or a coal property.
template <std::size_t N>
QJsonArray constraintsJson(const std::array<ConstraintEntry, N>& entries,
                           const QStringList& names = elementNames(), const char* key = "element")
{
    QJsonArray list;
    for (std::size_t i = 0; i < N; ++i) {
        const ConstraintEntry& c = entries[i];
        QJsonObject o = entryJson(c.minimum, c.maximum, c.text);
        o.insert(key, names.value(static_cast<qsizetype>(i)));
        o.insert("active", c.isActive());
        list.append(o);
    }
    return list;
}

QJsonArray stockpileEntriesJson(const std::array<CSTKOptParameters::Entry, kElementCount>& entries)
{
    QJsonArray list;
    for (int i = 0; i < kElementCount; ++i) {
        const CSTKOptParameters::Entry& e = entries[static_cast<std::size_t>(i)];
        QJsonObject o = entryJson(e.minimum, e.maximum, e.text);
        o.insert("element", elementName(i));
        o.insert("active", e.active);
        o.insert("position", e.position);
        list.append(o);
    }
    return list;
}

QJsonObject coordinateFilterJson(qint32 enabled, double eastMin, double eastMax, double northMin,
                                 double northMax, double elevationMin, double elevationMax)
{
    return {{"enabled", enabled != 0},         {"eastMinimum", eastMin},   {"eastMaximum", eastMax},
            {"northMinimum", northMin},        {"northMaximum", northMax}, {"elevationMinimum", elevationMin},
            {"elevationMaximum", elevationMax}};
}

QJsonObject importSpecJson(const ImportSpecification& spec)
{
    QJsonArray fields;
    for (const ImportSpecification::Field& f : spec.fields()) {
        fields.append(QJsonObject{
            {"name", f.name}, {"position", f.position}, {"length", f.length}, {"decimals", f.decimals}});
    }
    return {{"fieldCount", spec.fieldCount()}, {"fields", fields}};
}

QJsonObject clinkerProcessJson(const ClinkerProcessParameters& p)
{
    return {{"fixedLOI", readable(p.FixedLOI)},
            {"SO3InClinker", readable(p.SO3InClinker)},
            {"K2OInClinker", readable(p.K2OInClinker)},
            {"Na2OInClinker", readable(p.Na2OInClinker)},
            {"energyConsumptionFactor", readable(p.EnergyConsumptionFactor)},
            {"ashRecoveryFactor", readable(p.AshRecoveryFactor)},
            {"freeLime", readable(p.FreeLime)}};
}

QJsonObject blastOptimizationJson(const COptimizationParameters& p)
{
    QJsonObject o = objective(p.mode, p.optimizedElement, p.target, p.requestedTonnage);
    o.insert("constraints", constraintsJson(p.constraints));
    o.insert("coordinateFilter",
             coordinateFilterJson(p.coordinateFilter, p.eastMinimum, p.eastMaximum, p.northMinimum,
                                  p.northMaximum, p.elevationMinimum, p.elevationMaximum));
    o.insert("selectedSources", QJsonArray::fromStringList(p.selectedSources));
    o.insert("otherSources", QJsonArray::fromStringList(p.otherSources));
    return o;
}

QJsonObject stockpileOptimizationJson(const CSTKOptParameters& p)
{
    QJsonObject o = objective(p.mode, p.optimizedElement, p.target, p.requestedTonnage);
    o.insert("productConstraints", stockpileEntriesJson(p.productConstraints));
    o.insert("remainderConstraints", stockpileEntriesJson(p.remainderConstraints));
    o.insert("stockpileCount", p.stockpileCount);
    o.insert("sources", QJsonArray::fromStringList(p.sources));
    return o;
}

QJsonObject clinkerOptimizationJson(const CClinkerOptParameters& p)
{
    QJsonObject o = objective(p.mode, p.optimizedElement, p.target, p.requestedTonnage);
    o.insert("constraints", constraintsJson(p.constraints));
    o.insert("sourceSelection", p.sourceSelection);
    o.insert("sourceSelectionName", p.sourceSelection == CClinkerOptParameters::kCrudeAndCoal ? "Crude + Coal"
                                    : p.sourceSelection == CClinkerOptParameters::kStockpileAdditivesAndCoal
                                        ? "Stockpile + Additives + Coal"
                                        : "unknown");
    QJsonArray tonnage;
    for (const CClinkerOptParameters::TonnageConstraint& t : p.tonnageConstraints) {
        tonnage.append(QJsonObject{{"stockpile", t.stockpile},
                                   {"source", t.source},
                                   {"minimum", t.minimum},
                                   {"maximum", t.maximum},
                                   {"text", t.text}});
    }
    o.insert("tonnageConstraints", tonnage);
    o.insert("crudeSources", QJsonArray::fromStringList(p.crudeSources));
    o.insert("additiveSources", QJsonArray::fromStringList(p.additiveSources));
    o.insert("coalSources", QJsonArray::fromStringList(p.coalSources));
    return o;
}

QJsonObject coalOptimizationJson(const CCoalOptParameters& p)
{
    QJsonObject o = objective(p.mode, p.optimizedElement, p.target, p.requestedTonnage);
    o.insert("constraints", constraintsJson(p.constraints, CoalProperties::names(), "property"));
    return o;
}

QJsonObject restrictionJson(qint32 enabled, const QString& property, float lower, float upper)
{
    return {{"enabled", enabled != 0},
            {"property", property},
            {"lowerBound", readable(lower)},
            {"upperBound", readable(upper)}};
}

QString classificationName(qint32 mode)
{
    switch (mode) {
    case CCombinationParameters::kCombinedGradeClosest:
        return QStringLiteral("combined grade closest");
    case CCombinationParameters::kInventoryGradeClosest:
        return QStringLiteral("inventory grade closest");
    case CCombinationParameters::kSmallestStdDeviation:
        return QStringLiteral("smallest standard deviation");
    default:
        return QStringLiteral("unknown");
    }
}

QJsonObject combinationJson(const CCombinationParameters& p)
{
    QJsonArray targets;
    for (int i = 0; i < kElementCount; ++i) {
        const CCombinationParameters::Target& t = p.targets[static_cast<std::size_t>(i)];
        targets.append(QJsonObject{{"element", elementName(i)},
                                   {"value", t.value},
                                   {"property", t.property},
                                   {"active", t.active != 0}});
    }
    return {
        {"targetTonnage", p.targetTonnage},
        {"targets", targets},
        {"coordinateFilter",
         coordinateFilterJson(p.coordinateFilter, p.eastMinimum, p.eastMaximum, p.northMinimum,
                              p.northMaximum, p.elevationMinimum, p.elevationMaximum)},
        {"costRestriction",
         QJsonObject{{"enabled", p.costRestriction != 0}, {"minimumPercent", p.costMinimumPercent}}},
        {"quantityRestriction",
         QJsonObject{{"enabled", p.quantityRestriction != 0}, {"minimumPercent", p.quantityMinimumPercent}}},
        {"combinedRestriction", restrictionJson(p.combinedRestriction, p.combinedRestrictionProperty,
                                                p.combinedLowerBound, p.combinedUpperBound)},
        {"inventoryRestriction", restrictionJson(p.inventoryRestriction, p.inventoryRestrictionProperty,
                                                 p.inventoryLowerBound, p.inventoryUpperBound)},
        {"classification", QJsonObject{{"mode", p.classificationMode},
                                       {"modeName", classificationName(p.classificationMode)},
                                       {"combinedGradeProperty", p.combinedGradeProperty},
                                       {"combinedGradeTarget", readable(p.combinedGradeTarget)},
                                       {"inventoryGradeProperty", p.inventoryGradeProperty},
                                       {"inventoryGradeTarget", readable(p.inventoryGradeTarget)},
                                       {"stdDeviationProperty", p.stdDeviationProperty}}},
    };
}

QJsonObject chemistryJson(const ChemEquationCoefficients& c)
{
    QJsonObject o;
    const std::pair<const char*, float> coefficients[] = {
        {"C3SCaO", c.C3SCaO},     {"C3SSiO2", c.C3SSiO2},     {"C3SAl2O3", c.C3SAl2O3},
        {"C3SFe2O3", c.C3SFe2O3}, {"C2SCaO", c.C2SCaO},       {"C2SSiO2", c.C2SSiO2},
        {"C2SAl2O3", c.C2SAl2O3}, {"C2SFe2O3", c.C2SFe2O3},   {"C3AAl2O3", c.C3AAl2O3},
        {"C3AFe2O3", c.C3AFe2O3}, {"C4AFFe2O3", c.C4AFFe2O3}, {"LSFCaO", c.LSFCaO},
        {"LSFSiO2", c.LSFSiO2},   {"LSFAl2O3", c.LSFAl2O3},   {"LSFFe2O3", c.LSFFe2O3},
        {"NaEqK2O", c.NaEqK2O},   {"NaEqNa2O", c.NaEqNa2O},
    };
    for (const auto& [key, value] : coefficients)
        o.insert(QLatin1StringView(key), readable(value));
    o.insert("C3SUseFreeLime", c.C3SUseFreeLime != 0);
    o.insert("C2SUseFreeLime", c.C2SUseFreeLime != 0);
    return o;
}

} // namespace

QJsonObject projectSettingsToJson(const ProjectSettings& s)
{
    return {
        {"databasePath", s.databasePath},
        {"blastImportSpecification", importSpecJson(s.blastImportSpec)},
        {"clinkerProcess", clinkerProcessJson(s.clinkerProcess)},
        {"blastOptimization", blastOptimizationJson(s.blastOptimization)},
        {"stockpileOptimization", stockpileOptimizationJson(s.stockpileOptimization)},
        {"clinkerOptimization", clinkerOptimizationJson(s.clinkerOptimization)},
        {"stockpileImportSpecification", importSpecJson(s.stockpileImportSpec)},
        {"combination", combinationJson(s.combination)},
        {"coalOptimization", coalOptimizationJson(s.coalOptimization)},
        {"chemicalEquations", chemistryJson(s.chemistry)},
    };
}

} // namespace kilnova
