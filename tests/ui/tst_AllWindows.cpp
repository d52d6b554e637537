#include "base/Clock.h"
#include "config/StartUp.h"
#include "definitions/Definitions.h"
#include "mail/MailSite.h"
#include "support/MemoryScheduler.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/editors/frmCustomRange.h"
#include "ui/editors/frmGraphDefEditor.h"
#include "ui/editors/frmMail.h"
#include "ui/editors/frmMailSubscription.h"
#include "ui/editors/frmPreview.h"
#include "ui/editors/frmReportDefEditor.h"
#include "ui/editors/frmScheduleDefEditor.h"
#include "ui/help/frmHelp.h"
#include "ui/main/DefinitionManager.h"
#include "ui/main/UndoSteps.h"
#include "ui/main/frmAutomate.h"
#include "ui/main/frmDatabase.h"
#include "ui/main/frmGrapherMain.h"
#include "ui/main/frmHistory.h"
#include "ui/main/frmOutputPath.h"
#include "ui/main/frmVersions.h"

#include <QAccessible>
#include <QMenuBar>
#include <QShortcut>

namespace {

using Maker = std::unique_ptr<QWidget> (*)();

platform::TaskScheduler &scheduler()
{
    static MemoryScheduler memory;
    return memory;
}

UndoSteps &undo()
{
    static UndoSteps steps;
    return steps;
}

template <typename Window>
std::unique_ptr<QWidget> make()
{
    return std::make_unique<Window>();
}

QString letterOf(const QString &text)
{
    return QKeySequence::mnemonic(text).toString();
}

/// What a person calls a control.
QString nameOf(QWidget *widget)
{
    const QAccessibleInterface *shown = QAccessible::queryAccessibleInterface(widget);
    return shown ? shown->text(QAccessible::Name) : QString();
}

} // namespace

Q_DECLARE_METATYPE(Maker)

/// What holds for each window of the program.
class tst_AllWindows : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_box;

    static void eachWindow()
    {
        const Rows<Maker> row("make");
        row("main", [] {
            return std::unique_ptr<QWidget>(new frmGrapherMain(scheduler(), QStringList()));
        });
        row("report", make<frmReportDefEditor>);
        row("chart", make<frmGraphDefEditor>);
        row("schedule", make<frmScheduleDefEditor>);
        row("range", [] {
            return std::unique_ptr<QWidget>(new frmCustomRange(clsGraphDef(), {"Servers"}));
        });
        row("charts", [] { return std::unique_ptr<QWidget>(new frmChartManager(undo())); });
        row("schedules", [] { return std::unique_ptr<QWidget>(new frmScheduleManager(undo())); });
        row("versions", make<frmVersions>);
        row("history", make<frmHistory>);
        row("preview",
            [] { return std::unique_ptr<QWidget>(new frmPreview(clsGraphDef(), {}, {})); });
        row("database", make<frmDatabase>);
        row("mail", [] { return std::unique_ptr<QWidget>(new frmMail(mailSite())); });
        row("subscription", make<frmMailSubscription>);
        row("output", make<frmOutputPath>);
        row("automate",
            [] { return std::unique_ptr<QWidget>(new frmAutomate(scheduler(), QStringList())); });
    }

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<Sandbox>();
        locateProgramFolder(m_box->path());
        InitGrapher();
        loadGrapherConfig();
        definitions().LoadChartDefs();
        definitions().LoadScheduleDefs();
    }

    /// Every control that the keyboard reaches has a name for those who hear it.
    void namesItsControls_data() { eachWindow(); }
    void namesItsControls()
    {
        QFETCH(Maker, make);
        const std::unique_ptr<QWidget> window = make();
        int controls = 0;
        for (QWidget *widget : window->findChildren<QWidget *>()) {
            const bool isPart = widget->objectName().startsWith("qt_") ||
                                qobject_cast<QAbstractSpinBox *>(widget->parentWidget()) ||
                                qobject_cast<QComboBox *>(widget->parentWidget()) ||
                                widget->window() != window.get();
            if (isPart || (widget->focusPolicy() & Qt::TabFocus) == 0)
                continue;
            ++controls;
            QVERIFY2(!nameOf(widget).trimmed().isEmpty(),
                     qPrintable(QString("%1 '%2'").arg(widget->metaObject()->className(),
                                                       widget->objectName())));
        }
        QVERIFY(controls > 1);
    }

    /// Every letter behind an "&" is one control's own, among those in sight at a time.
    void sharesNoLetters_data() { eachWindow(); }
    void sharesNoLetters()
    {
        QFETCH(Maker, make);
        const std::unique_ptr<QWidget> window = make();
        QHash<QString, QString> taken;
        const auto take = [&taken](const QString &text, QHash<QString, QString> &among) {
            const QString letter = letterOf(text);
            if (letter.isEmpty())
                return true;
            const bool isFree = !among.contains(letter);
            if (!isFree)
                qWarning("%s and %s", qPrintable(among[letter]), qPrintable(text));
            among.insert(letter, text);
            return isFree;
        };
        for (const auto *label : window->findChildren<QLabel *>())
            QVERIFY(!label->isVisibleTo(window.get()) || !label->buddy() ||
                    take(label->text(), taken));
        for (const auto *button : window->findChildren<QAbstractButton *>())
            QVERIFY(!button->isVisibleTo(window.get()) || take(button->text(), taken));
        if (auto *bar = window->findChild<QMenuBar *>()) {
            for (const QAction *menu : bar->actions()) {
                QVERIFY(take(menu->text(), taken));
                QHash<QString, QString> inMenu;
                for (const QAction *action :
                     menu->menu() ? menu->menu()->actions() : QList<QAction *>())
                    QVERIFY(take(action->text(), inMenu));
            }
        }
    }

    void hasHelp_data() { eachWindow(); }
    void hasHelp()
    {
        QFETCH(Maker, make);
        const std::unique_ptr<QWidget> window = make();
        const auto shortcuts = window->findChildren<QShortcut *>();
        const auto actions = window->findChildren<QAction *>();
        const auto isF1 = [](const auto *each) { return each->key() == QKeySequence(Qt::Key_F1); };
        const auto opensHelp = [](const QAction *each) {
            return each->shortcuts().contains(QKeySequence(Qt::Key_F1)) ||
                   each->shortcuts().contains(QKeySequence(QKeySequence::HelpContents));
        };
        QVERIFY(std::any_of(shortcuts.begin(), shortcuts.end(), isF1) ||
                std::any_of(actions.begin(), actions.end(), opensHelp));
    }
};

QTEST_MAIN(tst_AllWindows)
#include "tst_AllWindows.moc"
