#pragma once

#include "optimise/BlendChartData.h"
#include "ui/PageHeader.h"

#include <QDialog>

#include <memory>
#include <optional>

class QHBoxLayout;
class QSplitter;
class QVBoxLayout;

namespace kilnova {

class ReportText;
class UserPrompt;

/// A results window: the report in a read-only fixed-pitch view with "OK", "Print", "Save as PDF…"
/// and "Save as text…". A caller adds its own actions (store the blend, use a combination) to
/// actionArea(). The window only shows the text it was given, and the blend chart beside it when
/// given one, which then also prints as the last page. A report of more than kEditableLines lines
/// is shown by a view that reads only the lines in sight, and printed and saved straight from its
/// storage.
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
    /// Shows the blend chart beside the report; it is printed after the report's pages.
    void setChart(const BlendChartData& chart);
    const std::optional<BlendChartData>& chart() const { return mChart; }
    /// Where callers put their own buttons, left of the standard ones.
    QHBoxLayout* actionArea() const { return mActions; }
    /// The header of printed and PDF pages; the text saved stays the bare report.
    void setPageHeader(const PageHeader& header) { mHeader = header; }
    const PageHeader& pageHeader() const { return mHeader; }

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
    /// The report with the appendix after it, as printed.
    std::shared_ptr<const ReportText> printed() const;

    std::shared_ptr<const ReportText> mReport;
    std::optional<BlendChartData> mChart;
    QString mAppendix;
    UserPrompt& mUi;
    QSplitter* mSplitter;
    QWidget* mView = nullptr;
    QHBoxLayout* mActions;
    PageHeader mHeader;
    QVBoxLayout* mLayout;
};

} // namespace kilnova
