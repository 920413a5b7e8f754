#pragma once

#include <QDialog>

namespace kilnova {

class Record;

/// A read-only view of one whole record: every column with its name and value, -1 shown as missing.
class RecordView final : public QDialog {
    Q_OBJECT
public:
    explicit RecordView(const Record& record, QWidget* parent = nullptr);
};

} // namespace kilnova
