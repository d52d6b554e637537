#pragma once

#include <QPlainTextEdit>

/// The status lines, newest last; to be read and copied only. Starts with "Idle.".
class StatusBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit StatusBox(QWidget *parent = nullptr);

    /// Appends a line. A text that passes `mostCharacters` is cut to its last `keptCharacters`.
    /// The last line stays in sight, also while the box is resized; but a reader who has scrolled
    /// up is left where he is, except by a cut.
    void addLine(const QString &line);

    static constexpr int mostCharacters = 32'000;
    static constexpr int keptCharacters = 20'000;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void showEnd();

    bool m_follows = true; ///< the end is shown, and is to be
};
