#include "ui/CCombineResults.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace kilnova {

CCombineResults::CCombineResults(const CombinationOutcome& outcome, std::shared_ptr<const ReportText> report,
                                 int period, UserPrompt& ui, QWidget* parent)
    : ReportWindow(QStringLiteral("Combination results"), std::move(report), ui, parent)
    , mChoice(new QSpinBox)
    , mPeriod(period)
{
    mChoice->setObjectName(QStringLiteral("combination"));
    mChoice->setRange(outcome.count() > 0 ? 1 : 0, outcome.count());
    mChoice->setValue(outcome.bestIndex + 1);
    mChoice->setAccelerated(true);
    auto* update = new QPushButton(QStringLiteral("Update Blasts"));
    connect(update, &QPushButton::clicked, this, &CCombineResults::updateBlasts);
    actionArea()->addWidget(new QLabel(QStringLiteral("Use Combination #")));
    actionArea()->addWidget(mChoice);
    actionArea()->addWidget(update);
}

int CCombineResults::chosenIndex() const
{
    return mChoice->value() - 1;
}

void CCombineResults::updateBlasts()
{
    ++mPeriod;
    accept();
}

} // namespace kilnova
