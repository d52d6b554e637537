#include "base/Clock.h"
#include "base/Error.h"
#include "config/Program.h"
#include "config/StartUp.h"
#include "database/Connection.h"
#include "demo/MonitoringData.h"
#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/common/UiState.h"
#include "ui/editors/EditorDialog.h"
#include "ui/main/frmAutomate.h"
#include "ui/main/frmDatabase.h"
#include "ui/main/frmOutputPath.h"

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

const QString usual = "%%app.path%%\\Reports";
const QString configuration = "VTRGConfigV6.XML";
using Buttons = QList<QMessageBox::StandardButton>;

} // namespace

class tst_Dialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closing_data()
    {
        const Rows<QString, QMessageBox::StandardButton, bool> row("typed", "answer", "staysOpen");
        row("nothing typed", "", QMessageBox::NoButton, false);
        row("discard", "new", QMessageBox::Discard, false);
        row("keep editing", "new", QMessageBox::Cancel, true);
        row("save", "new", QMessageBox::Save, false);
    }
    void closing()
    {
        QFETCH(QString, typed);
        QFETCH(QMessageBox::StandardButton, answer);
        const Sandbox sandbox;
        TextEditor editor;
        QString kept;
        editor.setSaveAction([&] { kept = editor.text->text(); });
        QTest::keyClicks(editor.text, typed);
        Answers answers;
        if (answer != QMessageBox::NoButton)
            answers.click(answer);
        QTest::keyClick(&editor, Qt::Key_Escape);
        QTEST(editor.isVisible(), "staysOpen");
        QCOMPARE(editor.tag(), QString(answer == QMessageBox::Save ? "SAVE" : "CANCEL"));
        QCOMPARE(kept, QString(answer == QMessageBox::Save ? "new" : ""));
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

    void oddLayoutFiles_data()
    {
        const Rows<QByteArray, bool> row("file", "known");
        row("damaged", "<UISTATE><VTR", false);
        row("in numbers, as earlier versions wrote it",
            "<UISTATE><VTRGRAPHER><WINDOW Name='frmOdd' Width='9'/></VTRGRAPHER></UISTATE>", true);
    }
    void oddLayoutFiles()
    {
        QFETCH(QByteArray, file);
        QFETCH(bool, known);
        const Sandbox sandbox;
        program().gGraphDataPath = sandbox.path() + '/';
        sandbox.write("UISTATE.XML", file);
        QWidget window;
        window.setObjectName("frmOdd");
        window.resize(200, 100);
        QCOMPARE(restoreWindowState(&window), known);
        QCOMPARE(window.size(), QSize(200, 100));
        saveWindowState(&window); // a damaged file is replaced
        QVERIFY(restoreWindowState(&window));
    }

    void registersUnderTheAccount_data()
    {
        const QString mismatch = "The password entries do not match";
        const Rows<QString, QString, bool, QString> row("password", "verify", "fails", "says");
        row("alike", "Secret 1", "Secret 1", false, "Scheduled task has been added.");
        row("another case", "Secret 1", "secret 1", false, mismatch);
        row("one empty", "Secret 1", "", false, mismatch);
        row("scheduler fails", "a", "a", true, "could not be added.\n\n[70] no rights");
    }
    void registersUnderTheAccount()
    {
        QFETCH(QString, password);
        QFETCH(QString, verify);
        QFETCH(bool, fails);
        QFETCH(QString, says);
        const bool saves = says.endsWith("added.");
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        scheduler.fails = fails;
        frmAutomate dialog(scheduler, {"--home", "/srv/my graphs"});
        dialog.show();
        control<QLineEdit>(dialog, "txtUserName")->setText("OFFICE\\ann");
        QTest::keyClicks(control<QLineEdit>(dialog, "txtPassword"), password);
        QTest::keyClicks(control<QLineEdit>(dialog, "txtVerify"), verify);
        Answers answers;
        answers.click(QMessageBox::Ok);
        QTest::keyClick(&dialog, Qt::Key_Return);
        QVERIFY2(answers.said.value(0).contains(says), qPrintable(answers.said.join('|')));
        QCOMPARE(dialog.tag(), QString(saves ? "SAVE" : "CANCEL"));
        QCOMPARE(dialog.isVisible(), !saves);
        QCOMPARE(scheduler.saved.user, QString(saves ? "OFFICE\\ann" : ""));
        QCOMPARE(scheduler.saved.password, saves ? password : QString());
        QCOMPARE(scheduler.saved.parameters.mid(1),
                 saves ? QStringList({"--home", "/srv/my graphs"}) : QStringList());
    }

    void asksForNoAccountWhereNoneIsNeeded()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        scheduler.takesAccount = false;
        frmAutomate dialog(scheduler, {});
        dialog.show();
        QVERIFY(!control<QLineEdit>(dialog, "txtPassword")->isVisible());
        Answers answers;
        answers.click(QMessageBox::Ok);
        dialog.accept();
        QVERIFY(scheduler.list == "VantrelGraphTool\n" && scheduler.saved.user.isEmpty());
    }

    void savesTheOutputPath_data()
    {
        const auto yes = QMessageBox::Yes;
        const auto ok = QMessageBox::Ok;
        // "~" stands for the sandbox; asks: part of what the last message box says
        const Rows<QString, Buttons, QString, bool> row("typed", "answers", "asks", "saved");
        row("folder that is there", " ~/there ", {}, "", true);
        row("new folder", "~/there/deep", {yes}, "Create it?", true);
        row("new folder declined", "~/new", {QMessageBox::No}, "Create it?", false);
        row("nothing", " ", {ok}, "Enter the folder", false);
        row("below the program's folder", "there", {}, "", true);
#ifndef Q_OS_WIN
        row("drive", "C:\\there", {ok}, "a drive or a network share of Windows", false);
#endif
        row("below a file", "~/file/below", {yes, ok}, "cannot be written", false);
    }
    void savesTheOutputPath()
    {
        QFETCH(QString, typed);
        QFETCH(Buttons, answers);
        QFETCH(QString, asks);
        QFETCH(bool, saved);
        const Sandbox sandbox;
        QDir(sandbox.path()).mkdir("there");
        sandbox.write("file", "x");
        gConfig().storedOutput = usual;
        typed.replace('~', sandbox.path());
        Controls<frmOutputPath> dialog;
        dialog.show();
        auto *txtOutputPath = dialog.find<QLineEdit>("txtOutputPath");
        QTest::keyClicks(txtOutputPath, typed); // over what is there
        Answers user;
        for (const QMessageBox::StandardButton answer : answers)
            user.click(answer);
        QTest::keyClick(txtOutputPath, Qt::Key_Return);
        QCOMPARE(user.said.size(), answers.size());
        QVERIFY2(user.said.value(answers.size() - 1).contains(asks),
                 qPrintable(user.said.join('|')));
        QCOMPARE(dialog.tag(), QString(saved ? "SAVE" : "CANCEL"));
        QCOMPARE(dialog.isVisible(), !saved);
        QCOMPARE(gConfig().storedOutput, saved ? typed.trimmed() : usual);
        QCOMPARE(sandbox.names().contains(configuration), saved);
        const QDir folder(nativePath(gConfig().PTH_Output()));
        QCOMPARE(folder.exists(), saved);
        QVERIFY(folder.entryList(QDir::Files | QDir::Hidden).isEmpty()); // of the trial
    }

    /// What a newcomer does: name the file, see what it holds, save; and what a server needs.
    void database()
    {
        const Sandbox sandbox;
        sandbox.write("VantrelV6.Config",
                      "<P a='1' DataPath='" + sandbox.path("none").toUtf8() + "'/>");
        sandbox.write("data/x", "");
        demo::writeMonitoringData(sandbox.path("data/VTRGData.MDB"),
                                  demo::planMonitoring({3, 2, 1, 900, currentInstant() / 1000, 1}));
        InitGrapher();
        frmDatabase dialog;
        dialog.show();
        const auto result = [&dialog] { return control<QLabel>(dialog, "lblResult")->text(); };
        QTRY_VERIFY(result().contains("[53]")); // tried by itself
        control<QLineEdit>(dialog, "txtFolder")->setText(sandbox.path("data/VTRGData.MDB"));
        QTRY_VERIFY2(result().startsWith("Found: 3 devices, "), qPrintable(result()));
        QTRY_VERIFY(result().contains("Newest sample: "));
        dialog.accept();
        QCOMPARE(dialog.tag(), QString("SAVE"));
        QCOMPARE(databaseSource().connect()->inventory()->devices().size(), size_t(3));
        QVERIFY(sandbox.read("VantrelV6.Config").startsWith("<P a='1' DataPath='"));

        frmDatabase server;
        server.show();
        control<QComboBox>(server, "cboKind")->setCurrentIndex(1);
        QVERIFY(control<QCheckBox>(server, "chkEncrypt")->isChecked());
        control<QLineEdit>(server, "txtServer")->setText("127.0.0.1,9");
        control<QLineEdit>(server, "txtUser")->setText("u");
        control<QLineEdit>(server, "txtPassword")->setText("se;cret");
        auto *test = control<QPushButton>(server, "cmdTest");
        test->click();
        QVERIFY(test->text().startsWith("S&top")); // and the window goes on
        test->click();
        QCOMPARE(control<QLabel>(server, "lblResult")->text(), QString("The test was stopped."));
        server.accept();
        QCOMPARE(program().gSQLConnect,
                 QString("SERVER={127.0.0.1,9};UID=u;PWD={se;cret};Encrypt=Yes;"));
        QVERIFY(!databaseSource().name.contains("cret"));
    }
};

QTEST_MAIN(tst_Dialogs)
#include "tst_Dialogs.moc"
