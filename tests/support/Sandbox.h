#pragma once

#include "base/Files.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "config/Program.h"
#include "config/Status.h"
#include "config/clsGrapherConfig.h"
#include "platform/EventLog.h"
#include "support/Zones.h"

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>

/// A program folder of its own for a test, which is its configuration folder too, and a state of
/// the program of its own; status lines are kept, and events ("id type message").
class Sandbox
{
public:
    Sandbox() { restart(); }
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

    /// As if the program ended and began again over the same folder.
    void restart()
    {
        m_state.reset();
        m_state.emplace();
        setProgramFolder(m_folder.path());
        gConfig().storedConfig = QStringLiteral("%%app.path%%");
        program().gStartupDone = true;
        observer().status = [this](const QString &line) { status.append(line); };
        setEventObserver([this](int eventId, EventType type, const QString &message) {
            events.append(QString("%1 %2 %3").arg(eventId).arg(type).arg(message));
        });
    }

    QString path(const QString &name = QString()) const
    {
        return QDir::toNativeSeparators(name.isEmpty() ? m_folder.path() : m_folder.filePath(name));
    }
    /// Folders in the name are made.
    void write(const QString &name, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        saveFile(path(name), bytes);
    }
    QByteArray read(const QString &name) const { return readFile(path(name)); }
    /// The names of everything in a folder of the sandbox, in order.
    QStringList names(const QString &folder = QString()) const
    {
        return QDir(path(folder))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    QStringList status;
    QStringList events;

private:
    QTemporaryDir m_folder;
    std::optional<ProgramState> m_state;
};

/// Runs with another local time zone for as long as it lives.
class LocalZone
{
public:
    explicit LocalZone(const QByteArray &name) { setZone(name); }
    ~LocalZone() { setZone(m_before); }
    LocalZone(const LocalZone &) = delete;
    LocalZone &operator=(const LocalZone &) = delete;

private:
    QByteArray m_before = qgetenv("TZ");
};
