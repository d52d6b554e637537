#include "ui/editors/TargetEditor.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Numbers.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "database/Connection.h"
#include "ui/common/Widgets.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

#include <algorithm>
#include <chrono>

namespace {

constexpr qsizetype maxNamed = 8; ///< devices and items in the text of an effect

QString timeText(const QDateTime &wall)
{
    return wall.toString(wall.time().second() == 0 ? QStringLiteral("yyyy-MM-dd HH:mm")
                                                   : QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

/// Invalid for a text of another form.
QDateTime timeOf(const QString &text)
{
    for (const char *form : {"yyyy-MM-dd HH:mm", "yyyy-MM-dd HH:mm:ss"}) {
        const QDateTime time = QDateTime::fromString(text.trimmed(), QLatin1String(form));
        if (time.isValid())
            return wallDateTime(time.date(), time.time());
    }
    return {};
}

/// Nothing for no text; throws Error(TypeMismatch).
std::optional<double> targetOf(const QString &text)
{
    const QString given = text.trimmed();
    if (given.isEmpty())
        return {};
    pugi::xml_document document;
    pugi::xml_node element = document.append_child("R");
    element.append_attribute("Target") = given.toUtf8().constData();
    return readTarget(element);
}

QString listed(const QStringList &names)
{
    const QString shown = names.mid(0, maxNamed).join(QLatin1String("; "));
    return names.size() > maxNamed
               ? shown + QStringLiteral("; and %1 more").arg(names.size() - maxNamed)
               : shown;
}

QString effectInWords(const TargetPreview &preview)
{
    const auto day = [](qint64 second) { return wallTime(second * 1000).toString(u"yyyy-MM-dd"); };
    QStringList lines{QStringLiteral("%1 to %2, %3 of %4 devices:")
                          .arg(day(preview.period.from), day(preview.period.to - 1))
                          .arg(preview.done)
                          .arg(preview.devices)};
    if (preview.withTarget == 0)
        lines += QStringLiteral("No device has both a target and tests for it.");
    else
        lines += QStringLiteral("%1 of %2 would have missed the target%3")
                     .arg(preview.missed.size())
                     .arg(preview.withTarget)
                     .arg(preview.missed.isEmpty() ? QStringLiteral(".")
                                                   : QLatin1String(": ") + listed(preview.missed));
    if (preview.excludedSeconds > 0)
        lines += QStringLiteral("%1 hours of it do not count.")
                     .arg(trimmedNumber(static_cast<double>(preview.excludedSeconds) / 3600, 1));
    if (preview.withLimit > 0)
        lines +=
            QStringLiteral("%1 of %2 data items reached their limit (95th percentile)%3")
                .arg(preview.exceeded.size())
                .arg(preview.withLimit)
                .arg(preview.exceeded.isEmpty() ? QStringLiteral(".")
                                                : QLatin1String(": ") + listed(preview.exceeded));
    return lines.join(u'\n');
}

} // namespace

TargetEditor::TargetEditor(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeTargets());
    layout->addWidget(makeMaintenance(), 1);
    layout->addWidget(makeEffect());
}

QWidget *TargetEditor::makeTargets()
{
    txtTarget = new QLineEdit;
    txtTarget->setObjectName(QStringLiteral("txtTarget"));
    txtTarget->setPlaceholderText(QStringLiteral("none, or like 99.5"));
    txtTarget->setToolTip(
        QStringLiteral("The promised success rate in percent. A device's own target, and the "
                       "limits of data items,\nare entered in the tree of the first page."));
    txtHours = new QLineEdit;
    txtHours->setObjectName(QStringLiteral("txtHours"));
    txtHours->setPlaceholderText(QStringLiteral("always, or like Mon-Fri 08:00-18:00"));
    chkCompare = new QCheckBox(QStringLiteral("Compare with the preceding period"));
    chkCompare->setObjectName(QStringLiteral("chkCompare"));
    chkPdf = new QCheckBox(QStringLiteral("Make a PDF, too"));
    chkPdf->setObjectName(QStringLiteral("chkPdf"));
    spnKeep = new QSpinBox;
    spnKeep->setObjectName(QStringLiteral("spnKeep"));
    spnKeep->setRange(0, 1000);
    spnKeep->setSpecialValueText(QStringLiteral("none"));
    spnKeep->setToolTip(QStringLiteral("Finished runs that are kept beside the present pages"));
    for (const QLineEdit *field : {txtTarget, txtHours})
        connect(field, &QLineEdit::textChanged, this, &TargetEditor::change);
    for (const QCheckBox *field : {chkCompare, chkPdf})
        connect(field, &QCheckBox::toggled, this, &TargetEditor::change);
    connect(spnKeep, &QSpinBox::valueChanged, this, &TargetEditor::change);
    auto *fields = new QWidget;
    auto *form = new QFormLayout(fields);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(QStringLiteral("Target in percent:"), txtTarget);
    form->addRow(QStringLiteral("Service hours:"), txtHours);
    form->addRow(chkCompare);
    form->addRow(chkPdf);
    form->addRow(QStringLiteral("Runs in the archive:"), spnKeep);
    return fields;
}

QWidget *TargetEditor::makeMaintenance()
{
    tblMaintenance = new QTableWidget(0, 3);
    tblMaintenance->setObjectName(QStringLiteral("tblMaintenance"));
    tblMaintenance->setAccessibleName(QStringLiteral("Maintenance, which does not count"));
    tblMaintenance->setHorizontalHeaderLabels(
        {QStringLiteral("From"), QStringLiteral("To"), QStringLiteral("Reason")});
    tblMaintenance->horizontalHeader()->setStretchLastSection(true);
    tblMaintenance->verticalHeader()->hide();
    tblMaintenance->setTabKeyNavigation(false);
    tblMaintenance->setMinimumHeight(4 * fontMetrics().height());
    const int width = fontMetrics().horizontalAdvance(QStringLiteral("2026-11-14 20:00:00  "));
    tblMaintenance->setColumnWidth(0, width);
    tblMaintenance->setColumnWidth(1, width);
    connect(tblMaintenance, &QTableWidget::cellChanged, this, &TargetEditor::change);
    auto *add = newButton(QStringLiteral("cmdMaintenanceAdd"), QStringLiteral("Add Maintenance"),
                          QStringLiteral("Adds a stretch of time that does not count"));
    auto *remove = newButton(QStringLiteral("cmdMaintenanceRemove"), QStringLiteral("Remove It"),
                             QStringLiteral("Removes the selected stretch of time"));
    connect(add, &QPushButton::clicked, this, [this] {
        const QDateTime evening = wallDateTime(now().date(), QTime(20, 0));
        addMaintenance(timeText(evening), timeText(evening.addSecs(2 * 3600)), {});
        tblMaintenance->setCurrentCell(tblMaintenance->rowCount() - 1, 0);
        tblMaintenance->setFocus(Qt::OtherFocusReason);
        change();
    });
    connect(remove, &QPushButton::clicked, this, &TargetEditor::removeMaintenance);
    auto *box = new QGroupBox(QStringLiteral("Maintenance, which does not count"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(remove);
    buttons->addStretch(1);
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(tblMaintenance, 1);
    layout->addLayout(buttons);
    return box;
}

QWidget *TargetEditor::makeEffect()
{
    cmdEffect = newButton(QStringLiteral("cmdEffect"), QStringLiteral("Try on Last 7 Days"),
                          QStringLiteral("Computes from the samples what a run would have found"));
    connect(cmdEffect, &QPushButton::clicked, this, &TargetEditor::tryOrStop);
    connect(&m_effect, &Background::ended, this,
            [this] { cmdEffect->setText(QStringLiteral("Try on Last 7 Days")); });
    lblEffect = newTextLabel(QStringLiteral("lblEffect"), 5);
    lblEffect->setAccessibleName(QStringLiteral("Effect"));
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(cmdEffect, 0, Qt::AlignTop);
    layout->addWidget(lblEffect, 1);
    return row;
}

// Content

void TargetEditor::load(const clsReportDef &report)
{
    txtTarget->setText(report.Target
                           ? QString::number(*report.Target, 'g', QLocale::FloatingPointShortest)
                           : QString());
    txtHours->setText(report.Hours.text());
    chkCompare->setChecked(report.Compare);
    chkPdf->setChecked(report.Pdf);
    spnKeep->setValue(report.Keep);
    tblMaintenance->setRowCount(0);
    for (const ReportMaintenance &entry : report.Maintenance)
        addMaintenance(timeText(entry.From), timeText(entry.To), entry.Reason);
}

void TargetEditor::store(clsReportDef &report) const
{
    report.Target = targetOf(txtTarget->text());
    report.Hours = ServiceHours(txtHours->text().trimmed());
    report.Compare = chkCompare->isChecked();
    report.Pdf = chkPdf->isChecked();
    report.Keep = spnKeep->value();
    report.Maintenance = maintenance();
}

QString TargetEditor::contentText() const
{
    QStringList texts{txtTarget->text(), txtHours->text(), QString::number(chkCompare->isChecked()),
                      QString::number(chkPdf->isChecked()), QString::number(spnKeep->value())};
    for (int row = 0; row < tblMaintenance->rowCount(); ++row) {
        for (int column = 0; column < tblMaintenance->columnCount(); ++column)
            texts += tblMaintenance->item(row, column)->text();
    }
    return texts.join(u'\n');
}

QString TargetEditor::inputError(QWidget *&field) const
{
    try {
        field = txtTarget;
        targetOf(txtTarget->text());
        field = txtHours;
        const ServiceHours hours(txtHours->text().trimmed());
        field = tblMaintenance;
        maintenance();
    } catch (const Error &error) {
        return error.description;
    }
    return {};
}

/// Throws Error(TypeMismatch) that names the row.
std::vector<ReportMaintenance> TargetEditor::maintenance() const
{
    std::vector<ReportMaintenance> entries;
    for (int row = 0; row < tblMaintenance->rowCount(); ++row) {
        const auto text = [this, row](int column) {
            return tblMaintenance->item(row, column)->text();
        };
        const ReportMaintenance entry{timeOf(text(0)), timeOf(text(1)), text(2).trimmed()};
        for (const int column : {0, 1}) {
            if (!timeOf(text(column)).isValid())
                throw Error(TypeMismatch,
                            QStringLiteral("Maintenance: '%1' is not a time like 2026-11-14 20:00.")
                                .arg(text(column)));
        }
        if (entry.From >= entry.To)
            throw Error(
                TypeMismatch,
                QStringLiteral("Maintenance: '%1' is not before '%2'.").arg(text(0), text(1)));
        if (std::any_of(entries.begin(), entries.end(),
                        [&entry](const auto &other) { return other.From == entry.From; }))
            throw Error(TypeMismatch,
                        QStringLiteral("Maintenance: two begin at '%1'.").arg(text(0)));
        entries.push_back(entry);
    }
    return entries;
}

void TargetEditor::addMaintenance(const QString &from, const QString &to, const QString &reason)
{
    const QSignalBlocker blocker(tblMaintenance);
    const int row = tblMaintenance->rowCount();
    tblMaintenance->insertRow(row);
    int column = 0;
    for (const QString &text : {from, to, reason})
        tblMaintenance->setItem(row, column++, new QTableWidgetItem(text));
}

void TargetEditor::removeMaintenance()
{
    if (tblMaintenance->currentRow() < 0)
        return;
    tblMaintenance->removeRow(tblMaintenance->currentRow());
    change();
}

/// An effect of what was entered before says nothing now.
void TargetEditor::change()
{
    m_effect.abandon();
    cmdEffect->setText(QStringLiteral("Try on Last 7 Days"));
    lblEffect->clear();
    Q_EMIT changed();
}

// The effect

void TargetEditor::tryOrStop()
{
    if (m_effect.isBusy()) {
        m_effect.abandon();
        cmdEffect->setText(QStringLiteral("Try on Last 7 Days"));
        lblEffect->setText(lblEffect->text() + QStringLiteral("\nStopped."));
        return;
    }
    QWidget *field = nullptr;
    if (const QString error = inputError(field); !error.isEmpty() || !m_report) {
        lblEffect->setText(error);
        return;
    }
    lblEffect->setText(QStringLiteral("Reading samples…"));
    cmdEffect->setText(QStringLiteral("Stop Trying"));
    m_effect.start(
        [this, plan = targetPreviewPlan(m_report()),
         open = databaseSource().connect](const Background::Link &link) {
            using Clock = std::chrono::steady_clock;
            const std::unique_ptr<MonitoringDatabase> database = open();
            Clock::time_point told;
            previewTargets(plan, *database, [&](const TargetPreview &preview) {
                const bool isLast = preview.done == preview.devices;
                if (isLast || Clock::now() - told > std::chrono::milliseconds(300)) {
                    told = Clock::now();
                    link.deliver([this, preview] { showEffect(preview); });
                }
                return !link.isAbandoned();
            });
        },
        [this](const QString &error) { lblEffect->setText(error); });
}

void TargetEditor::showEffect(const TargetPreview &preview)
{
    lblEffect->setText(effectInWords(preview));
}
