#pragma once

#include <QWidget>

class QLabel;

namespace kilnova {

class CKilnovaDoc;

/// The main view: what project is open, which database it uses and what that database holds.
class CKilnovaView final : public QWidget {
    Q_OBJECT
public:
    explicit CKilnovaView(CKilnovaDoc& doc, QWidget* parent = nullptr);

    /// Reads the document (and the record counts) again.
    void refresh();

private:
    CKilnovaDoc& mDoc;
    QLabel* mProject;
    QLabel* mDatabase;
    QLabel* mCounts;
};

} // namespace kilnova
