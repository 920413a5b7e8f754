#include "UiTests.h"

#include "common/ReportText.h"
#include "support/ScriptedPrompt.h"
#include "ui/ReportPrinter.h"
#include "ui/ReportView.h"
#include "ui/ReportWindow.h"

#include <QFile>
#include <QPdfWriter>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>

namespace kilnova::test {

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
