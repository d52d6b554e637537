#include "ui/editors/MailTest.h"

#include "mail/MailRun.h"
#include "ui/common/Widgets.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {

const QString sendText = QStringLiteral("Se&nd Test");
const QString cancelText = QStringLiteral("Ca&ncel Test");

} // namespace

MailTest::MailTest(QWidget *parent)
    : QGroupBox(QStringLiteral("Test"), parent)
    , txtRecipient(new QLineEdit)
    , cmdTest(newButton(QStringLiteral("cmdTest"), sendText,
                        QStringLiteral("Sends a short message with the settings above; they need "
                                       "not be saved for it")))
    , m_resultIcon(newWarningIcon())
    , lblResult(newTextLabel(QStringLiteral("lblResult"), 3))
{
    txtRecipient->setObjectName(QStringLiteral("txtRecipient"));
    txtRecipient->setToolTip(QStringLiteral("Who gets the message; empty: the sender"));
    lblResult->setAccessibleName(QStringLiteral("Result of the test"));
    auto *caption = new QLabel(QStringLiteral("T&est message to:"));
    caption->setBuddy(txtRecipient);
    auto *layout = new QGridLayout(this);
    layout->addWidget(caption, 0, 0);
    layout->addWidget(txtRecipient, 0, 1);
    layout->addWidget(cmdTest, 0, 2);
    auto *result = new QHBoxLayout;
    result->addWidget(m_resultIcon, 0, Qt::AlignTop);
    result->addWidget(lblResult, 1);
    layout->addLayout(result, 1, 0, 1, 3);
    layout->setColumnStretch(1, 1);
    connect(cmdTest, &QPushButton::clicked, this, &MailTest::startOrCancel);
    m_resultIcon->hide();
    m_clock.setInterval(200ms);
    connect(&m_clock, &QTimer::timeout, this, &MailTest::showCountdown);
}

void MailTest::setUsualRecipient(const QString &from)
{
    txtRecipient->setPlaceholderText(from);
}

void MailTest::showResult(const QString &text, bool isFault)
{
    m_resultIcon->setVisible(isFault);
    lblResult->setText(text);
}

void MailTest::startOrCancel()
{
    if (!m_trial.isBusy()) {
        Q_EMIT requested();
        return;
    }
    m_trial.abandon();
    setRunning(false);
    showResult(QStringLiteral("The test was cancelled."));
}

void MailTest::start(const MailServer &server, const std::optional<QString> &secret)
{
    const QString entered = txtRecipient->text().trimmed();
    const QString recipient = entered.isEmpty() ? server.from : entered;
    m_server = server;
    m_silence.start();
    m_trial.start(
        [this, server, secret, recipient](const Background::Link &link) {
            const Delivery delivery = sendTestMail(
                server, secret, recipient, [&link] { return link.isAbandoned(); },
                [this, &link] { link.deliver([this] { m_silence.start(); }); });
            link.deliver([this, recipient, delivery] { end(recipient, delivery); });
        },
        [this](const QString &error) {
            setRunning(false);
            showResult(QLatin1String("Not sent. ") + error, true);
        });
    setRunning(true);
    showCountdown();
}

void MailTest::showCountdown()
{
    const qint64 left = m_server.timeout - m_silence.elapsed() / 1000;
    showResult(QStringLiteral("Talking to %1, which has %2 seconds left to answer.")
                   .arg(m_server.host)
                   .arg(std::max<qint64>(0, left)));
}

void MailTest::end(const QString &recipient, const Delivery &delivery)
{
    setRunning(false);
    if (delivery.isSent())
        showResult(
            QStringLiteral("Sent. The server has taken the message for %1. If it is not there in "
                           "a few minutes, look for it among the junk mail.")
                .arg(recipient));
    else
        showResult(QLatin1String("Not sent. ") + delivery.text, true);
}

void MailTest::setRunning(bool running)
{
    cmdTest->setText(running ? cancelText : sendText);
    if (running)
        m_clock.start();
    else
        m_clock.stop();
}
