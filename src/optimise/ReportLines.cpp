#include "optimise/ReportLines.h"

#include "common/PrintfFormat.h"
#include "optimise/ConstraintEntry.h"

namespace kilnova {

QString ReportLines::pairs(const QStringList& names, const std::vector<double>& values)
{
    QString text;
    const qsizetype count = std::min(names.size(), static_cast<qsizetype>(values.size()));
    for (qsizetype i = 0; i < count; ++i) {
        if (i % 4 != 0)
            text += u' ';
        text += formatPrintf("%11.11s %10.2lf", names[i].toUtf8().constData(),
                             values[static_cast<std::size_t>(i)]);
        if (i % 4 == 3 || i + 1 == count)
            text += QStringLiteral("\r\n");
    }
    return text;
}

QString ReportLines::elements(const std::array<double, kElementCount>& values, int count)
{
    QStringList names;
    for (int k = 0; k < count; ++k)
        names << elementName(k);
    return pairs(names, std::vector<double>(values.begin(), values.begin() + count));
}

QString ReportLines::constraints(const QString& heading, const QStringList& texts)
{
    QString text = heading + QStringLiteral("\r\n");
    if (texts.isEmpty())
        return text + QStringLiteral("none\r\n\r\n");
    for (const QString& t : texts)
        text += t + QStringLiteral("\r\n");
    return text + QStringLiteral("\r\n\r\n");
}

QString ReportLines::sourceTaken(double tonnes, const QString& what, const QString& sourceWord,
                                 std::optional<double> available, double mixTotal)
{
    const QByteArray whatText = what.toUtf8();
    if (!available)
        return formatPrintf("%15.6lf tonnes of %s (%.2lf%% of mix)\r\n", tonnes, whatText.constData(),
                            100.0 * tonnes / mixTotal);
    return formatPrintf("%15.6lf tonnes of %s (%.2lf%% of %s, %.2lf%% of mix)\r\n", tonnes,
                        whatText.constData(), 100.0 * tonnes / *available, sourceWord.toUtf8().constData(),
                        100.0 * tonnes / mixTotal);
}

} // namespace kilnova
