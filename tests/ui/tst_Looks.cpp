#include "ui/IndicatorStyle.h"
#include "ui/Widgets.h"

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTest>

namespace {

/// The greatest difference in lightness between an unchecked indicator and its background, of 255.
int contrast(const QStyle &style, QStyle::PrimitiveElement element, const QPalette &palette)
{
    QStyleOptionButton option;
    option.rect = QRect(0, 0, 14, 14);
    option.palette = palette;
    option.state = QStyle::State_Enabled | QStyle::State_Off;
    QImage image(option.rect.size(), QImage::Format_RGB32);
    const QColor window = palette.color(QPalette::Window);
    image.fill(window);
    QPainter painter(&image);
    style.drawPrimitive(element, &option, &painter);
    int most = 0;
    for (int i = 0; i < 14 * 14; ++i)
        most =
            std::max(most, qAbs(image.pixelColor(i % 14, i / 14).lightness() - window.lightness()));
    return most;
}

} // namespace

class tst_Looks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outlinesUncheckedIndicators()
    {
        const std::unique_ptr<QStyle> plain(QStyleFactory::create("Fusion"));
        const QPalette light(QColor(0xef, 0xef, 0xef));
        QPalette dark(QColor(0x35, 0x35, 0x35), QColor(0x2b, 0x2b, 0x2b));
        dark.setColor(QPalette::Base, QColor(0x1f, 0x1f, 0x1f));
        QApplication::setStyle("Fusion");
        installIndicatorStyle();
        const QStyle &ours = *QApplication::style();
        for (const auto element : {QStyle::PE_IndicatorCheckBox, QStyle::PE_IndicatorRadioButton}) {
            QVERIFY(contrast(ours, element, dark) > 90); // the plain one: less than 40
            QCOMPARE(contrast(ours, element, light), contrast(*plain, element, light));
        }
    }

    void wrapsToolTips()
    {
        for (const QString text : {"Cannot write <file> ", "/a-folder-with-a-long-name"}) {
            QLabel tip(wrappingToolTip(text.repeated(20))); // as tool tips are shown
            tip.setWordWrap(Qt::mightBeRichText(tip.text()));
            const int width = tip.sizeHint().width();
            QVERIFY2(width < 700, qPrintable(QString::number(width)));
            QVERIFY(tip.heightForWidth(width) > 2 * tip.fontMetrics().height());
        }
        QCOMPARE(wrappingToolTip({}), QString());
    }
};

QTEST_MAIN(tst_Looks)
#include "tst_Looks.moc"
