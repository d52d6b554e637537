#include "core/Error.h"
#include "core/State.h"
#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/EditorDialog.h"
#include "ui/UiState.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTest>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

/// An editor of one text.
class TextEditor : public EditorDialog
{
public:
    explicit TextEditor(const QSize &least = {})
        : EditorDialog("frmText", "index.html", nullptr)
        , text(new QLineEdit(content()))
    {
        auto *layout = new QVBoxLayout(content());
        layout->addWidget(text);
        text->setMinimumSize(least);
        markUnchanged();
        show();
    }
    QString contentText() const override { return text->text(); }
    QLineEdit *text;
};

std::unique_ptr<QSplitter> windowWithTree()
{
    auto made = std::make_unique<QSplitter>();
    made->setObjectName("frmLayout");
    auto *tree = new QTreeWidget;
    tree->setObjectName("lvTree");
    tree->setColumnCount(3);
    tree->setSortingEnabled(true);
    auto *inner = new QSplitter(Qt::Vertical, made.get());
    inner->setObjectName("sspInner");
    inner->addWidget(tree);
    inner->addWidget(new QTreeWidget);
    made->resize(500, 400);
    return made;
}

} // namespace

class tst_EditorDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closing_data()
    {
        const Rows<QString, QMessageBox::StandardButton, bool, QString> row("typed", "answer",
                                                                            "staysOpen", "saved");
        row("nothing typed", "", QMessageBox::NoButton, false, "");
        row("discard", "new", QMessageBox::Discard, false, "");
        row("keep editing", "new", QMessageBox::Cancel, true, "");
        row("save", "new", QMessageBox::Save, false, "new");
    }
    void closing()
    {
        QFETCH(QString, typed);
        QFETCH(QString, saved);
        QFETCH(QMessageBox::StandardButton, answer);
        const Sandbox sandbox;
        TextEditor editor;
        QString kept;
        editor.setSaveAction([&] { kept = editor.text->text(); });
        QTest::keyClicks(editor.text, typed);
        Answers answers;
        answers.click(answer);
        QTest::keyClick(&editor, Qt::Key_Escape);
        QCOMPARE(answers.allDone(), answer != QMessageBox::NoButton);
        QTEST(editor.isVisible(), "staysOpen");
        QCOMPARE(editor.tag(), QString(saved.isEmpty() ? "CANCEL" : "SAVE"));
        QCOMPARE(kept, saved);
    }

    void aFailedSaveKeepsWhatWasTyped()
    {
        const Sandbox sandbox;
        TextEditor editor;
        bool fails = true;
        editor.setSaveAction([&] {
            if (fails)
                throw Error(DiskFull, QStringLiteral("No space left for 'x.XML'"));
        });
        QTest::keyClicks(editor.text, "precious");
        Answers answers;
        answers.click(QMessageBox::Ok);
        auto *cmdOK = editor.findChild<QPushButton *>("cmdOK");
        cmdOK->click();
        QVERIFY(answers.said.value(0).contains("No space left for 'x.XML'"));
        QVERIFY(editor.isVisible());
        QCOMPARE(editor.text->text(), QString("precious"));
        QVERIFY(editor.hasChanges());
        fails = false;
        cmdOK->click();
        QVERIFY(!editor.isVisible());
        QCOMPARE(editor.tag(), QString("SAVE"));
    }

    void fitsItsScreen_data()
    {
        const Rows<QSize, bool> row("content", "isWhole");
        row("room for all", QSize(600, 650), true);
        row("too high", QSize(600, 900), false);
        row("too large", QSize(2000, 2000), false);
    }
    void fitsItsScreen()
    {
        QFETCH(QSize, content);
        const Sandbox sandbox;
        const TextEditor editor(content);
        const auto *cmdOK = editor.findChild<QPushButton *>("cmdOK");
        const QRect screen = editor.screen()->availableGeometry();
        QVERIFY(screen.contains(editor.frameGeometry())); // offscreen: 800 by 800
        QCOMPARE(cmdOK->visibleRegion().boundingRect(), cmdOK->rect());
        QCoreApplication::processEvents(); // layouts settle
        const QRect shown = editor.text->visibleRegion().boundingRect();
        QTEST(shown == editor.text->rect(), "isWhole");
    }

    void layoutsComeBack()
    {
        const Sandbox sandbox;
        gGraphDataPath = sandbox.path() + '/';
        const auto first = windowWithTree();
        QVERIFY(!restoreWindowState(first.get()));
        first->setGeometry(40, 50, 620, 480);
        first->show();
        auto *tree = first->findChild<QTreeWidget *>("lvTree");
        tree->header()->resizeSection(1, 177);
        tree->header()->moveSection(0, 1);
        tree->sortByColumn(1, Qt::DescendingOrder);
        first->findChild<QSplitter *>("sspInner")->setSizes({300, 100});
        saveWindowState(first.get());

        const auto second = windowWithTree();
        QVERIFY(restoreWindowState(second.get()));
        second->show();
        QCOMPARE(second->geometry(), QRect(40, 50, 620, 480));
        const auto *header = second->findChild<QTreeWidget *>("lvTree")->header();
        QCOMPARE(header->sectionSize(1), 177);
        QCOMPARE(header->visualIndex(0), 1);
        QCOMPARE(header->sortIndicatorSection(), 1);
        QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
        const QList<int> sizes = second->findChild<QSplitter *>("sspInner")->sizes();
        QVERIFY2(sizes[0] > 2 * sizes[1], qPrintable(QString::number(sizes[0])));
    }

    void oddLayoutFiles_data()
    {
        const QByteArray begin("<UISTATE><VTRGRAPHER><WINDOW Name='frm");
        const QByteArray end("/></VTRGRAPHER></UISTATE>");
        const Rows<QByteArray, bool, QSize> row("file", "known", "size");
        row("damaged", "<UISTATE><VTR", false, {200, 100});
        row("other window", begin + "Even' Width='300' Height='250'" + end, false, {200, 100});
        row("by an earlier version", begin + "Odd' Left='9' Width='300' Height='250'" + end, true,
            {300, 250});
        row("no placement", begin + "Odd' Geometry='nonsense'" + end, true, {200, 100});
        row("beyond sense", begin + "Odd' Width='99999999999' Height='5'" + end, true, {200, 100});
        row("larger than any screen", begin + "Odd' Width='20000' Height='300'" + end, true,
            {792, 300});
    }
    void oddLayoutFiles()
    {
        QFETCH(QByteArray, file);
        QFETCH(bool, known);
        const Sandbox sandbox;
        gGraphDataPath = sandbox.path() + '/';
        sandbox.write("UISTATE.XML", file);
        QWidget window;
        window.setObjectName("frmOdd");
        window.resize(200, 100);
        QCOMPARE(restoreWindowState(&window), known);
        QTEST(window.size(), "size");
        saveWindowState(&window); // a damaged file is replaced
        QVERIFY(restoreWindowState(&window));
    }
};

QTEST_MAIN(tst_EditorDialog)
#include "tst_EditorDialog.moc"
