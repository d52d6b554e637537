#include "core/Error.h"
#include "core/State.h"
#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/EditorDialog.h"
#include "ui/UiState.h"

#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
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
        editor.setSaveAction([] { throw Error(DiskFull, "No space left for 'x.XML'"); });
        QTest::keyClicks(editor.text, "precious");
        Answers answers;
        answers.click(QMessageBox::Ok);
        auto *cmdOK = editor.findChild<QPushButton *>("cmdOK");
        cmdOK->click();
        QVERIFY(answers.said.value(0).contains("No space left for 'x.XML'"));
        QVERIFY(editor.isVisible() && editor.hasChanges());
        QCOMPARE(editor.text->text(), QString("precious"));
        editor.setSaveAction([] {});
        cmdOK->click();
        QCOMPARE(editor.tag(), QString("SAVE"));
    }

    void fitsItsScreen()
    {
        const Sandbox sandbox;
        for (const QSize content : {QSize(600, 650), QSize(2000, 2000)}) { // of 800 by 800
            const TextEditor editor(content);
            const auto *cmdOK = editor.findChild<QPushButton *>("cmdOK");
            QVERIFY(editor.screen()->availableGeometry().contains(editor.frameGeometry()));
            QCOMPARE(cmdOK->visibleRegion().boundingRect(), cmdOK->rect());
            QCoreApplication::processEvents(); // layouts settle
            const QRect shown = editor.text->visibleRegion().boundingRect();
            QCOMPARE(shown == editor.text->rect(), content.width() == 600);
        }
    }

    void oddLayoutFiles_data()
    {
        const QByteArray begin("<UISTATE><VTRGRAPHER><WINDOW Name='frm");
        const QByteArray end("/></VTRGRAPHER></UISTATE>");
        const Rows<QByteArray, bool, QSize> row("file", "known", "size");
        row("damaged", "<UISTATE><VTR", false, {200, 100});
        row("by an earlier version", begin + "Odd' Left='9' Width='300' Height='250'" + end, true,
            {300, 250});
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
