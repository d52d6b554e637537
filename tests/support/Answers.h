#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTest>
#include <QTimer>

#include <functional>
#include <list>

/// Acts for the user on the modal windows that come up, one step each, and keeps what message boxes
/// say ("title: text"). A window that no step was given for is closed and fails the test, as a step
/// does that no window came up for; a window that is open before is left alone.
class Answers : public QObject
{
public:
    Answers()
    {
        if (QWidget *window = QApplication::activeModalWidget())
            handle(window);
        lookSoon();
    }
    ~Answers() override
    {
        if (!m_steps.empty())
            QTest::qFail("a window did not come up", __FILE__, __LINE__);
    }

    using Step = std::function<void(QWidget &window)>;
    void add(Step step) { m_steps.push_back(std::move(step)); }

    /// The next one is a message box: clicks a button in it.
    void click(QMessageBox::StandardButton button)
    {
        add([this, button](QWidget &window) {
            auto *box = qobject_cast<QMessageBox *>(&window);
            QAbstractButton *found = box ? box->button(button) : nullptr;
            if (found)
                found->click();
            else
                refuse(window);
        });
    }

    QStringList said;

private:
    void lookSoon()
    {
        QTimer::singleShot(2, this, [this] { look(); });
    }

    void look()
    {
        lookSoon(); // ahead of the step, which may open a window of its own and wait for that one
        QWidget *window = QApplication::activeModalWidget();
        if (!window || m_handled.contains(window) || !window->isVisible())
            return;
        handle(window);
        if (const auto *box = qobject_cast<QMessageBox *>(window))
            said.append(box->windowTitle() + QLatin1String(": ") + box->text());
        if (m_steps.empty()) {
            refuse(*window);
            return;
        }
        const Step step = std::move(m_steps.front());
        m_steps.pop_front();
        step(*window);
    }

    void handle(QWidget *window)
    {
        m_handled.insert(window);
        connect(window, &QObject::destroyed, this, [this, window] { m_handled.remove(window); });
    }

    void refuse(QWidget &window)
    {
        QTest::qFail(qPrintable("unexpected: " + window.windowTitle()), __FILE__, __LINE__);
        window.close();
    }

    std::list<Step> m_steps;
    QSet<QObject *> m_handled;
};
