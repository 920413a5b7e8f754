#include "render/PictureFile.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>

#include <cmath>

namespace kilnova {

namespace {

QString notWritten(const QString& path, const QString& why)
{
    QString text =
        QStringLiteral("The picture could not be written to %1.").arg(QDir::toNativeSeparators(path));
    if (!why.isEmpty())
        text += '\n' + why;
    return text;
}

} // namespace

std::optional<PictureFile::Format> PictureFile::formatOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("png"))
        return Format::Png;
    if (suffix == QLatin1String("pdf"))
        return Format::Pdf;
    if (suffix == QLatin1String("svg"))
        return Format::Svg;
    return std::nullopt;
}

QString PictureFile::dialogFilter()
{
    return QStringLiteral("PNG picture (*.png);;PDF document (*.pdf);;SVG drawing (*.svg)");
}

std::optional<QString> PictureFile::write(const QString& path, const QSizeF& size, const Painter& paint)
{
    const std::optional<Format> format = formatOf(path);
    if (!format)
        return notWritten(path, QStringLiteral("Its name must end in .png, .pdf or .svg."));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return notWritten(path, file.errorString());
    const QRectF area(QPointF(0, 0), size);
    bool painted = false;
    switch (*format) {
    case Format::Png: {
        // Refused before allocating: with memory overcommitted, a huge image could be granted and
        // the machine exhausted only when it is painted.
        const double pixels = std::ceil(size.width()) * std::ceil(size.height());
        if (!(pixels <= kMaxPixels))
            return notWritten(path, QStringLiteral("The picture is too large."));
        QImage image(
            QSize(static_cast<int>(std::ceil(size.width())), static_cast<int>(std::ceil(size.height()))),
            QImage::Format_ARGB32_Premultiplied);
        if (image.isNull())
            return notWritten(path, QStringLiteral("The picture is too large."));
        image.fill(Qt::white);
        QPainter painter(&image);
        paint(painter, area);
        painter.end();
        painted = image.save(&file, "PNG");
        break;
    }
    case Format::Pdf: {
        QPdfWriter writer(&file);
        writer.setCreator(QStringLiteral("Kilnova"));
        // One logical pixel is one point: the page has the picture's shape.
        writer.setResolution(72);
        writer.setPageSize(QPageSize(size, QPageSize::Point, QString(), QPageSize::ExactMatch));
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        QPainter painter;
        if ((painted = painter.begin(&writer))) {
            paint(painter, area);
            painted = painter.end();
        }
        break;
    }
    case Format::Svg: {
        QSvgGenerator generator;
        generator.setOutputDevice(&file);
        generator.setSize(size.toSize());
        generator.setViewBox(area);
        generator.setTitle(QFileInfo(path).completeBaseName());
        QPainter painter;
        if ((painted = painter.begin(&generator))) {
            paint(painter, area);
            painted = painter.end();
        }
        break;
    }
    }
    if (!painted) {
        file.cancelWriting();
        return notWritten(path, QString());
    }
    if (!file.commit())
        return notWritten(path, file.errorString());
    return std::nullopt;
}

} // namespace kilnova
