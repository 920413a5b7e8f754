#include "ui/CImportFromWKS.h"

#include "import/WorkbookSourceForm.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace kilnova {

CImportFromWKS::CImportFromWKS(WorkbookSourceForm& form, UserPrompt& ui, QWidget* parent)
    : QDialog(parent)
    , mForm(form)
    , mUi(ui)
    , mPath(new QLineEdit(form.workbookPath()))
{
    setWindowTitle(QStringLiteral("Import  Data from Excel workbooks"));
    using Kind = WorkbookSourceForm::Kind;
    auto* grid = new QGridLayout;
    auto addSource = [this, grid](const QString& label, const char* name, Kind kind, const QString& value,
                                  void (WorkbookSourceForm::*set)(const QString&)) {
        auto* choice = new QRadioButton(label);
        choice->setObjectName(QString::fromLatin1(name) + QStringLiteral("Choice"));
        choice->setChecked(mForm.kind() == kind);
        auto* edit = new QLineEdit(value);
        edit->setObjectName(QString::fromLatin1(name));
        const int row = grid->rowCount();
        grid->addWidget(choice, row, 0);
        grid->addWidget(edit, row, 1);
        connect(choice, &QRadioButton::toggled, this, [this, kind](bool on) {
            if (on)
                mForm.setKind(kind);
        });
        connect(edit, &QLineEdit::textChanged, this,
                [this, set](const QString& text) { (mForm.*set)(text); });
        return edit;
    };
    addSource(tr("Worksheet Name"), "Worksheet", Kind::Worksheet, form.worksheet(),
              &WorkbookSourceForm::setWorksheet);
    addSource(tr("Named Range"), "NamedRange", Kind::NamedRange, form.namedRange(),
              &WorkbookSourceForm::setNamedRange);
    addSource(tr("Cell Range"), "CellRange", Kind::CellRange, form.cellRange(),
              &WorkbookSourceForm::setCellRange);
    grid->addWidget(new QLabel(tr("(ex: [SheetName$]A1:F19)")), grid->rowCount(), 1);

    mPath->setObjectName(QStringLiteral("WorkbookPath"));
    connect(mPath, &QLineEdit::textChanged, this,
            [this](const QString& path) { mForm.setWorkbookPath(path); });
    auto* browse = new QPushButton(tr("Browse..."));
    browse->setObjectName(QStringLiteral("Browse"));
    connect(browse, &QPushButton::clicked, this, [this] {
        if (mForm.browse(mUi))
            mPath->setText(mForm.workbookPath());
    });
    auto* pathRow = new QHBoxLayout;
    pathRow->addWidget(new QLabel(tr("Workbook")));
    pathRow->addWidget(mPath, 1);
    pathRow->addWidget(browse);

    auto* note =
        new QLabel(tr("Note: the first line of your data source must contain the appropriate field names"));
    note->setObjectName(QStringLiteral("Note"));
    note->setWordWrap(true);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addLayout(pathRow);
    layout->addWidget(note);
    layout->addWidget(buttons);
    resize(520, layout->sizeHint().height());
}

} // namespace kilnova
