#include "import/ImportSpecEditor.h"
#include "import/ImportPreview.h"

#include <QBuffer>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

const QString kTens =
    QStringLiteral("0        1         2         3         4         5         6         7         8"
                   "         9          ");
const QString kUnits =
    QStringLiteral("123456789012345678901234567890123456789012345678901234567890123456789012345678"
                   "9012345678901234567890");

QString preview(const QByteArray& content)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    return ImportPreview::build(buffer);
}

QString rulers(int width)
{
    return kTens.left(width) + "\r\n" + kUnits.left(width) + "\r\n";
}

TEST(ImportPreview, RulersAreCutToTwiceTheFirstLine)
{
    ASSERT_EQ(kTens.size(), 100);
    ASSERT_EQ(kUnits.size(), 100);
    struct Case {
        QByteArray content;
        int width;
    };
    const Case cases[] = {
        {"", 50},
        {"abcd\n", 50},
        {"abcde\n", 10},
        {"a\r\n", 50},
        {QByteArray(30, 'x') + "\n", 60},
        {QByteArray(50, 'x') + "\n", 100},
        {QByteArray(80, 'x') + "\nshort\n", 100},
    };
    for (const Case& c : cases)
        EXPECT_TRUE(preview(c.content).startsWith(rulers(c.width))) << c.content.constData();
}

TEST(ImportPreview, ShowsTheLinesUpToTheFirstEmptyOneAndAtMostAHundred)
{
    QByteArray hundredAndFive;
    QString firstHundred;
    for (int i = 1; i <= 105; ++i) {
        hundredAndFive += "line " + QByteArray::number(i) + "\n";
        if (i <= 100)
            firstHundred += QStringLiteral("line %1\r\n").arg(i);
    }
    struct Case {
        const char* what;
        QByteArray content;
        QString lines;
    };
    const Case cases[] = {
        {"Unix lines", "first\nsecond\n", "first\r\nsecond\r\n"},
        {"Windows lines", "first\r\nsecond\r\n", "first\r\nsecond\r\n"},
        {"a last line without newline is shown whole", "first\nlast", "first\r\nlast\r\n"},
        {"an empty line ends the preview", "first\n\nthird\n", "first\r\n"},
        {"an empty Windows line too", "first\r\n\r\nthird\r\n", "first\r\n"},
        {"a hundred lines at most", hundredAndFive, firstHundred},
        {"code page 1252", "B\xe9ton\n", QStringLiteral("Béton\r\n")},
        {"a long line comes in pieces of 511", QByteArray(600, 'z') + "\n",
         QString(511, u'z') + "\r\n" + QString(89, u'z') + "\r\n"},
    };
    for (const Case& c : cases) {
        const QString text = preview(c.content);
        EXPECT_EQ(text.section("\r\n", 2), c.lines) << c.what; // after the two rulers
    }
}

TEST(ImportSpecEditor, StoresEachChangeIntoTheChosenFieldAtOnce)
{
    ImportSpecEditor editor(ImportSpecification::defaultBlast(), "Format of Blast data records", {});
    EXPECT_EQ(editor.fieldNames().size(), 18);
    EXPECT_EQ(editor.fieldNames().at(17), "CostFactor");

    editor.setCurrentField(6);
    EXPECT_EQ(std::pair(editor.position(), editor.length()), std::pair(55, 10));
    EXPECT_TRUE(editor.setPosition(60));
    EXPECT_TRUE(editor.setLength(0));
    EXPECT_EQ(editor.specification().position(6), 60);
    EXPECT_EQ(editor.specification().length(6), 0);

    struct Refused {
        const char* what;
        bool (ImportSpecEditor::*set)(int);
        int value;
    };
    const Refused refused[] = {
        {"position 0", &ImportSpecEditor::setPosition, 0},
        {"position 100000", &ImportSpecEditor::setPosition, 100000},
        {"length -1", &ImportSpecEditor::setLength, -1},
        {"length 100000", &ImportSpecEditor::setLength, 100000},
        {"decimals while disabled", &ImportSpecEditor::setDecimals, 2},
    };
    for (const Refused& r : refused) {
        EXPECT_FALSE((editor.*r.set)(r.value)) << r.what;
        EXPECT_EQ(editor.specification().position(6), 60) << r.what;
        EXPECT_EQ(editor.specification().length(6), 0) << r.what;
        EXPECT_EQ(editor.specification().decimals(6), 0) << r.what;
    }

    editor.setCurrentField(18); // beyond the fields: the choice stays
    EXPECT_EQ(editor.currentField(), 6);
    editor.setCurrentField(0);
    EXPECT_TRUE(editor.setPosition(99999));
    EXPECT_EQ(editor.specification().position(0), 99999);
    EXPECT_EQ(editor.specification().position(6), 60) << "other fields keep their values";

    ImportSpecEditor withDecimals(ImportSpecification::defaultStockpile(), "t", {}, true);
    EXPECT_TRUE(withDecimals.setDecimals(99));
    EXPECT_FALSE(withDecimals.setDecimals(100));
    EXPECT_EQ(withDecimals.specification().decimals(0), 99);
}

TEST(ImportSpecEditor, SelectTurnsTheSelectionIntoPositionAndLength)
{
    // As the preview shows it: rulers, then the file's lines.
    const QString text = QStringLiteral("0        1\n1234567890\nB-201   1000.5\nB-202     1010\n");
    const int third = static_cast<int>(text.indexOf("B-201"));
    const int fourth = static_cast<int>(text.indexOf("B-202"));
    struct Case {
        const char* what;
        int start;
        int end;
        bool taken;
        int position;
        int length;
    };
    const Case cases[] = {
        {"the east value of a line", third + 8, third + 14, true, 9, 6},
        {"from the start of a line", third, third + 6, true, 1, 6},
        {"the columns count, not the line", third + 2, fourth + 8, true, 3, 6},
        {"an empty selection changes nothing", third + 4, third + 4, false, 7, 8},
        {"an end column before the start changes nothing", third + 8, fourth + 2, false, 7, 8},
    };
    for (const Case& c : cases) {
        ImportSpecEditor editor(ImportSpecification::defaultBlast(), "t", text);
        editor.setCurrentField(1);
        EXPECT_EQ(editor.applySelection(text, c.start, c.end), c.taken) << c.what;
        EXPECT_EQ(std::pair(editor.position(), editor.length()), std::pair(c.position, c.length)) << c.what;
    }
}

} // namespace
} // namespace kilnova
