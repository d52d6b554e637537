#include "ui/main/frmDatabase.h"

#include "base/Error.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "database/Connection.h"
#include "odbc/OdbcSession.h"
#include "ui/common/Messages.h"
#include "ui/common/Widgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <QTimer>

namespace {

const QString fileName = QStringLiteral("VTRGData.MDB");

QString counted(qint64 number, const char *one, const char *many)
{
    return groupedNumber(static_cast<double>(number), 0) + u' ' +
           QLatin1String(number == 1 ? one : many);
}

/// A field with its name for programs and, where no label says it, for those who cannot see it.
template <typename T>
T *named(T *widget, const char *name, const QString &accessibleName = {})
{
    widget->setObjectName(QLatin1String(name));
    widget->setAccessibleName(accessibleName);
    return widget;
}

QWidget *pageOf(QLayout *layout)
{
    auto *page = new QWidget;
    layout->setContentsMargins(0, 0, 0, 0);
    page->setLayout(layout);
    return page;
}

/// The folder that a text names, be it by the file in it.
QString folderOf(const QString &text)
{
    const QString path = text.trimmed();
    return path.endsWith(QLatin1String(".mdb"), Qt::CaseInsensitive)
               ? path.left(path.size() - QFileInfo(path).fileName().size())
               : path;
}

/// Asks a database what it holds, from what is quick to what may take long. `tell` takes what is
/// known so far; on the thread of the work.
void explore(MonitoringDatabase &database, const Background::Link &link,
             const std::function<void(const QString &)> &tell)
{
    const std::shared_ptr<const Inventory> inventory = database.inventory();
    QString found =
        QLatin1String("Found: ") +
        counted(static_cast<qint64>(inventory->devices().size()), "device", "devices") +
        QLatin1String(", ") +
        counted(static_cast<qint64>(inventory->items().size()), "data item", "data items");
    tell(found + QStringLiteral("; counting samples…"));
    if (link.isAbandoned())
        return;
    const qint64 samples = database.sampleCount();
    found += QLatin1String(", ") + counted(samples, "sample", "samples");
    tell(found + QStringLiteral("; looking for the newest one…"));
    if (link.isAbandoned())
        return;
    try {
        const std::optional<qint64> newest = database.newestSample();
        found += newest ? QStringLiteral(".\nNewest sample: %1.")
                              .arg(wallTime(*newest).toString(u"yyyy-MM-dd HH:mm"))
                        : QStringLiteral(".\nThere are no samples yet.");
    } catch (const Error &error) { // a server without an index for that may take too long
        found += QStringLiteral(".\nThe newest sample is not known: ") + error.description;
    }
    tell(found);
}

} // namespace

frmDatabase::frmDatabase(QWidget *parent)
    : EditorDialog(QStringLiteral("frmDatabase"), QStringLiteral("database.html"), parent)
    , m_testSoon(new QTimer(this))
{
    setWindowTitle(QStringLiteral("Monitoring Database"));
    cboKind = named(new QComboBox, "cboKind");
    cboKind->addItems({QStringLiteral("Access file (VTRGData.MDB)"), QStringLiteral("SQL Server"),
                       QStringLiteral("ODBC data source"), QStringLiteral("Connection text")});
    auto *kindLabel = new QLabel(QStringLiteral("&Samples are in:"));
    kindLabel->setBuddy(cboKind);
    auto *kindRow = new QHBoxLayout;
    kindRow->addWidget(kindLabel);
    kindRow->addWidget(cboKind, 1);
    m_pages = new QStackedWidget;
    for (QWidget *page : {makeFilePage(), makeServerPage(), makeSourcePage(), makeTextPage()})
        m_pages->addWidget(page);
    cboDialect = named(new QComboBox, "cboDialect");
    cboDialect->addItems({QStringLiteral("SQL Server"), QStringLiteral("Access")});
    cboDialect->setToolTip(QStringLiteral("The kind of SQL that the source understands"));
    auto *dialectForm = new QFormLayout;
    dialectForm->addRow(QStringLiteral("Understands the S&QL of:"), cboDialect);
    m_dialectRow = pageOf(dialectForm);

    auto *layout = new QVBoxLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(newTextLabel(
        {}, QStringLiteral("Where the network monitor keeps its samples. They are only read.")));
    layout->addLayout(kindRow);
    layout->addWidget(m_pages);
    layout->addWidget(m_dialectRow);
    layout->addWidget(makeSignIn());
    layout->addWidget(makeTest());
    layout->addStretch(1);

    m_testSoon->setSingleShot(true);
    m_testSoon->setInterval(400);
    connect(m_testSoon, &QTimer::timeout, this, &frmDatabase::test);
    connect(&m_test, &Background::ended, this,
            [this] { cmdTest->setText(QStringLiteral("&Test Now")); });
    connect(cboKind, &QComboBox::currentIndexChanged, this, &frmDatabase::showKind);
    for (const QLineEdit *field :
         {txtFolder, txtServer, txtDatabase, txtConnection, txtUser, txtPassword})
        connect(field, &QLineEdit::textChanged, this, &frmDatabase::changed);
    for (const QComboBox *field : {cboDriver, cboSource, cboDialect})
        connect(field, &QComboBox::currentTextChanged, this, &frmDatabase::changed);
    for (const QCheckBox *field : {chkIntegrated, chkEncrypt, chkAnyCertificate})
        connect(field, &QCheckBox::toggled, this, &frmDatabase::changed);
    setSaveAction([this] {
        if (chosen() != m_loaded)
            saveDatabaseSettings(chosen());
    });
    // For the longest form, whichever is shown.
    resize(QSize(90 * fontMetrics().averageCharWidth(), sizeHint().height()));
    load(databaseSettings());
    markUnchanged();
    listNames();
}

