#include "host/store/ZWLoggerWriter.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerImport.h"
#include "host/store/ZWLoggerSchema.h"
#include "host/store/ZWSqlLoggerConnection.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

constexpr qint64 Hour = 3600;
constexpr qint64 Day = 86400;

qint64 FloorTo(qint64 t, qint64 step)
{
    return ZWDateTime::FloorDiv(t, step) * step;
}

QString KindText(ZWSqlLoggerStore::Kind kind)
{
    return kind == ZWSqlLoggerStore::Kind::Counter ? QStringLiteral("counter") : QStringLiteral("gauge");
}

} // namespace

ZWLoggerWriter::ZWLoggerWriter(ZWSqlLoggerStore& store) : m_store(store)
{
    // Rows per INSERT: big enough to spread the cost of a statement, within
    // SQLite's limit of bound values.
    m_batchRows = m_store.Url().backend() == ZWLoggerUrl::Backend::PostgreSQL ? 2000 : 1000;
}

ZWLoggerWriter::~ZWLoggerWriter()
{
    if (m_open)
        Rollback();
    if (m_bulk && m_store.Url().backend() == ZWLoggerUrl::Backend::SQLite)
        m_store.Connection().Exec(QStringLiteral("PRAGMA journal_mode = WAL"), nullptr);
}

bool ZWLoggerWriter::Fail(QString* error, const QString& why)
{
    if (error)
        *error = ZWLoadString(ZWTextId::StoreCannotWrite).arg(m_store.Url().Display(), why);
    return false;
}

bool ZWLoggerWriter::Run(const QString& sql, const QVariantList& binds, QString* error, QVariantList* firstRow)
{
    QString why;
    QSqlQuery* q = m_store.Connection().Prepared(sql, &why);
    if (!q)
        return Fail(error, why);
    for (int i = 0; i < binds.size(); ++i)
        q->bindValue(i, binds[i]);
    if (!q->exec())
        return Fail(error, ZWSqlLoggerConnection::ErrorText(q->lastError()));
    if (firstRow) {
        firstRow->clear();
        if (q->next())
            for (int i = 0; i < q->record().count(); ++i)
                firstRow->append(q->value(i));
    }
    q->finish();
    return true;
}

bool ZWLoggerWriter::Begin(QString* error)
{
    if (!m_store.Open(error))
        return false;
    ZWSqlLoggerConnection& c = m_store.Connection();
    if (m_bulk) {
        if (c.IsPostgres()) {
            c.Exec(QStringLiteral("SET synchronous_commit = off"), nullptr);
        } else {
            c.Exec(QStringLiteral("PRAGMA journal_mode = MEMORY"), nullptr);
            c.Exec(QStringLiteral("PRAGMA synchronous = OFF"), nullptr);
            c.Exec(QStringLiteral("PRAGMA cache_size = -262144"), nullptr);
        }
    }
    if (!c.Database().transaction())
        return Fail(error, ZWSqlLoggerConnection::ErrorText(c.Database().lastError()));
    m_open = true;
    m_rows.clear();
    m_rowIndex.clear();
    m_touched.clear();
    m_kinds.clear();
    m_kindChanged.clear();
    return true;
}

void ZWLoggerWriter::Rollback()
{
    if (!m_open)
        return;
    m_open = false;
    ZWSqlLoggerConnection& c = m_store.Connection();
    c.Database().rollback();
    m_rows.clear();
    m_rowIndex.clear();
}

bool ZWLoggerWriter::DeleteAll(QString* error)
{
    for (const char* table : {"counter_day", "counter_hour", "counter_resets", "rollup_day", "rollup_hour", "samples",
             "variables", "devices"})
        if (!Run(QStringLiteral("DELETE FROM %1").arg(QLatin1String(table)), {}, error))
            return false;
    return true;
}

