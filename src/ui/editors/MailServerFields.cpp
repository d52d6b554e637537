#include "ui/editors/MailServerFields.h"

#include "base/Files.h"
#include "ui/common/Widgets.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace {

int standardPort(MailSecurity security)
{
    switch (security) {
    case MailSecurity::StartTls:
        return 587;
    case MailSecurity::Tls:
        return 465;
    case MailSecurity::None:
        break;
    }
    return 25;
}

QLineEdit *newField(const char *name, const QString &toolTip, const QString &example = {})
{
    auto *field = new QLineEdit;
    field->setObjectName(QLatin1String(name));
    field->setToolTip(toolTip);
    field->setPlaceholderText(example);
    return field;
}

QSpinBox *newNumber(const char *name, int min, int max, const QString &suffix,
                    const QString &toolTip)
{
    auto *field = new QSpinBox;
    field->setObjectName(QLatin1String(name));
    field->setRange(min, max);
    field->setSuffix(suffix);
    field->setToolTip(toolTip);
    return field;
}

QComboBox *newChoice(const char *name, const QString &toolTip)
{
    auto *choice = new QComboBox;
    choice->setObjectName(QLatin1String(name));
    choice->setToolTip(toolTip);
    return choice;
}

template <typename Code>
void addChoice(QComboBox *choice, const QString &text, Code code)
{
    choice->addItem(text, static_cast<int>(code));
}

template <typename Code>
void choose(QComboBox *choice, Code code)
{
    choice->setCurrentIndex(choice->findData(static_cast<int>(code)));
}

template <typename Code>
Code chosen(const QComboBox *choice)
{
    return static_cast<Code>(choice->currentData().toInt());
}

/// A row of a form: the first widget takes the remaining space.
void addRow(QFormLayout *form, const QString &text, std::initializer_list<QWidget *> widgets)
{
    auto *label = new QLabel(text);
    auto *row = new QHBoxLayout;
    for (QWidget *widget : widgets) {
        if (!label->buddy())
            label->setBuddy(widget);
        row->addWidget(widget, row->count() == 0 ? 1 : 0);
    }
    form->addRow(label, row);
}

QLabel *newCaption(const QString &text, QWidget *field)
{
    auto *caption = new QLabel(text);
    caption->setBuddy(field);
    return caption;
}

} // namespace

MailServerFields::MailServerFields(QWidget *parent)
    : QWidget(parent)
    , txtServer(newField("txtServer", QStringLiteral("The name of your provider's outgoing server"),
                         QStringLiteral("smtp.example.org")))
    , txtPort(newNumber("txtPort", 1, 65535, {},
                        QStringLiteral("587 with STARTTLS, 465 with TLS, unless your provider says "
                                       "otherwise")))
    , cboEncryption(newChoice(
          "cboEncryption", QStringLiteral("Encryption that is chosen here is never done without, "
                                          "and the server has to prove its name")))
    , cboAuthentication(
          newChoice("cboAuthentication", QStringLiteral("How the tool shows who it is")))
    , txtUser(newField("txtUser", QStringLiteral("The account on the mail server, often the whole "
                                                 "address")))
    , txtPassword(newField("txtPassword", QStringLiteral("Kept apart from the settings, readable "
                                                         "to your account alone")))
    , cmdForget(newButton(QStringLiteral("cmdForget"), QStringLiteral("&Delete"),
                          QStringLiteral("Removes the saved password when you click OK")))
    , txtFrom(newField("txtFrom", QStringLiteral("The address from which the mails come"),
                       QStringLiteral("Network reports <reports@example.org>")))
    , txtTimeout(newNumber("txtTimeout", 5, 600, QStringLiteral(" s"),
                           QStringLiteral("How long a server may keep silent before the tool gives "
                                          "up and tries again later")))
    , txtSizeLimit(
          newNumber("txtSizeLimit", 1, 100, QStringLiteral(" MB"),
                    QStringLiteral("A mail that would be larger leaves out attachments and "
                                   "says where they lie")))
    , txtCertificates(newField("txtCertificates",
                               QStringLiteral("A PEM file with the certificates to trust, for "
                                              "servers with one of their own"),
                               QStringLiteral("usually empty: those of the system")))
    , txtPages(newField("txtPages",
                        QStringLiteral("Where readers find the output folder in their browsers; "
                                       "mails link to it"),
                        QStringLiteral("https://reports.example.org/, or empty: its path")))
{
    txtPassword->setEchoMode(QLineEdit::Password);
    addChoice(cboEncryption, QStringLiteral("STARTTLS, required"), MailSecurity::StartTls);
    addChoice(cboEncryption, QStringLiteral("TLS from the start"), MailSecurity::Tls);
    addChoice(cboEncryption, QStringLiteral("None"), MailSecurity::None);
    addChoice(cboAuthentication, QStringLiteral("User and password"), MailAuthentication::Password);
    addChoice(cboAuthentication, QStringLiteral("User and access token (XOAUTH2)"),
              MailAuthentication::XOAuth2);
    addChoice(cboAuthentication, QStringLiteral("Nothing: the server knows this machine"),
              MailAuthentication::None);
    makeRows();

    connect(cboEncryption, &QComboBox::currentIndexChanged, this,
            &MailServerFields::encryptionChosen);
    connect(cboAuthentication, &QComboBox::currentIndexChanged, this,
            &MailServerFields::showStates);
    connect(cmdForget, &QPushButton::clicked, this, [this] {
        m_forgets = true;
        txtPassword->clear();
        txtPassword->setFocus();
        showStates();
    });
    for (QLineEdit *field : findChildren<QLineEdit *>())
        connect(field, &QLineEdit::textChanged, this, &MailServerFields::changed);
    load({}, false);
}