// The pages

QWidget *frmDatabase::makeFilePage()
{
    txtFolder = named(new QLineEdit, "txtFolder");
    txtFolder->setToolTip(
        QStringLiteral("The folder of the file VTRGData.MDB, or the file itself"));
    auto *label = new QLabel(QStringLiteral("&Folder:"));
    label->setBuddy(txtFolder);
    auto *browse = newButton(QStringLiteral("cmdBrowse"), QStringLiteral("&Browse…"),
                             QStringLiteral("Chooses the file"));
    connect(browse, &QPushButton::clicked, this, &frmDatabase::browse);
    auto *row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(txtFolder, 1);
    row->addWidget(browse);
    auto *layout = new QVBoxLayout;
    layout->addLayout(row);
    const bool isOverridden = program().gDataPath != NormalizeFolder(GetDataPath());
    if (isOverridden)
        layout->addWidget(newTextLabel(
            {}, QStringLiteral("The program was started with a folder of its own (--dbpath). That "
                               "goes before what is saved here: leave it out at the next start, "
                               "and switch the hourly job off and on again.")));
    layout->addStretch(1);
    return pageOf(layout);
}

QWidget *frmDatabase::makeServerPage()
{
    cboDriver = named(new QComboBox, "cboDriver");
    cboDriver->addItem(QStringLiteral("The best one that is installed"), QString());
    cboDriver->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    txtServer = named(new QLineEdit, "txtServer");
    txtServer->setPlaceholderText(QStringLiteral("db01, db01\\MONITOR or db01,1433"));
    txtDatabase = named(new QLineEdit, "txtDatabase");
    txtDatabase->setPlaceholderText(QStringLiteral("the server's default for the user"));
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Ser&ver:"), txtServer);
    form->addRow(QStringLiteral("&Database:"), txtDatabase);
    form->addRow(QStringLiteral("D&river:"), cboDriver);
    return pageOf(form);
}

QWidget *frmDatabase::makeSourcePage()
{
    cboSource = named(new QComboBox, "cboSource");
    cboSource->setEditable(true);
    cboSource->setInsertPolicy(QComboBox::NoInsert);
    cboSource->setToolTip(QStringLiteral("The data sources of this computer and of this user"));
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Data so&urce:"), cboSource);
    return pageOf(form);
}

QWidget *frmDatabase::makeTextPage()
{
    txtConnection = named(new QLineEdit, "txtConnection");
    txtConnection->setPlaceholderText(QStringLiteral("DRIVER={…};SERVER=…;DATABASE=…;UID=…;PWD=…"));
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Conn&ection text:"), txtConnection);
    form->addRow(newTextLabel(
        {}, QStringLiteral("An ODBC or OLE DB text. A password in it is shown as ***.")));
    return pageOf(form);
}

QWidget *frmDatabase::makeSignIn()
{
    m_signIn = new QGroupBox(QStringLiteral("Sign in"));
    chkIntegrated = named(new QCheckBox(QStringLiteral("&With the account that runs this program")),
                          "chkIntegrated");
    txtUser = named(new QLineEdit, "txtUser");
    txtPassword = named(new QLineEdit, "txtPassword");
    txtPassword->setEchoMode(QLineEdit::Password);
    chkEncrypt = named(new QCheckBox(QStringLiteral("E&ncrypt the connection")), "chkEncrypt");
    chkEncrypt->setChecked(true);
    chkEncrypt->setToolTip(
        QStringLiteral("Fails rather than send the password in the clear, where the driver "
                       "is one that the program knows"));
    chkAnyCertificate =
        named(new QCheckBox(QStringLiteral("A&ccept a certificate that cannot be checked")),
              "chkAnyCertificate");
    chkAnyCertificate->setToolTip(
        QStringLiteral("For a server with a certificate of its own making, in a network that you "
                       "trust"));
    connect(chkIntegrated, &QCheckBox::toggled, this, [this](bool integrated) {
        txtUser->setEnabled(!integrated);
        txtPassword->setEnabled(!integrated);
    });
    connect(chkEncrypt, &QCheckBox::toggled, chkAnyCertificate, &QWidget::setEnabled);
    auto *form = new QFormLayout(m_signIn);
    form->addRow(chkIntegrated);
    form->addRow(QStringLiteral("User na&me:"), txtUser);
    form->addRow(QStringLiteral("&Password:"), txtPassword);
    form->addRow(chkEncrypt);
    form->addRow(chkAnyCertificate);
    return m_signIn;
}

