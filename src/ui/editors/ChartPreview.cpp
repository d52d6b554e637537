#include "ui/editors/ChartPreview.h"

#include "charts/ChartPainter.h"
#include "charts/ChartStyle.h"

#include <QPainter>

ChartPreview::ChartPreview(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(QStringLiteral("Preview of the chart on sample data"));
    if (fontsAvailable())
        warmUpFonts();
}

void ChartPreview::showChart(const Chart &chart)
{
    if (!fontsAvailable()) {
        showMessage(QString::fromUtf16(noFontsMessage));
        return;
    }
    m_chart = chart;
    m_message.clear();
    m_image = {};
    update();
}

void ChartPreview::showMessage(const QString &message)
{
    m_chart.reset();
    m_message = message;
    m_image = {};
    update();
}

QSize ChartPreview::sizeHint() const
{
    return {640, 390};
}

QSize ChartPreview::minimumSizeHint() const
{
    return {280, 180};
}

void ChartPreview::draw()
{
    m_image = QImage(size() * devicePixelRatioF(), QImage::Format_RGB32);
    m_image.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&m_image);
    paintChart(painter, *m_chart, size());
}

void ChartPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!m_chart) {
        painter.fillRect(rect(), palette().base());
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap,
                         m_message);
        return;
    }
    if (m_image.size() != size() * devicePixelRatioF())
        draw();
    painter.drawImage(0, 0, m_image);
}
