#pragma once

#include "chemistry/ChemEquationCoefficients.h"

#include <QDialog>

#include <optional>

class QCheckBox;

namespace kilnova {

class NumberField;
class UserPrompt;

/// "Chemical Equation Parameters": edits the program-wide coefficient set. OK copies the cells into
/// the set; Cancel changes nothing.
class CChemicalEquationsParms final : public QDialog {
    Q_OBJECT
public:
    CChemicalEquationsParms(UserPrompt& ui, QWidget* parent = nullptr);

    /// Fills the cells from a coefficient set.
    void setCells(const ChemEquationCoefficients& c);
    /// The cells as they stand, or nothing (after telling the user) when one is not a number.
    std::optional<ChemEquationCoefficients> cells();

    void resetValues();
    void displayEquations();
    void accept() override;

private:
    NumberField* field(float ChemEquationCoefficients::*member) const;

    UserPrompt& mUi;
    std::vector<std::pair<float ChemEquationCoefficients::*, NumberField*>> mFields;
    QCheckBox* mC2SFreeLime;
    QCheckBox* mC3SFreeLime;
};

} // namespace kilnova
