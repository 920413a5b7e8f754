#pragma once

#include "common/UserPrompt.h"

#include <QString>

namespace kilnova {

/// What the workbook dialog asks for: the workbook and which of its data to read, a whole worksheet,
/// a named range or a cell range. Every entry is kept as typed; sourceName() applies the rules.
class WorkbookSourceForm final {
public:
    enum class Kind { Worksheet, NamedRange, CellRange };

    Kind kind() const { return mKind; }
    void setKind(Kind kind) { mKind = kind; }
    const QString& worksheet() const { return mWorksheet; }
    void setWorksheet(const QString& name) { mWorksheet = name; }
    const QString& namedRange() const { return mNamedRange; }
    void setNamedRange(const QString& name) { mNamedRange = name; }
    const QString& cellRange() const { return mCellRange; }
    void setCellRange(const QString& range) { mCellRange = range; }
    const QString& workbookPath() const { return mWorkbookPath; }
    void setWorkbookPath(const QString& path) { mWorkbookPath = path; }

    /// The data source as the workbook reader addresses it, from the entry of the chosen kind with
    /// its trailing blanks removed: a worksheet name gets "$" appended ("Data" is read as "Data$"),
    /// a range name or a cell range such as "[Sheet1$]A1:F19" is taken as it is. Empty when the
    /// entry is.
    QString sourceName() const;

    /// The open-file dialog of the Browse button, starting at the current path.
    UserPrompt::FileRequest browseRequest() const;
    /// Browse: asks for a workbook and takes the chosen path; false when the user cancels.
    bool browse(UserPrompt& ui);

private:
    Kind mKind = Kind::Worksheet;
    QString mWorksheet;
    QString mNamedRange;
    QString mCellRange;
    QString mWorkbookPath;
};

} // namespace kilnova
