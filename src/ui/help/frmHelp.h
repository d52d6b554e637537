#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QTextBrowser;

/// The help viewer: a list of the pages, narrowed by words to search for, beside the page shown.
class frmHelp : public QDialog
{
    Q_OBJECT

public:
    /// Reads the pages of a folder. Throws Error naming the folder when it has none.
    frmHelp(const QString &folder, QWidget *parent);

    /// Shows a page ("schedules.html#presets") and the window itself.
    void openPage(const QString &page);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void done(int result) override;

private:
    void readPages(const QString &folder);
    void search(const QString &text);
    void markFound();
    /// Null when there is no such page.
    QListWidgetItem *itemOf(const QString &file) const;

    QLineEdit *m_search;
    QListWidget *m_list; ///< hides the pages that the search does not find
    QLabel *m_notFound;
    QTextBrowser *m_browser;
};
