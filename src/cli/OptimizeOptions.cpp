#include "cli/OptimizeOptions.h"

#include "chemistry/Elements.h"
#include "optimise/OptimizationSettings.h"

#include <QLocale>
#include <QRegularExpression>

#include <cmath>

namespace kilnova {

namespace {

/// The --mode words, in the order of the "Optimize:" choices.
const QStringList& modeWords()
{
    static const QStringList words = {"minimize", "maximize", "target", "max-tonnage"};
    return words;
}

} // namespace

OptimizeOptions::OptimizeOptions(std::vector<KindOption> kindOptions)
    : mKindOptions(std::move(kindOptions))
{
}

const char* OptimizeOptions::settingsUsage()
{
    return "      [--mode minimize|maximize|target|max-tonnage] [--element NAME] [--value V]\n"
           "      [--tonnage T] [--constraint \"MIN <= ELEMENT <= MAX\"]... [--select NAME...] [--save]\n"
           "  --explain adds why: the conflicting limits and the values they need, or the limits that hold\n"
           "      the answer and what loosening each is worth (after the report, or in the JSON)\n";
}

bool OptimizeOptions::fail(const QString& problem)
{
    mProblem = problem;
    return false;
}

std::optional<double> OptimizeOptions::parseNumber(const QString& text)
{
    bool ok = false;
    const double v = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(v))
        return std::nullopt;
    return v;
}

std::optional<OptimizeOptions::Limit> OptimizeOptions::parseLimit(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^\\s*(\\S+)\\s*<=\\s*(.+?)\\s*<=\\s*(\\S+)\\s*$"));
    const QRegularExpressionMatch m = form.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const std::optional<double> minimum = parseNumber(m.captured(1));
    const std::optional<double> maximum = parseNumber(m.captured(3));
    if (!minimum || !maximum)
        return std::nullopt;
    return Limit{*minimum, m.captured(2), *maximum};
}

std::optional<QString> OptimizeOptions::value(const QString& name) const
{
    const QStringList v = mKind.value(name);
    return v.isEmpty() ? std::nullopt : std::optional<QString>(v.last());
}

bool OptimizeOptions::parse(const QStringList& args)
{
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        auto next = [&]() -> std::optional<QString> {
            if (i + 1 >= args.size())
                return std::nullopt;
            return args[++i];
        };
        auto number = [&](std::optional<double>& into) {
            const std::optional<QString> text = next();
            if (!text)
                return fail(QStringLiteral("%1 needs a number").arg(a));
            into = parseNumber(*text);
            if (!into)
                return fail(QStringLiteral("%1 must be a number; \"%2\" is not one").arg(a, *text));
            return true;
        };
        if (a == "--json") {
            mJson = true;
        } else if (a == "--explain") {
            mExplain = true;
        } else if (a == "--save") {
            mSave = true;
        } else if (a == "--mode") {
            mMode = next();
            if (!mMode || !modeWords().contains(*mMode))
                return fail(QStringLiteral("--mode must be one of %1").arg(modeWords().join(", ")));
        } else if (a == "--element") {
            mElement = next();
            if (!mElement)
                return fail(QStringLiteral("--element needs an element name"));
        } else if (a == "--value") {
            if (!number(mValue))
                return false;
        } else if (a == "--tonnage") {
            if (!number(mTonnage))
                return false;
        } else if (a == "--constraint") {
            const std::optional<QString> text = next();
            if (!text)
                return fail(QStringLiteral("--constraint needs \"MIN <= ELEMENT <= MAX\""));
            if (!mConstraints)
                mConstraints = QStringList();
            *mConstraints << *text;
        } else if (a == "--select") {
            mSelection = QStringList();
            while (i + 1 < args.size() && !args[i + 1].startsWith(QStringLiteral("--")))
                *mSelection << args[++i];
        } else {
            const auto kind = std::find_if(mKindOptions.begin(), mKindOptions.end(),
                                           [&a](const KindOption& o) { return o.name == a; });
            if (kind == mKindOptions.end())
                return fail(QStringLiteral("unknown option \"%1\"").arg(a));
            if (kind->arity == Arity::Flag) {
                mKind[a];
                continue;
            }
            const std::optional<QString> v = next();
            if (!v)
                return fail(QStringLiteral("%1 needs a value").arg(a));
            if (kind->arity == Arity::One)
                mKind[a] = QStringList{*v};
            else
                mKind[a] << *v;
        }
    }
    return true;
}

bool OptimizeOptions::applyTo(OptimizationSettings& settings)
{
    if (mMode) {
        const int position = static_cast<int>(modeWords().indexOf(*mMode));
        if (position >= settings.modeChoiceList().size())
            return fail(QStringLiteral("--mode %1: this optimisation offers %2")
                            .arg(*mMode, modeWords().mid(0, settings.modeChoiceList().size()).join(", ")));
        settings.setModeChoice(position);
    }
    if (mElement) {
        const std::optional<int> e = settings.propertyOfName(*mElement);
        if (!e || *e >= settings.optimisableCount())
            return fail(
                QStringLiteral("--element \"%1\" is not an element that can be optimised").arg(*mElement));
        settings.setElement(*e);
    }
    if (mValue)
        settings.setTarget(*mValue);
    if (mTonnage)
        settings.setRequestedTonnage(*mTonnage);
    if (mConstraints &&
        !applyLimits(
            QStringLiteral("--constraint"), *mConstraints, settings,
            [&settings] {
                while (!settings.constraintElements().empty())
                    settings.removeConstraint(0);
            },
            [&settings](int e, double min, double max) { return settings.addConstraint(e, min, max); }))
        return false;
    return true;
}

bool OptimizeOptions::applyLimits(const QString& option, const QStringList& texts,
                                  const OptimizationSettings& names, const std::function<void()>& clear,
                                  const std::function<std::optional<QString>(int, double, double)>& add)
{
    clear();
    for (const QString& text : texts) {
        const std::optional<Limit> limit = parseLimit(text);
        if (!limit)
            return fail(QStringLiteral("%1 \"%2\" is not \"MIN <= ELEMENT <= MAX\"").arg(option, text));
        const std::optional<int> e = names.propertyOfName(limit->name);
        if (!e)
            return fail(QStringLiteral("%1 \"%2\": \"%3\" is not an element").arg(option, text, limit->name));
        if (const std::optional<QString> refusal = add(*e, limit->minimum, limit->maximum))
            return fail(QStringLiteral("%1 \"%2\": %3").arg(option, text, *refusal));
    }
    return true;
}

} // namespace kilnova