QWidget *frmDatabase::makeTest()
{
    cmdTest = newButton(QStringLiteral("cmdTest"), QStringLiteral("&Test Now"),
                        QStringLiteral("Opens the database and tells what it holds"));
    connect(cmdTest, &QPushButton::clicked, this, &frmDatabase::testOrStop);
    m_resultIcon = newWarningIcon();
    m_resultIcon->hide();
    lblResult = newTextLabel(QStringLiteral("lblResult"), 3);
    lblResult->setAccessibleName(QStringLiteral("Result of the test"));
    auto *row = new QHBoxLayout;
    row->addWidget(cmdTest, 0, Qt::AlignTop);
    row->addWidget(m_resultIcon, 0, Qt::AlignTop);
    row->addWidget(lblResult, 1);
    return pageOf(row);
}

// Content

void frmDatabase::load(const DatabaseSettings &settings)
{
    m_loaded = settings;
    txtFolder->setText(withOwnSeparators(settings.dataPath));
    cboDialect->setCurrentIndex(settings.isServer() && !settings.isSqlServer ? 1 : 0);
    const auto form = connectionForm(settings.connectionText);
    Kind kind = AccessFile;
    if (form) {
        kind = form->dataSource.isEmpty() ? SqlServer : DataSource;
        if (!form->driver.isEmpty()) {
            cboDriver->addItem(form->driver, form->driver);
            cboDriver->setCurrentIndex(1);
        }
        txtServer->setText(form->server);
        txtDatabase->setText(form->database);
        cboSource->setEditText(form->dataSource);
        chkIntegrated->setChecked(form->isIntegrated);
        txtUser->setText(form->user);
        txtPassword->setText(form->password);
        chkEncrypt->setChecked(form->isEncrypted);
        chkAnyCertificate->setChecked(form->acceptsAnyCertificate);
        if (kind == SqlServer && settings.isServer() && !settings.isSqlServer)
            kind = Text; // the form is for SQL Server's own dialect
    } else if (!settings.connectionText.isEmpty()) {
        kind = Text;
    }
    txtConnection->setText(maskPasswords(settings.connectionText));
    m_isMasked = true;
    cboKind->setCurrentIndex(settings.isServer() ? kind : AccessFile);
    showKind();
}

/// Asks for the installed drivers and data sources, which are in files.
void frmDatabase::listNames()
{
    m_names.start([this](const Background::Link &link) {
        const OdbcNames names = installedOdbcNames();
        link.deliver([this, names] { takeNames(names); });
    });
}

void frmDatabase::takeNames(const OdbcNames &names)
{
    const QSignalBlocker driverBlocker(cboDriver);
    const QSignalBlocker sourceBlocker(cboSource);
    for (auto driver = names.drivers.begin(); driver != names.drivers.end(); ++driver) {
        if (cboDriver->findData(driver.key()) < 0)
            cboDriver->addItem(driver.key(), driver.key());
    }
    const QString typed = cboSource->currentText();
    cboSource->addItems(names.dataSources.keys());
    cboSource->setEditText(typed);
}

frmDatabase::Kind frmDatabase::kind() const
{
    return static_cast<Kind>(cboKind->currentIndex());
}

ConnectionForm frmDatabase::form() const
{
    ConnectionForm form;
    if (kind() == DataSource) {
        form.dataSource = cboSource->currentText().trimmed();
    } else {
        form.driver = cboDriver->currentData().toString();
        form.server = txtServer->text().trimmed();
        form.database = txtDatabase->text().trimmed();
    }
    form.isIntegrated = chkIntegrated->isChecked();
    if (!form.isIntegrated) {
        form.user = txtUser->text().trimmed();
        form.password = txtPassword->text();
    }
    form.isEncrypted = chkEncrypt->isChecked();
    form.acceptsAnyCertificate = form.isEncrypted && chkAnyCertificate->isChecked();
    return form;
}

