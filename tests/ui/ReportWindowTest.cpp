#include "UiTests.h"

#include "common/ReportText.h"
#include "support/ScriptedPrompt.h"
#include "ui/BlendChartView.h"
#include "ui/ReportPrinter.h"
#include "ui/ReportView.h"
#include "ui/ReportWindow.h"

#include <QFile>
#include <QPaintEngine>
#include <QPainter>
#include <QPdfWriter>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>

namespace kilnova::test {

/// Paints nothing and writes down every text drawn, in order, with where it was drawn.
class TextRecorder final : public QPaintEngine {
public:
    struct Drawn {
        QPointF at;
        QString text;
    };
    std::vector<Drawn> drawn;

    TextRecorder()
        : QPaintEngine(QPaintEngine::AllFeatures)
    {
    }
    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState&) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawLines(const QLineF*, int) override {}
    void drawLines(const QLine*, int) override {}
    void drawPath(const QPainterPath&) override {}
    void drawTextItem(const QPointF& at, const QTextItem& item) override
    {
        drawn.push_back({at, item.text()});
    }
    Type type() const override { return QPaintEngine::User; }

    QStringList texts() const
    {
        QStringList all;
        for (const Drawn& d : drawn)
            all << d.text;
        return all;
    }
};

/// A page of 600 x 800 points to record on.
class RecordedPage final : public QPaintDevice {
public:
    mutable TextRecorder engine;
    QPaintEngine* paintEngine() const override { return &engine; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return 600;
        case PdmHeight:
            return 800;
        case PdmWidthMM:
            return 212;
        case PdmHeightMM:
            return 282;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 72;
        case PdmDepth:
            return 32;
        case PdmNumColors:
            return INT_MAX;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 0;
        }
    }
};

class ReportWindowTest : public QObject {
    Q_OBJECT

    static QString longReport(int lines)
    {
        QString text = QStringLiteral("Blast Optimization Results\r\n\r\n");
        for (int i = 0; i < lines; ++i)
            text += QStringLiteral("%1 tonnes of blast B%2\r\n").arg(1000.0 + i, 10, 'f', 3).arg(i);
        return text;
    }

    static int pdfPages(const QString& path)
    {
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly))
            return -1;
        const QByteArray pdf = f.readAll();
        return static_cast<int>(pdf.count("/Type /Page\n") + pdf.count("/Type /Page\r") +
                                pdf.count("/Type /Page ") + pdf.count("/Type /Page/") +
                                pdf.count("/Type /Page>"));
    }

