#include "ui/ActiveWindow.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

namespace {

class Activation : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        // Asked for behind the system's own choice, which follows this event.
        if (event->type() == QEvent::WindowUnblocked)
            QTimer::singleShot(0, this, [window = static_cast<QWidget *>(watched)] {
                const QWidget *modal = QApplication::activeModalWidget();
                if (window->isVisible() && (!modal || modal == window))
                    window->activateWindow();
            });
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void activateAfterDialogs(QWidget *window)
{
    window->installEventFilter(new Activation(window));
}
