#include "ui/help/frmHelp.h"

#include "base/Error.h"
#include "base/Files.h"
#include "ui/common/UiState.h"
#include "ui/help/HelpViewer.h"

#include <QAction>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRegularExpression>
#include <QSplitter>
#include <QStyle>
#include <QTextBrowser>
#include <QTextDocumentFragment>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

/// Colours of the window's own palette, so that pages follow a dark theme.
QString pageStyle(const QPalette &palette)
{
    return QStringLiteral("body { line-height: 140%; }"
                          "h1 { font-size: x-large; } h2 { font-size: large; margin-top: 18px; }"
                          "a { color: %1; } code, kbd { background-color: %2; }"
                          "th { text-align: left; } th, td { padding: 4px 14px 4px 0; }")
        .arg(palette.color(QPalette::Link).name(), palette.color(QPalette::AlternateBase).name());
}

constexpr int fileRole = Qt::UserRole;
constexpr int textRole = Qt::UserRole + 1; ///< what the search looks at

} // namespace

frmHelp::frmHelp(const QString &folder, QWidget *parent)
    : QDialog(parent)
    , m_search(new QLineEdit)
    , m_list(new QListWidget)
    , m_notFound(new QLabel(QStringLiteral("No page holds these words")))
    , m_browser(new QTextBrowser)
{
    setObjectName(QStringLiteral("frmHelp"));
    setWindowTitle(QStringLiteral("Vantrel Graphing Tool Help"));
    setWindowFlag(Qt::WindowMinMaxButtonsHint);
    readPages(folder);

    m_search->setObjectName(QStringLiteral("txtSearch"));
    m_search->setPlaceholderText(QStringLiteral("Search the help"));
    m_search->setClearButtonEnabled(true);
    m_list->setObjectName(QStringLiteral("lvPages"));
    m_list->setSpacing(2);
    m_browser->setObjectName(QStringLiteral("txtPage"));
    m_browser->setSearchPaths({folder});
    m_browser->setOpenLinks(false);
    m_browser->document()->setDocumentMargin(14);
    m_browser->document()->setDefaultStyleSheet(pageStyle(palette()));

    auto *tools = new QToolBar;
    QAction *back = tools->addAction(style()->standardIcon(QStyle::SP_ArrowBack),
                                     QStringLiteral("Back"), m_browser, &QTextBrowser::backward);
    back->setShortcut(QKeySequence::Back);
    back->setEnabled(false);
    QAction *forward =
        tools->addAction(style()->standardIcon(QStyle::SP_ArrowForward), QStringLiteral("Forward"),
                         m_browser, &QTextBrowser::forward);
    forward->setShortcut(QKeySequence::Forward);
    forward->setEnabled(false);
    auto *find = new QAction(this);
    find->setShortcut(QKeySequence::Find);
    addAction(find);

    auto *side = new QWidget;
    auto *sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(0, 0, 0, 0);
    sideLayout->addWidget(m_search);
    sideLayout->addWidget(m_notFound);
    sideLayout->addWidget(m_list);
    m_notFound->setWordWrap(true);
    m_notFound->hide();
    auto *splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("sspHelp"));
    splitter->addWidget(side);
    splitter->addWidget(m_browser);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({230, 640});
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tools);
    layout->addWidget(splitter, 1);
    resize(900, 640);
    restoreWindowState(this);

    connect(find, &QAction::triggered, m_search, [this] {
        m_search->setFocus();
        m_search->selectAll();
    });
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::sourceChanged, this, [this](const QUrl &url) {
        const QSignalBlocker quiet(m_list);
        m_list->setCurrentItem(itemOf(url.fileName()));
        markFound();
    });
    connect(m_browser, &QTextBrowser::anchorClicked, this, [this](const QUrl &url) {
        if (url.isRelative())
            m_browser->setSource(url);
        else
            QDesktopServices::openUrl(url);
    });
    connect(m_search, &QLineEdit::textChanged, this, &frmHelp::search);
    connect(m_list, &QListWidget::currentItemChanged, this, [this](const QListWidgetItem *item) {
        if (item)
            m_browser->setSource(QUrl(item->data(fileRole).toString()));
    });
    m_search->installEventFilter(this);
    m_search->setFocus();
}

/// Keys for reading a page, which do nothing in the search box, are passed from there to the page.
bool frmHelp::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_search || event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    const bool byPage = key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    const bool byLine = key == Qt::Key_Up || key == Qt::Key_Down;
    if (!byPage && !(byLine && m_search->text().isEmpty()))
        return QDialog::eventFilter(watched, event);
    return QCoreApplication::sendEvent(m_browser, event);
}

void frmHelp::readPages(const QString &folder)
{
    static const QRegularExpression titleForm(QStringLiteral("<title>([^<]*)</title>"));
    const QStringList files = QDir(folder).entryList({QStringLiteral("*.html")}, QDir::Files);
    for (const QString &file : files) {
        const QString html = readTextFile(folder + u'/' + file);
        const QString title = titleForm.match(html).captured(1);
        auto *item = new QListWidgetItem(title, m_list);
        item->setData(fileRole, file);
        item->setData(textRole, title + u' ' + QTextDocumentFragment::fromHtml(html).toPlainText());
    }
    if (files.isEmpty())
        throw Error(FileNotFound, QStringLiteral("There are no help pages in '%1'").arg(folder));
    m_list->sortItems();
    m_list->insertItem(0, m_list->takeItem(m_list->row(itemOf(helpContents))));
}

/// Lists the pages that contain every word.
void frmHelp::search(const QString &text)
{
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    bool isFound = false;
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem *item = m_list->item(row);
        const QString page = item->data(textRole).toString();
        item->setHidden(!std::all_of(words.begin(), words.end(), [&page](const QString &word) {
            return page.contains(word, Qt::CaseInsensitive);
        }));
        isFound |= !item->isHidden();
    }
    m_notFound->setVisible(!isFound);
    markFound();
}

/// Highlights the search words in the page shown.
void frmHelp::markFound()
{
    QList<QTextEdit::ExtraSelection> marks;
    QTextCharFormat format;
    format.setBackground(palette().highlight());
    format.setForeground(palette().highlightedText());
    for (const QString &word : m_search->text().split(u' ', Qt::SkipEmptyParts)) {
        QTextCursor cursor(m_browser->document());
        while (!(cursor = m_browser->document()->find(word, cursor)).isNull())
            marks.append({cursor, format});
    }
    m_browser->setExtraSelections(marks);
}

QListWidgetItem *frmHelp::itemOf(const QString &file) const
{
    const QModelIndex first = m_list->model()->index(0, 0);
    const QModelIndexList found =
        m_list->model()->match(first, fileRole, file, 1, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : m_list->item(found.first().row());
}

void frmHelp::openPage(const QString &page)
{
    m_browser->setSource(QUrl(page));
    show();
    raise();
    activateWindow();
}

void frmHelp::done(int result)
{
    saveWindowState(this);
    QDialog::done(result);
}
