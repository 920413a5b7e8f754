#pragma once

#include "import/ImportDialogs.h"
#include "import/ImportTarget.h"

#include <QPointer>
#include <QWidget>

namespace kilnova {

class CKilnovaDoc;

/// The import dialogs as modal windows over a parent, and the import commands of the main window.
class GuiImportDialogs final : public ImportDialogs {
public:
    explicit GuiImportDialogs(QWidget* parent);

    bool editSpecification(ImportSpecEditor& editor) override;
    bool chooseWorkbookSource(WorkbookSourceForm& form, UserPrompt& ui) override;

    /// Import > Blast data / Stockpile data > From ASCII file or From an Excel Workbook, on the
    /// document's database and layouts; a confirmed layout marks the document modified.
    void importText(CKilnovaDoc& doc, ImportTarget target, UserPrompt& ui);
    void importWorkbook(CKilnovaDoc& doc, ImportTarget target, UserPrompt& ui);

private:
    QPointer<QWidget> mParent;
};

} // namespace kilnova
