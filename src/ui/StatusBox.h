#pragma once

#include <QPlainTextEdit>

/// The status lines, newest last; to be read and copied only. Starts with "Idle.".
class StatusBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit StatusBox(QWidget *parent = nullptr);

    /// Appends a line. A text that passes `mostCharacters` is cut to its last `keptCharacters`.
    /// A reader who has scrolled up is left where he is, but for a cut.
    void addLine(const QString &line);

    static constexpr int mostCharacters = 32'000;
    static constexpr int keptCharacters = 20'000;
};
