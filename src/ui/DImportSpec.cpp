#include "ui/DImportSpec.h"

#include "import/ImportSpecEditor.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace kilnova {

namespace {

QSpinBox* spinBox(const char* name, int minimum, int maximum)
{
    auto* box = new QSpinBox;
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(minimum, maximum);
    return box;
}

} // namespace

DImportSpec::DImportSpec(ImportSpecEditor& editor, QWidget* parent)
    : QDialog(parent)
    , mEditor(editor)
    , mField(new QComboBox)
    , mPosition(spinBox("Position", ImportSpecEditor::kMinPosition, ImportSpecEditor::kMaxPosition))
    , mLength(spinBox("Length", 0, ImportSpecEditor::kMaxLength))
    , mDecimals(spinBox("Decimals", 0, ImportSpecEditor::kMaxDecimals))
    , mPreview(new QPlainTextEdit)
{
    // Each caller names the records the layout is for; without a name the dialog says what it is.
    setWindowTitle(editor.title().isEmpty() ? tr("Import dataset specifications") : editor.title());
    mField->setObjectName(QStringLiteral("Field"));
    mField->addItems(editor.fieldNames());
    mDecimals->setEnabled(editor.decimalsEnabled());

    mPreview->setObjectName(QStringLiteral("Preview"));
    mPreview->setReadOnly(true);
    mPreview->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont courier(QStringLiteral("Courier"), 10);
    courier.setStyleHint(QFont::TypeWriter);
    courier.setFixedPitch(true);
    mPreview->setFont(courier);
    QString text = editor.preview();
    mPreview->setPlainText(text.replace(QLatin1String("\r\n"), QLatin1String("\n")));

    auto* select = new QPushButton(tr("Select"));
    select->setObjectName(QStringLiteral("Select"));

    auto* form = new QFormLayout;
    form->addRow(tr("Field"), mField);
    form->addRow(tr("Position"), mPosition);
    form->addRow(tr("Length"), mLength);
    form->addRow(tr("Decimals"), mDecimals);
    auto* top = new QHBoxLayout;
    top->addLayout(form);
    top->addWidget(select, 0, Qt::AlignBottom);
    top->addStretch();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(mPreview, 1);
    layout->addWidget(buttons);
    resize(760, 480);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(mField, &QComboBox::currentIndexChanged, this, [this](int index) {
        mEditor.setCurrentField(index);
        showField();
    });
    // Each change is stored into the chosen field at once.
    connect(mPosition, &QSpinBox::valueChanged, this, [this](int v) { mEditor.setPosition(v); });
    connect(mLength, &QSpinBox::valueChanged, this, [this](int v) { mEditor.setLength(v); });
    connect(mDecimals, &QSpinBox::valueChanged, this, [this](int v) { mEditor.setDecimals(v); });
    connect(select, &QPushButton::clicked, this, &DImportSpec::takeSelection);

    mField->setCurrentIndex(editor.currentField());
    showField();
}

void DImportSpec::showField()
{
    const QSignalBlocker p(mPosition), l(mLength), d(mDecimals);
    mPosition->setValue(mEditor.position());
    mLength->setValue(mEditor.length());
    mDecimals->setValue(mEditor.decimals());
}

void DImportSpec::takeSelection()
{
    const QTextCursor cursor = mPreview->textCursor();
    if (mEditor.applySelection(mPreview->toPlainText(), cursor.selectionStart(), cursor.selectionEnd()))
        showField();
}

} // namespace kilnova
