#pragma once

#include <QDialog>

#include <memory>

class QHBoxLayout;

namespace kilnova {

class ReportText;
class UserPrompt;

/// A results window: the report in a read-only fixed-pitch view with "OK", "Print", "Save as PDF…"
/// and "Save as text…". A caller adds its own actions (store the blend, use a combination) to
/// actionArea(). The window only shows the text it was given. A report of more than
/// kEditableLines lines is shown by a view that reads only the lines in sight, and printed and
/// saved straight from its storage.
class ReportWindow : public QDialog {
    Q_OBJECT
public:
    static constexpr qsizetype kEditableLines = 20000;

    ReportWindow(const QString& title, const QString& reportText, UserPrompt& ui, QWidget* parent = nullptr);
    ReportWindow(const QString& title, std::shared_ptr<const ReportText> report, UserPrompt& ui,
                 QWidget* parent = nullptr);

    /// The whole report as text.
    QString reportText() const;
    const ReportText& report() const { return *mReport; }
    /// Where callers put their own buttons, left of the standard ones.
    QHBoxLayout* actionArea() const { return mActions; }

    void print();
    /// Asks for a file name; false when cancelled or not written (the user is told why).
    bool saveAsPdf();
    bool saveAsText();
    bool writePdf(const QString& path);
    bool writeText(const QString& path);

protected:
    UserPrompt& prompt() { return mUi; }

private:
    std::shared_ptr<const ReportText> mReport;
    UserPrompt& mUi;
    QHBoxLayout* mActions;
};

} // namespace kilnova
