#include "cli/CliWording.h"

#include "common/MessageTable.h"

#include <QRegularExpression>
#include <QStringList>

#include <functional>
#include <vector>

namespace kilnova {

namespace {

/// The option that sets what a caption of the "Combine Blasts" dialog sets.
QString optionFor(const QString& caption)
{
    static const std::vector<std::pair<QString, QString>> options = {
        {QStringLiteral("Combined grade"), QStringLiteral("--combined-grade PROPERTY:LOW:HIGH")},
        {QStringLiteral("Inventory grade"), QStringLiteral("--inventory-grade PROPERTY:LOW:HIGH")},
        {QStringLiteral("Combined blasts grade closest to"),
         QStringLiteral("--rank combined:PROPERTY=VALUE")},
        {QStringLiteral("Inventory grade closest to"), QStringLiteral("--rank inventory:PROPERTY=VALUE")},
        {QStringLiteral("Smallest Combined Std. Deviation of grade"),
         QStringLiteral("--rank deviation:PROPERTY")},
    };
    for (const auto& [known, option] : options) {
        if (known == caption)
            return option;
    }
    return QStringLiteral("--rank");
}

struct Rewording {
    Msg id;
    int arguments;
    std::function<QString(const QStringList&)> cli;
};

const std::vector<Rewording>& rewordings()
{
    static const std::vector<Rewording> all = {
        {Msg::CannotConnect, 0,
         [](const QStringList&) {
             return QStringLiteral("Error, cannot connect to the project database.");
         }},
        {Msg::DatabaseFileGone, 1,
         [](const QStringList& a) {
             return QStringLiteral(
                        "The database file %1 is no longer there, so nothing was written. Name the "
                        "project's database with --db PATH.")
                 .arg(a[0]);
         }},
        {Msg::SelectTwoSources, 0,
         [](const QStringList&) {
             return QStringLiteral("Select at least 2 blasts with --select NAME... or --all.");
         }},
        {Msg::SourceNoLongerThere, 1,
         [](const QStringList& a) {
             return QStringLiteral(
                        "The blast \"%1\" is no longer in the Blast table; leave it out of --select.")
                 .arg(a[0]);
         }},
        {Msg::CombinationTonnageMissing, 0,
         [](const QStringList&) {
             return QStringLiteral("Give a target tonnage greater than 0 with --tonnage T.");
         }},
        {Msg::TooManyCombinationTargets, 0,
         [](const QStringList&) {
             return QStringLiteral(
                 "A combination of two blasts can meet the tonnage and one chemistry target "
                 "only. Give one --target PROPERTY=VALUE, or --no-targets.");
         }},
        {Msg::CombinationPropertyMissing, 1,
         [](const QStringList& a) {
             return QStringLiteral("Name the property of \"%1\" with %2.").arg(a[0], optionFor(a[0]));
         }},
        {Msg::BlastNotInSourceList, 1,
         [](const QStringList& a) {
             return QStringLiteral(
                        "The blast \"%1\" cannot be combined: it is not in the Blast table, has no "
                        "tonnes left or lies outside the coordinate filter (--filter, --no-filter).")
                 .arg(a[0]);
         }},
    };
    return all;
}

/// The message's text as a pattern: its placeholders capture whatever was filled in.
QRegularExpression patternOf(const Rewording& r)
{
    QStringList marks;
    for (int i = 1; i <= r.arguments; ++i)
        marks << QStringLiteral("\x01%1\x01").arg(i);
    QString text = QRegularExpression::escape(
        r.arguments == 0 ? message(r.id)
                         : message(r.id, {marks.value(0), marks.value(1), marks.value(2), marks.value(3)}));
    for (int i = 1; i <= r.arguments; ++i)
        text.replace(QRegularExpression::escape(marks[i - 1]), QStringLiteral("(.*)"));
    return QRegularExpression(QRegularExpression::anchoredPattern(text),
                              QRegularExpression::DotMatchesEverythingOption);
}

} // namespace

QString CliWording::reword(const QString& text)
{
    for (const Rewording& r : rewordings()) {
        const QRegularExpressionMatch match = patternOf(r).match(text);
        if (match.hasMatch()) {
            QStringList arguments = match.capturedTexts();
            arguments.removeFirst();
            return r.cli(arguments);
        }
    }
    return text;
}

} // namespace kilnova
