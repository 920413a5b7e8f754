#include "optimise/Explanation.h"

#include "common/PrintfFormat.h"

#include <QJsonArray>

#include <algorithm>

namespace kilnova {

namespace {

QString number(double value, const UserLimit& limit)
{
    return formatPrintf("%.2f", value) + (limit.inTonnes() ? QStringLiteral(" t") : QString());
}

QString kindName(UserLimit::Kind kind)
{
    switch (kind) {
    case UserLimit::Kind::Maximum:
        return QStringLiteral("maximum");
    case UserLimit::Kind::Minimum:
        return QStringLiteral("minimum");
    case UserLimit::Kind::Tonnage:
        return QStringLiteral("tonnage");
    case UserLimit::Kind::SourceTonnage:
        return QStringLiteral("source tonnage");
    case UserLimit::Kind::RemainderMaximum:
        return QStringLiteral("remainder maximum");
    case UserLimit::Kind::RemainderMinimum:
        return QStringLiteral("remainder minimum");
    case UserLimit::Kind::TakenMaximum:
        return QStringLiteral("taken maximum");
    case UserLimit::Kind::TakenMinimum:
        return QStringLiteral("taken minimum");
    }
    return {};
}

QString perStep(const ExplainedLimit& l)
{
    if (l.limit.inTonnes())
        return l.step > 0 ? QStringLiteral("per 1 t more") : QStringLiteral("per 1 t less");
    return l.step > 0 ? QStringLiteral("per 0.01 higher") : QStringLiteral("per 0.01 lower");
}

QJsonValue optionalNumber(const std::optional<double>& value)
{
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

QJsonArray limitsJson(const std::vector<ExplainedLimit>& limits)
{
    QJsonArray array;
    for (const ExplainedLimit& l : limits) {
        QJsonObject o{{"limit", l.name},
                      {"kind", kindName(l.limit.kind)},
                      {"current", l.current},
                      {"needed", optionalNumber(l.needed)},
                      {"marginal", optionalNumber(l.marginal)}};
        if (l.marginal)
            o["step"] = l.step;
        if (!l.sources.isEmpty())
            o["sources"] = QJsonArray::fromStringList(l.sources);
        if (!l.note.isEmpty())
            o["note"] = l.note;
        array.append(o);
    }
    return array;
}

} // namespace

QString Explanation::change(const ExplainedLimit& l)
{
    if (!l.needed)
        return l.note;
    const bool up = *l.needed > l.current;
    return (up ? QStringLiteral("raise it to ") : QStringLiteral("lower it to ")) +
           number(*l.needed, l.limit);
}

QString Explanation::text() const
{
    const QString end = QStringLiteral("\r\n");
    QString out;
    switch (status) {
    case Status::Infeasible:
        out += QStringLiteral("Why no blend was found") + end + end;
        break;
    case Status::Optimal:
        out += QStringLiteral("Limits that hold the answer") + end + end;
        break;
    default:
        out += QStringLiteral("Explanation") + end + end;
        break;
    }
    if (!statement.isEmpty())
        out += statement + end;
    if (!conflict.empty()) {
        out += QStringLiteral("These limits cannot hold together:") + end;
        for (const ExplainedLimit& l : conflict) {
            out += QStringLiteral("  ") + l.name + QLatin1Char(' ') + number(l.current, l.limit) +
                   QStringLiteral(": ");
            if (l.limit.kind == UserLimit::Kind::SourceTonnage) {
                out += missingTonnes ? formatPrintf("%.2f t missing", *missingTonnes) : l.note;
                if (!l.sources.isEmpty())
                    out += QStringLiteral("; the fullest blend takes all of ") +
                           l.sources.join(QStringLiteral(", "));
            } else {
                out += change(l);
            }
            out += end;
        }
        const bool eachAlone = std::all_of(conflict.begin(), conflict.end(), [this](const ExplainedLimit& l) {
            return l.needed || (l.limit.kind == UserLimit::Kind::SourceTonnage && missingTonnes);
        });
        if (eachAlone)
            out +=
                QStringLiteral("Any one of these changes, every other limit kept, makes a blend possible.") +
                end;
    }
    for (const ExplainedLimit& l : binding) {
        out += QStringLiteral("  ") + l.name + QLatin1Char(' ') + number(l.current, l.limit) +
               QStringLiteral(": ");
        out += l.marginal ? formatPrintf("objective %+.2f ", *l.marginal) + perStep(l) : l.note;
        out += end;
    }
    return out;
}

QJsonObject Explanation::json() const
{
    static const char* const names[] = {"optimal", "infeasible", "unbounded", "not explained"};
    QJsonObject o{{"status", names[static_cast<int>(status)]},
                  {"statement", statement},
                  {"conflict", limitsJson(conflict)},
                  {"binding", limitsJson(binding)}};
    o["missingTonnes"] = optionalNumber(missingTonnes);
    return o;
}

} // namespace kilnova
