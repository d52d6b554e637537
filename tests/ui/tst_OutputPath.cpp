#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/OutputPath.h"

namespace {

const QString usual = "%%app.path%%\\Reports";
const QString configuration = "VTRGConfigV6.XML";
using Buttons = QList<QMessageBox::StandardButton>;

} // namespace

class tst_OutputPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saves_data()
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
    void saves()
    {
        QFETCH(QString, typed);
        QFETCH(Buttons, answers);
        QFETCH(QString, asks);
        QFETCH(bool, saved);
        const Sandbox sandbox;
        QDir(sandbox.path()).mkdir("there");
        sandbox.write("file", "x");
        gConfig->storedOutput = usual;
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
        QCOMPARE(gConfig->storedOutput, saved ? typed.trimmed() : usual);
        QCOMPARE(sandbox.names().contains(configuration), saved);
        if (!saved)
            return;
        QVERIFY(sandbox.read(configuration).contains("there"));
        const QDir folder(nativePath(gConfig->PTH_Output()));
        QVERIFY(folder.exists());
        QCOMPARE(folder.entryList(QDir::Files | QDir::Hidden), QStringList()); // of the trial
    }

    void staysOpenWhenTheConfigurationCannotBeSaved()
    {
        const Sandbox sandbox;
        QDir(sandbox.path()).mkpath(configuration + "/in the way");
        gConfig->storedOutput = usual;
        Controls<frmOutputPath> dialog;
        dialog.show();
        dialog.find<QLineEdit>("txtOutputPath")->setText(sandbox.path());
        Answers answers;
        answers.click(QMessageBox::Ok);
        dialog.click("cmdOK");
        QCOMPARE(answers.said.size(), 1);
        QVERIFY(dialog.isVisible());
        QCOMPARE(gConfig->storedOutput, usual);
    }
};

QTEST_MAIN(tst_OutputPath)
#include "tst_OutputPath.moc"
