#pragma once

#include "combine/CombinationOutcome.h"
#include "ui/ReportWindow.h"

class QSpinBox;

namespace kilnova {

/// "Combination results": the report of a run, the choice of one combination ("Use Combination #",
/// the best one chosen at first) and "Update Blasts", which closes the window with the period
/// number one higher so that the chosen pair is taken out. Any of hundreds of thousands of pairs
/// can be chosen by its number.
class CCombineResults final : public ReportWindow {
    Q_OBJECT
public:
    CCombineResults(const CombinationOutcome& outcome, std::shared_ptr<const ReportText> report, int period,
                    UserPrompt& ui, QWidget* parent = nullptr);

    /// Index of the chosen combination in the run's pairs.
    int chosenIndex() const;
    /// The period handed in, or the next one after "Update Blasts".
    int period() const { return mPeriod; }

    void updateBlasts();

private:
    QSpinBox* mChoice;
    int mPeriod;
};

} // namespace kilnova
