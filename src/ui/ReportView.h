#pragma once

#include <QAbstractScrollArea>

#include <memory>

namespace kilnova {

class ReportText;

/// A read-only fixed-pitch view of a report of any length: it paints only the lines in sight,
/// read from the report's storage as the view scrolls, so a report of millions of lines opens at
/// once and scrolls without delay. Scrolls by wheel, scroll bars and the usual keys.
class ReportView final : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit ReportView(std::shared_ptr<const ReportText> report, QWidget* parent = nullptr);

    /// The first line in sight, from 0.
    qsizetype firstVisibleLine() const;
    /// Lines that fit in the view.
    int visibleLines() const;
    /// Brings a line into sight, at the top.
    void scrollToLine(qsizetype line);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void updateScrollBars();
    int lineHeight() const;

    std::shared_ptr<const ReportText> mReport;
};

} // namespace kilnova
