#include "ui/main/StatusBox.h"

#include <QScrollBar>

StatusBox::StatusBox(QWidget *parent)
    : QPlainTextEdit(QStringLiteral("Idle."), parent)
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    // Wrapped lines are counted only as they are laid out: the end may move after the last line.
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int, int maximum) {
        if (m_follows)
            verticalScrollBar()->setValue(maximum);
    });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this](int value) { m_follows = value == verticalScrollBar()->maximum(); });
}

void StatusBox::addLines(const QStringList &lines)
{
    const bool follows = m_follows;
    appendPlainText(lines.join(u'\n'));
    const bool isCut = document()->characterCount() - 1 > maxCharacters;
    if (isCut)
        setPlainText(toPlainText().right(keptCharacters));
    if (follows || isCut)
        showEnd();
}

void StatusBox::resizeEvent(QResizeEvent *event)
{
    const bool follows = m_follows;
    QPlainTextEdit::resizeEvent(event);
    if (follows)
        showEnd();
}

void StatusBox::showEnd()
{
    m_follows = true;
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}
