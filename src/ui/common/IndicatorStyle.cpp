#include "ui/common/IndicatorStyle.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>

namespace {

const QString fusion = QStringLiteral("fusion");
constexpr int strength = 150; ///< of the outline's colour, of 255

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

constexpr int frameStrength = 80;

/// Frames of lists, texts, fields and groups. A field with the focus has a bright one already.
bool isFrame(QStyle::PrimitiveElement element, const QStyleOption *option)
{
    switch (element) {
    case QStyle::PE_Frame:
    case QStyle::PE_FrameGroupBox:
        return true;
    case QStyle::PE_FrameLineEdit:
        return (option->state & QStyle::State_HasFocus) == 0;
    default:
        return false;
    }
}

/// The room above a group's frame, as the style keeps it.
int titleHeight(const QStyleOption *option, const QWidget *widget)
{
    constexpr int margin = 3;
    const int indicator =
        widget ? widget->style()->pixelMetric(QStyle::PM_IndicatorHeight, option, widget) : 0;
    return std::max(indicator, option->fontMetrics.height()) + margin;
}

class IndicatorStyle : public QProxyStyle
{
public:
    IndicatorStyle()
        : QProxyStyle(fusion)
    {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (isFrame(element, option) && isDark(option->palette)) {
            QColor color = option->palette.color(QPalette::WindowText);
            color.setAlpha(frameStrength);
            painter->save();
            painter->setPen(color);
            painter->setBrush(Qt::NoBrush);
            const int title = element == PE_FrameGroupBox ? titleHeight(option, widget) : 0;
            painter->drawRect(QRectF(option->rect).adjusted(0.5, title + 0.5, -0.5, -0.5));
            painter->restore();
            return;
        }
        const bool isRound = element == PE_IndicatorRadioButton;
        if ((!isRound && element != PE_IndicatorCheckBox) || !isDark(option->palette))
            return;
        QColor color = option->palette.color(QPalette::WindowText);
        color.setAlpha(strength);
        const qreal inset = isRound ? 1 : 1.5; // a gap between the boxes of a list
        const QRectF outline = QRectF(option->rect).adjusted(inset, inset, -inset, -inset);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing, isRound);
        painter->setPen(color);
        painter->setBrush(Qt::NoBrush);
        isRound ? painter->drawEllipse(outline) : painter->drawRect(outline);
        painter->restore();
    }
};

} // namespace

void installIndicatorStyle()
{
    if (QApplication::style()->name().compare(fusion, Qt::CaseInsensitive) == 0)
        QApplication::setStyle(new IndicatorStyle);
}
