#include "ui/editors/RuleEditor.h"

#include "base/NaturalOrder.h"
#include "base/Numbers.h"
#include "database/RuleMatches.h"
#include "ui/common/Widgets.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSet>
#include <QTimer>

#include <algorithm>

namespace {

/// As many devices as somebody may want to look through.
constexpr size_t maxListed = 500;
constexpr size_t maxItemNames = 4;

QString counted(size_t number, const char *one, const char *many)
{
    return groupedNumber(static_cast<double>(number), 0) + u' ' +
           QLatin1String(number == 1 ? one : many);
}

QString extent(const std::vector<RuleMatch> &matches)
{
    size_t items = 0;
    for (const RuleMatch &match : matches)
        items += match.items.size();
    return counted(matches.size(), "device", "devices") + QLatin1String(", ") +
           counted(items, "data item", "data items");
}

QString line(const RuleMatch &match)
{
    QStringList names;
    for (size_t i = 0; i < std::min(match.items.size(), maxItemNames); ++i)
        names.append(match.items[i]->name);
    if (match.items.size() > maxItemNames)
        names.append(QStringLiteral("and %1 more").arg(match.items.size() - maxItemNames));
    return match.device->name + QLatin1String(": ") + names.join(QLatin1String(", "));
}

/// Each text once, in natural order.
QStringList choices(QStringList texts)
{
    texts.removeDuplicates();
    texts.removeAll(QString());
    std::sort(texts.begin(), texts.end(),
              [](const QString &a, const QString &b) { return naturalKey(a) < naturalKey(b); });
    return texts;
}

} // namespace

RuleEditor::RuleEditor(QWidget *parent)
    : QWidget(parent)
    , m_findSoon(new QTimer(this))
{
    m_findSoon->setSingleShot(true);
    m_findSoon->setInterval(200);
    connect(m_findSoon, &QTimer::timeout, this, &RuleEditor::find);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(newTextLabel(
        {}, QStringLiteral("Beside the ticked devices the report shows what these rules find. They "
                           "are looked up at each run, so that new devices join by themselves.")));
    layout->addWidget(makeList(), 2);
    layout->addWidget(makeForm());
    layout->addWidget(makeFound(), 3);
    showRows();
}

QWidget *RuleEditor::makeList()
{
    lstRules = new QListWidget;
    lstRules->setObjectName(QStringLiteral("lstRules"));
    lstRules->setAccessibleName(QStringLiteral("Rules"));
    lstRules->setUniformItemSizes(true);
    lstRules->setMinimumHeight(4 * fontMetrics().lineSpacing());
    connect(lstRules, &QListWidget::currentRowChanged, this, &RuleEditor::showCurrent);
    auto *add = newButton(QStringLiteral("cmdRuleAdd"), QStringLiteral("Add Rule"),
                          QStringLiteral("Adds a rule that takes devices and data items"));
    auto *except = newButton(QStringLiteral("cmdRuleExcept"), QStringLiteral("Add Exception"),
                             QStringLiteral("Adds what no rule is to take; ticked items stay"));
    cmdRuleRemove = newButton(QStringLiteral("cmdRuleRemove"), QStringLiteral("Remove Rule"),
                              QStringLiteral("Removes the selected rule or exception"));
    connect(add, &QPushButton::clicked, this, [this] { addRule(false); });
    connect(except, &QPushButton::clicked, this, [this] { addRule(true); });
    connect(cmdRuleRemove, &QPushButton::clicked, this, &RuleEditor::removeRule);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(except);
    buttons->addWidget(cmdRuleRemove);
    buttons->addStretch(1);
    auto *list = new QWidget;
    auto *layout = new QVBoxLayout(list);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(lstRules, 1);
    layout->addLayout(buttons);
    return list;
}

/// A field that proposes what the database has, and takes any pattern.
QComboBox *RuleEditor::newChoice(const char *name, const QString &label, const QString &example)
{
    auto *choice = new QComboBox;
    choice->setObjectName(QLatin1String(name));
    choice->setAccessibleName(label);
    choice->setEditable(true);
    choice->setInsertPolicy(QComboBox::NoInsert);
    choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    choice->setMinimumContentsLength(4);
    choice->setMaxVisibleItems(20);
    choice->lineEdit()->setPlaceholderText(example);
    connect(choice, &QComboBox::editTextChanged, this, &RuleEditor::takeForm);
    return choice;
}

