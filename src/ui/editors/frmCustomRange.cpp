#include "ui/editors/frmCustomRange.h"

#include "base/Clock.h"
#include "ui/common/Widgets.h"
#include "ui/editors/ChartPeriod.h"

#include <QDateTimeEdit>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {

QString inQuotes(const QString &name)
{
    return QStringLiteral("\u201c%1\u201d").arg(name);
}

/// "the reports “A”, “B” and “C”"
QString reportsInWords(const QStringList &titles)
{
    constexpr qsizetype most = 8;
    QStringList names;
    for (const QString &title : titles.mid(0, titles.size() > most ? most - 1 : most))
        names.append(inQuotes(title));
    if (titles.size() > names.size())
        names.append(QStringLiteral("%1 more").arg(titles.size() - names.size()));
    if (names.size() < 2)
        return QLatin1String("the report ") + names.value(0);
    const QString last = names.takeLast();
    return QLatin1String("the reports ") + names.join(QLatin1String(", ")) +
           QLatin1String(" and ") + last;
}

/// A date-time that can be typed as shown, and pasted. Qt's own field drops digits typed over a
/// selection of several sections, and treats a separator typed after a full section, which it has
/// left already, as the end of the next one.
class DateTimeField : public QDateTimeEdit
{
protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        const QString typed = event->text();
        const bool isDigit = typed.size() == 1 && typed[0].isDigit();
        const bool isSeparator = typed.size() == 1 && QStringLiteral("-:/. ").contains(typed);
        if (isSeparator && std::exchange(m_hasMovedOn, false))
            return;
        if (isDigit && lineEdit()->selectedText() == text())
            setSelectedSection(YearSection);
        const Section before = currentSection();
        QDateTimeEdit::keyPressEvent(event);
        m_hasMovedOn = isDigit && currentSection() != before;
    }

    /// A pasted date without a time keeps the time of day.
    QValidator::State validate(QString &input, int &pos) const override
    {
        const QDate date = QDate::fromString(input.trimmed(), QStringLiteral("yyyy-MM-dd"));
        if (date.isValid())
            input = QDateTime(date, time(), Qt::UTC).toString(displayFormat());
        return QDateTimeEdit::validate(input, pos);
    }

private:
    bool m_hasMovedOn = false; ///< the last digit filled its part
};

QDateTimeEdit *newField(const QString &name, const QString &toolTip)
{
    auto *field = new DateTimeField;
    field->setObjectName(name);
    field->setTimeSpec(Qt::UTC); // wall times: every hour of the day exists
    field->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm"));
    field->setCalendarPopup(true);
    field->setToolTip(toolTip);
    return field;
}

/// The nearest date-time that the field can show: not before the calendar's start.
QDateTime shown(const QDateTimeEdit *field, const QDateTime &moment)
{
    const QDateTime valid = moment.isValid() ? moment : zeroDate();
    return std::clamp(valid, field->minimumDateTime(), field->maximumDateTime());
}

} // namespace

DateRange presetRange(RangePreset preset, const QDate &today)
{
    const QDate month(today.year(), today.month(), 1);
    switch (preset) {
    case LastSevenDays:
        return wholeDays(today.addDays(-7), today.addDays(-1));
    case WholeLastMonth:
        return wholeDays(month.addMonths(-1), month.addDays(-1));
    case WholeLastQuarter: {
        const QDate quarter = month.addMonths(-((today.month() - 1) % 3));
        return wholeDays(quarter.addMonths(-3), quarter.addDays(-1));
    }
    case WholeThisYear:
        break;
    }
    return wholeDays(QDate(today.year(), 1, 1), QDate(today.year(), 12, 31));
}