bool ZWLoggerWriter::EnsureVariable(const QString& name, ZWSqlLoggerStore::Kind kind, const QString& unit,
    bool forceKind, qint64& id, bool& created, QString* error)
{
    created = false;
    const QString control = ZWLoggerImport::ControlCharacter(name);
    if (!control.isEmpty())
        return Fail(error, ZWLoadString(ZWTextId::ImportControlCharacter).arg(ZWLoggerImport::Quoted(name), control));
    const qsizetype dot = name.indexOf(QLatin1Char('.'));
    if (dot <= 0 || dot == name.size() - 1)
        return Fail(error, ZWLoadString(ZWTextId::ImportNotADeviceVariable).arg(ZWLoggerImport::Quoted(name)));
    QVariantList row;
    if (!Run(QStringLiteral("SELECT id, kind FROM variables WHERE name = ?"), {name}, error, &row))
        return false;
    if (!row.isEmpty()) {
        id = row[0].toLongLong();
        const ZWSqlLoggerStore::Kind existing = row[1].toString() == QLatin1String("counter")
            ? ZWSqlLoggerStore::Kind::Counter
            : ZWSqlLoggerStore::Kind::Gauge;
        m_kinds.insert(id, existing);
        if (forceKind && existing != kind) {
            if (!Run(QStringLiteral("UPDATE variables SET kind = ? WHERE id = ?"), {KindText(kind), id}, error))
                return false;
            m_kinds.insert(id, kind);
            m_kindChanged.insert(id);
        }
        return true;
    }
    const QString device = name.left(dot);
    if (!Run(QStringLiteral("INSERT INTO devices (name) VALUES (?) ON CONFLICT (name) DO NOTHING"), {device}, error)
        || !Run(QStringLiteral("SELECT id FROM devices WHERE name = ?"), {device}, error, &row))
        return false;
    if (row.isEmpty())
        return Fail(error, name);
    const qint64 deviceId = row[0].toLongLong();
    if (!Run(QStringLiteral("INSERT INTO variables (device_id, name, unit, kind) VALUES (?, ?, ?, ?)"),
            {deviceId, name, unit.isNull() ? QStringLiteral("") : unit, KindText(kind)}, error)
        || !Run(QStringLiteral("SELECT id FROM variables WHERE name = ?"), {name}, error, &row))
        return false;
    if (row.isEmpty())
        return Fail(error, name);
    id = row[0].toLongLong();
    m_kinds.insert(id, kind);
    created = true;
    return true;
}

bool ZWLoggerWriter::Add(qint64 variableId, qint64 t, double value, QString* error)
{
    const QPair<qint64, qint64> key(variableId, t);
    // One INSERT may not name the same key twice (PostgreSQL refuses it):
    // within a batch the later value replaces the earlier at once.
    const auto it = m_rowIndex.constFind(key);
    if (it != m_rowIndex.constEnd()) {
        m_rows[*it].value = value;
    } else {
        m_rowIndex.insert(key, m_rows.size());
        m_rows.push_back(Row{variableId, t, value});
    }
    auto range = m_touched.find(variableId);
    if (range == m_touched.end())
        m_touched.insert(variableId, Range{t, t});
    else {
        range->first = std::min(range->first, t);
        range->last = std::max(range->last, t);
    }
    if (int(m_rows.size()) >= m_batchRows)
        return Flush(error);
    return true;
}

bool ZWLoggerWriter::Flush(QString* error)
{
    size_t done = 0;
    while (done < m_rows.size()) {
        const int n = int(std::min(m_rows.size() - done, size_t(m_batchRows)));
        QString sql = QStringLiteral("INSERT INTO samples (variable_id, t, value) VALUES ");
        sql.reserve(sql.size() + n * 10 + 80);
        for (int i = 0; i < n; ++i)
            sql += i ? QStringLiteral(",(?,?,?)") : QStringLiteral("(?,?,?)");
        sql += QStringLiteral(" ON CONFLICT (variable_id, t) DO UPDATE SET value = excluded.value");
        QString why;
        QSqlQuery* q = m_store.Connection().Prepared(sql, &why);
        if (!q)
            return Fail(error, why);
        for (int i = 0; i < n; ++i) {
            const Row& r = m_rows[done + size_t(i)];
            q->bindValue(3 * i, r.id);
            q->bindValue(3 * i + 1, r.t);
            q->bindValue(3 * i + 2, r.value);
        }
        if (!q->exec())
            return Fail(error, ZWSqlLoggerConnection::ErrorText(q->lastError()));
        done += size_t(n);
        m_written += n;
    }
    m_rows.clear();
    m_rowIndex.clear();
    return true;
}

