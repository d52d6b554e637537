#include "ui/main/ReportView.h"

#include "ui/main/ReportList.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <array>
#include <numeric>

ReportView::ReportView(ReportList &list, QWidget *parent)
    : QTreeView(parent)
    , m_list(list)
    , m_hint(new QWidget(viewport()))
    , m_addButton(new QPushButton(QStringLiteral("Add a Report…")))
{
    setObjectName(QStringLiteral("lvReports"));
    setAccessibleName(QStringLiteral("Configured Reports"));
    setToolTip(QStringLiteral("Currently configured reports."));
    m_sorted.setSourceModel(&list);
    m_sorted.setSortRole(ReportList::SortRole);
    m_sorted.setDynamicSortFilter(true);
    setModel(&m_sorted);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setTabKeyNavigation(false);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setSortingEnabled(true);
    sortByColumn(ReportList::Title, Qt::AscendingOrder);
    header()->setStretchLastSection(true);
    const int character = fontMetrics().averageCharWidth();
    constexpr std::array characters = {38, 24, 11, 34, 20, 14, 20};
    for (int column = 0; column < ReportList::ColumnCount; ++column)
        setColumnWidth(column, characters[static_cast<size_t>(column)] * character);

    const auto takeWidths = [this] {
        if (m_isFitting)
            return;
        m_wanted.clear();
        for (int column = 0; column < ReportList::ColumnCount; ++column)
            m_wanted.append(columnWidth(column));
    };
    takeWidths();
    connect(header(), &QHeaderView::sectionResized, this, takeWidths);

    auto *text = new QLabel(QStringLiteral("No reports are configured yet.\n\n"
                                           "A report charts the devices and data items that you "
                                           "choose, whenever its schedule says or you run it."));
    text->setWordWrap(true);
    text->setAlignment(Qt::AlignCenter);
    m_addButton->setObjectName(QStringLiteral("cmdFirstReport"));
    auto *layout = new QVBoxLayout(m_hint);
    layout->addStretch();
    layout->addWidget(text);
    layout->addWidget(m_addButton, 0, Qt::AlignHCenter);
    layout->addStretch();
    const auto follow = [this] { showHint(); };
    connect(&m_sorted, &QAbstractItemModel::rowsInserted, this, follow);
    connect(&m_sorted, &QAbstractItemModel::rowsRemoved, this, follow);
    connect(&m_sorted, &QAbstractItemModel::modelReset, this, follow);
    showHint();
}

QStringList ReportView::selectedIds() const
{
    QList<int> rows;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QStringList ids;
    for (const int row : rows)
        ids.append(m_list.reportId(m_sorted.mapToSource(m_sorted.index(row, 0)).row()));
    return ids;
}

void ReportView::select(const QString &reportId)
{
    const QModelIndex index =
        m_sorted.mapFromSource(m_list.index(m_list.rowOf(reportId), ReportList::Title));
    if (!index.isValid())
        return;
    setCurrentIndex(index);
    selectionModel()->select(index,
                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index);
}

void ReportView::selectFirst()
{
    setCurrentIndex(m_sorted.index(0, 0));
}

void ReportView::setOffers(const QStringList &offers)
{
    qDeleteAll(m_offers);
    m_offers.clear();
    auto *layout = static_cast<QVBoxLayout *>(m_hint->layout());
    QWidget *before = m_addButton;
    for (const QString &offer : offers) {
        auto *button = new QPushButton(offer);
        button->setObjectName(QStringLiteral("cmdOffer%1").arg(m_offers.size()));
        button->setToolTip(QStringLiteral("Shows the report in its editor: nothing is saved yet"));
        layout->insertWidget(layout->indexOf(before) + 1, button, 0, Qt::AlignHCenter);
        setTabOrder(before, button);
        connect(button, &QPushButton::clicked, this,
                [this, number = static_cast<int>(m_offers.size())] { Q_EMIT offerChosen(number); });
        m_offers.append(button);
        before = button;
    }
}

void ReportView::showHint()
{
    const bool isEmpty = m_sorted.rowCount() == 0;
    QWidget *vanishing = isEmpty ? static_cast<QWidget *>(this) : m_addButton;
    QWidget *appearing = isEmpty ? static_cast<QWidget *>(m_addButton) : this;
    const bool hadFocus = window()->focusWidget() == vanishing;
    m_hint->setVisible(isEmpty);
    if (hadFocus)
        appearing->setFocus();
    m_hint->setGeometry(viewport()->rect());
}

/// In a narrow window names are shortened first, then columns give way, so that how a report ended
/// and when it is next due are always in sight.
void ReportView::fitColumns()
{
    const QScopedValueRollback fitting(m_isFitting, true);
    QList<int> widths = m_wanted;
    const int character = fontMetrics().averageCharWidth();
    // The last section stretches: what it needs counts, not what it has.
    widths[ReportList::NextRun] = std::min(widths[ReportList::NextRun], 18 * character);
    int excess = std::accumulate(widths.begin(), widths.end(), 0) - viewport()->width();
    const auto take = [&](int column, int least) {
        const int taken = std::clamp(excess, 0, std::max(widths[column] - least, 0));
        widths[column] -= taken;
        excess -= taken;
    };
    take(ReportList::Schedules, 10 * character);
    take(ReportList::Chart, 10 * character);
    take(ReportList::Title, 16 * character);
    take(ReportList::LastRun, 17 * character);
    take(ReportList::Result, 11 * character);
    for (const int column :
         {ReportList::Chart, ReportList::Schedules, ReportList::Devices, ReportList::LastRun}) {
        if (excess > 0)
            take(column, 0);
    }
    for (int column = 0; column <= ReportList::NextRun; ++column) {
        setColumnHidden(column, widths[column] == 0);
        if (widths[column] > 0)
            setColumnWidth(column, widths[column]);
    }
}

void ReportView::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    fitColumns();
    m_hint->setGeometry(viewport()->rect());
}

void ReportView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    Q_EMIT selectionMoved();
}
