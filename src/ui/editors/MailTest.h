#pragma once

#include "mail/SmtpSender.h"
#include "ui/common/Background.h"

#include <QElapsedTimer>
#include <QGroupBox>
#include <QTimer>

#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

/// Sends a test message with the settings as they are in the fields, and says how that ended. Its
/// button cancels it meanwhile. A time-out counts down visibly, anew with each answer of the
/// server.
class MailTest : public QGroupBox
{
    Q_OBJECT

public:
    explicit MailTest(QWidget *parent = nullptr);

    /// Who gets the message unless the user says otherwise: `from` of the settings.
    void setUsualRecipient(const QString &from);

    /// Starts the sending, as an answer to requested(). `secret`: the password or access token.
    void start(const MailServer &server, const std::optional<QString> &secret);

    /// Puts a text in place of the result.
    void showResult(const QString &text, bool isFault = false);

Q_SIGNALS:
    /// The button was clicked; whoever knows the settings calls start() or showResult().
    void requested();

private:
    void startOrCancel();
    void showCountdown();
    void end(const QString &recipient, const Delivery &delivery);
    void setRunning(bool running);

    QLineEdit *txtRecipient;
    QPushButton *cmdTest;
    QLabel *m_resultIcon;
    QLabel *lblResult;
    QTimer m_clock;
    QElapsedTimer m_silence; ///< of the server
    MailServer m_server;     ///< that is tried
    Background m_trial;
};