private slots:
    void showsTheReportReadOnlyInFixedPitch()
    {
        ScriptedPrompt ui;
        ReportWindow window("Blast Optimization Results", "line one\r\nline two\r\n", ui);
        auto* view = window.findChild<QPlainTextEdit*>("report");
        QVERIFY(view);
        QVERIFY(view->isReadOnly());
        QCOMPARE(view->toPlainText(), QStringLiteral("line one\nline two\n"));
        QVERIFY(QFontInfo(view->font()).fixedPitch());
    }

    void savesTextExactlyAndPdfOnSeveralPages()
    {
        QTemporaryDir dir;
        ScriptedPrompt ui;
        const QString report = longReport(200);
        ReportWindow window("Results", report, ui);
        ui.fileAnswers = {dir.filePath("r.txt"), dir.filePath("r.pdf"), std::nullopt};
        QVERIFY(window.saveAsText());
        QFile text(dir.filePath("r.txt"));
        QVERIFY(text.open(QIODevice::ReadOnly));
        QCOMPARE(text.readAll(), report.toUtf8());

        QVERIFY(window.saveAsPdf());
        QVERIFY2(pdfPages(dir.filePath("r.pdf")) >= 3,
                 "200 lines in a 9-point font need more than two A4 pages");
        QVERIFY(!window.saveAsPdf()); // cancelled
        QVERIFY(ui.messages.empty());
    }

    void aLineWiderThanThePageMakesTheFontSmaller()
    {
        QTemporaryDir dir;
        QPdfWriter writer(dir.filePath("w.pdf"));
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(15, 15, 15, 15), QPageLayout::Millimeter);
        const int width = writer.pageLayout().paintRectPixels(writer.resolution()).width();

        // The widest line of a usual report, 91 characters, fits at the usual size.
        const QString mixLine = QStringLiteral(
            "  Titration      86.00        SiO2      12.00       Al2O3       2.80       Fe2O3       1.40");
        const QFont usual = ReportPrinter(mixLine + "\r\n").fontFor(writer, width);
        QCOMPARE(usual.pointSizeF(), ReportPrinter::kPointSize);
        QVERIFY(QFontInfo(usual).fixedPitch());

        // A 50-character blast name makes a line of about 120 characters.
        const QString wide =
            QStringLiteral("    1000.000000 tonnes of Blast %1 (100.00% of blast, 100.00% of mix)")
                .arg(QString(50, 'N'));
        const QFont smaller = ReportPrinter(mixLine + "\r\n" + wide + "\r\n").fontFor(writer, width);
        QVERIFY(smaller.pointSizeF() < ReportPrinter::kPointSize);
        QVERIFY(QFontMetrics(smaller, &writer).horizontalAdvance(wide) <= width);
    }

    void theHeaderNamesProjectDatabaseAndRunAbovePrintedPagesOnly()
    {
        const PageHeader header{"plant.knv", "plant.kndb", QDateTime(QDate(2025, 3, 4), QTime(14, 5, 59))};
        struct Page {
            QStringList texts;
            std::vector<double> heights;
            int pages = 0;
        };
        const auto paint = [](const ReportPrinter& printer) {
            RecordedPage page;
            QPainter painter(&page);
            Page p;
            p.pages = printer.pageCount(painter);
            printer.paintPage(painter, 0, p.pages);
            for (const TextRecorder::Drawn& d : page.engine.drawn) {
                p.texts << d.text;
                p.heights.push_back(d.at.y());
            }
            return p;
        };

        const Page short_ = paint(ReportPrinter("line one\r\nline two\r\n", header));
        QCOMPARE(short_.texts, QStringList({"Project plant.knv   Database plant.kndb", "Run 2025-03-04 14:05",
                                            "line one", "line two", "Page 1 of 1"}));
        QVERIFY2(short_.heights[1] < short_.heights[2], "the header is above the report");
        const Page bare = paint(ReportPrinter("line one\r\nline two\r\n"));
        QCOMPARE(bare.texts, QStringList({"line one", "line two", "Page 1 of 1"}));

        // A page with the header holds two report lines fewer; none is painted over.
        const QString long_ = longReport(300);
        const Page headed = paint(ReportPrinter(long_, header));
        const Page plain = paint(ReportPrinter(long_));
        const auto reportLines = [](const Page& p) {
            return p.texts.filter(QStringLiteral(" tonnes of blast ")).size();
        };
        QCOMPARE(reportLines(headed), reportLines(plain) - 2);
        QVERIFY(headed.pages >= plain.pages);

        // The window prints with its header and saves the bare text.
        QTemporaryDir dir;
        ScriptedPrompt ui;
        ReportWindow window("Results", "line one\r\n", ui);
        window.setPageHeader(header);
        QVERIFY(window.writeText(dir.filePath("r.txt")));
        QFile text(dir.filePath("r.txt"));
        QVERIFY(text.open(QIODevice::ReadOnly));
        QCOMPARE(text.readAll(), QByteArray("line one\r\n"));
        QVERIFY(window.writePdf(dir.filePath("r.pdf")));
    }

    void aChartShowsBesideTheReportAndPrintsAsTheLastPage()
    {
        QTemporaryDir dir;
        ScriptedPrompt ui;
        ReportWindow window("Results", longReport(10), ui);
        QVERIFY(!window.findChild<BlendChartView*>());
        QVERIFY(window.writePdf(dir.filePath("text.pdf")));
        QCOMPARE(pdfPages(dir.filePath("text.pdf")), 1);

        BlendChartData chart;
        chart.tonnage = 1000;
        BlendChartData::Row row;
        row.element = elementIndex(Element::SiO2);
        row.band = std::array<double, 2>{12, 15};
        row.value = 12;
        row.binding = BlendChartData::Binding::Minimum;
        chart.rows = {row};
        window.setChart(chart);
        window.setChart(chart); // a second chart replaces the first
        QCOMPARE(window.findChildren<BlendChartView*>().size(), qsizetype{1});
        QCOMPARE(window.findChild<BlendChartView*>()->chart().rows.size(), std::size_t{1});
        QVERIFY(window.writePdf(dir.filePath("chart.pdf")));
        QCOMPARE(pdfPages(dir.filePath("chart.pdf")), 2);
        // A report of several pages keeps them all, the chart after them.
        ReportWindow longer("Results", longReport(200), ui);
        QVERIFY(longer.writePdf(dir.filePath("long.pdf")));
        const int textPages = pdfPages(dir.filePath("long.pdf"));
        longer.setChart(chart);
        QVERIFY(longer.writePdf(dir.filePath("long.pdf")));
        QCOMPARE(pdfPages(dir.filePath("long.pdf")), textPages + 1);
    }

    // A report past the lines an editor holds is shown a screen at a time and printed and saved from
    // its temporary file.
    void aLongReportIsShownPrintedAndSavedFromItsFile()
    {
        QTemporaryDir dir;
        ScriptedPrompt ui;
        auto report = std::make_shared<ReportText>(1 << 12);
        std::string whole;
        for (qsizetype i = 0; i < ReportWindow::kEditableLines + 500; ++i)
            whole += "Successful combination #" + std::to_string(i + 1) + "\r\n";
        report->write(whole);
        QVERIFY(report->onDisk());
        ReportWindow window("Combination results", report, ui);
        QVERIFY(window.findChild<ReportView*>("report"));
        QVERIFY(!window.findChild<QPlainTextEdit*>("report"));
        QVERIFY(window.writeText(dir.filePath("r.txt")));
        QFile text(dir.filePath("r.txt"));
        QVERIFY(text.open(QIODevice::ReadOnly));
        QVERIFY(text.readAll().toStdString() == whole);

        // Printed page by page from the file: 300 lines need several pages.
        auto shorter = std::make_shared<ReportText>(1 << 10);
        shorter->write(longReport(300).toStdString());
        QVERIFY(shorter->onDisk());
        QVERIFY(ReportPrinter(shorter).writePdf(dir.filePath("r.pdf")));
        QVERIFY(pdfPages(dir.filePath("r.pdf")) >= 4);
        QVERIFY(ui.messages.empty());
    }

    void unwritableTargetIsReported()
    {
        ScriptedPrompt ui;
        ReportWindow window("Results", "x\r\n", ui);
        QVERIFY(!window.writeText("/nonexistent-folder/r.txt"));
        QCOMPARE(ui.messages.size(), std::size_t{1});
        QCOMPARE(ui.messages[0].icon, UserPrompt::Icon::Error);
    }
};

static RegisterUiTest<ReportWindowTest> registerReportWindowTest("ReportWindowTest");

} // namespace kilnova::test

#include "ReportWindowTest.moc"
