#include "render/PictureFile.h"

#include "Pixels.h"

#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using F = PictureFile::Format;

void redSquare(QPainter& painter, const QRectF& area)
{
    painter.fillRect(area, Qt::white);
    painter.fillRect(QRectF(area.center() - QPointF(20, 20), QSizeF(40, 40)), QColor(200, 0, 0));
}

QByteArray contents(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

TEST(PictureFile, TheNameChoosesTheFormat)
{
    const std::pair<const char*, std::optional<F>> cases[] = {
        {"map.png", F::Png},       {"MAP.PNG", F::Png},   {"chart.pdf", F::Pdf}, {"a.b/chart.Svg", F::Svg},
        {"map.jpg", std::nullopt}, {"map", std::nullopt}, {"png", std::nullopt},
    };
    for (const auto& [name, format] : cases)
        EXPECT_EQ(PictureFile::formatOf(QString::fromLatin1(name)), format) << name;
}

TEST(PictureFile, WritesEachFormatWithThePicture)
{
    QTemporaryDir dir;
    ASSERT_FALSE(PictureFile::write(dir.filePath("p.png"), {300, 200}, redSquare));
    const QImage png(dir.filePath("p.png"));
    EXPECT_EQ(png.size(), QSize(300, 200));
    EXPECT_EQ(png.pixelColor(150, 100), QColor(200, 0, 0));
    EXPECT_EQ(png.pixelColor(5, 5), QColor(Qt::white));

    ASSERT_FALSE(PictureFile::write(dir.filePath("p.pdf"), {300, 200}, redSquare));
    const QByteArray pdf = contents(dir.filePath("p.pdf"));
    EXPECT_TRUE(pdf.startsWith("%PDF"));
    EXPECT_TRUE(
        QString::fromLatin1(pdf).contains(QRegularExpression(R"(/MediaBox \[0 0 300(\.0+)? 200(\.0+)?\])")))
        << "one page of the picture's shape, in points";

    ASSERT_FALSE(PictureFile::write(dir.filePath("p.svg"), {300, 200}, redSquare));
    const QByteArray svg = contents(dir.filePath("p.svg"));
    EXPECT_TRUE(svg.contains("<svg"));
    EXPECT_TRUE(svg.contains("#c80000")) << "the square's colour";
}

TEST(PictureFile, AFileThatCannotBeWrittenIsSaidSoAndAnOldOneIsKept)
{
    QTemporaryDir dir;
    const std::pair<QString, const char*> cases[] = {
        {dir.filePath("no such folder/map.png"), "The picture could not be written to"},
        {dir.path() + "/", "The picture could not be written to"},
        {dir.filePath("map.gif"), "Its name must end in .png, .pdf or .svg."},
    };
    for (const auto& [path, text] : cases) {
        const std::optional<QString> failure = PictureFile::write(path, {100, 100}, redSquare);
        ASSERT_TRUE(failure) << path.toStdString();
        EXPECT_TRUE(failure->contains(QString::fromLatin1(text))) << failure->toStdString();
    }
    QFile old(dir.filePath("keep.png"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old picture");
    old.close();
    // Too large to be drawn (refused before any memory is asked for): the old file stays as it was.
    for (const QSizeF size : {QSizeF(1e6, 1e6), QSizeF(10001, 10000), QSizeF(qInf(), 1)}) {
        const std::optional<QString> failure = PictureFile::write(dir.filePath("keep.png"), size, redSquare);
        ASSERT_TRUE(failure) << size.width();
        EXPECT_TRUE(failure->endsWith("The picture is too large.")) << failure->toStdString();
        EXPECT_EQ(contents(dir.filePath("keep.png")), QByteArray("old picture"));
    }
}

} // namespace
} // namespace kilnova
