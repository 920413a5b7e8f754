#include "ui/CClinkerProcess.h"

#include "common/UserPrompt.h"
#include "ui/NumberField.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace kilnova {

CClinkerProcess::CClinkerProcess(const ClinkerProcessParameters& parameters, UserPrompt& ui, QWidget* parent)
    : QDialog(parent)
    , mUi(ui)
    , mParameters(parameters)
{
    setWindowTitle(QStringLiteral("Clinker Process Parameters"));
    auto* grid = new QGridLayout;
    auto add = [grid](const char* label, const char* unit, const char* name, float value) {
        auto* field = new NumberField;
        field->setObjectName(QString::fromLatin1(name));
        field->setValue(static_cast<double>(value));
        const int row = grid->rowCount();
        grid->addWidget(new QLabel(QString::fromLatin1(label)), row, 0);
        grid->addWidget(field, row, 1);
        grid->addWidget(new QLabel(QString::fromLatin1(unit)), row, 2);
        return field;
    };
    mFixedLoi = add("%Fixed LOI of the clinker", "%", "FixedLOI", parameters.FixedLOI);
    mSo3 = add("%original SO3 in clinker", "%", "SO3InClinker", parameters.SO3InClinker);
    mK2o = add("%original K2O in clinker", "%", "K2OInClinker", parameters.K2OInClinker);
    mNa2o = add("%original Na2O in clinker", "%", "Na2OInClinker", parameters.Na2OInClinker);
    mEnergy = add("Energy Consumption Factor", "KCal/Kg", "EnergyConsumptionFactor",
                  parameters.EnergyConsumptionFactor);
    mAsh = add("%Ash Recovery Factor", "%", "AshRecoveryFactor", parameters.AshRecoveryFactor);
    mFreeLime = add("%Free Lime in Clinker", "%", "FreeLime", parameters.FreeLime);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &CClinkerProcess::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CClinkerProcess::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(buttons);
}

void CClinkerProcess::accept()
{
    // Read in the order the fields were always validated, so the first bad one is the one reported.
    ClinkerProcessParameters p;
    struct Step {
        NumberField* field;
        float* target;
        bool retention;
    };
    const Step steps[] = {
        {mFixedLoi, &p.FixedLOI, false},     {mK2o, &p.K2OInClinker, true},
        {mNa2o, &p.Na2OInClinker, true},     {mSo3, &p.SO3InClinker, true},
        {mAsh, &p.AshRecoveryFactor, false}, {mEnergy, &p.EnergyConsumptionFactor, false},
        {mFreeLime, &p.FreeLime, false},
    };
    for (const Step& step : steps) {
        const std::optional<double> v = requireNumber(step.field, mUi);
        if (!v)
            return;
        if (step.retention && !ClinkerProcessParameters::isValidRetention(*v)) {
            mUi.showMessage(tr("Please enter a number between 0 and 100."), UserPrompt::Icon::Warning, {});
            step.field->setFocus();
            step.field->selectAll();
            return;
        }
        *step.target = static_cast<float>(*v);
    }
    mParameters = p;
    QDialog::accept();
}

} // namespace kilnova
