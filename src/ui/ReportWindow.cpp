#include "ui/ReportWindow.h"

#include "common/ReportText.h"
#include "common/UserPrompt.h"
#include "ui/BlendChartView.h"
#include "ui/ReportPrinter.h"
#include "ui/ReportView.h"

#include <QDir>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSaveFile>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>

namespace kilnova {

ReportWindow::ReportWindow(const QString& title, const QString& reportText, UserPrompt& ui, QWidget* parent)
    : ReportWindow(title, ReportText::fromString(reportText), ui, parent)
{
}

ReportWindow::ReportWindow(const QString& title, std::shared_ptr<const ReportText> report, UserPrompt& ui,
                           QWidget* parent)
    : QDialog(parent)
    , mReport(std::move(report))
    , mUi(ui)
    , mSplitter(new QSplitter(Qt::Horizontal))
    , mActions(new QHBoxLayout)
    , mLayout(new QVBoxLayout(this))
{
    setWindowTitle(title);
    if (mReport->lineCount() <= kEditableLines) {
        auto* edit = new QPlainTextEdit;
        edit->setReadOnly(true);
        edit->setLineWrapMode(QPlainTextEdit::NoWrap);
        edit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        QString shown = mReport->toString();
        shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        edit->setPlainText(shown);
        mView = edit;
    } else {
        mView = new ReportView(mReport);
    }
    mView->setObjectName(QStringLiteral("report"));

    auto* ok = new QPushButton(QStringLiteral("OK"));
    auto* print = new QPushButton(QStringLiteral("Print"));
    auto* pdf = new QPushButton(QStringLiteral("Save as PDF…"));
    auto* text = new QPushButton(QStringLiteral("Save as text…"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(print, &QPushButton::clicked, this, &ReportWindow::print);
    connect(pdf, &QPushButton::clicked, this, &ReportWindow::saveAsPdf);
    connect(text, &QPushButton::clicked, this, &ReportWindow::saveAsText);

    auto* buttons = new QHBoxLayout;
    buttons->addLayout(mActions);
    buttons->addStretch();
    for (QPushButton* b : {pdf, text, print, ok})
        buttons->addWidget(b);

    mSplitter->addWidget(mView);
    mSplitter->setChildrenCollapsible(false);
    mLayout->addWidget(mSplitter, 1);
    mLayout->addLayout(buttons);
    resize(900, 640);
}

void ReportWindow::setChart(const BlendChartData& chart)
{
    mChart = chart;
    if (auto* old = findChild<BlendChartView*>())
        delete old;
    auto* view = new BlendChartView(chart);
    mSplitter->addWidget(view);
    mSplitter->setStretchFactor(0, 1);
    mSplitter->setStretchFactor(1, 1);
    resize(std::max(width(), 1320), std::max(height(), 680));
    // The report's widest lines (about 92 characters) stay whole; the chart takes the rest.
    const int reportWidth = mView->fontMetrics().horizontalAdvance(QString(96, u'0'));
    mSplitter->setSizes({reportWidth, std::max(460, width() - reportWidth - 40)});
}

std::shared_ptr<const ReportText> ReportWindow::printed() const
{
    // Only results windows carry an appendix, and their reports are small enough to copy.
    if (mAppendix.isEmpty())
        return mReport;
    return ReportText::fromString(mReport->toString() + mAppendix);
}

QString ReportWindow::reportText() const
{
    return mReport->toString();
}

void ReportWindow::addPanel(QWidget* panel)
{
    mLayout->insertWidget(mLayout->count() - 1, panel);
}

void ReportWindow::print()
{
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(QStringLiteral("Print"));
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (ReportPrinter(printed(), mHeader, mChart).print(printer) == 0)
        mUi.showMessage(QStringLiteral("The report could not be printed."), UserPrompt::Icon::Error, {});
}

bool ReportWindow::saveAsPdf()
{
    UserPrompt::FileRequest request{QStringLiteral("Save as PDF"), QStringLiteral("PDF files (*.pdf)"),
                                    QStringLiteral("pdf"), QDir::home().filePath(windowTitle() + ".pdf"),
                                    true};
    const std::optional<QString> path = mUi.chooseFile(request);
    return path && writePdf(*path);
}

bool ReportWindow::saveAsText()
{
    UserPrompt::FileRequest request{QStringLiteral("Save as text"), QStringLiteral("Text files (*.txt)"),
                                    QStringLiteral("txt"), QDir::home().filePath(windowTitle() + ".txt"),
                                    true};
    const std::optional<QString> path = mUi.chooseFile(request);
    return path && writeText(*path);
}

bool ReportWindow::writePdf(const QString& path)
{
    if (ReportPrinter(printed(), mHeader, mChart).writePdf(path))
        return true;
    mUi.showMessage(
        QStringLiteral("The report could not be written to %1.").arg(QDir::toNativeSeparators(path)),
        UserPrompt::Icon::Error, {});
    return false;
}

bool ReportWindow::writeText(const QString& path)
{
    // The report is written exactly as built, line ends included, block by block from its storage;
    // then the appendix.
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && mReport->writeTo(file) && file.write(mAppendix.toUtf8()) >= 0 &&
        file.commit())
        return true;
    mUi.showMessage(
        QStringLiteral("The report could not be written to %1.").arg(QDir::toNativeSeparators(path)),
        UserPrompt::Icon::Error, file.errorString());
    return false;
}

} // namespace kilnova
