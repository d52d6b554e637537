#include "ui/ScrollPane.h"

#include <QEvent>

namespace {

/// What the least screen, 640 by 400 pixels, leaves beside a frame and a row of buttons.
constexpr QSize leastRoom(600, 260);

} // namespace

ScrollPane::ScrollPane(QWidget *content, QWidget *parent)
    : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(content);
}

QSize ScrollPane::sizeHint() const
{
    return widget()->sizeHint();
}

QSize ScrollPane::minimumSizeHint() const
{
    return widget()->minimumSizeHint().boundedTo(leastRoom);
}

/// The window follows a content that needs more or less room, as it would follow the bare content.
bool ScrollPane::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}
