#include "data/sqlite/VirtualTable.h"

#include "core/Error.h"

namespace {

struct Binding
{
    VirtualTable &table;
    ErrorSlot &slot;
};

struct TableHandle : sqlite3_vtab
{
    Binding *binding = nullptr;
};

struct CursorHandle : sqlite3_vtab_cursor
{
    std::unique_ptr<VirtualCursor> cursor;
    ErrorSlot *slot = nullptr;
};

/// Runs `work`; an exception becomes an SQLite error.
template <typename Work>
int guarded(ErrorSlot &slot, Work work)
{
    try {
        work();
        return SQLITE_OK;
    } catch (...) {
        slot.error = std::current_exception();
        return SQLITE_ERROR;
    }
}

CursorHandle *handle(sqlite3_vtab_cursor *cursor)
{
    return static_cast<CursorHandle *>(cursor);
}

int connectTable(sqlite3 *database, void *aux, int, const char *const *, sqlite3_vtab **table,
                 char **)
{
    auto *binding = static_cast<Binding *>(aux);
    const QByteArray text = binding->table.declaration().toUtf8();
    const int result = sqlite3_declare_vtab(database, text.constData());
    if (result != SQLITE_OK)
        return result;
    auto made = std::make_unique<TableHandle>();
    made->binding = binding;
    *table = made.release();
    return SQLITE_OK;
}

int disconnectTable(sqlite3_vtab *table)
{
    delete static_cast<TableHandle *>(table);
    return SQLITE_OK;
}

int bestIndex(sqlite3_vtab *table, sqlite3_index_info *info)
{
    Binding &binding = *static_cast<TableHandle *>(table)->binding;
    return guarded(binding.slot, [&] { binding.table.bestIndex(*info); });
}

int openCursor(sqlite3_vtab *table, sqlite3_vtab_cursor **cursor)
{
    Binding &binding = *static_cast<TableHandle *>(table)->binding;
    return guarded(binding.slot, [&] {
        auto made = std::make_unique<CursorHandle>();
        made->cursor = binding.table.open();
        made->slot = &binding.slot;
        *cursor = made.release();
    });
}

int closeCursor(sqlite3_vtab_cursor *cursor)
{
    delete handle(cursor);
    return SQLITE_OK;
}

int filterCursor(sqlite3_vtab_cursor *cursor, int plan, const char *planText, int count,
                 sqlite3_value **values)
{
    CursorHandle *self = handle(cursor);
    return guarded(*self->slot, [&] { self->cursor->filter(plan, planText, count, values); });
}

int nextRow(sqlite3_vtab_cursor *cursor)
{
    CursorHandle *self = handle(cursor);
    return guarded(*self->slot, [&] { self->cursor->next(); });
}

int atEnd(sqlite3_vtab_cursor *cursor)
{
    return handle(cursor)->cursor->eof() ? 1 : 0;
}

int columnValue(sqlite3_vtab_cursor *cursor, sqlite3_context *context, int column)
{
    CursorHandle *self = handle(cursor);
    return guarded(*self->slot, [&] { self->cursor->column(context, column); });
}

int rowNumber(sqlite3_vtab_cursor *cursor, sqlite3_int64 *number)
{
    CursorHandle *self = handle(cursor);
    return guarded(*self->slot, [&] { *number = self->cursor->rowNumber(); });
}

sqlite3_module makeModule()
{
    sqlite3_module module{};
    module.xCreate = connectTable;
    module.xConnect = connectTable;
    module.xBestIndex = bestIndex;
    module.xDisconnect = disconnectTable;
    module.xDestroy = disconnectTable;
    module.xOpen = openCursor;
    module.xClose = closeCursor;
    module.xFilter = filterCursor;
    module.xNext = nextRow;
    module.xEof = atEnd;
    module.xColumn = columnValue;
    module.xRowid = rowNumber;
    return module;
}

const sqlite3_module virtualTableModule = makeModule();

[[noreturn]] void fail(sqlite3 *database, ErrorSlot &slot)
{
    slot.rethrow();
    throw Error(DatabaseError, QString::fromUtf8(sqlite3_errmsg(database)));
}

} // namespace

void ErrorSlot::rethrow()
{
    if (error)
        std::rethrow_exception(std::exchange(error, nullptr));
}

QString quotedName(const QString &name)
{
    QString quoted = name;
    quoted.replace(u'"', QLatin1String("\"\""));
    return u'"' + quoted + u'"';
}

void addVirtualTable(sqlite3 *database, const QString &name, VirtualTable &table, ErrorSlot &slot)
{
    const QByteArray module = "module of " + name.toUtf8();
    const int made = sqlite3_create_module_v2(
        database, module.constData(), &virtualTableModule, new Binding{table, slot},
        [](void *binding) { delete static_cast<Binding *>(binding); });
    if (made != SQLITE_OK)
        fail(database, slot);
    const QString sql = QLatin1String("CREATE VIRTUAL TABLE ") + quotedName(name) +
                        QLatin1String(" USING ") + quotedName(QString::fromUtf8(module));
    if (sqlite3_exec(database, sql.toUtf8().constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(database, slot);
}
