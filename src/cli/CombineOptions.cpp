#include "cli/CombineOptions.h"

#include "chemistry/Elements.h"
#include "combine/CCombinationParameters.h"

#include <QLocale>

namespace kilnova {

namespace {

using Parameters = CCombinationParameters;

/// Options that take a value, and those that do not.
const QStringList kWithValue = {"--tonnage",         "--target",   "--filter",
                                "--min-quantity",    "--min-cost", "--combined-grade",
                                "--inventory-grade", "--rank",     "--period"};
const QStringList kSwitches = {"--no-targets",
                               "--no-filter",
                               "--no-min-quantity",
                               "--no-min-cost",
                               "--no-combined-grade",
                               "--no-inventory-grade",
                               "--save",
                               "--all"};

std::optional<double> number(const QString& text)
{
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    return ok ? std::optional(value) : std::nullopt;
}

/// Index of a property by its shown or column name, without regard to case.
std::optional<int> property(const QString& name)
{
    for (int p = 0; p < kElementCount; ++p) {
        for (std::string_view known : {elementDisplayName(p), elementColumnName(p)}) {
            if (name.trimmed().compare(QLatin1StringView(known.data(), static_cast<qsizetype>(known.size())),
                                       Qt::CaseInsensitive) == 0)
                return p;
        }
    }
    return std::nullopt;
}

/// The name the dialog stores for a property ("Cost Factor").
QString storedName(int p)
{
    const std::string_view name = elementDisplayName(p);
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

QString wrong(const QString& option, const QString& form, const QString& value)
{
    return QStringLiteral("%1 takes %2, not \"%3\"").arg(option, form, value);
}

} // namespace

const char* CombineOptions::usage()
{
    return "  combine PROJECT.knv (--select NAME... | --all) [options]\n"
           "                                      the pairs of blasts that meet the combination targets; "
           "each\n"
           "                                      option replaces that part of the project's settings:\n"
           "      --tonnage T                     target combined tonnage\n"
           "      --target PROPERTY=VALUE         a grade target (replaces the stored ones); --no-targets\n"
           "      --filter EMIN:EMAX:NMIN:NMAX:ZMIN:ZMAX\n"
           "                                      only blasts inside these coordinates; --no-filter\n"
           "      --min-quantity PCT              each blast at least PCT % of the pair; --no-min-quantity\n"
           "      --min-cost PCT                  each blast's cost proportion at least PCT %; "
           "--no-min-cost\n"
           "      --combined-grade PROPERTY:LOW:HIGH    LOW <= grade of the pair < HIGH; "
           "--no-combined-grade\n"
           "      --inventory-grade PROPERTY:LOW:HIGH   the same for what is left; --no-inventory-grade\n"
           "      --rank combined:PROPERTY=VALUE | inventory:PROPERTY=VALUE | deviation:PROPERTY\n"
           "                                      how the pairs are ranked\n"
           "      --period N                      the period number the report prints\n"
           "      --save                          write the settings back into the project (without\n"
           "                                      --select or --all: only that)\n";
}

std::optional<QString> CombineOptions::parse(const QStringList& args)
{
    if (args.isEmpty() || args[0].startsWith(QLatin1String("--")))
        return QStringLiteral("combine needs PROJECT.knv");
    project = args[0];
    bool selecting = false;
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == QLatin1String("--select")) {
            selecting = true;
            continue;
        }
        if (!a.startsWith(QLatin1String("--"))) {
            if (!selecting)
                return QStringLiteral("unexpected \"%1\"").arg(a);
            selected << a;
            continue;
        }
        selecting = false;
        if (kSwitches.contains(a)) {
            if (const auto problem = option(a, {}))
                return problem;
        } else if (kWithValue.contains(a)) {
            if (i + 1 >= args.size())
                return QStringLiteral("%1 needs a value").arg(a);
            if (const auto problem = option(a, args[++i]))
                return problem;
        } else {
            return QStringLiteral("unknown option \"%1\"").arg(a);
        }
    }
    if (all && !selected.isEmpty())
        return QStringLiteral("combine takes --select NAME... or --all, not both");
    if (!all && selected.isEmpty() && !save)
        return QStringLiteral("combine needs PROJECT.knv and --select NAME... or --all");
    return std::nullopt;
}

