#pragma once

#include <QDialog>

#include <optional>

class QLineEdit;
class QPushButton;

namespace kilnova {

/// The name prompt: a small modal dialog with one text field for the name of a new record. It takes
/// at most 50 characters and offers OK only once something is typed, so an empty or too long name
/// never leaves it; Cancel gives nothing.
class CPromptDlg final : public QDialog {
    Q_OBJECT
public:
    CPromptDlg(const QString& prompt, const QString& initial, QWidget* parent = nullptr);

    QString text() const;

    /// The name typed, or nothing when the user cancels.
    static std::optional<QString> ask(QWidget* parent, const QString& prompt, const QString& initial);

private:
    QLineEdit* mEdit;
    QPushButton* mOk;
};

} // namespace kilnova
