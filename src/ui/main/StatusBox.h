#pragma once

#include <QPlainTextEdit>
#include <QStringList>

/// The status lines, newest last; to be read and copied only. Starts with "Idle.". The steps of a
/// run are folded away unless they are asked for: reports, devices and all else stay.
class StatusBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit StatusBox(QWidget *parent = nullptr);

    /// Appends lines. A text of more than `maxCharacters` is cut to its last `keptCharacters`. The
    /// last line stays visible, also when the box is resized; after scrolling up the position
    /// stays, except for a cut.
    void addLines(const QStringList &lines);
    void addLine(const QString &line) { addLines({line}); }

    void showSteps(bool shown);

    static constexpr int maxCharacters = 32'000;
    static constexpr int keptCharacters = 20'000;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void showEnd();
    void fold(int fromBlock);
    void cutTo(const QString &text);

    bool m_showsSteps = false;
    bool m_follows = true; ///< the end is shown, and is to be
};
