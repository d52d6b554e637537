#include "core/Error.h"
#include "core/State.h"
#include "support/Sandbox.h"
#include "ui/EditorDialog.h"
#include "ui/UiState.h"

#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

/// An editor of one text.
class TextEditor : public EditorDialog
{
public:
    TextEditor()
        : EditorDialog("frmText", "index.html", nullptr)
        , text(new QLineEdit(content()))
    {
        auto *layout = new QVBoxLayout(content());
        layout->addWidget(text);
        markUnchanged();
    }
    QString contentText() const override { return text->text(); }
    QString inputError(QWidget *&field) const override
    {
        field = text;
        return text->text() == "bad" ? QStringLiteral("No such thing.") : QString();
    }
    QLineEdit *text;
};

/// Answers the next message box with the button, and keeps its text.
QString answered;
void answerNext(QMessageBox::StandardButton button)
{
    answered.clear();
    QTimer::singleShot(0, qApp, [button] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        answered = box->text();
        box->button(button)->click();
    });
}

} // namespace

class tst_EditorDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closing_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<bool>("asks");
        QTest::addColumn<bool>("staysOpen");
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("kept");
        QTest::newRow("nothing typed") << "" << QMessageBox::NoButton << false << false << "CANCEL"
                                       << "";
        QTest::newRow("discard") << "new" << QMessageBox::Discard << true << false << "CANCEL"
                                 << "";
        QTest::newRow("keep editing") << "new" << QMessageBox::Cancel << true << true << "CANCEL"
                                      << "";
        QTest::newRow("save") << "new" << QMessageBox::Save << true << false << "SAVE"
                              << "new";
    }
    void closing()
    {
        QFETCH(QString, typed);
        QFETCH(QMessageBox::StandardButton, answer);
        const Sandbox sandbox;
        TextEditor editor;
        QString kept;
        editor.setSaveAction([&] { kept = editor.text->text(); });
        editor.show();
        QTest::keyClicks(editor.text, typed);
        answerNext(answer);
        QTest::keyClick(&editor, Qt::Key_Escape);
        QTest::qWait(1);
        QTEST(!answered.isEmpty(), "asks");
        QTEST(editor.isVisible(), "staysOpen");
        QTEST(editor.tag(), "tag");
        QTEST(kept, "kept");
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
        editor.show();
        QTest::keyClicks(editor.text, "precious");
        answerNext(QMessageBox::Ok);
        QTest::mouseClick(editor.findChild<QPushButton *>("cmdOK"), Qt::LeftButton);
        QVERIFY(answered.contains("No space left for 'x.XML'"));
        QVERIFY(editor.isVisible());
        QCOMPARE(editor.text->text(), QString("precious"));
        QVERIFY(editor.hasChanges());
        fails = false;
        QTest::mouseClick(editor.findChild<QPushButton *>("cmdOK"), Qt::LeftButton);
        QVERIFY(!editor.isVisible());
        QCOMPARE(editor.tag(), QString("SAVE"));
    }

    void inputErrorsAreNotSaved()
    {
        const Sandbox sandbox;
        TextEditor editor;
        editor.setSaveAction([] { QFAIL("saved"); });
        editor.show();
        QTest::keyClicks(editor.text, "bad");
        answerNext(QMessageBox::Ok);
        QTest::keyClick(editor.text, Qt::Key_Return);
        QCOMPARE(answered, QString("No such thing."));
        QVERIFY(editor.isVisible());
    }

    void layoutsComeBack()
    {
        const Sandbox sandbox;
        gGraphDataPath = sandbox.path() + '/';
        const auto window = [] {
            auto made = std::make_unique<QSplitter>();
            made->setObjectName("frmLayout");
            auto *tree = new QTreeWidget;
            tree->setObjectName("lvTree");
            tree->setColumnCount(3);
            tree->setSortingEnabled(true);
            auto *inner = new QSplitter(Qt::Vertical);
            inner->setObjectName("sspInner");
            inner->addWidget(tree);
            inner->addWidget(new QTreeWidget);
            made->addWidget(inner);
            made->resize(500, 400);
            return made;
        };
        {
            const auto first = window();
            QVERIFY(!restoreWindowState(first.get()));
            first->setGeometry(40, 50, 620, 480);
            first->show();
            auto *tree = first->findChild<QTreeWidget *>("lvTree");
            tree->header()->resizeSection(1, 177);
            tree->header()->moveSection(0, 1);
            tree->sortByColumn(1, Qt::DescendingOrder);
            first->findChild<QSplitter *>("sspInner")->setSizes({300, 100});
            saveWindowState(first.get());
        }
        const auto second = window();
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
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<bool>("known");
        const QByteArray form(
            "<UISTATE><VTRGRAPHER><WINDOW Name='frmOdd' %/></VTRGRAPHER></UISTATE>");
        const auto with = [&form](const char *attributes) {
            return QByteArray(form).replace('%', attributes);
        };
        QTest::newRow("damaged") << QByteArray("<UISTATE><VTR") << false;
        QTest::newRow("of another window")
            << with("Width='300' Height='200'").replace("frmOdd", "frmEven") << false;
        QTest::newRow("numbers beyond sense")
            << with("Left='99999999999' Width='5' Height='5'") << false;
        QTest::newRow("vanished screen")
            << with("Left='-9000' Top='7000' Width='300' Height='200'") << true;
        QTest::newRow("title bar above the screen")
            << with("Left='10' Top='-150' Width='300' Height='200'") << true;
        QTest::newRow("larger than any screen")
            << with("Left='5000' Top='0' Width='20000' Height='20000'") << true;
    }
    void oddLayoutFiles()
    {
        QFETCH(QByteArray, file);
        const Sandbox sandbox;
        gGraphDataPath = sandbox.path() + '/';
        sandbox.write("UISTATE.XML", file);
        QWidget window;
        window.setObjectName("frmOdd");
        QFETCH(bool, known);
        QCOMPARE(restoreWindowState(&window), known);
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QVERIFY(!known || screen.contains(window.geometry()));
        saveWindowState(&window); // a damaged file is replaced
        QVERIFY(restoreWindowState(&window));
    }
};

QTEST_MAIN(tst_EditorDialog)
#include "tst_EditorDialog.moc"
