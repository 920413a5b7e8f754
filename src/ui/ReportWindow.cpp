#include "ui/ReportWindow.h"

#include "common/UserPrompt.h"
#include "ui/ReportPrinter.h"

#include <QDir>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSaveFile>
#include <QVBoxLayout>

namespace kilnova {

ReportWindow::ReportWindow(const QString& title, const QString& reportText, UserPrompt& ui, QWidget* parent)
    : QDialog(parent)
    , mReport(reportText)
    , mUi(ui)
    , mView(new QPlainTextEdit)
    , mActions(new QHBoxLayout)
    , mLayout(new QVBoxLayout(this))
{
    setWindowTitle(title);
    mView->setObjectName(QStringLiteral("report"));
    mView->setReadOnly(true);
    mView->setLineWrapMode(QPlainTextEdit::NoWrap);
    mView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    QString shown = reportText;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    mView->setPlainText(shown);

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

    mLayout->addWidget(mView, 1);
    mLayout->addLayout(buttons);
    resize(900, 640);
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
    if (ReportPrinter(mReport + mAppendix).print(printer) == 0)
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
    if (ReportPrinter(mReport + mAppendix).writePdf(path))
        return true;
    mUi.showMessage(
        QStringLiteral("The report could not be written to %1.").arg(QDir::toNativeSeparators(path)),
        UserPrompt::Icon::Error, {});
    return false;
}

bool ReportWindow::writeText(const QString& path)
{
    // The report is written exactly as built, line ends included, then the appendix.
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write((mReport + mAppendix).toUtf8()) >= 0 && file.commit())
        return true;
    mUi.showMessage(
        QStringLiteral("The report could not be written to %1.").arg(QDir::toNativeSeparators(path)),
        UserPrompt::Icon::Error, file.errorString());
    return false;
}

} // namespace kilnova
