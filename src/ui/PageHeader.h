#pragma once

#include <QDateTime>
#include <QString>

namespace kilnova {

class CKilnovaDoc;

/// What the top of every printed or PDF page of a report says: the project and the database the
/// report came from, and when it ran. It is printed outside the report, whose text stays as built.
struct PageHeader {
    /// The project file's name ("demo.knv", "Untitled").
    QString project;
    /// The database file's name.
    QString database;
    QDateTime run;

    bool isEmpty() const { return project.isEmpty() && database.isEmpty() && !run.isValid(); }
    /// "Project demo.knv   Database demo.kndb"
    QString left() const;
    /// "Run 2025-03-04 14:05", or nothing without a time.
    QString right() const;

    /// The header of a run of the document's project that happens now.
    static PageHeader of(const CKilnovaDoc& doc, const QDateTime& run = QDateTime::currentDateTime());
};

} // namespace kilnova
