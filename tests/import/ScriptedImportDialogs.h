#pragma once

#include "import/ImportDialogs.h"
#include "import/ImportSpecEditor.h"
#include "import/WorkbookSourceForm.h"

#include <functional>

namespace kilnova::test {

/// Answers the import dialogs from a script and writes down what they were shown.
class ScriptedImportDialogs final : public ImportDialogs {
public:
    /// Edits the layout as the user would and says whether they press OK.
    std::function<bool(ImportSpecEditor&)> onSpecification = [](ImportSpecEditor&) {
        return true;
    };
    /// Fills the workbook dialog and says whether they press OK.
    std::function<bool(WorkbookSourceForm&, UserPrompt&)> onWorkbook = [](WorkbookSourceForm&, UserPrompt&) {
        return false;
    };

    QStringList titles;
    QStringList previews;
    int workbookDialogs = 0;

    bool editSpecification(ImportSpecEditor& editor) override
    {
        titles << editor.title();
        previews << editor.preview();
        return onSpecification(editor);
    }
    bool chooseWorkbookSource(WorkbookSourceForm& form, UserPrompt& ui) override
    {
        ++workbookDialogs;
        return onWorkbook(form, ui);
    }
};

} // namespace kilnova::test
