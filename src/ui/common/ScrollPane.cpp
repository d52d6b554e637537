#include "ui/common/ScrollPane.h"

#include <QEvent>

namespace {

/// The smallest screen, 640 by 400 pixels, less a frame and a row of buttons.
constexpr QSize leastRoom(600, 260);

} // namespace

ScrollPane::ScrollPane(QWidget *content, QWidget *parent)
    : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
}

/// A resizable widget of a scroll area would get its preferred height, with a scroll bar, instead
/// of shrinking first.
void ScrollPane::fitContent()
{
    const QSize min = widget()->minimumSizeHint();
    const QSize whole = maximumViewportSize();
    const QSize room = whole.expandedTo(min) == whole ? whole : viewport()->size();
    widget()->resize(room.expandedTo(min));
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

/// The window follows when the content needs more or less space, as without a scroll area.
bool ScrollPane::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        fitContent();
    }
    return QScrollArea::eventFilter(watched, event);
}
