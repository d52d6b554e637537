#include "app/RunDisplay.h"

#include "base/Clock.h"
#include "base/OneLine.h"
#include "platform/Terminal.h"

#include <QStringList>

#include <algorithm>

namespace {

constexpr QLatin1String clearLine("\r\x1b[K");

void print(std::FILE *stream, const QString &text)
{
    std::fputs(text.toUtf8().constData(), stream);
    std::fflush(stream);
}

/// "0:05", "12:30", "2:05:00"
QString durationText(qint64 milliseconds)
{
    const qint64 seconds = milliseconds / 1000;
    const auto twoDigits = [](qint64 number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    const QString tail = QLatin1Char(':') + twoDigits(seconds % 60);
    if (seconds < 3600)
        return QString::number(seconds / 60) + tail;
    return QString::number(seconds / 3600) + QLatin1Char(':') + twoDigits(seconds / 60 % 60) + tail;
}

/// An upper limit of the columns of a character: East Asian ones take two.
int columnsOf(QChar character)
{
    const char16_t code = character.unicode();
    const bool isWide = code >= 0x1100 && (code < 0x2000 || code >= 0x2E80) &&
                        !character.isSurrogate(); // the two halves of one take two together
    return isWide ? 2 : 1;
}

/// Cuts a line to fewer than `columns`: some terminals start a new line after the last one.
QString shortened(const QString &line, int columns)
{
    int used = 0;
    qsizetype fitting = 0; // characters that leave room for the dots
    for (qsizetype i = 0; i < line.size(); ++i) {
        used += columnsOf(line[i]);
        if (used < columns - 1)
            fitting = i + 1;
        if (used >= columns)
            return line.left(fitting) + QChar(0x2026);
    }
    return line;
}

} // namespace

QString progressLine(const Progress &progress, qint64 elapsed, int columns)
{
    const int all = std::max(progress.all, 1);
    const int done = std::clamp(progress.done, 0, all);
    QString line = QStringLiteral("%1 % (%2 of %3)")
                       .arg(QString::number(done * qint64(100) / all), QString::number(done),
                            QString::number(progress.all));
    if (done > 0)
        line += QStringLiteral(", %1 left").arg(durationText(elapsed * (all - done) / done));
    QStringList names;
    for (const QString &name : {progress.report, progress.device, progress.item}) {
        if (!name.isEmpty())
            names.append(name);
    }
    line += QLatin1String(": ") + names.join(QLatin1String(", "));
    return shortened(oneLine(line), columns);
}

RunDisplay::RunDisplay(std::FILE *stream, std::FILE *errors)
    : m_stream(stream)
{
    if (!platform::haveSameTarget(stream, errors))
        observer().trouble = [errors](const QString &text) {
            print(errors, QLatin1String("VantrelGrapher: ") + text + u'\n');
        };
    observer().status = [this](const QString &line) { showStatus(line); };
    observer().progress = [this](const Progress &progress) { show(progress); };
}

RunDisplay::~RunDisplay()
{
    observer() = {};
    if (!m_live.isEmpty())
        print(m_stream, clearLine);
}

void RunDisplay::showStatus(const QString &line)
{
    print(m_stream, (m_live.isEmpty() ? QString() : QString(clearLine)) + line + u'\n' + m_live);
}

void RunDisplay::show(const Progress &progress)
{
    if (m_start == 0)
        m_start = currentInstant();
    const int columns = platform::terminalColumns(m_stream);
    if (columns == 0)
        return;
    m_live = progressLine(progress, currentInstant() - m_start, columns);
    print(m_stream, clearLine + m_live);
}
