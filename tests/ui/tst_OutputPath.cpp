#include "support/Answers.h"
#include "support/Sandbox.h"
#include "ui/OutputPath.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>

class tst_OutputPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saves_data()
    {
        QTest::addColumn<QString>("typed"); // "~" stands for the sandbox
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("asks"); // part of what the message box says
        QTest::addColumn<bool>("saved");
        const int none = QMessageBox::NoButton;
        QTest::newRow("folder that is there") << "~/there" << none << "" << true;
        QTest::newRow("blanks around it") << "  ~/there " << none << "" << true;
        QTest::newRow("program's folder") << "%%app.path%%\\there" << none << "" << true;
        QTest::newRow("new folder")
            << "~/new/deep" << int(QMessageBox::Yes) << "Create it?" << true;
        QTest::newRow("new folder declined")
            << "~/new/deep" << int(QMessageBox::No) << "Create it?" << false;
        QTest::newRow("nothing") << " " << int(QMessageBox::Ok) << "Enter the folder" << false;
        QTest::newRow("half a path") << "Reports" << int(QMessageBox::Ok) << "whole path" << false;
    }
    void saves()
    {
        QFETCH(QString, typed);
        QFETCH(int, answer);
        QFETCH(QString, asks);
        QFETCH(bool, saved);
        const Sandbox sandbox;
        QDir(sandbox.path()).mkdir("there");
        gConfig->storedOutput = "%%app.path%%\\Reports";
        typed.replace('~', sandbox.path());
        frmOutputPath dialog;
        dialog.show();
        auto *txtOutputPath = dialog.findChild<QLineEdit *>("txtOutputPath");
        QCOMPARE(txtOutputPath->text(), gConfig->storedOutput);
        txtOutputPath->clear();
        QTest::keyClicks(txtOutputPath, typed);
        Answers answers;
        answers.add([](QWidget &) {});
        if (answer != QMessageBox::NoButton)
            answers.click(QMessageBox::StandardButton(answer));
        QTest::qWait(20);
        QTest::keyClick(txtOutputPath, Qt::Key_Return);
        QCOMPARE(answers.said.join('|').isEmpty(), asks.isEmpty());
        QVERIFY2(answers.said.join('|').contains(asks), qPrintable(answers.said.join('|')));
        QCOMPARE(dialog.tag(), QString(saved ? "SAVE" : "CANCEL"));
        QCOMPARE(dialog.isVisible(), !saved);
        QCOMPARE(gConfig->storedOutput, saved ? typed.trimmed() : "%%app.path%%\\Reports");
        QCOMPARE(sandbox.names().contains("VTRGConfigV6.XML"), saved);
        if (!saved)
            return;
        const QString folder = nativePath(gConfig->PTH_Output());
        QVERIFY(QDir(folder).exists());
        QVERIFY(QDir(folder).isEmpty()); // nothing is left of the trial
        QVERIFY(sandbox.read("VTRGConfigV6.XML").contains("there") ||
                sandbox.read("VTRGConfigV6.XML").contains("deep"));
    }

    void refusesAFolderThatCannotBeWritten()
    {
        const Sandbox sandbox;
        sandbox.write("file", "x");
        gConfig->storedOutput = "%%app.path%%\\Reports";
        frmOutputPath dialog;
        dialog.show();
        dialog.findChild<QLineEdit *>("txtOutputPath")->setText(sandbox.path("file/below"));
        Answers answers;
        answers.add([](QWidget &) {});
        answers.click(QMessageBox::Yes);
        answers.click(QMessageBox::Ok);
        QTest::qWait(20);
        dialog.accept();
        QVERIFY(answers.allDone());
        QVERIFY(answers.said.last().contains("cannot be written"));
        QVERIFY(dialog.isVisible());
        QCOMPARE(gConfig->storedOutput, QString("%%app.path%%\\Reports"));
    }

    void staysOpenWhenTheConfigurationCannotBeSaved()
    {
        const Sandbox sandbox;
        QDir(sandbox.path()).mkpath("VTRGConfigV6.XML/in the way");
        QDir(sandbox.path()).mkdir("there");
        gConfig->storedOutput = "%%app.path%%\\Reports";
        frmOutputPath dialog;
        dialog.show();
        auto *txtOutputPath = dialog.findChild<QLineEdit *>("txtOutputPath");
        txtOutputPath->setText(sandbox.path("there"));
        Answers answers;
        answers.add([](QWidget &) {});
        answers.click(QMessageBox::Ok);
        QTest::qWait(20);
        dialog.accept();
        QCOMPARE(answers.said.size(), 1);
        QVERIFY(dialog.isVisible());
        QCOMPARE(txtOutputPath->text(), sandbox.path("there"));
        QCOMPARE(gConfig->storedOutput, QString("%%app.path%%\\Reports"));
    }

    void showsTheFolderMeant()
    {
        const Sandbox sandbox;
        gConfig->storedOutput = "%%app.path%%\\Reports";
        const frmOutputPath dialog;
        QVERIFY(dialog.findChild<QLabel *>("lblFolder")
                    ->text()
                    .contains(QDir::toNativeSeparators(sandbox.path("Reports"))));
    }
};

QTEST_MAIN(tst_OutputPath)
#include "tst_OutputPath.moc"
