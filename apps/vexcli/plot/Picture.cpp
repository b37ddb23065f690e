#include "plot/Picture.h"

#include "plot/Style.h"

#include <QAbstractSeries>
#include <QBuffer>
#include <QChart>
#include <QGraphicsLayout>
#include <QGraphicsScene>
#include <QImage>
#include <QLegend>
#include <QPainter>
#include <QSvgGenerator>
#include <QValueAxis>

#include <cmath>

namespace vexcli {

namespace {

constexpr double kPngScale = 2.0; // sharp on paper and on dense screens

bool paint(QPaintDevice *device, double scale, QSizeF size, QGraphicsScene *scene,
    const QList<Captions> &captions)
{
    QPainter painter;
    if (!painter.begin(device))
        return false;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    const QRectF area(QPointF(0.0, 0.0), size);
    painter.fillRect(area, Qt::white);
    scene->render(&painter, area, area);
    for (const Captions &texts : captions)
        texts.paint(&painter);
    return painter.end();
}

} // namespace

void addChart(QGraphicsScene *scene, const QRectF &plotArea, const Scale &x, const Scale &y,
    const QList<QAbstractSeries *> &layers)
{
    auto *chart = new QChart;
    scene->addItem(chart);
    chart->setBackgroundVisible(false);
    chart->legend()->hide();
    QValueAxis *xAxis = makeAxis(x);
    QValueAxis *yAxis = makeAxis(y);
    chart->addAxis(xAxis, Qt::AlignBottom);
    chart->addAxis(yAxis, Qt::AlignLeft);
    for (QAbstractSeries *series : layers) {
        chart->addSeries(series);
        series->attachAxis(xAxis);
        series->attachAxis(yAxis);
    }
    // what stands around the plot area of a chart is as wide in a chart of any size
    chart->resize(kPictureSize);
    chart->layout()->activate();
    const QRectF inside = chart->plotArea();
    // lines of axes stand at whole points: the plot area has to end at one
    const double excess = inside.top() - std::floor(inside.top());
    chart->resize(kPictureSize + plotArea.size() - inside.size() - QSizeF(0.0, excess));
    chart->layout()->activate();
    chart->setPos((plotArea.topLeft() - inside.topLeft()).toPoint());
}

QByteArray render(PlotFormat format, QSizeF size, const QString &title, QGraphicsScene *scene,
    const QList<Captions> &captions)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (format == PlotFormat::Png) {
        QImage image((size * kPngScale).toSize(), QImage::Format_RGB32);
        const bool isDrawn = !image.isNull() && paint(&image, kPngScale, size, scene, captions)
            && image.save(&buffer, "PNG");
        return isDrawn ? buffer.data() : QByteArray();
    }
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setTitle(QString()); // it would be written as it is, escaped or not
    generator.setSize(size.toSize());
    generator.setViewBox(QRectF(QPointF(0.0, 0.0), size));
    if (!paint(&generator, 1.0, size, scene, captions))
        return {};
    QByteArray svg = buffer.data();
    svg.insert(svg.indexOf('>', svg.indexOf("<svg")) + 1,
        "\n<title>" + title.toHtmlEscaped().toUtf8() + "</title>");
    return svg;
}

} // namespace vexcli
