#pragma once

#include <QDialog>

class QComboBox;
class QPlainTextEdit;
class QSpinBox;

namespace kilnova {

class ImportSpecEditor;

/// "Import dataset specifications": the layout of a text file over a preview of its first lines. A
/// thin view over an ImportSpecEditor, which stores every change and turns a selection into columns.
class DImportSpec final : public QDialog {
    Q_OBJECT
public:
    explicit DImportSpec(ImportSpecEditor& editor, QWidget* parent = nullptr);

private:
    /// Shows the chosen field's values without storing them again.
    void showField();
    void takeSelection();

    ImportSpecEditor& mEditor;
    QComboBox* mField;
    QSpinBox* mPosition;
    QSpinBox* mLength;
    QSpinBox* mDecimals;
    QPlainTextEdit* mPreview;
};

} // namespace kilnova
