#pragma once

#include "common/MessageTable.h"
#include "common/UserPrompt.h"

namespace kilnova {

class ImportSpecEditor;
class WorkbookSourceForm;

/// The two dialogs of the import commands, answered by the GUI with its dialogs, by the command-line
/// tool from its options and by tests from a script.
class ImportDialogs {
public:
    virtual ~ImportDialogs() = default;

    /// Shows the layout of a text file over its preview for editing; true for OK.
    virtual bool editSpecification(ImportSpecEditor& editor) = 0;
    /// Asks for the workbook and the data in it (Browse asks through ui); true for OK.
    virtual bool chooseWorkbookSource(WorkbookSourceForm& form, UserPrompt& ui) = 0;
    /// The lines of a text file do not fit its layout (problem says how); true to import it all the
    /// same. The user is asked unless a front end decides otherwise.
    virtual bool importDespite(const QString& problem, UserPrompt& ui)
    {
        return ui.askYesNo(message(Msg::ImportAnyway, {problem}));
    }
};

} // namespace kilnova
