#include "ui/OptimizationResultsWindow.h"

#include "common/UserPrompt.h"
#include "optimise/Explainer.h"
#include "ui/PageHeader.h"

#include <QFontDatabase>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace kilnova {

OptimizationResultsWindow::OptimizationResultsWindow(const QString& title, const QString& reportText,
                                                     const CKilnovaDoc& doc, UserPrompt& ui, QWidget* parent)
    : ReportWindow(title, reportText, ui, parent)
{
    setPageHeader(PageHeader::of(doc));
}

void OptimizationResultsWindow::addStoreAction(const QString& caption, const QString& objectName,
                                               const QString& toolTip, std::function<bool()> store)
{
    auto* button = new QPushButton(caption);
    button->setObjectName(objectName);
    button->setToolTip(toolTip);
    connect(button, &QPushButton::clicked, this, [button, store = std::move(store)] {
        if (store())
            button->setEnabled(false);
    });
    actionArea()->addWidget(button);
}

void OptimizationResultsWindow::explain(const OptimizationOutcome& outcome, const QStringList& propertyNames)
{
    const OptimizationModel model;
    const QString text = Explainer(model).explain(outcome, propertyNames).text();
    auto* box = new QGroupBox(QStringLiteral("Why this answer"));
    auto* view = new QPlainTextEdit;
    view->setObjectName(QStringLiteral("explanation"));
    view->setReadOnly(true);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    view->setPlainText(QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")).trimmed());
    view->setMaximumHeight(160);
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(view);
    addPanel(box);
    setAppendix(QStringLiteral("\r\n") + text);
}

void OptimizationResultsWindow::showFailure(UserPrompt& ui, const OptimizationOutcome& outcome,
                                            const QStringList& propertyNames)
{
    const OptimizationModel model;
    const Explanation explanation = Explainer(model).explain(outcome, propertyNames);
    QString details;
    if (explanation.status != Explanation::Status::NotExplained || outcome.problem)
        details = QString(explanation.text()).replace(QStringLiteral("\r\n"), QStringLiteral("\n")).trimmed();
    ui.showMessage(outcome.message, UserPrompt::Icon::Warning, details);
}

} // namespace kilnova
