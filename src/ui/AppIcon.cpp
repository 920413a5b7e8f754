#include "ui/AppIcon.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

namespace kilnova {

QPixmap AppIcon::pixmap(int size)
{
    QSvgRenderer renderer(QStringLiteral(":/icons/kilnova.svg"));
    if (!renderer.isValid() || size <= 0)
        return {};
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter);
    painter.end();
    return QPixmap::fromImage(image);
}

QIcon AppIcon::icon()
{
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
        const QPixmap picture = pixmap(size);
        if (!picture.isNull())
            icon.addPixmap(picture);
    }
    return icon;
}

} // namespace kilnova
