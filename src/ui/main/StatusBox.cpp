#include "ui/main/StatusBox.h"

#include <QScrollBar>
#include <QTextBlock>

#include <algorithm>

namespace {

/// The lines of a run that say no more than that it goes on. Whatever else comes up is shown.
constexpr QLatin1String steps[] = {
    QLatin1String("Calculating"),        QLatin1String("Copy template: "),
    QLatin1String("Creating Work Path"), QLatin1String("Creating graph data"),
    QLatin1String("Database Opened."),   QLatin1String("Evaluating "),
    QLatin1String("Finishing TOC"),      QLatin1String("Generating Chart: ["),
    QLatin1String("Generating Master"),  QLatin1String("Generating Summary: ["),
    QLatin1String("Generating TOC: ["),  QLatin1String("Generating output"),
    QLatin1String("Generating series"),  QLatin1String("Loading "),
    QLatin1String("Opening "),           QLatin1String("Saving report definition."),
    QLatin1String("Sorting device"),     QLatin1String("Submitting query"),
    QLatin1String("Summarizing "),       QLatin1String("Total Devices: "),
    QLatin1String("Total Fields: "),     QLatin1String("Total Values: "),
    QLatin1String("Writing TOC file"),
};

bool isStep(const QString &line)
{
    return std::any_of(std::begin(steps), std::end(steps),
                       [&line](QLatin1String step) { return line.startsWith(step); });
}

} // namespace

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
    const int before = document()->blockCount();
    appendPlainText(lines.join(u'\n'));
    fold(before - 1);
    const bool isCut = document()->characterCount() - 1 > maxCharacters;
    if (isCut)
        cutTo(toPlainText().right(keptCharacters));
    if (follows || isCut)
        showEnd();
}

void StatusBox::cutTo(const QString &text)
{
    setPlainText(text);
    fold(0);
}

void StatusBox::showSteps(bool shown)
{
    m_showsSteps = shown;
    fold(0);
    showEnd();
}

/// Hides the steps among the lines from this one on, or shows them.
void StatusBox::fold(int fromBlock)
{
    QTextBlock block = document()->findBlockByNumber(std::max(fromBlock, 0));
    const int start = block.position();
    bool isChanged = false;
    for (; block.isValid(); block = block.next()) {
        const bool isShown = m_showsSteps || !isStep(block.text());
        if (block.isVisible() == isShown)
            continue;
        block.setVisible(isShown);
        block.setLineCount(isShown ? 1 : 0);
        isChanged = true;
    }
    if (isChanged)
        document()->markContentsDirty(start, document()->characterCount() - start);
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
