#pragma once

#include "data/Connection.h"

#include <memory>

class SampleIndex;

/// A connection to an Access file. SQL runs in an SQLite database in memory whose tables are the
/// file's user tables, as virtual tables; SQLite takes the Access dialect as the tool writes it,
/// but for the word DISTINCTROW, which is taken out, and the function CDATE, which is added. Texts
/// are compared and ordered without regard to case; True is -1; date-times are day numbers.
///
/// The file is read when a query needs it: all tables but that of the samples are kept as far as
/// they were read, samples as announced. Recordsets outlive the connection if need be.
class AccessConnection : public Connection
{
public:
    /// Opens a file given by its path in the file system. Throws Error.
    explicit AccessConnection(const QString &path);
    ~AccessConnection() override;

    std::unique_ptr<Recordset> open(const QString &sql, const QStringList &wanted = {}) override;
    void expectSamples(const SampleScope &scope) override;
    void refresh() override;
    QStringList warnings() const override;
    QStringList verify() override;
    void releaseSamples() override;

    /// The samples kept at present; null before the first query for some.
    const SampleIndex *sampleIndex() const;

private:
    class Session;
    QString m_path;
    std::shared_ptr<Session> m_session;
};