std::optional<QString> CombineOptions::option(const QString& name, const QString& value)
{
    const auto change = [this](std::function<void(Parameters&)> f) {
        mChanges.push_back(std::move(f));
        return std::nullopt;
    };
    const auto percent = [&](qint32 Parameters::*on, double Parameters::*minimum) -> std::optional<QString> {
        const std::optional<double> v = number(value);
        if (!v)
            return wrong(name, QStringLiteral("a percentage"), value);
        return change([on, minimum, v](Parameters& p) {
            p.*on = 1;
            p.*minimum = *v;
        });
    };
    const auto grade = [&](qint32 Parameters::*on, QString Parameters::*which, float Parameters::*lower,
                           float Parameters::*upper) -> std::optional<QString> {
        const QStringList parts = value.split(u':');
        const std::optional<int> p = property(parts.value(0));
        const std::optional<double> low = number(parts.value(1));
        const std::optional<double> high = number(parts.value(2));
        if (parts.size() != 3 || !p || !low || !high)
            return wrong(name, QStringLiteral("PROPERTY:LOW:HIGH"), value);
        return change([=](Parameters& x) {
            x.*on = 1;
            x.*which = storedName(*p);
            x.*lower = static_cast<float>(*low);
            x.*upper = static_cast<float>(*high);
        });
    };

    if (name == QLatin1String("--all")) {
        all = true;
        return std::nullopt;
    }
    if (name == QLatin1String("--save")) {
        save = true;
        return std::nullopt;
    }
    if (name == QLatin1String("--period")) {
        bool ok = false;
        const int n = value.toInt(&ok);
        if (!ok || n < 1)
            return wrong(name, QStringLiteral("a period number from 1"), value);
        period = n;
        return std::nullopt;
    }
    if (name == QLatin1String("--tonnage")) {
        const std::optional<double> t = number(value);
        if (!t)
            return wrong(name, QStringLiteral("a number of tonnes"), value);
        return change([t](Parameters& p) { p.targetTonnage = *t; });
    }
    if (name == QLatin1String("--target") || name == QLatin1String("--no-targets")) {
        // The first --target replaces the stored targets; the next ones add to it.
        if (!mTargetsCleared || name == QLatin1String("--no-targets")) {
            mTargetsCleared = true;
            change([](Parameters& p) { p.targets.fill(Parameters::Target{}); });
        }
        if (name == QLatin1String("--no-targets"))
            return std::nullopt;
        const qsizetype at = value.indexOf(u'=');
        const std::optional<int> p = property(value.left(at));
        const std::optional<double> v = number(value.mid(at + 1));
        if (at < 0 || !p || !v)
            return wrong(name, QStringLiteral("PROPERTY=VALUE"), value);
        return change([p, v](Parameters& x) {
            x.targets[static_cast<std::size_t>(*p)] = {*v, storedName(*p), 1};
        });
    }
    if (name == QLatin1String("--filter")) {
        const QStringList parts = value.split(u':');
        std::vector<double> bounds;
        for (const QString& part : parts) {
            if (const std::optional<double> b = number(part))
                bounds.push_back(*b);
        }
        if (parts.size() != 6 || bounds.size() != 6)
            return wrong(name, QStringLiteral("EMIN:EMAX:NMIN:NMAX:ZMIN:ZMAX"), value);
        return change([bounds](Parameters& p) {
            p.coordinateFilter = 1;
            p.eastMinimum = bounds[0];
            p.eastMaximum = bounds[1];
            p.northMinimum = bounds[2];
            p.northMaximum = bounds[3];
            p.elevationMinimum = bounds[4];
            p.elevationMaximum = bounds[5];
        });
    }
    if (name == QLatin1String("--no-filter"))
        return change([](Parameters& p) { p.coordinateFilter = 0; });
    if (name == QLatin1String("--min-quantity"))
        return percent(&Parameters::quantityRestriction, &Parameters::quantityMinimumPercent);
    if (name == QLatin1String("--no-min-quantity"))
        return change([](Parameters& p) { p.quantityRestriction = 0; });
    if (name == QLatin1String("--min-cost"))
        return percent(&Parameters::costRestriction, &Parameters::costMinimumPercent);
    if (name == QLatin1String("--no-min-cost"))
        return change([](Parameters& p) { p.costRestriction = 0; });
    if (name == QLatin1String("--combined-grade"))
        return grade(&Parameters::combinedRestriction, &Parameters::combinedRestrictionProperty,
                     &Parameters::combinedLowerBound, &Parameters::combinedUpperBound);
    if (name == QLatin1String("--no-combined-grade"))
        return change([](Parameters& p) { p.combinedRestriction = 0; });
    if (name == QLatin1String("--inventory-grade"))
        return grade(&Parameters::inventoryRestriction, &Parameters::inventoryRestrictionProperty,
                     &Parameters::inventoryLowerBound, &Parameters::inventoryUpperBound);
    if (name == QLatin1String("--no-inventory-grade"))
        return change([](Parameters& p) { p.inventoryRestriction = 0; });

    // --rank
    const qsizetype colon = value.indexOf(u':');
    const QString how = value.left(colon);
    const QString what = value.mid(colon + 1);
    if (how == QLatin1String("deviation")) {
        const std::optional<int> p = property(what);
        if (colon < 0 || !p)
            return wrong(name, QStringLiteral("deviation:PROPERTY"), value);
        return change([p](Parameters& x) {
            x.classificationMode = Parameters::kSmallestStdDeviation;
            x.stdDeviationProperty = storedName(*p);
        });
    }
    const qsizetype at = what.indexOf(u'=');
    const std::optional<int> p = property(what.left(at));
    const std::optional<double> v = number(what.mid(at + 1));
    if (colon < 0 || at < 0 || !p || !v ||
        (how != QLatin1String("combined") && how != QLatin1String("inventory")))
        return wrong(
            name, QStringLiteral("combined:PROPERTY=VALUE, inventory:PROPERTY=VALUE or deviation:PROPERTY"),
            value);
    if (how == QLatin1String("combined")) {
        return change([p, v](Parameters& x) {
            x.classificationMode = Parameters::kCombinedGradeClosest;
            x.combinedGradeProperty = storedName(*p);
            x.combinedGradeTarget = static_cast<float>(*v);
        });
    }
    return change([p, v](Parameters& x) {
        x.classificationMode = Parameters::kInventoryGradeClosest;
        x.inventoryGradeProperty = storedName(*p);
        x.inventoryGradeTarget = static_cast<float>(*v);
    });
}

void CombineOptions::applyTo(CCombinationParameters& parameters) const
{
    for (const auto& change : mChanges)
        change(parameters);
}

} // namespace kilnova
