#pragma once

#include <QDialog>
#include <QString>

class QLineEdit;
class QListWidget;
class QTextBrowser;

/// The help viewer: a list of the pages, narrowed by words to search for, beside the page shown.
class frmHelp : public QDialog
{
    Q_OBJECT

public:
    /// Reads the pages of a folder. Throws Error naming the folder when it holds none.
    frmHelp(const QString &folder, QWidget *parent);

    /// Shows a page ("schedules.html#presets") and the window itself.
    void openPage(const QString &page);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void done(int result) override;

private:
    struct Page
    {
        QString file;
        QString title;
        QString text; ///< as read, for the search
    };

    void readPages(const QString &folder);
    void search(const QString &words);
    void markFound();
    void followPage(const QString &file);

    QList<Page> m_pages;
    QLineEdit *m_search;
    QListWidget *m_list;
    QTextBrowser *m_browser;
};