bool ZWLoggerWriter::UpdateRollups(qint64 id, const Range& range, QString* error)
{
    const qint64 h0 = FloorTo(range.first, Hour), h1 = FloorTo(range.last, Hour);
    const qint64 d0 = FloorTo(h0, Day), d1 = FloorTo(h1, Day);
    return Run(QStringLiteral("DELETE FROM rollup_hour WHERE variable_id = ? AND bucket >= ? AND bucket <= ?"),
               {id, h0, h1}, error)
        && Run(QStringLiteral("INSERT INTO rollup_hour (variable_id, bucket, n, total, lo, hi) "
                              "SELECT variable_id, t - t % 3600 AS hb, COUNT(*), SUM(value), MIN(value), MAX(value) "
                              "FROM samples WHERE variable_id = ? AND t >= ? AND t < ? GROUP BY variable_id, hb"),
            {id, h0, h1 + Hour}, error)
        && Run(QStringLiteral("DELETE FROM rollup_day WHERE variable_id = ? AND bucket >= ? AND bucket <= ?"),
            {id, d0, d1}, error)
        && Run(QStringLiteral("INSERT INTO rollup_day (variable_id, bucket, n, total, lo, hi) "
                              "SELECT variable_id, bucket - bucket % 86400 AS db, CAST(SUM(n) AS BIGINT), SUM(total), "
                              "MIN(lo), MAX(hi) FROM rollup_hour WHERE variable_id = ? AND bucket >= ? AND bucket < ? "
                              "GROUP BY variable_id, db"),
            {id, d0, d1 + Day}, error);
}

bool ZWLoggerWriter::UpdateResets(qint64 id, const Range& range, QString* error)
{
    // A changed sample can make or unmake a reset of itself and of the
    // sample after it: redo the resets from the first touched sample through
    // the first untouched one after the range, comparing with the one before.
    QVariantList row;
    if (!Run(QStringLiteral("SELECT MAX(t) FROM samples WHERE variable_id = ? AND t < ?"), {id, range.first}, error,
            &row))
        return false;
    const qint64 from = row.isEmpty() || row[0].isNull() ? range.first : row[0].toLongLong();
    if (!Run(QStringLiteral("SELECT MIN(t) FROM samples WHERE variable_id = ? AND t > ?"), {id, range.last}, error,
            &row))
        return false;
    const qint64 to = row.isEmpty() || row[0].isNull() ? range.last : row[0].toLongLong();
    return Run(QStringLiteral("DELETE FROM counter_resets WHERE variable_id = ? AND t >= ? AND t <= ?"),
               {id, range.first, to}, error)
        && Run(QStringLiteral("INSERT INTO counter_resets (variable_id, t, before_value, value) "
                              "SELECT w.variable_id, w.t, w.prev, w.value FROM (SELECT variable_id, t, value, "
                              "LAG(value) OVER (ORDER BY t) AS prev FROM samples WHERE variable_id = ? AND t >= ? "
                              "AND t <= ?) w WHERE w.value < w.prev"),
            {id, from, to}, error);
}

