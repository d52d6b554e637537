#pragma once

#include "charts/ChartJob.h"

#include <QImage>
#include <QWidget>

#include <optional>

/// A chart as reports draw it, at the widget's size and in the screen's pixels; or a message
/// instead.
class ChartPreview : public QWidget
{
    Q_OBJECT

public:
    explicit ChartPreview(QWidget *parent = nullptr);

    void showChart(const Chart &chart);
    void showMessage(const QString &message);

    /// Empty while a chart is shown.
    QString message() const { return m_message; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void draw();

    std::optional<Chart> m_chart;
    QString m_message;
    QImage m_image; ///< the chart at the size of the last paint event; null: to be drawn
};
