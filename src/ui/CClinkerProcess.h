#pragma once

#include "chemistry/ClinkerProcessParameters.h"

#include <QDialog>

namespace kilnova {

class NumberField;
class UserPrompt;

/// "Clinker Process Parameters": the seven figures of the kiln. The retentions must lie within 0 to
/// 100; the other figures are taken as entered.
class CClinkerProcess final : public QDialog {
    Q_OBJECT
public:
    CClinkerProcess(const ClinkerProcessParameters& parameters, UserPrompt& ui, QWidget* parent = nullptr);
    /// The dialog with its own starting values (ClinkerProcessParameters::dialogDefaults()); the
    /// program always fills it from the document instead.
    explicit CClinkerProcess(UserPrompt& ui, QWidget* parent = nullptr)
        : CClinkerProcess(ClinkerProcessParameters::dialogDefaults(), ui, parent)
    {
    }

    /// The values accepted by OK.
    const ClinkerProcessParameters& parameters() const { return mParameters; }

    void accept() override;

private:
    UserPrompt& mUi;
    ClinkerProcessParameters mParameters;
    NumberField* mFixedLoi;
    NumberField* mSo3;
    NumberField* mK2o;
    NumberField* mNa2o;
    NumberField* mEnergy;
    NumberField* mAsh;
    NumberField* mFreeLime;
};

} // namespace kilnova