DatabaseSettings frmDatabase::chosen() const
{
    DatabaseSettings settings = m_loaded;
    settings.dataPath = NormalizeFolder(folderOf(txtFolder->text()));
    settings.isSqlServer = settings.isDataSource = false;
    if (kind() == AccessFile)
        return settings;
    const bool isSqlServer = kind() == SqlServer || cboDialect->currentIndex() == 0;
    settings.dataPath = m_loaded.dataPath;
    settings.isSqlServer = isSqlServer;
    settings.isDataSource = !isSqlServer;
    const bool isUnchangedText = kind() == Text && m_isMasked &&
                                 txtConnection->text() == maskPasswords(m_loaded.connectionText);
    const auto loaded = connectionForm(m_loaded.connectionText);
    if (isUnchangedText || (kind() != Text && loaded && *loaded == form()))
        return settings; // the text as it was written
    settings.connectionText =
        kind() == Text ? txtConnection->text().trimmed() : connectionText(form());
    return settings;
}

QString frmDatabase::contentText() const
{
    const DatabaseSettings settings = chosen();
    return QStringList{QString::number(kind()), settings.dataPath,
                       QString::number(settings.isSqlServer), settings.connectionText}
        .join(u'\n');
}

QString frmDatabase::inputError(QWidget *&field) const
{
    const QString given = QFileInfo(txtFolder->text().trimmed()).fileName();
    switch (kind()) {
    case AccessFile:
        field = txtFolder;
        if (txtFolder->text().trimmed().isEmpty())
            return QStringLiteral("Enter the folder of the file VTRGData.MDB.");
        if (given.endsWith(QLatin1String(".mdb"), Qt::CaseInsensitive) &&
            given.compare(fileName, Qt::CaseInsensitive) != 0)
            return QStringLiteral("The file has to be named VTRGData.MDB.");
        break;
    case SqlServer:
        field = txtServer;
        if (txtServer->text().trimmed().isEmpty())
            return QStringLiteral("Enter the name of the server.");
        break;
    case DataSource:
        field = cboSource;
        if (cboSource->currentText().trimmed().isEmpty())
            return QStringLiteral("Choose a data source, or enter its name.");
        break;
    case Text:
        field = txtConnection;
        if (txtConnection->text().trimmed().isEmpty())
            return QStringLiteral("Enter a connection text.");
        if (passwordsIn(chosen().connectionText).contains(QLatin1String("***")))
            return QStringLiteral("Enter the password in place of ***: it is not kept when the "
                                  "text changes.");
        break;
    }
    return {};
}

// What the user does

void frmDatabase::browse()
{
    const QString chosen = QFileDialog::getOpenFileName(
        this, QStringLiteral("Monitoring Database"), folderOf(txtFolder->text()),
        QStringLiteral("Monitoring database (VTRGData.MDB vtrgdata.mdb);;All files (*)"));
    if (chosen.isEmpty())
        return;
    const bool hasName = QFileInfo(chosen).fileName().compare(fileName, Qt::CaseInsensitive) == 0;
    txtFolder->setText(
        QDir::toNativeSeparators(hasName ? QFileInfo(chosen).absolutePath() : chosen));
}

void frmDatabase::showKind()
{
    m_pages->setCurrentIndex(kind());
    m_signIn->setVisible(kind() == SqlServer || kind() == DataSource);
    m_dialectRow->setVisible(kind() == DataSource || kind() == Text);
    changed();
}

/// A test of what was entered before says nothing now. A file is tried by itself.
void frmDatabase::changed()
{
    m_test.abandon();
    cmdTest->setText(QStringLiteral("&Test Now"));
    showResult({}, false);
    QWidget *field = nullptr;
    if (kind() == AccessFile && inputError(field).isEmpty())
        m_testSoon->start();
    else
        m_testSoon->stop();
}

void frmDatabase::testOrStop()
{
    if (m_test.isBusy()) {
        changed();
        m_testSoon->stop();
        showResult(QStringLiteral("The test was stopped."), false);
    } else {
        test();
    }
}

void frmDatabase::test()
{
    m_testSoon->stop();
    QWidget *field = nullptr;
    if (const QString error = inputError(field); !error.isEmpty()) {
        showResult(error, true);
        return;
    }
    showResult(QStringLiteral("Opening the database…"), false);
    cmdTest->setText(QStringLiteral("S&top the Test"));
    const DatabaseSource source = databaseSource(chosen());
    const QStringList passwords = passwordsIn(chosen().connectionText);
    m_test.start(
        [this, open = source.connect](const Background::Link &link) {
            const std::unique_ptr<MonitoringDatabase> database = open();
            explore(*database, link, [&](const QString &found) {
                link.deliver([this, found] { showResult(found, false); });
            });
        },
        [this, passwords](const QString &error) {
            showResult(withoutSecrets(error, passwords), true);
        });
}

void frmDatabase::showResult(const QString &text, bool isFault)
{
    m_resultIcon->setVisible(isFault);
    lblResult->setText(text);
}
