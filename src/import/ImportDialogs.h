#pragma once

namespace kilnova {

class ImportSpecEditor;
class UserPrompt;
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
};

} // namespace kilnova
