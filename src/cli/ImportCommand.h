#pragma once

#include "import/ImportDialogs.h"

#include <QStringList>
#include <QTextStream>

namespace kilnova {

/// "import blasts|stockpiles PROJECT.knv FILE [--sheet NAME | --range NAME | --cells RANGE]
/// [--strict] [--force]": imports a
/// fixed-column text file with the project's layout, or a workbook (.xls, .xlsx, .csv) by its headings,
/// into the project's database. Answers the import dialogs from its arguments: the layout is taken as
/// the project stores it, so the project file is never changed; a workbook without a source option is
/// read from its first worksheet. Number fields of a text file that are not plain numbers are listed on
/// standard error; --strict refuses such a file. A text file whose lines do not fit the layout is
/// refused unless --force.
class ImportCommand final : public ImportDialogs {
public:
    /// Returned by run() when the arguments are wrong; problem() says how.
    static constexpr int kWrongUsage = -1;

    ImportCommand(QTextStream& out, QTextStream& err);

    /// The exit status: 0 imported (the count on standard output), 1 the import failed or stopped
    /// (the message on standard error).
    int run(const QStringList& arguments);
    const QString& problem() const { return mProblem; }

    bool editSpecification(ImportSpecEditor& editor) override;
    bool chooseWorkbookSource(WorkbookSourceForm& form, UserPrompt& ui) override;
    bool importDespite(const QString& problem, UserPrompt& ui) override;

private:
    int wrongUsage(const QString& problem);

    QTextStream& mOut;
    QTextStream& mErr;
    QString mProblem;
    QString mFile;
    QString mSourceOption;
    QString mSource;
    bool mForce = false;
};

} // namespace kilnova