bool ZWLoggerWriter::UpdateCounterHours(qint64 id, const Range& range, QString* error)
{
    // A changed sample changes its own rise and that of the sample after it:
    // redo every hour that the touched samples and the one after them close,
    // whole, from the sample before the first such hour.
    QVariantList row;
    if (!Run(QStringLiteral("SELECT MIN(t) FROM samples WHERE variable_id = ? AND t > ?"), {id, range.last}, error,
            &row))
        return false;
    const qint64 to = row.isEmpty() || row[0].isNull() ? range.last : row[0].toLongLong();
    const qint64 h0 = FloorTo(range.first - 1, Hour), h1 = FloorTo(to - 1, Hour);
    if (!Run(QStringLiteral("SELECT MAX(t) FROM samples WHERE variable_id = ? AND t <= ?"), {id, h0}, error, &row))
        return false;
    const qint64 from = row.isEmpty() || row[0].isNull() ? h0 : row[0].toLongLong();
    return Run(QStringLiteral("DELETE FROM counter_hour WHERE variable_id = ? AND bucket >= ? AND bucket <= ?"),
               {id, h0, h1}, error)
        && Run(ZWLoggerSchema::CounterHourFillSql(
                   QStringLiteral("variable_id = ? AND t >= ? AND t <= ?"), QStringLiteral("w.t > ?")),
            {id, from, h1 + Hour, h0}, error)
        && Run(QStringLiteral("DELETE FROM counter_day WHERE variable_id = ? AND bucket >= ? AND bucket <= ?"),
            {id, FloorTo(h0, Day), FloorTo(h1, Day)}, error)
        && Run(
            ZWLoggerSchema::CounterDayFillSql(QStringLiteral("h.variable_id = ? AND h.bucket >= ? AND h.bucket < ?")),
            {id, FloorTo(h0, Day), FloorTo(h1, Day) + Day}, error);
}

bool ZWLoggerWriter::UpdateDerived(QString* error)
{
    // Variables whose kind changed: their resets are dropped, or found
    // over all their samples.
    for (const qint64 id : std::as_const(m_kindChanged)) {
        if (!Run(QStringLiteral("DELETE FROM counter_resets WHERE variable_id = ?"), {id}, error)
            || !Run(QStringLiteral("DELETE FROM counter_hour WHERE variable_id = ?"), {id}, error)
            || !Run(QStringLiteral("DELETE FROM counter_day WHERE variable_id = ?"), {id}, error))
            return false;
        if (m_kinds.value(id) != ZWSqlLoggerStore::Kind::Counter)
            continue;
        QVariantList row;
        if (!Run(QStringLiteral("SELECT MIN(t), MAX(t) FROM samples WHERE variable_id = ?"), {id}, error, &row))
            return false;
        if (row.size() == 2 && !row[0].isNull()) {
            Range whole{row[0].toLongLong(), row[1].toLongLong()};
            auto it = m_touched.find(id);
            if (it != m_touched.end()) {
                whole.first = std::min(whole.first, it->first);
                whole.last = std::max(whole.last, it->last);
            }
            if (!UpdateResets(id, whole, error) || !UpdateCounterHours(id, whole, error))
                return false;
        }
    }
    for (auto it = m_touched.constBegin(); it != m_touched.constEnd(); ++it) {
        if (!UpdateRollups(it.key(), it.value(), error))
            return false;
        if (m_kinds.value(it.key()) == ZWSqlLoggerStore::Kind::Counter && !m_kindChanged.contains(it.key())
            && (!UpdateResets(it.key(), it.value(), error) || !UpdateCounterHours(it.key(), it.value(), error)))
            return false;
    }
    return true;
}

bool ZWLoggerWriter::Commit(QString* error)
{
    if (!m_open)
        return Fail(error, QStringLiteral("no transaction"));
    if (!Flush(error) || !UpdateDerived(error)) {
        Rollback();
        return false;
    }
    ZWSqlLoggerConnection& c = m_store.Connection();
    if (!c.Database().commit()) {
        const QString why = ZWSqlLoggerConnection::ErrorText(c.Database().lastError());
        Rollback();
        return Fail(error, why);
    }
    m_open = false;
    m_touched.clear();
    m_kindChanged.clear();
    return m_store.ReloadVariables(error);
}
