#include "ui/OptimizationResultsWindow.h"

#include "ui/PageHeader.h"

#include <QHBoxLayout>
#include <QPushButton>

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

} // namespace kilnova
