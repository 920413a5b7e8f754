#pragma once

#include <QDialog>

class QLineEdit;

namespace kilnova {

class UserPrompt;
class WorkbookSourceForm;

/// "Import  Data from Excel workbooks": the workbook and the worksheet, named range or cell range to
/// read. A thin view over a WorkbookSourceForm, which keeps every entry as it is typed.
class CImportFromWKS final : public QDialog {
    Q_OBJECT
public:
    CImportFromWKS(WorkbookSourceForm& form, UserPrompt& ui, QWidget* parent = nullptr);

private:
    WorkbookSourceForm& mForm;
    UserPrompt& mUi;
    QLineEdit* mPath;
};

} // namespace kilnova
