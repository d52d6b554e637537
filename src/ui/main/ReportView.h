#pragma once

#include "ui/common/NaturalSort.h"

#include <QTreeView>

class QPushButton;
class ReportList;

/// lvReports: the report list as the user sees it, sorted by a click on a header, with multiple
/// selection. While it is empty it says what to do first and has a button for that. Reports are
/// identified by their ReportID.
class ReportView : public QTreeView
{
    Q_OBJECT

public:
    explicit ReportView(ReportList &list, QWidget *parent = nullptr);

    /// In the order of the rows shown.
    QStringList selectedIds() const;

    /// Selects only this row and scrolls to it.
    void select(const QString &reportId);

    /// Selects the first row shown, if there is one.
    void selectFirst();

    /// The button shown in an empty list.
    QPushButton *addButton() const { return m_addButton; }

    /// Texts of further buttons below it.
    void setOffers(const QStringList &offers);

Q_SIGNALS:
    void selectionMoved();
    void offerChosen(int offer);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;

private:
    void showHint();
    void fitColumns();

    ReportList &m_list;
    QList<int> m_wanted; ///< widths of the columns, where there is room for all
    bool m_isFitting = false;
    NaturalSortModel m_sorted;
    QWidget *m_hint;
    QPushButton *m_addButton;
    QList<QPushButton *> m_offers;
};
