#include "ui/CChemicalEquationsParms.h"

#include "common/UserPrompt.h"
#include "ui/NumberField.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace kilnova {

namespace {

using M = float ChemEquationCoefficients::*;

struct Cell {
    int row;
    int column;
    M member;
};

// Rows C2S, C3A, C3S, LSF, C4AF, NaEq; columns CaO, SiO2, Al2O3, Fe2O3, K2O, Na2O.
const Cell kCells[] = {
    {0, 0, &ChemEquationCoefficients::C2SCaO},    {0, 1, &ChemEquationCoefficients::C2SSiO2},
    {0, 2, &ChemEquationCoefficients::C2SAl2O3},  {0, 3, &ChemEquationCoefficients::C2SFe2O3},
    {1, 2, &ChemEquationCoefficients::C3AAl2O3},  {1, 3, &ChemEquationCoefficients::C3AFe2O3},
    {2, 0, &ChemEquationCoefficients::C3SCaO},    {2, 1, &ChemEquationCoefficients::C3SSiO2},
    {2, 2, &ChemEquationCoefficients::C3SAl2O3},  {2, 3, &ChemEquationCoefficients::C3SFe2O3},
    {3, 0, &ChemEquationCoefficients::LSFCaO},    {3, 1, &ChemEquationCoefficients::LSFSiO2},
    {3, 2, &ChemEquationCoefficients::LSFAl2O3},  {3, 3, &ChemEquationCoefficients::LSFFe2O3},
    {4, 3, &ChemEquationCoefficients::C4AFFe2O3}, {5, 4, &ChemEquationCoefficients::NaEqK2O},
    {5, 5, &ChemEquationCoefficients::NaEqNa2O},
};

} // namespace

CChemicalEquationsParms::CChemicalEquationsParms(UserPrompt& ui, QWidget* parent)
    : QDialog(parent)
    , mUi(ui)
{
    setWindowTitle(QStringLiteral("Chemical Equation Parameters"));
    auto* grid = new QGridLayout;
    const QStringList columns = {"CaO", "SiO2", "Al2O3", "Fe2O3", "K2O", "Na2O", "Use CaO-Freelime"};
    const QStringList rows = {"C2S", "C3A", "C3S", "LSF", "C4AF", "NaEq"};
    for (int c = 0; c < columns.size(); ++c)
        grid->addWidget(new QLabel(columns[c]), 0, c + 1, Qt::AlignCenter);
    for (int r = 0; r < rows.size(); ++r)
        grid->addWidget(new QLabel(rows[r]), r + 1, 0);
    for (const Cell& cell : kCells) {
        auto* f = new NumberField;
        f->setObjectName(QStringLiteral("%1_%2").arg(rows[cell.row], columns[cell.column]));
        grid->addWidget(f, cell.row + 1, cell.column + 1);
        mFields.emplace_back(cell.member, f);
    }
    mC2SFreeLime = new QCheckBox;
    mC2SFreeLime->setObjectName("C2S_UseFreeLime");
    mC3SFreeLime = new QCheckBox;
    mC3SFreeLime->setObjectName("C3S_UseFreeLime");
    grid->addWidget(mC2SFreeLime, 1, 7, Qt::AlignCenter);
    grid->addWidget(mC3SFreeLime, 3, 7, Qt::AlignCenter);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton* reset = buttons->addButton(QStringLiteral("Reset values"), QDialogButtonBox::ResetRole);
    QPushButton* display =
        buttons->addButton(QStringLiteral("Display equations"), QDialogButtonBox::ActionRole);
    reset->setObjectName("resetValues");
    display->setObjectName("displayEquations");
    connect(buttons, &QDialogButtonBox::accepted, this, &CChemicalEquationsParms::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CChemicalEquationsParms::reject);
    connect(reset, &QPushButton::clicked, this, &CChemicalEquationsParms::resetValues);
    connect(display, &QPushButton::clicked, this, &CChemicalEquationsParms::displayEquations);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(buttons);

    setCells(chemCoefficients());
}

NumberField* CChemicalEquationsParms::field(M member) const
{
    for (const auto& [m, f] : mFields) {
        if (m == member)
            return f;
    }
    return nullptr;
}

void CChemicalEquationsParms::setCells(const ChemEquationCoefficients& c)
{
    for (const auto& [member, f] : mFields)
        f->setValue(static_cast<double>(c.*member));
    mC2SFreeLime->setChecked(c.C2SUseFreeLime != 0);
    mC3SFreeLime->setChecked(c.C3SUseFreeLime != 0);
}

std::optional<ChemEquationCoefficients> CChemicalEquationsParms::cells()
{
    ChemEquationCoefficients c;
    for (const auto& [member, f] : mFields) {
        const std::optional<double> v = requireNumber(f, mUi);
        if (!v)
            return std::nullopt;
        c.*member = static_cast<float>(*v);
    }
    c.C2SUseFreeLime = mC2SFreeLime->isChecked() ? 1 : 0;
    c.C3SUseFreeLime = mC3SFreeLime->isChecked() ? 1 : 0;
    return c;
}

void CChemicalEquationsParms::resetValues()
{
    setCells(ChemEquationCoefficients{});
}

void CChemicalEquationsParms::displayEquations()
{
    if (const std::optional<ChemEquationCoefficients> c = cells())
        mUi.showMessage(QString::fromStdString(c->equationsText()), UserPrompt::Icon::Information, {});
}

void CChemicalEquationsParms::accept()
{
    const std::optional<ChemEquationCoefficients> c = cells();
    if (!c)
        return;
    chemCoefficients() = *c;
    QDialog::accept();
}

} // namespace kilnova
