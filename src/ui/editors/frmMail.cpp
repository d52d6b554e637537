#include "ui/editors/frmMail.h"

#include "base/Error.h"
#include "ui/editors/MailServerFields.h"
#include "ui/editors/MailTest.h"
#include "ui/editors/SubscriptionList.h"

#include <QTabWidget>
#include <QVBoxLayout>

frmMail::frmMail(MailSite site, QWidget *parent)
    : EditorDialog(QStringLiteral("frmMail"), QStringLiteral("mail.html"), parent)
    , m_site(std::move(site))
    , m_settings(MailSettings::load(m_site.settings))
    , m_pages(new QTabWidget)
    , m_server(new MailServerFields)
    , m_test(new MailTest)
    , m_subscriptions(new SubscriptionList)
{
    setWindowTitle(QStringLiteral("Mail"));
    auto *server = new QWidget;
    auto *serverLayout = new QVBoxLayout(server);
    serverLayout->addWidget(m_server);
    serverLayout->addWidget(m_test);
    serverLayout->addStretch(1);
    m_pages->setObjectName(QStringLiteral("tabMail"));
    m_pages->setAccessibleName(QStringLiteral("Mail settings"));
    m_pages->addTab(server, QStringLiteral("&Mail server"));
    m_pages->addTab(m_subscriptions, QStringLiteral("Su&bscriptions"));
    auto *layout = new QVBoxLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);

    m_server->load(m_settings.server, hasSecret());
    m_subscriptions->load(m_settings);
    const auto follow = [this] {
        MailServer entered;
        m_server->store(entered);
        m_test->setUsualRecipient(entered.from);
        showWarnings();
    };
    connect(m_server, &MailServerFields::changed, this, follow);
    connect(m_subscriptions, &SubscriptionList::changed, this, &frmMail::showWarnings);
    connect(m_test, &MailTest::requested, this, &frmMail::sendTest);
    setSaveAction([this] { save(); });
    follow();
    markUnchanged();
    const QSize warningLines(0, 2 * fontMetrics().lineSpacing());
    resize(QSize(110 * fontMetrics().averageCharWidth(), 0).expandedTo(sizeHint()) + warningLines);
}

/// A password that cannot be read, such as another account's, is said to be so and can be replaced.
bool frmMail::hasSecret()
{
    try {
        return readMailSecret(m_site).has_value();
    } catch (const Error &error) {
        m_test->showResult(QStringLiteral("The saved password cannot be used; type it anew. ") +
                               errorTail(error),
                           true);
        return false;
    }
}

void frmMail::store(MailSettings &settings) const
{
    m_server->store(settings.server);
    m_subscriptions->store(settings);
}

/// The password first: settings without theirs would let the next run fail.
void frmMail::save()
{
    const QString secret = m_server->typedSecret();
    if (!secret.isEmpty())
        saveMailSecret(m_site, secret);
    else if (m_server->forgetsSecret())
        removeMailSecret(m_site);
    store(m_settings);
    m_settings.save(m_site.settings);
}

void frmMail::sendTest()
{
    QWidget *field = nullptr;
    if (const QString error = m_server->inputError(field); !error.isEmpty()) {
        m_test->showResult(error, true);
        field->setFocus(Qt::OtherFocusReason);
        return;
    }
    MailServer server;
    m_server->store(server);
    try {
        const QString typed = m_server->typedSecret();
        m_test->start(server, typed.isEmpty() ? readMailSecret(m_site) : typed);
    } catch (const Error &error) {
        m_test->showResult(errorTail(error), true);
    }
}

QString frmMail::contentText() const
{
    return m_server->contentText() + u'\n' + m_subscriptions->contentText();
}

QString frmMail::inputError(QWidget *&field) const
{
    const QString error = m_server->inputError(field);
    return error.isEmpty() ? m_subscriptions->inputError(field) : error;
}

QStringList frmMail::warnings() const
{
    return m_server->warnings() + m_subscriptions->warnings();
}

/// Shows the page of the field that is wrong.
void frmMail::accept()
{
    QWidget *field = nullptr;
    if (!inputError(field).isEmpty()) {
        for (int page = 0; page < m_pages->count(); ++page) {
            if (m_pages->widget(page)->isAncestorOf(field))
                m_pages->setCurrentIndex(page);
        }
    }
    EditorDialog::accept();
}
