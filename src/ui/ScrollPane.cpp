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
    setWidget(content);
}

/// As a resizable widget of a scroll area the content would get the height that it likes best, with
/// a scroll bar, before it gave way.
void ScrollPane::fitContent()
{
    const QSize least = widget()->minimumSizeHint();
    const QSize whole = maximumViewportSize();
    const QSize room = whole.expandedTo(least) == whole ? whole : viewport()->size();
    widget()->resize(room.expandedTo(least));
}

void ScrollPane::resizeEvent(QResizeEvent *event)
{
    fitContent();
    QScrollArea::resizeEvent(event);
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
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        fitContent();
    }
    return QScrollArea::eventFilter(watched, event);
}
