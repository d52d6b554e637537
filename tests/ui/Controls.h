#pragma once

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMetaProperty>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>
#include <QWheelEvent>

/// A control by its name; a window without it ends the test.
template <typename T>
T *control(const QWidget &window, const char *name)
{
    T *found = window.findChild<T *>(QLatin1String(name));
    if (!found)
        qFatal("there is no control '%s'", name);
    return found;
}

inline void turnWheelOver(QWidget *widget)
{
    const QPointF center = widget->rect().center();
    QWheelEvent wheel(center, widget->mapToGlobal(center), {}, {0, -120}, {}, {}, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(widget, &wheel);
}

/// An editor with what its users and its owner do to it.
template <typename Dialog>
struct Controls : Dialog
{
    using Dialog::Dialog;

    template <typename T>
    T *find(const char *name) const
    {
        return control<T>(*this, name);
    }
    QString text(const char *label) const { return find<QLabel>(label)->text(); }
    void click(const char *button) const { find<QAbstractButton>(button)->click(); }
    void open()
    {
        this->show();
        QVERIFY(QTest::qWaitForWindowActive(this));
    }
    template <typename Definition>
    Definition stored(Definition into) const
    {
        this->store(into);
        return into;
    }
    /// Enters into every field what another editor shows.
    void copyFields(const QWidget &from) const
    {
        for (const QWidget *shown : from.findChildren<QWidget *>()) {
            auto *own = this->template findChild<QWidget *>(shown->objectName());
            const QMetaProperty value = shown->metaObject()->userProperty();
            const bool isField =
                !shown->objectName().startsWith(QLatin1String("qt_")); // or its part
            if (own && isField && !shown->objectName().isEmpty() && value.isWritable())
                value.write(own, value.read(shown));
        }
    }
    QString error() const
    {
        QWidget *field = nullptr;
        return this->inputError(field);
    }

    /// Every letter behind an "&" is one control's own.
    void checkLetters() const
    {
        QHash<QString, QString> taken;
        const auto take = [&taken](const QString &text) {
            const QString letter = QKeySequence::mnemonic(text).toString();
            if (letter.isEmpty())
                return;
            QVERIFY2(!taken.contains(letter), qPrintable(taken[letter] + " and " + text));
            taken.insert(letter, text);
        };
        for (const auto *label : this->template findChildren<QLabel *>()) {
            take(label->text());
            QVERIFY2(label->buddy() || QKeySequence::mnemonic(label->text()).isEmpty(),
                     qPrintable(label->text()));
        }
        for (const auto *button : this->template findChildren<QAbstractButton *>())
            take(button->text());
        QVERIFY(taken.size() > 10);
    }
};
