#include "ui/common/IndicatorStyle.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

namespace {

const QString fusion = QStringLiteral("fusion");
constexpr int strength = 150; ///< of the outline's colour, of 255

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
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
