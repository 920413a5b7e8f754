#pragma once

#include "combine/CombinationOutcome.h"
#include "ui/ReportWindow.h"

class QComboBox;

namespace kilnova {

/// "Combination results": the report of a run, the choice of one combination ("Use Combination #",
/// the best one chosen at first) and "Update Blasts", which closes the window with the period
/// number one higher so that the chosen pair is taken out.
class CCombineResults final : public ReportWindow {
    Q_OBJECT
public:
    CCombineResults(const CombinationOutcome& outcome, int period, UserPrompt& ui, QWidget* parent = nullptr);

    /// Index of the chosen combination in the run's successes.
    int chosenIndex() const;
    /// The period handed in, or the next one after "Update Blasts".
    int period() const { return mPeriod; }

    void updateBlasts();

private:
    QComboBox* mChoice;
    int mPeriod;
};

} // namespace kilnova
