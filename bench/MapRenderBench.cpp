// The quarry map of 20,000 blasts redrawn as the dialog redraws it (grid, every blast coloured
// by CaO with its size, selections, labels, legend) against a bare QPainter loop that draws the
// same circles in the same colours, with every position, radius and colour worked out beforehand.
// "cold" is the first drawing after the map opens, before any symbol has been prepared.

#include "optimise/QuarryMapData.h"
#include "render/ColourScale.h"
#include "render/MapSymbols.h"
#include "render/QuarryMapRenderer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <random>

namespace kilnova {
namespace {

constexpr int kBlasts = 20000;
const QRectF kArea(0, 0, 1200, 860);

const QuarryMapData& quarry()
{
    static const QuarryMapData data = [] {
        std::mt19937 random(2024);
        std::uniform_real_distribution<double> east(511000, 514000), north(4860000, 4862500),
            tonnes(500, 60000);
        std::uniform_real_distribution<float> lime(2, 54);
        std::vector<QuarryBlast> blasts;
        for (int i = 0; i < kBlasts; ++i) {
            QuarryBlast b;
            b.name = QStringLiteral("Q%1").arg(i, 5, 10, QLatin1Char('0'));
            b.east = east(random);
            b.north = north(random);
            b.tonnage = tonnes(random);
            // One blast in fifty has no lime analysis.
            b.values[static_cast<std::size_t>(elementIndex(Element::CaO))] =
                i % 50 == 0 ? -1.0f : lime(random);
            b.selected = i % 100 == 0;
            b.taken = i % 2000 == 0 ? b.tonnage / 2 : 0.0;
            blasts.push_back(b);
        }
        return QuarryMapData(std::move(blasts));
    }();
    return data;
}

QImage& canvas()
{
    static QImage image(kArea.size().toSize(), QImage::Format_ARGB32_Premultiplied);
    return image;
}

void redraw(benchmark::State& state, bool warm)
{
    const QuarryMapData& data = quarry();
    MapSymbols symbols;
    for (auto _ : state) {
        if (!warm)
            symbols = MapSymbols();
        canvas().fill(Qt::white);
        QPainter painter(&canvas());
        QuarryMapRenderer(data, {}, kArea).paint(painter, &symbols);
    }
}

void bareLoop(benchmark::State& state)
{
    // Everything the loop needs is ready before the clock starts.
    const QuarryMapData& data = quarry();
    const QuarryMapRenderer layout(data, {}, kArea);
    struct Circle {
        QPointF centre;
        double radius;
        QColor colour;
    };
    std::vector<Circle> circles;
    for (std::size_t i : data.drawOrder()) {
        const double lime =
            static_cast<double>(data[i].values[static_cast<std::size_t>(elementIndex(Element::CaO))]);
        circles.push_back({layout.transform().toPixel(data[i].east, data[i].north), layout.radius(i),
                           ColourScale::shadeColour(layout.scale()->shade(lime))});
    }
    const QPen outline(MapSymbols::outlineColour(), 0.8);
    for (auto _ : state) {
        canvas().fill(Qt::white);
        QPainter painter(&canvas());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(outline);
        for (const Circle& c : circles) {
            painter.setBrush(c.colour);
            painter.drawEllipse(c.centre, c.radius, c.radius);
        }
    }
}

} // namespace
} // namespace kilnova

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // Named "<case>/<implementation>": ours first, the bare loop as the peer.
    benchmark::RegisterBenchmark("Map20000/redraw", kilnova::redraw, true)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Map20000/bare", kilnova::bareLoop)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Map20000cold/first", kilnova::redraw, false)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Map20000cold/bare", kilnova::bareLoop)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