void MailServerFields::makeRows()
{
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    QPushButton *cmdBrowse = newButton(QStringLiteral("cmdBrowse"), QStringLiteral("Bro&wse..."),
                                       QStringLiteral("Chooses a file with certificates"));
    connect(cmdBrowse, &QPushButton::clicked, this, &MailServerFields::browse);
    addRow(form, QStringLiteral("&Server:"),
           {txtServer, newCaption(QStringLiteral("P&ort:"), txtPort), txtPort});
    addRow(form, QStringLiteral("Encr&yption:"), {cboEncryption});
    addRow(form, QStringLiteral("&Log in with:"), {cboAuthentication});
    addRow(form, QStringLiteral("&User:"), {txtUser});
    addRow(form, QStringLiteral("&Password:"), {txtPassword, cmdForget});
    addRow(form, QStringLiteral("&From:"), {txtFrom});
    auto *limits = new QHBoxLayout;
    limits->addWidget(txtTimeout);
    limits->addSpacing(2 * fontMetrics().averageCharWidth());
    limits->addWidget(newCaption(QStringLiteral("Si&ze limit:"), txtSizeLimit));
    limits->addWidget(txtSizeLimit);
    limits->addStretch(1);
    form->addRow(newCaption(QStringLiteral("&Time-out:"), txtTimeout), limits);
    addRow(form, QStringLiteral("&Certificates:"), {txtCertificates, cmdBrowse});
    addRow(form, QStringLiteral("&Reports at:"), {txtPages});
}

void MailServerFields::load(const MailServer &server, bool hasSecret)
{
    m_loaded = server;
    m_hasSecret = hasSecret;
    m_forgets = false;
    txtServer->setText(server.host);
    choose(cboEncryption, server.security);
    choose(cboAuthentication, server.authentication);
    m_standardPort = standardPort(server.security);
    txtPort->setValue(server.port);
    txtUser->setText(server.user);
    txtPassword->clear();
    txtFrom->setText(server.from);
    txtTimeout->setValue(server.timeout);
    txtSizeLimit->setValue(server.sizeLimit);
    txtCertificates->setText(server.caFile);
    txtPages->setText(server.pagesUrl);
    showStates();
}

void MailServerFields::store(MailServer &server) const
{
    server = m_loaded;
    server.host = txtServer->text().trimmed();
    server.port = txtPort->value();
    server.security = chosen<MailSecurity>(cboEncryption);
    server.authentication =
        logsIn() ? chosen<MailAuthentication>(cboAuthentication) : MailAuthentication::None;
    server.user = txtUser->text().trimmed();
    server.from = txtFrom->text().trimmed();
    server.timeout = txtTimeout->value();
    server.sizeLimit = txtSizeLimit->value();
    server.caFile = txtCertificates->text().trimmed();
    server.pagesUrl = txtPages->text().trimmed();
}

