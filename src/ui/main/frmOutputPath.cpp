#include "ui/main/frmOutputPath.h"

#include "base/Error.h"
#include "base/FileSystem.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "ui/common/Messages.h"
#include "ui/common/Widgets.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

/// Throws Error when no file can be written into the folder.
void tryWriting(const QString &folder)
{
    const QString probe = folder + QStringLiteral("vantrel-%1.tmp").arg(platform::processId());
    saveFile(probe, QByteArrayView("x"));
    QFile::remove(nativePath(probe));
}

void saveOutput(const QString &stored)
{
    const QString before = gConfig().storedOutput;
    gConfig().storedOutput = stored;
    try {
        saveGrapherConfig();
    } catch (const Error &) {
        gConfig().storedOutput = before;
        throw;
    }
}

} // namespace

frmOutputPath::frmOutputPath(QWidget *parent)
    : EditorDialog(QStringLiteral("frmOutputPath"), QStringLiteral("output-location.html"), parent)
    , txtOutputPath(new QLineEdit(gConfig().storedOutput))
    , lblFolder(newTextLabel(QStringLiteral("lblFolder")))
{
    setWindowTitle(QStringLiteral("Set Output Location"));
    txtOutputPath->setObjectName(QStringLiteral("txtOutputPath"));
    auto *caption = new QLabel(QStringLiteral("&Output folder:"));
    caption->setBuddy(txtOutputPath);
    auto *cmdBrowse = newButton(QStringLiteral("cmdBrowse"), QStringLiteral("&Browse…"));

    auto *layout = new QGridLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(
        newTextLabel({},
                     QStringLiteral(
                         "Reports are written into this folder, and their pages link to each "
                         "other from there: share it, or copy it whole. Reports that were written "
                         "elsewhere before stay where they are.")),
        0, 0, 1, 3);
    layout->addWidget(caption, 1, 0);
    layout->addWidget(txtOutputPath, 1, 1);
    layout->addWidget(cmdBrowse, 1, 2);
    layout->addWidget(lblFolder, 2, 1, 1, 2);
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(3, 1);
    connect(cmdBrowse, &QPushButton::clicked, this, &frmOutputPath::browse);
    connect(txtOutputPath, &QLineEdit::textChanged, this, &frmOutputPath::showFolder);
    setSaveAction([this] { saveOutput(txtOutputPath->text().trimmed()); });
    showFolder();
    markUnchanged();
    txtOutputPath->selectAll();
    txtOutputPath->setFocus();
    resize(80 * fontMetrics().averageCharWidth(), sizeHint().height());
}

/// The folder, with a separator at its end.
QString frmOutputPath::folder() const
{
    clsGrapherConfig meant;
    meant.storedOutput = txtOutputPath->text().trimmed();
    return NormalizeFolder(meant.PTH_Output());
}

void frmOutputPath::showFolder()
{
    QWidget *field = nullptr;
    const QString error = inputError(field);
    lblFolder->setText(!error.isEmpty()
                           ? error
                           : QStringLiteral("This is the folder %1\n%%app.path%% stands for the "
                                            "program's folder.")
                                 .arg(QDir::toNativeSeparators(nativePath(folder()))));
}

void frmOutputPath::browse()
{
    const QString chosen = QFileDialog::getExistingDirectory(this, QStringLiteral("Output Folder"),
                                                             nativePath(folder()));
    if (!chosen.isEmpty())
        txtOutputPath->setText(QDir::toNativeSeparators(chosen));
}

QString frmOutputPath::contentText() const
{
    return txtOutputPath->text().trimmed();
}

QString frmOutputPath::inputError(QWidget *&field) const
{
    field = txtOutputPath;
    if (contentText().isEmpty())
        return QStringLiteral("Enter the folder that reports are written to.");
    const QString fault = platform::nameFault(folder());
    return fault.isEmpty() ? fault : QStringLiteral("There can be no such folder: ") + fault;
}

void frmOutputPath::accept()
{
    QWidget *field = nullptr;
    if (inputError(field).isEmpty() && !makeReady(folder()))
        return;
    EditorDialog::accept();
}

/// False when the folder cannot be created or written to, after a message to the user.
bool frmOutputPath::makeReady(const QString &wanted)
{
    const QString shown = QDir::toNativeSeparators(nativePath(wanted));
    try {
        if (!folderExists(wanted)) {
            if (!askYesNo(this, QStringLiteral("Create Folder"),
                          QStringLiteral("There is no folder '%1'.\nCreate it?").arg(shown)))
                return false;
            QString message;
            if (const int number = EnsureFolder(wanted, message); number != 0)
                throw Error(number, message);
        }
        tryWriting(wanted);
        return true;
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Output Folder"),
                     QStringLiteral("Reports cannot be written to the folder '%1'. Choose another "
                                    "one, or have its permissions changed.")
                             .arg(shown) +
                         QLatin1String("\n\n") + errorTail(error));
        txtOutputPath->setFocus();
        return false;
    }
}
