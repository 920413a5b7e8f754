#include "common/MessageTable.h"

#include <QHash>

namespace kilnova {

namespace {

const QHash<int, QString>& table()
{
    static const QHash<int, QString> texts = {
        {26500, QStringLiteral("Open Kilnova Project Database")},
        {26502, QStringLiteral("Open a Blast data File")},
        {26503, QStringLiteral("Import blast data from an Excel workbook")},
        {26504, QStringLiteral("Open a Stockpile data File")},
        {27000, QStringLiteral("Format of Blast data records")},
        {27001, QStringLiteral("Format of Stockpile data records")},
        {27501, QStringLiteral("Blast data files (*.rsv);;Blast data files (*.txt)")},
        {27502, QStringLiteral("Excel 95/97 workbooks (*.xls)")},
        {27503, QStringLiteral("Stockpile data files (*.rsv);;Stockpile data files (*.txt)")},
        {28000, QStringLiteral("This project is already connected to a database. Do you want overwrite this "
                               "link with a new database?")},
        {28001, QStringLiteral("Error: This database cannot be overwritten.")},
        {28002, QStringLiteral("Are you sure you want to delete the selected records?")},
        {28500, QStringLiteral("No valid data source was specified")},
        {28502,
         QStringLiteral("Error, cannot connect to the project database, try connecting manually to it.")},
        {28503,
         QStringLiteral("Error, a constraint or the element to optimize is applied to an element for which "
                        "one of the sources has a missing value, optimization is aborted\nProblem first "
                        "found in source %1")},
        {28504,
         QStringLiteral("Error, when optimizing Clinker, all sources must have valid LOI values, missing "
                        "values are not allowed, optimization is aborted")},
        {29000, QStringLiteral("You have imported %1 data records from file %2")},
        {29109, QStringLiteral("Enter a name for this Crude")},
        {29110, QStringLiteral("Enter a name for this clinker")},
        {29113,
         QStringLiteral("The Actual 1, Actual 2, Actual 3 and Actual 4 Stockpiles from the database "
                        "%1\n(connected via %2)\n\nWill replace those in the current database.\n\nDo you "
                        "want to proceed ?")},
        {29114, QStringLiteral("A solution was found but potentially degenerated, check carefully")},
        {29200, QStringLiteral("You cannot delete any Actual stockpiles")},
        {29300,
         QStringLiteral("The number of blasts selected is insufficient, given the number  of constraints, "
                        "at least %d blasts are needed")},
        {29301, QStringLiteral("%d successful combinations of %d blasts were found")},

        {30000, QStringLiteral("Kilnova project databases (*.kndb)")},
        {30001,
         QStringLiteral("Connected database name: %1\nNumber of records in Blast table: %2\nNumber of "
                        "records in Stockpile table: %3\nNumber of records in Crude table: %4\nNumber of "
                        "records in Clinker table: %5\nNumber of records in Additives table: %6\nNumber "
                        "of records in Coal table: %7")},
        {30002,
         QStringLiteral("This project is not connected to a database. Use Database > Connect or Database "
                        "> Create first.")},
        {30003, QStringLiteral("The command \"%1\" is not available yet in this version of Kilnova.")},
        {30004, QStringLiteral("The project %1 cannot be opened.")},
        {30005, QStringLiteral("The project cannot be saved as %1.")},
        {30006, QStringLiteral("Save changes to %1?")},
        {30007, QStringLiteral("The database operation failed; nothing was changed.")},
    };
    return texts;
}

} // namespace

QString message(Msg id, std::initializer_list<QString> args)
{
    const QString text = table().value(static_cast<int>(id));
    Q_ASSERT_X(!text.isEmpty(), "message", "unknown message number");
    QString result;
    result.reserve(text.size() + 64);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const qsizetype slot = i + 1 < text.size() ? text[i + 1].digitValue() - 1 : -1;
        if (text[i] == u'%' && slot >= 0 && slot < static_cast<qsizetype>(args.size())) {
            result += *(args.begin() + slot);
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

} // namespace kilnova