QWidget *RuleEditor::makeForm()
{
    const QString any = QStringLiteral("any");
    txtRuleDevice = new QLineEdit;
    txtRuleDevice->setObjectName(QStringLiteral("txtRuleDevice"));
    txtRuleDevice->setPlaceholderText(QStringLiteral("any, or like *-SW-*"));
    txtRuleDescription = new QLineEdit;
    txtRuleDescription->setObjectName(QStringLiteral("txtRuleDescription"));
    txtRuleDescription->setPlaceholderText(any);
    for (const QLineEdit *field : {txtRuleDevice, txtRuleDescription})
        connect(field, &QLineEdit::textChanged, this, &RuleEditor::takeForm);
    cboRuleGroup = newChoice("cboRuleGroup", QStringLiteral("Group"), any);
    cboRuleItem = newChoice("cboRuleItem", QStringLiteral("Data item named"), any);
    cboRuleUnit = newChoice("cboRuleUnit", QStringLiteral("Unit"), any);
    cboRuleKind = new QComboBox;
    cboRuleKind->setObjectName(QStringLiteral("cboRuleKind"));
    cboRuleKind->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboRuleKind->setMinimumContentsLength(4);
    cboRuleKind->addItems({QStringLiteral("all"), QStringLiteral("states (up or down)"),
                           QStringLiteral("counters (measured values)")});
    connect(cboRuleKind, &QComboBox::currentIndexChanged, this, &RuleEditor::takeForm);

    m_form = new QWidget;
    auto *grid = new QGridLayout(m_form);
    grid->setContentsMargins(0, 0, 0, 0);
    const auto add = [grid](int row, int column, const QString &text, QWidget *field) {
        auto *label = new QLabel(text);
        label->setBuddy(field);
        field->setAccessibleName(text.chopped(1));
        field->setMinimumWidth(8 * field->fontMetrics().averageCharWidth());
        grid->addWidget(label, row, column);
        grid->addWidget(field, row, column + 1);
    };
    add(0, 0, QStringLiteral("Device name:"), txtRuleDevice);
    add(1, 0, QStringLiteral("Group:"), cboRuleGroup);
    add(2, 0, QStringLiteral("Description:"), txtRuleDescription);
    add(0, 2, QStringLiteral("Data item name:"), cboRuleItem);
    add(1, 2, QStringLiteral("Unit:"), cboRuleUnit);
    add(2, 2, QStringLiteral("Kind:"), cboRuleKind);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    m_form->setToolTip(
        QStringLiteral("* stands for any characters, ? for one, | separates alternatives. Letter "
                       "case does not matter."));
    return m_form;
}

QWidget *RuleEditor::makeFound()
{
    lblFound = newTextLabel(QStringLiteral("lblFound"), 1);
    lstFound = new QListWidget;
    lstFound->setObjectName(QStringLiteral("lstFound"));
    lstFound->setAccessibleName(QStringLiteral("What the rules find now"));
    lstFound->setUniformItemSizes(true);
    lstFound->setSelectionMode(QAbstractItemView::NoSelection);
    lstFound->setMinimumHeight(3 * fontMetrics().lineSpacing());
    auto *found = new QWidget;
    auto *layout = new QVBoxLayout(found);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(lblFound);
    layout->addWidget(lstFound, 1);
    return found;
}

// The rules

void RuleEditor::setRules(const std::vector<SelectionRule> &rules)
{
    m_rules = rules;
    m_counts.assign(m_rules.size(), {});
    showRows();
    lstRules->setCurrentRow(m_rules.empty() ? -1 : 0);
    showCurrent();
    findSoon();
}

std::vector<SelectionRule> RuleEditor::rules() const
{
    std::vector<SelectionRule> unique;
    for (const SelectionRule &rule : m_rules) {
        if (std::find(unique.begin(), unique.end(), rule) == unique.end())
            unique.push_back(rule);
    }
    return unique;
}

QString RuleEditor::rulesText() const
{
    QStringList texts;
    for (const SelectionRule &rule : m_rules)
        texts += QLatin1String(rule.isException ? "-" : "+") + ruleInWords(rule);
    return texts.join(u'\n');
}

void RuleEditor::setInventory(std::shared_ptr<const Inventory> inventory, const QString &why)
{
    m_inventory = std::move(inventory);
    m_whyNone = why;
    if (m_inventory) {
        QStringList groups;
        for (const DeviceRow &device : m_inventory->devices())
            groups.append(device.group);
        QSet<QString> items;
        for (const ItemRow &item : m_inventory->items())
            items.insert(item.name);
        QStringList units;
        for (const ScaleRow &scale : m_inventory->scales())
            units.append(unitText(scale));
        m_isShowing = true;
        const auto fill = [](QComboBox *choice, const QStringList &texts) {
            const QString typed = choice->currentText();
            choice->clear();
            choice->addItems(choices(texts));
            choice->setEditText(typed);
        };
        fill(cboRuleGroup, groups);
        fill(cboRuleItem, items.values());
        fill(cboRuleUnit, units);
        m_isShowing = false;
    }
    find();
}

