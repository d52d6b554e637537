#include "ui/common/Widgets.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTimer>

namespace {

class Activation : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        // Queued, as the system's own choice follows this event.
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

QLabel *newTextLabel(const QString &name, int lines)
{
    auto *label = new QLabel;
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAlignment(Qt::AlignTop);
    label->setMinimumHeight(label->fontMetrics().lineSpacing() * lines);
    return label;
}

QLabel *newTextLabel(const QString &name, const QString &text)
{
    QLabel *label = newTextLabel(name);
    label->setText(text);
    return label;
}

QLabel *newWarningIcon()
{
    auto *icon = new QLabel;
    const QStyle *style = icon->style();
    icon->setPixmap(style->standardIcon(QStyle::SP_MessageBoxWarning)
                        .pixmap(style->pixelMetric(QStyle::PM_SmallIconSize)));
    icon->setAlignment(Qt::AlignTop);
    return icon;
}

QPushButton *newButton(const QString &name, const QString &text, const QString &toolTip)
{
    auto *button = new QPushButton(text);
    button->setObjectName(name);
    button->setToolTip(toolTip);
    return button;
}

QString wrappingToolTip(const QString &text)
{
    if (text.isEmpty())
        return {};
    QString html = text.toHtmlEscaped();
    for (const QChar separator : {u'/', u'\\'})
        html.replace(separator, QString(separator) + QChar(0x200B)); // paths may break here
    return QLatin1String("<p style='white-space: pre-wrap'>") + html + QLatin1String("</p>");
}

void activateAfterDialogs(QWidget *window)
{
    window->installEventFilter(new Activation(window));
}
