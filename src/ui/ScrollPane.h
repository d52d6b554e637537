#pragma once

#include <QScrollArea>

/// Holds the content of a window: no different from the bare content while there is room for it,
/// with scroll bars where the screen is smaller.
class ScrollPane : public QScrollArea
{
    Q_OBJECT

public:
    explicit ScrollPane(QWidget *content, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitContent();
};
