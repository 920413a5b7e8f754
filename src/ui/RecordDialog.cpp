#include "ui/RecordDialog.h"

#include "tables/TableEditor.h"
#include "ui/NumberField.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace kilnova {

namespace {

constexpr int kPairsPerRow = 3;

QString objectNameOf(const RecordForm::Field& f)
{
    return f.part == RecordForm::Part::Record ? f.label : QStringLiteral("std_") + f.label;
}

} // namespace

RecordDialog::RecordDialog(TableEditor& editor, RecordForm form, QWidget* parent)
    : QDialog(parent)
    , mEditor(editor)
    , mForm(std::move(form))
{
    const QString table = Schema::table(mForm.table()).name;
    setWindowTitle(mForm.isNew()
                       ? QStringLiteral("Add a record to the %1 table").arg(table)
                       : QStringLiteral("Modify the %1 record \"%2\"").arg(table, mForm.record().name()));

    auto* recordGrid = new QGridLayout;
    auto* deviationGrid = new QGridLayout;
    int placed[2] = {0, 0};
    for (int i = 0; i < mForm.fieldCount(); ++i) {
        const RecordForm::Field& f = mForm.fields()[static_cast<std::size_t>(i)];
        QLineEdit* edit = f.type == ColumnType::Text ? new QLineEdit : new NumberField;
        edit->setObjectName(objectNameOf(f));
        edit->setText(mForm.text(i));
        edit->setMinimumWidth(f.type == ColumnType::Text ? 160 : 90);
        if (f.derived) {
            edit->setReadOnly(true);
            edit->setFocusPolicy(Qt::NoFocus);
            edit->setToolTip(QStringLiteral("Computed from the oxides when the record is saved"));
            QPalette greyed = edit->palette();
            greyed.setColor(QPalette::Base, greyed.color(QPalette::Window));
            edit->setPalette(greyed);
        } else {
            connect(edit, &QLineEdit::textEdited, this, [this, i](const QString& text) { edited(i, text); });
        }
        mEdits.push_back(edit);

        const int part = f.part == RecordForm::Part::Record ? 0 : 1;
        QGridLayout* grid = part == 0 ? recordGrid : deviationGrid;
        const int n = placed[part]++;
        auto* label = new QLabel(f.label);
        label->setBuddy(edit);
        grid->addWidget(label, n / kPairsPerRow, 2 * (n % kPairsPerRow), Qt::AlignRight);
        grid->addWidget(edit, n / kPairsPerRow, 2 * (n % kPairsPerRow) + 1);
    }

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(recordGrid);
    if (placed[1] > 0) {
        auto* deviations = new QGroupBox(QStringLiteral("Standard deviations"));
        deviations->setLayout(deviationGrid);
        layout->addWidget(deviations);
    } else {
        delete deviationGrid;
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &RecordDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &RecordDialog::reject);
    layout->addWidget(buttons);
}

QLineEdit* RecordDialog::field(const QString& objectName) const
{
    for (QLineEdit* edit : mEdits) {
        if (edit->objectName() == objectName)
            return edit;
    }
    return nullptr;
}

void RecordDialog::edited(int field, const QString& text)
{
    mForm.setText(field, text);
    mForm.refreshDerived();
    showTexts(true);
}

void RecordDialog::showTexts(bool derivedOnly)
{
    // Only what the form computed is written back while typing, so the cursor stays where it is.
    for (int i = 0; i < mForm.fieldCount(); ++i) {
        if (!derivedOnly || mForm.fields()[static_cast<std::size_t>(i)].derived)
            mEdits[static_cast<std::size_t>(i)]->setText(mForm.text(i));
    }
}

void RecordDialog::accept()
{
    // Texts set by a test or a paste without an edit signal count too.
    for (int i = 0; i < mForm.fieldCount(); ++i)
        mForm.setText(i, mEdits[static_cast<std::size_t>(i)]->text());
    const bool stored = mEditor.save(mForm);
    showTexts(false);
    if (!stored) {
        if (const std::optional<RecordForm::Problem>& problem = mForm.lastProblem()) {
            QLineEdit* edit = mEdits[static_cast<std::size_t>(problem->field)];
            edit->setFocus();
            edit->selectAll();
        }
        return;
    }
    QDialog::accept();
}

} // namespace kilnova
