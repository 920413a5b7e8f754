#include "ui/GuiImportDialogs.h"

#include "import/ImportWorkflow.h"
#include "project/CKilnovaDoc.h"
#include "ui/CImportFromWKS.h"
#include "ui/DImportSpec.h"

namespace kilnova {

GuiImportDialogs::GuiImportDialogs(QWidget* parent)
    : mParent(parent)
{
}

bool GuiImportDialogs::editSpecification(ImportSpecEditor& editor)
{
    DImportSpec dialog(editor, mParent);
    return dialog.exec() == QDialog::Accepted;
}

bool GuiImportDialogs::chooseWorkbookSource(WorkbookSourceForm& form, UserPrompt& ui)
{
    CImportFromWKS dialog(form, ui, mParent);
    return dialog.exec() == QDialog::Accepted;
}

void GuiImportDialogs::importText(CKilnovaDoc& doc, ImportTarget target, UserPrompt& ui)
{
    if (!doc.database())
        return;
    ImportWorkflow workflow(*doc.database(), doc.settings().blastImportSpec,
                            doc.settings().stockpileImportSpec, ui, *this);
    if (workflow.importText(target).documentModified)
        doc.setModified();
}

void GuiImportDialogs::importWorkbook(CKilnovaDoc& doc, ImportTarget target, UserPrompt& ui)
{
    if (!doc.database())
        return;
    ImportWorkflow workflow(*doc.database(), doc.settings().blastImportSpec,
                            doc.settings().stockpileImportSpec, ui, *this);
    workflow.importWorkbook(target);
}

} // namespace kilnova