SelectionRule *RuleEditor::current()
{
    const int row = lstRules->currentRow();
    return row >= 0 && static_cast<size_t>(row) < m_rules.size()
               ? &m_rules[static_cast<size_t>(row)]
               : nullptr;
}

void RuleEditor::addRule(bool isException)
{
    SelectionRule rule;
    rule.isException = isException;
    m_rules.push_back(rule);
    m_counts.emplace_back();
    showRows();
    lstRules->setCurrentRow(static_cast<int>(m_rules.size()) - 1);
    txtRuleDevice->setFocus(Qt::OtherFocusReason);
    findSoon();
}

void RuleEditor::removeRule()
{
    const int row = lstRules->currentRow();
    if (!current())
        return;
    m_rules.erase(m_rules.begin() + row);
    m_counts.erase(m_counts.begin() + row);
    showRows();
    lstRules->setCurrentRow(std::min(row, static_cast<int>(m_rules.size()) - 1));
    showCurrent();
    findSoon();
}

void RuleEditor::showCurrent()
{
    if (m_isShowing)
        return;
    m_isShowing = true;
    const SelectionRule *rule = current();
    const SelectionRule shown = rule ? *rule : SelectionRule();
    txtRuleDevice->setText(shown.device);
    cboRuleGroup->setEditText(shown.group);
    txtRuleDescription->setText(shown.deviceDescription);
    cboRuleItem->setEditText(shown.item);
    cboRuleUnit->setEditText(shown.unit);
    cboRuleKind->setCurrentIndex(static_cast<int>(shown.kind));
    m_form->setEnabled(rule != nullptr);
    cmdRuleRemove->setEnabled(rule != nullptr);
    m_isShowing = false;
}

void RuleEditor::takeForm()
{
    SelectionRule *rule = m_isShowing ? nullptr : current();
    if (!rule)
        return;
    rule->device = txtRuleDevice->text().trimmed();
    rule->group = cboRuleGroup->currentText().trimmed();
    rule->deviceDescription = txtRuleDescription->text().trimmed();
    rule->item = cboRuleItem->currentText().trimmed();
    rule->unit = cboRuleUnit->currentText().trimmed();
    rule->kind = static_cast<SelectionRule::Items>(cboRuleKind->currentIndex());
    m_counts[static_cast<size_t>(lstRules->currentRow())].clear();
    showRows();
    findSoon();
}

/// The rows' texts; the current row stays.
void RuleEditor::showRows()
{
    const bool wasShowing = m_isShowing;
    m_isShowing = true;
    while (lstRules->count() > static_cast<int>(m_rules.size()))
        delete lstRules->takeItem(lstRules->count() - 1);
    while (lstRules->count() < static_cast<int>(m_rules.size()))
        lstRules->addItem(QString());
    for (size_t i = 0; i < m_rules.size(); ++i) {
        QString text =
            (m_rules[i].isException ? QLatin1String("Not: ") : QString()) + ruleInWords(m_rules[i]);
        text[0] = text[0].toUpper();
        if (!m_counts[i].isEmpty())
            text += QStringLiteral(" \u2013 ") + m_counts[i];
        lstRules->item(static_cast<int>(i))->setText(text);
    }
    m_isShowing = wasShowing;
}

// What they find

void RuleEditor::findSoon()
{
    m_findSoon->start();
    Q_EMIT changed();
}

void RuleEditor::find()
{
    m_findSoon->stop();
    m_finding.abandon();
    if (m_rules.empty() || !m_inventory) {
        lstFound->clear();
        lblFound->setText(m_rules.empty() ? QStringLiteral("There are no rules.")
                          : m_whyNone.isEmpty()
                              ? QStringLiteral("Reading devices…")
                              : QLatin1String("The database cannot be read. ") + m_whyNone);
        return;
    }
    m_finding.start([this, rules = m_rules, inventory = m_inventory](const Background::Link &link) {
        std::vector<QString> counts;
        for (SelectionRule rule : rules) {
            rule.isException = false;
            counts.push_back(extent(ruleMatches({rule}, *inventory)));
            if (link.isAbandoned())
                return;
        }
        const std::vector<RuleMatch> matches = ruleMatches(rules, *inventory);
        QStringList lines;
        for (size_t i = 0; i < std::min(matches.size(), maxListed); ++i)
            lines.append(line(matches[i]));
        if (matches.size() > maxListed)
            lines.append(QStringLiteral("and %1").arg(
                counted(matches.size() - maxListed, "device more", "devices more")));
        link.deliver([this, counts, lines, found = extent(matches)] {
            m_counts = counts;
            showRows();
            lblFound->setText(QStringLiteral("Together they find now: %1.").arg(found));
            lstFound->clear();
            lstFound->addItems(lines);
        });
    });
}
