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
    QString kept = toPlainText().right(keptCharacters);
    kept.remove(0, kept.indexOf(u'\n') + 1);
    setPlainText(kept);
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}