RangeEdit::RangeEdit(QWidget *parent)
    : QWidget(parent)
    , txtStart(newField(QStringLiteral("txtStart"), QStringLiteral("First minute of the range")))
    , txtEnd(newField(QStringLiteral("txtEnd"), QStringLiteral("Last minute of the range")))
{
    auto *from = new QLabel(QStringLiteral("&From"));
    from->setBuddy(txtStart);
    auto *to = new QLabel(QStringLiteral("&To"));
    to->setBuddy(txtEnd);
    auto *presets = newButton(QStringLiteral("cmdPresets"), QStringLiteral("&Presets"));
    auto *menu = new QMenu(presets);
    addPreset(menu, QStringLiteral("Last &7 days"), LastSevenDays);
    addPreset(menu, QStringLiteral("Last &month"), WholeLastMonth);
    addPreset(menu, QStringLiteral("Last &quarter"), WholeLastQuarter);
    addPreset(menu, QStringLiteral("This &year"), WholeThisYear);
    presets->setMenu(menu);

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(from, 0, 0);
    layout->addWidget(txtStart, 0, 1);
    layout->addWidget(to, 1, 0);
    layout->addWidget(txtEnd, 1, 1);
    layout->addWidget(presets, 1, 2);
    layout->setColumnStretch(3, 1);
    setFocusProxy(txtStart);

    connect(txtStart, &QDateTimeEdit::dateTimeChanged, this, [this](const QDateTime &moment) {
        m_start = wallDateTime(moment.date(), QTime(moment.time().hour(), moment.time().minute()));
        Q_EMIT edited();
    });
    connect(txtEnd, &QDateTimeEdit::dateTimeChanged, this, [this](const QDateTime &moment) {
        m_end =
            wallDateTime(moment.date(), QTime(moment.time().hour(), moment.time().minute(), 59));
        Q_EMIT edited();
    });
}

void RangeEdit::addPreset(QMenu *menu, const QString &text, int preset)
{
    menu->addAction(text, this, [this, preset] {
        const DateRange range = presetRange(static_cast<RangePreset>(preset), now().date());
        setRange(range.start, range.end);
        Q_EMIT edited();
    });
}

void RangeEdit::setRange(const QDateTime &start, const QDateTime &end)
{
    m_start = start;
    m_end = end;
    const QSignalBlocker quietStart(txtStart);
    const QSignalBlocker quietEnd(txtEnd);
    txtStart->setDateTime(shown(txtStart, start));
    txtEnd->setDateTime(shown(txtEnd, end));
}

frmCustomRange::frmCustomRange(const clsGraphDef &chart, const QStringList &reportTitles,
                               QWidget *parent)
    : EditorDialog(QStringLiteral("frmCustomRange"), QStringLiteral("chart-editor.html"), parent)
    , m_chart(chart)
    , m_range(new RangeEdit)
    , lblPeriod(newTextLabel(QStringLiteral("lblPeriod"), 3))
{
    setWindowTitle(QStringLiteral("Custom Range"));
    auto *title = newTextLabel(QStringLiteral("lblTitle"),
                               QStringLiteral("Period of the charts %1 in %2")
                                   .arg(inQuotes(chart.ChartTitle), reportsInWords(reportTitles)));
    lblPeriod->setMinimumWidth(lblPeriod->fontMetrics().averageCharWidth() * 60);
    auto *layout = new QVBoxLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(title);
    layout->addWidget(m_range);
    layout->addWidget(lblPeriod);
    layout->addStretch(1);

    const DateRange usual = presetRange(LastSevenDays, now().date());
    const bool isRange = chart.StartTime < chart.EndTime;
    m_range->setRange(isRange ? chart.StartTime : usual.start, isRange ? chart.EndTime : usual.end);
    connect(m_range, &RangeEdit::edited, this, &frmCustomRange::showLength);
    showLength();
    m_range->setFocus();
    markUnchanged();
}

void frmCustomRange::showLength()
{
    m_chart.StartTime = start();
    m_chart.EndTime = end();
    const QStringList warnings = periodWarnings(m_chart);
    lblPeriod->setText(warnings.isEmpty() ? periodInWords(m_chart) : warnings.join(u'\n'));
}

QString frmCustomRange::contentText() const
{
    return DateToXML(start()) + DateToXML(end());
}

QString frmCustomRange::inputError(QWidget *&field) const
{
    field = m_range;
    if (end() <= start())
        return QStringLiteral("The range ends before it starts. Please enter a later end.");
    return tooManyIntervals(m_chart);
}

bool editCustomRange(clsGraphDef &chart, const QStringList &reportTitles, QWidget *parent)
{
    frmCustomRange dialog(chart, reportTitles, parent);
    dialog.exec();
    if (dialog.tag() != u"SAVE")
        return false;
    chart.StartTime = dialog.start();
    chart.EndTime = dialog.end();
    return true;
}
