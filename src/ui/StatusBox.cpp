#include "ui/StatusBox.h"

#include <QScrollBar>

StatusBox::StatusBox(QWidget *parent)
    : QPlainTextEdit(QStringLiteral("Idle."), parent)
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void StatusBox::addLine(const QString &line)
{
    appendPlainText(line);
    if (document()->characterCount() - 1 <= mostCharacters)
        return;
    setPlainText(toPlainText().right(keptCharacters));
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}
