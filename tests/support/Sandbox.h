#pragma once

#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/TimeZone.h"
#include "core/platform/EventLog.h"

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

/// A program folder of its own for a test, which is its configuration folder too; process-wide
/// state is fresh before and after; status lines are kept, and events ("id type message").
class Sandbox
{
public:
    Sandbox()
    {
        resetState();
        events.clear();
        setProgramFolder(m_folder.path());
        gConfig = std::make_unique<clsGrapherConfig>();
        gConfig->storedConfig = QStringLiteral("%%app.path%%");
        gStartupDone = true;
        setStatusSink([this](const QString &line) { status.append(line); });
        setEventObserver([](int eventId, EventType type, const QString &message) {
            events.append(QString("%1 %2 %3").arg(eventId).arg(type).arg(message));
        });
    }
    ~Sandbox()
    {
        setEventObserver(nullptr);
        resetState();
    }
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

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
    static inline QStringList events;

private:
    QTemporaryDir m_folder;
};

/// Runs with another local time zone for as long as it lives.
class LocalZone
{
public:
    explicit LocalZone(const QByteArray &name)
        : m_before(qgetenv("TZ"))
        , m_wasSet(qEnvironmentVariableIsSet("TZ"))
    {
        qputenv("TZ", name);
        reloadTimeZone();
    }
    ~LocalZone()
    {
        if (m_wasSet)
            qputenv("TZ", m_before);
        else
            qunsetenv("TZ");
        reloadTimeZone();
    }
    LocalZone(const LocalZone &) = delete;
    LocalZone &operator=(const LocalZone &) = delete;

private:
    QByteArray m_before;
    bool m_wasSet;
};
