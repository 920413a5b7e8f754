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
        {27501, QStringLiteral("Blast data files (*.rsv)|*.rsv|Blast data files (*.txt)|*.txt||")},
        {27502, QStringLiteral("Excel 95/97 workbooks (*.xls)|*.xls||")},
        {27503, QStringLiteral("Stockpile data files (*.rsv)|*.rsv|Stockpile data files (*.txt)|*.txt||")},
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

        {29900, QStringLiteral("Please, select at least 2 sources")},
        {29901, QStringLiteral("A constraint on this variable has already been set")},
        {29902, QStringLiteral("You cannot add a constraint on the optimized element in Target mode")},
        {29903, QStringLiteral("The optimization system could not be initialized")},
        {29904, QStringLiteral("The optimization set of constraints could not be processed correctly")},
        {29905,
         QStringLiteral("The system cannot reach an optimum, it is unbounded given the set of constraints")},
        {29906,
         QStringLiteral("The system cannot reach an optimum, it is infeasible given the set of constraints")},
        {29907, QStringLiteral("Error, impossible to derive an optimal solution out of this system")},
        {29908, QStringLiteral("Enter a name for this stockpile")},
        {29909,
         QStringLiteral("Would you like to update the source records by subtracting the quantities (Blast, "
                        "Stockpile, Crude, Coal) taken by this optimisation?")},

        {29950,
         QStringLiteral("This operation will PERMANENTLY update the records of the Blast table with the "
                        "current blast data that may have been modified by previous Combination "
                        "operations.\n\n Are you sure you want to proceed ?")},
        {30800,
         QStringLiteral("A combination of two blasts can meet the tonnage and one chemistry target only. "
                        "Remove all targets but one, then combine again.")},
        {30801, QStringLiteral("Choose a property for \"%1\", then combine again.")},
        {30802, QStringLiteral("A target on %1 is already set; use Modify to change its value.")},
        {30803, QStringLiteral("No target is set on %1.")},
        {30804,
         QStringLiteral("The blast \"%1\" is not in the list of sources: it is not in the Blast table, "
                        "has no tonnes left or lies outside the coordinate filter.")},
        {30805, QStringLiteral("Enter a target tonnage greater than 0, then combine again.")},

        {30600, QStringLiteral("Enter a name for this coal")},
        {30601,
         QStringLiteral("Error, a constraint or the element to optimize is applied to the ash analysis, "
                        "which coal %1 cannot weigh: its Ash is %2, optimization is aborted")},
        {30602,
         QStringLiteral("The requested tonnage, %1 t, is more than the chosen coals hold, %2 t. Choose "
                        "more coals or ask for less.")},
        {30603, QStringLiteral("The Coal table has no backup: subtracted quantities cannot be restored.")},

        {31900,
         QStringLiteral("Coal alone makes no clinker: choose at least one crude, stockpile or additive as "
                        "well.")},
        {31901, QStringLiteral("Enter a requested clinker tonnage greater than 0.")},
        {31902,
         QStringLiteral("A fixed LOI of the clinker of 100% or more leaves no clinker; correct it under "
                        "Settings > Clinker Process Parameters.")},
        {31903,
         QStringLiteral("The energy consumption factor must be greater than 0; correct it under Settings > "
                        "Clinker Process Parameters.")},
        {31904,
         QStringLiteral("The coal \"%1\" has no Ash or no BTU value; the clinker optimisation needs both.")},
        {31905, QStringLiteral("The %1 \"%2\" is no longer in the %3 table; refresh the list of sources.")},

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
        {30700, QStringLiteral("Excel workbooks (*.xlsx)|*.xlsx|Comma-separated values (*.csv)|*.csv||")},
        {30701, QStringLiteral("The import from %1 stopped at %2: %3\nRecords imported before that point and "
                               "kept: %4.")},
        {30702, QStringLiteral("The import from %1 stopped at %2: %3\nNothing was imported.")},
        {30703, QStringLiteral("The file %1 cannot be opened: %2")},
        {30704, QStringLiteral("%1 is not a text file. Nothing was imported.")},
        {30705, QStringLiteral("The workbook %1 cannot be read: %2")},
        {30706, QStringLiteral("No records were imported: the file %1 holds no complete line.")},
        {30101, QStringLiteral("A name must have between 1 and %1 characters.")},
        {30100,
         QStringLiteral("The blast \"%1\" is no longer in the Blast table; refresh the list of sources.")},
        {30300, QStringLiteral("Enter a value for %1.")},
        {30301, QStringLiteral("%1 may hold at most 50 characters; \"%2\" has %3.")},
        {30302, QStringLiteral("%1 must be a number; \"%2\" is not one.")},
        {30303, QStringLiteral("The %1 table already holds a record named \"%2\".")},
        {30304, QStringLiteral("The database file %1 is no longer there, so nothing was written. Connect the "
                               "project to its database again.")},
        {30305, QStringLiteral("The record \"%1\" was not saved: %2")},
        {30306, QStringLiteral("No record was deleted: %1")},
        {30307, QStringLiteral("The %1 table cannot be read: %2")},
        {30308, QStringLiteral("The four Actual stockpiles keep their Name and Source, and no other "
                               "stockpile may take them.")},

        {31700,
         QStringLiteral("Number fields that held no number or stopped early: %1. They were stored as 0 "
                        "or as their leading number:")},
        {31701, QStringLiteral("  line %1, %2: blank, stored as %3")},
        {31702, QStringLiteral("  line %1, %2: \"%3\", stored as %4")},
        {31703, QStringLiteral("  and %1 more")},
        {31704,
         QStringLiteral("A field the file does not hold keeps its missing value (-1) when its length in "
                        "the layout is 0.")},
        {31705,
         QStringLiteral("The lines of this file do not fit the %1 layout: on %2 of %3 lines the %4 field "
                        "holds a number (\"%5\" on line %6) where a name belongs.")},
        {31706,
         QStringLiteral("The lines of this file do not fit the %1 layout: on %2 of %3 lines most number "
                        "fields hold no number (%4 holds \"%5\" on line %6).")},
        {31707, QStringLiteral("%1\n\nImport the file anyway?")},
        {31708, QStringLiteral("Nothing was imported from %1: not every number field holds a plain number.")},
        {31710, QStringLiteral("The %1 table already holds %2 named \"%3\". Replace, keep both, or choose "
                               "another name?")},
        {31711, QStringLiteral("Replace")},
        {31712, QStringLiteral("Keep both")},
        {31713, QStringLiteral("Choose another name")},
        {31714, QStringLiteral("The %1 table already holds %2 named \"%3\"; nothing was stored.")},
        {31715,
         QStringLiteral("An Actual stockpile cannot be replaced by a blend; keep both or choose another "
                        "name.")},
        {31716, QStringLiteral("a record")},
        {31717, QStringLiteral("%1 records")},
        {31720, QStringLiteral("Stored \"%1\" (%2 t) in the %3 table.")},
        {31721,
         QStringLiteral("Stored \"%1\" (%2 t) in the %3 table in place of the %4 record(s) of that name.")},
        {31722, QStringLiteral("Subtracted %1 t from %2 source record(s), %3 of them deleted.")},
        {31723, QStringLiteral("The sources were left as they were.")},
        {31724, QStringLiteral("%1 in %2")},
        {31725, QStringLiteral("Backup rows made: %1.")},
        {31726, QStringLiteral("No backup rows were made.")},
        {31730,
         QStringLiteral("This project names the database %1, outside the project's folder, while a "
                        "database of the same name lies beside the project: %2.\n\nWhich one should the "
                        "project use?")},
        {31731,
         QStringLiteral("This project names the database %1, which is not there, while a database of the "
                        "same name lies beside the project: %2.\n\nShould the project use that one?")},
        {31732, QStringLiteral("The one beside the project")},
        {31733, QStringLiteral("The one the project names")},
        {31734, QStringLiteral("Leave the project unconnected")},
        {31735, QStringLiteral("The project's database %1 lies in its old folder. Copy it to %2, so that the "
                               "project saved in the new folder keeps its data with it?")},
        {31736, QStringLiteral("The database could not be copied to %1, so the project was not saved.")},
        {31741, QStringLiteral("%1 row(s) were deleted from the %2 table.")},
        {31742, QStringLiteral("Restore the %1 selected row(s) of the %2 table? Each one overwrites the %3 "
                               "record of the same name, or brings it back if it was deleted.")},
        {31743, QStringLiteral("%1 of the %2 selected row(s) were restored into the %3 table.")},
        {31744, QStringLiteral("%1 row(s) were not restored: several backups share the name and none has the "
                               "Quantity shown.")},
        {31745,
         QStringLiteral("The Blast table now holds the working copies: %1 blast(s) changed, %2 deleted, "
                        "%3 added. The records they replaced were not backed up.")},

        {31800, QStringLiteral("The database %1 is in use by another program, which holds its lock; nothing "
                               "was written. Try again once that program has finished, or close it.")},
        {31801, QStringLiteral("The database %1 is damaged or is not a database: %2")},
        {31802, QStringLiteral("The database file %1 was replaced by another file, so nothing was written. "
                               "Connect the project to its database again.")},
        {31803, QStringLiteral("The database file %1 was deleted or replaced while this was being written to "
                               "it: what was written is lost with it. Connect the project to its database "
                               "again and check its records.")},
        {31804,
         QStringLiteral("The %1 has changed since the optimisation read it, so nothing was stored. Run "
                        "the optimisation again.")},
        {31805, QStringLiteral("The %1 is no longer in the database, so nothing was stored. Run the "
                               "optimisation again.")},
        {31806, QStringLiteral("The Blast table has changed since the combination analysis copied it (the "
                               "%1 differs), so it was not updated. Close the Combine Blasts dialog and open "
                               "it again.")},
        {31807, QStringLiteral("The backup of %1 has changed since the list was shown (restored or deleted "
                               "meanwhile), so nothing was restored. Open the list again.")},
        {31808, QStringLiteral("The %1 has changed since it was chosen for Update Actual Stockpiles, so "
                               "nothing was blended. Open Update Actual Stockpiles again.")},
        {31809, QStringLiteral("The %1 is no longer in the database, so nothing was blended. Open Update "
                               "Actual Stockpiles again.")},

        {32001,
         QStringLiteral("\"%1\" is neither a stockpile, written NAME (SOURCE), nor an additive of this "
                        "database.")},
        {32002, QStringLiteral("The stockpile \"%1\" has no Quantity (-1): nothing was blended.")},
        {32003, QStringLiteral("The stockpile \"%1\" cannot be added to itself: nothing was blended.")},
        {32004, QStringLiteral("Choose at least one stockpile to add and the stockpile that receives them.")},
        {32005, QStringLiteral("The stockpile \"%1\" is no longer in the Stockpile table: nothing was "
                               "blended.")},
        {32006, QStringLiteral("The data source %1 cannot be opened: %2\nNothing was changed.")},
        {32007, QStringLiteral("The Actual stockpiles cannot be read from %1: %2\nNothing was changed.")},
        {32008,
         QStringLiteral("The row of %1 in stkpiles holds \"%2\" in %3, which is not a number.\nNothing "
                        "was changed.")},
        {32009, QStringLiteral("The table stkpiles of %1 holds none of the four Actual stockpiles.\nNothing "
                               "was changed.")},
        {32010, QStringLiteral("%1 Actual stockpiles were replaced from %2.")},
        {32011,
         QStringLiteral("The row of %1 in stkpiles holds \"%2\" in %3, which is beyond what an analysis can "
                        "keep (%4 at the most).\nNothing was changed.")},

        {32100,
         QStringLiteral("A blend that meets every limit exists all the same. Kilnova's second method (a "
                        "bounded-variable simplex in double precision) found the one below; it can be "
                        "stored like any other.")},
        {32101,
         QStringLiteral("Trying every pair of %1 blasts could take %2 MB of memory, more than half of the "
                        "%3 MB of this computer. Select at most %4 blasts, then combine again.")},
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
