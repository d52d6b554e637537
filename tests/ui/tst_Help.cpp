#include "base/Error.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/help/frmHelp.h"

#include <QListWidget>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextBrowser>

class tst_Help : public QObject
{
    Q_OBJECT

    const QString m_folder = shareFolder() + "/Help";

private Q_SLOTS:
    /// Every link of a page leads to a page or a place in it.
    void linksLeadSomewhere()
    {
        static const QRegularExpression link("href=\"([^\"#]*)(?:#([^\"]*))?\"");
        const QStringList files = QDir(m_folder).entryList({"*.html"});
        QVERIFY(files.size() >= 10);
        for (const QString &file : files) {
            const QString html = readTextFile(m_folder + '/' + file);
            QVERIFY2(html.contains("<title>"), qPrintable(file));
            for (const QRegularExpressionMatch &match : link.globalMatch(html)) {
                const QString target = match.captured(1).isEmpty() ? file : match.captured(1);
                QVERIFY2(files.contains(target), qPrintable(file + " to " + target));
                if (!match.captured(2).isEmpty())
                    QVERIFY(readTextFile(m_folder + '/' + target)
                                .contains("id=\"" + match.captured(2) + "\""));
            }
        }
    }

    void searchAndGo()
    {
        const Sandbox sandbox;
        frmHelp help(m_folder, nullptr);
        help.openPage("reading-reports.html");
        auto *list = control<QListWidget>(help, "lvPages");
        auto *page = control<QTextBrowser>(help, "txtPage");
        auto *search = control<QLineEdit>(help, "txtSearch");
        const auto shown = [list] {
            int count = 0;
            for (int row = 0; row < list->count(); ++row)
                count += list->isRowHidden(row) ? 0 : 1;
            return count;
        };
        QCOMPARE(list->currentItem()->text(), QString("Reading a report"));
        QTest::keyClicks(search, "percentile 95th");
        QVERIFY(shown() < list->count() && !list->currentItem()->isHidden());
        QVERIFY(page->toPlainText().contains("95th percentile"));
        QVERIFY(page->extraSelections().size() >= 2);
        search->setText("no such words anywhere");
        QCOMPARE(shown(), 0);
        search->clear();
        QCOMPARE(shown(), list->count());
        QVERIFY(page->extraSelections().isEmpty());
    }
};

QTEST_MAIN(tst_Help)
#include "tst_Help.moc"