QString MailServerFields::contentText() const
{
    MailServer server;
    store(server);
    return QStringList{server.host,
                       QString::number(server.port),
                       QString::number(static_cast<int>(server.security)),
                       QString::number(static_cast<int>(server.authentication)),
                       server.user,
                       txtPassword->text(),
                       QString::number(m_forgets),
                       server.from,
                       QString::number(server.timeout),
                       QString::number(server.sizeLimit),
                       server.caFile,
                       server.pagesUrl}
        .join(u'\n');
}

QString MailServerFields::typedSecret() const
{
    return logsIn() ? txtPassword->text() : QString();
}

/// A password never goes out readable.
bool MailServerFields::logsIn() const
{
    return chosen<MailSecurity>(cboEncryption) != MailSecurity::None &&
           chosen<MailAuthentication>(cboAuthentication) != MailAuthentication::None;
}

void MailServerFields::encryptionChosen()
{
    const int standard = standardPort(chosen<MailSecurity>(cboEncryption));
    if (txtPort->value() == m_standardPort)
        txtPort->setValue(standard);
    m_standardPort = standard;
    showStates();
}

void MailServerFields::showStates()
{
    cboAuthentication->setEnabled(chosen<MailSecurity>(cboEncryption) != MailSecurity::None);
    txtUser->setEnabled(logsIn());
    txtPassword->setEnabled(logsIn());
    const bool isSaved = m_hasSecret && !m_forgets;
    cmdForget->setEnabled(isSaved);
    const QString kind =
        chosen<MailAuthentication>(cboAuthentication) == MailAuthentication::XOAuth2
            ? QStringLiteral("access token")
            : QStringLiteral("password");
    txtPassword->setPlaceholderText(
        isSaved ? QStringLiteral("the %1 is saved; what you type replaces it").arg(kind)
                : QStringLiteral("no %1 is saved").arg(kind));
    Q_EMIT changed();
}

void MailServerFields::browse()
{
    const QString chosenFile = QFileDialog::getOpenFileName(
        this, QStringLiteral("Certificates"), nativePath(txtCertificates->text().trimmed()),
        QStringLiteral("Certificates (*.pem *.crt *.cer);;All files (*)"));
    if (!chosenFile.isEmpty())
        txtCertificates->setText(QDir::toNativeSeparators(chosenFile));
}

QString MailServerFields::inputError(QWidget *&field) const
{
    MailServer server;
    store(server);
    field = txtServer;
    if (server.host.isEmpty())
        return QStringLiteral("Please enter the name of the mail server.");
    field = txtUser;
    if (logsIn() && server.user.isEmpty())
        return QStringLiteral("Please enter the user name of the account on the mail server.");
    field = txtPassword;
    if (logsIn() && txtPassword->text().isEmpty() && (!m_hasSecret || m_forgets))
        return QStringLiteral("Please enter the password of the account on the mail server.");
    field = txtFrom;
    if (server.from.isEmpty())
        return QStringLiteral("Please enter the address from which the mails are to come.");
    const QStringList faults = faultsOf(server);
    if (faults.isEmpty())
        return {};
    const std::pair<QLatin1String, QLineEdit *> fields[] = {
        {QLatin1String("Host"), txtServer},
        {QLatin1String("From"), txtFrom},
        {QLatin1String("PagesUrl"), txtPages},
    };
    for (const auto &[attribute, entered] : fields) {
        if (faults.constFirst().startsWith(attribute))
            field = entered;
    }
    return faults.constFirst();
}

QStringList MailServerFields::warnings() const
{
    QStringList warnings;
    if (chosen<MailSecurity>(cboEncryption) == MailSecurity::None)
        warnings.append(QStringLiteral("Without encryption everybody on the way can read and "
                                       "change the mails: for a server on this machine or in your "
                                       "own network only."));
    return warnings;
}
