#include "ui/QuarryMapPane.h"

#include "common/UserPrompt.h"
#include "render/PictureFile.h"
#include "ui/QuarryMapView.h"

#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace kilnova {

QuarryMapPane::QuarryMapPane(UserPrompt& ui, QWidget* parent)
    : QWidget(parent)
    , mUi(ui)
    , mView(new QuarryMapView)
    , mElement(new QComboBox)
{
    mElement->setObjectName(QStringLiteral("mapElement"));
    for (int k = 0; k < kElementCount; ++k)
        mElement->addItem(QString::fromLatin1(elementDisplayName(k).data()));
    mElement->setCurrentIndex(mView->element());
    auto* fit = new QPushButton(QStringLiteral("Fit"));
    fit->setObjectName(QStringLiteral("fit"));
    fit->setToolTip(QStringLiteral("Show every blast (or double-click the map)"));
    auto* save = new QPushButton(QStringLiteral("Save picture…"));
    save->setObjectName(QStringLiteral("savePicture"));
    auto* hint =
        new QLabel(QStringLiteral("Click or drag to select (Ctrl adds) · Shift+drag draws the filter · "
                                  "wheel zooms, right-drag pans"));
    hint->setWordWrap(true);
    QPalette quiet = hint->palette();
    quiet.setColor(QPalette::WindowText, quiet.color(QPalette::PlaceholderText));
    hint->setPalette(quiet);

    auto* bar = new QHBoxLayout;
    bar->addWidget(new QLabel(QStringLiteral("Colour by:")));
    bar->addWidget(mElement);
    bar->addStretch();
    bar->addWidget(fit);
    bar->addWidget(save);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(bar);
    layout->addWidget(mView, 1);
    layout->addWidget(hint);

    connect(mElement, &QComboBox::currentIndexChanged, mView, &QuarryMapView::setElement);
    connect(fit, &QPushButton::clicked, mView, &QuarryMapView::fitAll);
    connect(save, &QPushButton::clicked, this, &QuarryMapPane::savePicture);
}

bool QuarryMapPane::savePicture()
{
    const QString name = QStringLiteral("Quarry map %1.png")
                             .arg(QString::fromLatin1(elementColumnName(mView->element()).data()));
    const std::optional<QString> path =
        mUi.chooseFile({QStringLiteral("Save picture"), PictureFile::dialogFilter(), QStringLiteral("png"),
                        QDir::home().filePath(name), true});
    if (!path)
        return false;
    if (const std::optional<QString> failure = writePicture(*path)) {
        mUi.showMessage(*failure, UserPrompt::Icon::Error, {});
        return false;
    }
    return true;
}

std::optional<QString> QuarryMapPane::writePicture(const QString& path) const
{
    const QSizeF shown = mView->size();
    const double grow = std::max(1.0, 1000.0 / std::max(1.0, shown.width()));
    const QuarryMapData& data = mView->data();
    QuarryMapOptions options = mView->options();
    options.filterGrips = false; // the grips are for the mouse, not for the picture
    return PictureFile::write(path, shown * grow, [&](QPainter& painter, const QRectF& area) {
        QuarryMapRenderer(data, options, area).paint(painter);
    });
}

} // namespace kilnova
