#include "ui/CCombineResults.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace kilnova {

CCombineResults::CCombineResults(const CombinationOutcome& outcome, int period, UserPrompt& ui,
                                 QWidget* parent)
    : ReportWindow(QStringLiteral("Combination results"), outcome.report, ui, parent)
    , mChoice(new QComboBox)
    , mPeriod(period)
{
    mChoice->setObjectName(QStringLiteral("combination"));
    for (std::size_t i = 0; i < outcome.successes.size(); ++i)
        mChoice->addItem(QString::number(i + 1));
    mChoice->setCurrentIndex(outcome.bestIndex);
    auto* update = new QPushButton(QStringLiteral("Update Blasts"));
    connect(update, &QPushButton::clicked, this, &CCombineResults::updateBlasts);
    actionArea()->addWidget(new QLabel(QStringLiteral("Use Combination #")));
    actionArea()->addWidget(mChoice);
    actionArea()->addWidget(update);
}

int CCombineResults::chosenIndex() const
{
    return mChoice->currentIndex();
}

void CCombineResults::updateBlasts()
{
    ++mPeriod;
    accept();
}

} // namespace kilnova
