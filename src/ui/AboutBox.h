#pragma once

#include <QString>

#include <memory>

class QMessageBox;
class QWidget;

namespace kilnova {

/// Help > About: the version, the licence and the Qt and SQLite this process runs.
class AboutBox final {
public:
    AboutBox() = delete;

    /// The text of the box (rich text).
    static QString text();
    /// The box, ready to show or exec.
    static std::unique_ptr<QMessageBox> create(QWidget* parent);
};

} // namespace kilnova
