// bench-odbc: a million samples through the tool's recordset, compared with a bare loop of block
// fetches over the same driver and query.

#include "odbc/Odbc.h"

#include "base/Error.h"
#include "base/ProgramState.h"
#include "odbc/MariaDb.h"
#include "odbc/OdbcConnection.h"
#include "odbc/OdbcRecordset.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr int samples = 1'000'000;
constexpr int rounds = 7;

/// The same for both readers: proves that they saw the same values.
struct Sum
{
    qint64 rows = 0;
    qint64 idents = 0;
    qint64 seconds = 0;
    qint64 states = 0;
    double values = 0;

    bool operator==(const Sum &) const = default;
};

QString query()
{
    return QStringLiteral("SELECT * FROM DataValues WHERE DataIDent = 7 ORDER BY iDate");
}

Sum throughTheTool(OdbcConnection &connection)
{
    const auto rows =
        connection.open(query(), {QStringLiteral("DataIDent"), QStringLiteral("iDate"),
                                  QStringLiteral("iState"), QStringLiteral("iValue")});
    Sum sum;
    while (rows->next()) {
        ++sum.rows;
        sum.idents += rows->integer(0);
        sum.seconds += rows->instant(1) / 1000 % 60;
        if (!rows->isNull(2))
            sum.states += rows->integer(2);
        if (!rows->isNull(3))
            sum.values += rows->number(3);
    }
    return sum;
}

[[noreturn]] void give(const char *why)
{
    std::fprintf(stderr, "bench-odbc: %s\n", why);
    std::exit(1);
}

/// The simplest possible program: fixed columns bound in arrays of 4,096 rows.
class BareLoop
{
public:
    explicit BareLoop(const QString &connectionText)
        : m_environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE)
        , m_connection(SQL_HANDLE_DBC, odbc3(m_environment.get()))
    {
        if (!SQL_SUCCEEDED(SQLDriverConnectW(m_connection.get(), nullptr,
                                             odbcString(connectionText), SQL_NTS, nullptr, 0,
                                             nullptr, SQL_DRIVER_NOPROMPT)))
            give("the bare loop cannot connect");
    }
    ~BareLoop() { SQLDisconnect(m_connection.get()); }

    Sum run() const
    {
        const OdbcHandle statement(SQL_HANDLE_STMT, m_connection.get());
        const SQLHANDLE handle = statement.get();
        SQLULEN fetched = 0;
        SQLSetStmtAttrW(handle, SQL_ATTR_ROW_ARRAY_SIZE, odbcValue(block), 0);
        SQLSetStmtAttrW(handle, SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
        const QString sql = query();
        if (!SQL_SUCCEEDED(SQLPrepareW(handle, odbcString(sql), SQL_NTS)) ||
            !SQL_SUCCEEDED(SQLExecute(handle)))
            give("the bare loop cannot run its query");
        const auto cells = std::make_unique<Cells>();
        // Columns: iSequence, DataIDent, iDate, iState, iValue, iMessage.
        SQLBindCol(handle, 2, SQL_C_SBIGINT, cells->idents.data(), 8, cells->indicators[0].data());
        SQLBindCol(handle, 3, SQL_C_TYPE_TIMESTAMP, cells->dates.data(),
                   sizeof(SQL_TIMESTAMP_STRUCT), cells->indicators[1].data());
        SQLBindCol(handle, 4, SQL_C_SBIGINT, cells->states.data(), 8, cells->indicators[2].data());
        SQLBindCol(handle, 5, SQL_C_DOUBLE, cells->values.data(), 8, cells->indicators[3].data());
        Sum sum;
        while (SQL_SUCCEEDED(SQLFetch(handle))) {
            for (std::size_t i = 0; i < fetched; ++i)
                add(*cells, i, sum);
        }
        return sum;
    }

private:
    static constexpr std::size_t block = 4096;
    struct Cells
    {
        std::array<SQLBIGINT, block> idents;
        std::array<SQL_TIMESTAMP_STRUCT, block> dates;
        std::array<SQLBIGINT, block> states;
        std::array<double, block> values;
        std::array<std::array<SQLLEN, block>, 4> indicators;
    };

    static SQLHANDLE odbc3(SQLHANDLE environment)
    {
        SQLSetEnvAttr(environment, SQL_ATTR_ODBC_VERSION, odbcValue(SQL_OV_ODBC3), 0);
        return environment;
    }

    static void add(const Cells &cells, std::size_t i, Sum &sum)
    {
        ++sum.rows;
        sum.idents += cells.idents[i];
        sum.seconds += cells.dates[i].second;
        if (cells.indicators[2][i] != SQL_NULL_DATA)
            sum.states += cells.states[i];
        if (cells.indicators[3][i] != SQL_NULL_DATA)
            sum.values += cells.values[i];
    }

    OdbcHandle m_environment;
    OdbcHandle m_connection;
};

template <typename Reader>
double secondsFor(Reader read, Sum &sum)
{
    QElapsedTimer timer;
    timer.start();
    sum = read();
    return double(timer.nsecsElapsed()) / 1e9;
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void compare()
{
    const MariaDb server(
        {QStringLiteral("CREATE TABLE DataValues (iSequence INT, DataIDent INT, iDate DATETIME(3), "
                        "iState SMALLINT, iValue DOUBLE, iMessage VARCHAR(80), "
                        "KEY DataValues_Time (DataIDent, iDate));"),
         QStringLiteral("INSERT INTO DataValues SELECT seq, 7, TIMESTAMPADD(SECOND, seq * 7, "
                        "'2024-01-01'), seq %% 9 > 0, IF(seq %% 50 = 0, NULL, seq * 0.25), "
                        "IF(seq %% 100 = 0, 'Timed out', NULL) FROM seq_1_to_%1;")
             .replace(QLatin1String("%%"), QLatin1String("%"))
             .arg(samples)});
    const auto connection =
        std::make_shared<OdbcConnection>(server.connectionText(), 60, 600, false);
    const BareLoop bareLoop(server.connectionText());

    std::vector<double> tool;
    std::vector<double> bare;
    for (int i = 0; i < rounds; ++i) { // in turn, so that both have the same conditions
        Sum toolSum;
        Sum bareSum;
        tool.push_back(secondsFor([&] { return throughTheTool(*connection); }, toolSum));
        bare.push_back(secondsFor([&] { return bareLoop.run(); }, bareSum));
        if (!(toolSum == bareSum) || toolSum.rows != samples)
            give("the two readers saw different samples");
    }
    std::printf("odbc: %d samples, tool %.3f s, bare block fetches %.3f s, ratio %.2f (goal at "
                "most 1.30)\n",
                samples, median(tool), median(bare), median(tool) / median(bare));
}

} // namespace

int main()
{
    const ProgramState state;
    try {
        compare();
    } catch (const std::exception &error) {
        give(error.what());
    }
}
