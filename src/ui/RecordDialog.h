#pragma once

#include "tables/RecordForm.h"

#include <QDialog>

#include <optional>
#include <vector>

class QLineEdit;

namespace kilnova {

class TableEditor;

/// The record form of Add and Modify: one field per column (a blast's standard deviations in a group
/// of their own), the derived columns read-only and recomputed as the oxides are typed. OK stores
/// the record through the editor; when it is refused the form stays open on the offending field.
class RecordDialog final : public QDialog {
    Q_OBJECT
public:
    RecordDialog(TableEditor& editor, RecordForm form, QWidget* parent = nullptr);

    /// The field of a column ("SiO2"; a deviation as "std_SiO2").
    QLineEdit* field(const QString& objectName) const;
    /// The record as stored by OK (with its row id).
    const Record& record() const { return mForm.record(); }

    void accept() override;

private:
    void edited(int field, const QString& text);
    void showTexts(bool derivedOnly);

    TableEditor& mEditor;
    RecordForm mForm;
    std::vector<QLineEdit*> mEdits;
};

} // namespace kilnova
