#pragma once

#include "tables/TableEditor.h"

#include <QDialog>

#include <functional>
#include <vector>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QTableView;

namespace kilnova {

class CKilnovaDoc;
class ProjectDatabase;
class UserPrompt;

/// The dialog of Database > View Table and Database > Modify Table: every record of one table in a
/// sortable list (model/view, so a table of ten thousand records opens at once) and, to modify,
/// "Add", "Modify" and "Delete". It is a view over a TableEditor, which holds the rules.
class TableDialog : public QDialog {
    Q_OBJECT
public:
    enum class Mode { View, Modify };

    TableDialog(ProjectDatabase& db, Table table, Mode mode, UserPrompt& ui, QWidget* parent = nullptr);

    /// False when the table could not be read (the user has been told); such a dialog is not shown.
    bool isLoaded() const { return mLoaded; }
    TableEditor& editor() { return mEditor; }
    QTableView* view() const { return mView; }
    /// The selected rows, in list order.
    std::vector<int> selectedRows() const;
    void selectRow(int row);

    void addRecord();
    void modifyRecord();
    void deleteRecords();

    /// The handler of a View Table or Modify Table command: opens the dialog for the document's
    /// database (the Stockpile table modified through CModifyStockpiles).
    static std::function<void()> viewCommand(CKilnovaDoc& doc, Table table, UserPrompt& ui, QWidget* parent);
    static std::function<void()> modifyCommand(CKilnovaDoc& doc, Table table, UserPrompt& ui,
                                               QWidget* parent);
    /// The dialog a command opens, or nothing when the table cannot be read.
    static std::unique_ptr<TableDialog> create(ProjectDatabase& db, Table table, Mode mode, UserPrompt& ui,
                                               QWidget* parent);

protected:
    /// The row of buttons under the list, for a table's own actions.
    QHBoxLayout* buttonRow() const { return mButtons; }

private:
    /// Runs the record form for Add or Modify and shows the stored record.
    void editInForm(RecordForm form);
    void updateButtons();

    UserPrompt& mUi;
    TableEditor mEditor;
    QTableView* mView;
    QLabel* mCount;
    QHBoxLayout* mButtons = nullptr;
    QPushButton* mModify = nullptr;
    QPushButton* mDelete = nullptr;
    bool mLoaded;
};

} // namespace kilnova
