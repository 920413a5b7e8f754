#include "UiTests.h"

#include "import/ImportSpecEditor.h"
#include "import/WorkbookSourceForm.h"
#include "support/ScriptedPrompt.h"
#include "ui/CImportFromWKS.h"
#include "ui/DImportSpec.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>

namespace kilnova::test {

class ImportDialogsTest : public QObject {
    Q_OBJECT

    static QString preview()
    {
        return QStringLiteral("0        1\r\n1234567890\r\nB-201   1000.5\r\nB-202     1010\r\n");
    }

private slots:
    void layoutDialogShowsTheChosenFieldAndStoresEachChange()
    {
        ImportSpecEditor editor(ImportSpecification::defaultBlast(), "Format of Blast data records",
                                preview());
        DImportSpec dialog(editor);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Format of Blast data records"));
        auto* field = dialog.findChild<QComboBox*>("Field");
        auto* position = dialog.findChild<QSpinBox*>("Position");
        auto* length = dialog.findChild<QSpinBox*>("Length");
        auto* text = dialog.findChild<QPlainTextEdit*>("Preview");
        QCOMPARE(field->count(), 18);
        QCOMPARE(position->value(), 1);
        QCOMPARE(length->value(), 6);
        QVERIFY(!dialog.findChild<QSpinBox*>("Decimals")->isEnabled());
        QVERIFY(text->isReadOnly());
        QVERIFY(QFontInfo(text->font()).fixedPitch());
        QCOMPARE(text->toPlainText(), QString(preview()).replace("\r\n", "\n"));
        ImportSpecEditor untitled(ImportSpecification::defaultStockpile(), {}, {});
        QCOMPARE(DImportSpec(untitled).windowTitle(), QStringLiteral("Import dataset specifications"));

        field->setCurrentIndex(6);
        QCOMPARE(position->value(), 55);
        length->setValue(12);
        QCOMPARE(editor.specification().length(6), 12); // stored at once, before OK
        QCOMPARE(editor.specification().length(0), 6);
    }

    void selectTurnsThePreviewSelectionIntoPositionAndLength()
    {
        ImportSpecEditor editor(ImportSpecification::defaultBlast(), "t", preview());
        DImportSpec dialog(editor);
        dialog.findChild<QComboBox*>("Field")->setCurrentIndex(1);
        auto* text = dialog.findChild<QPlainTextEdit*>("Preview");
        const int line = static_cast<int>(text->toPlainText().indexOf("B-202"));
        QTextCursor cursor = text->textCursor();
        cursor.setPosition(line + 8);
        cursor.setPosition(line + 14, QTextCursor::KeepAnchor);
        text->setTextCursor(cursor);
        QTest::mouseClick(dialog.findChild<QPushButton*>("Select"), Qt::LeftButton);
        QCOMPARE(dialog.findChild<QSpinBox*>("Position")->value(), 9);
        QCOMPARE(dialog.findChild<QSpinBox*>("Length")->value(), 6);
        QCOMPARE(editor.specification().position(1), 9);
    }

    void workbookDialogKeepsTheEntriesAndBrowses()
    {
        ScriptedPrompt ui;
        ui.fileAnswers = {QStringLiteral("/plant/lab.xlsx")};
        WorkbookSourceForm form;
        CImportFromWKS dialog(form, ui);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Import  Data from Excel workbooks"));
        QVERIFY(dialog.findChild<QRadioButton*>("WorksheetChoice")->isChecked());
        QCOMPARE(dialog.findChild<QLabel*>("Note")->text(),
                 QStringLiteral(
                     "Note: the first line of your data source must contain the appropriate field names"));

        dialog.findChild<QRadioButton*>("NamedRangeChoice")->click();
        QTest::keyClicks(dialog.findChild<QLineEdit*>("NamedRange"), "Quarry  ");
        QTest::mouseClick(dialog.findChild<QPushButton*>("Browse"), Qt::LeftButton);
        QCOMPARE(dialog.findChild<QLineEdit*>("WorkbookPath")->text(), QStringLiteral("/plant/lab.xlsx"));
        QCOMPARE(form.kind(), WorkbookSourceForm::Kind::NamedRange);
        QCOMPARE(form.sourceName(), QStringLiteral("Quarry"));
        QCOMPARE(form.workbookPath(), QStringLiteral("/plant/lab.xlsx"));
        QCOMPARE(ui.fileRequests.at(0).title, QStringLiteral("Import blast data from an Excel workbook"));
    }
};

static RegisterUiTest<ImportDialogsTest> registerImportDialogsTest("ImportDialogsTest");

} // namespace kilnova::test

#include "ImportDialogsTest.moc"
