#pragma once

#include <QScrollArea>

/// Holds the content of a window, with scroll bars if the screen is too small for it.
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
