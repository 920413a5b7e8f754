#include "UiTests.h"

#include "support/ScriptedPrompt.h"
#include "ui/ReportWindow.h"

#include <QFile>
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
