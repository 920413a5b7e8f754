#pragma once

#include <QDialog>

class QHBoxLayout;
class QPlainTextEdit;
class QVBoxLayout;

namespace kilnova {

class UserPrompt;

/// A results window: the report in a read-only fixed-pitch view with "OK", "Print", "Save as PDF…"
/// and "Save as text…". A caller adds its own actions (store the blend, use a combination) to
/// actionArea(). The window only shows the text it was given.
class ReportWindow : public QDialog {
    Q_OBJECT
public:
    ReportWindow(const QString& title, const QString& reportText, UserPrompt& ui, QWidget* parent = nullptr);

    const QString& reportText() const { return mReport; }
    /// Where callers put their own buttons, left of the standard ones.
    QHBoxLayout* actionArea() const { return mActions; }

    void print();
    /// Asks for a file name; false when cancelled or not written (the user is told why).
    bool saveAsPdf();
    bool saveAsText();
    bool writePdf(const QString& path);
    bool writeText(const QString& path);

    /// Text printed and exported after the report (which itself stays as built).
    void setAppendix(const QString& text) { mAppendix = text; }
    const QString& appendix() const { return mAppendix; }
    /// A widget shown under the report, above the buttons.
    void addPanel(QWidget* panel);

protected:
    UserPrompt& prompt() { return mUi; }

private:
    QString mReport;
    QString mAppendix;
    UserPrompt& mUi;
    QPlainTextEdit* mView;
    QHBoxLayout* mActions;
    QVBoxLayout* mLayout;
};

} // namespace kilnova
