#include "host/store/ZWSqlLoggerStore.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/store/ZWLoggerSchema.h"
#include "host/store/ZWSqlLoggerConnection.h"

#include <QDateTime>
#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <functional>

namespace {

std::atomic<quint64> g_storeSerial{0};

constexpr qint64 Hour = 3600;
constexpr qint64 Day = 86400;

qint64 FloorTo(qint64 t, qint64 step)
{
    return ZWDateTime::FloorDiv(t, step) * step;
}

qint64 CeilTo(qint64 t, qint64 step)
{
    return -FloorTo(-t, step);
}

// Runs `body` on the thread's connection; on PostgreSQL a failure is taken
// for a lost connection (a server restart leaves QPSQL's connection closed
// and every later query failing): the connection is opened again, its
// statements prepared again, and `body` runs once more.
bool WithReconnect(ZWSqlLoggerConnection& c, const std::function<bool(QString*)>& body, QString* error, int readErrorId)
{
    QString why;
    if (c.Open(&why) && body(&why))
        return true;
    // A query cut for its timeout or a cancel is not tried again; the cut
    // connection is opened again on next use.
    if (c.Interrupted()) {
        c.Close();
        if (error)
            *error = ZWLoadString(readErrorId).arg(c.Url().Display(), why);
        return false;
    }
    if (!c.IsPostgres()) {
        if (error)
            *error = ZWLoadString(readErrorId).arg(c.Url().Display(), why);
        return false;
    }
    QString reopenWhy;
    if (!c.Reopen(&reopenWhy)) {
        if (error)
            *error = ZWLoadString(ZWTextId::StoreConnectionLost).arg(c.Url().Display(), reopenWhy);
        return false;
    }
    why.clear();
    if (body(&why))
        return true;
    if (error)
        *error = ZWLoadString(readErrorId).arg(c.Url().Display(), why);
    return false;
}

} // namespace

ZWSqlLoggerStore::ZWSqlLoggerStore(const ZWLoggerUrl& url, Creation creation)
    : m_url(url), m_creation(creation), m_id(++g_storeSerial)
{}

ZWSqlLoggerStore::~ZWSqlLoggerStore()
{
    // Other threads' connections go when those threads finish.
    ZWSqlLoggerConnection::DropForThread(m_id);
}

ZWSqlLoggerConnection& ZWSqlLoggerStore::Connection()
{
    return ZWSqlLoggerConnection::ForThread(m_id, m_url, m_creation == Creation::CreateMissing);
}

bool ZWSqlLoggerStore::Open(QString* error)
{
    return EnsureReady(Connection(), error);
}

bool ZWSqlLoggerStore::EnsureReady(ZWSqlLoggerConnection& c, QString* error)
{
    if (!c.Open(error))
        return false;
    if (m_schemaReady.load())
        return true;
    if (!ZWLoggerSchema::Ensure(c, error) || !LoadVariables(c, error))
        return false;
    m_schemaReady = true;
    return true;
}

bool ZWSqlLoggerStore::LoadVariables(ZWSqlLoggerConnection& c, QString* error)
{
    QHash<QString, Variable> loaded;
    const bool ok = WithReconnect(
        c,
        [&](QString* why) {
            loaded.clear();
            QSqlQuery q(c.Database());
            q.setForwardOnly(true);
            if (!q.exec(QStringLiteral("SELECT id, name, unit, kind FROM variables"))) {
                *why = ZWSqlLoggerConnection::ErrorText(q.lastError());
                return false;
            }
            while (q.next()) {
                Variable v;
                v.id = q.value(0).toLongLong();
                v.name = q.value(1).toString();
                v.unit = q.value(2).toString();
                v.kind = q.value(3).toString() == QLatin1String("counter") ? Kind::Counter : Kind::Gauge;
                loaded.insert(v.name, v);
            }
            return true;
        },
        error, ZWTextId::StoreCannotRead);
    if (!ok)
        return false;
    QMutexLocker lock(&m_mutex);
    m_variables = std::move(loaded);
    m_lastReloadMs = QDateTime::currentMSecsSinceEpoch();
    return true;
}

bool ZWSqlLoggerStore::ReloadVariables(QString* error)
{
    ZWSqlLoggerConnection& c = Connection();
    return EnsureReady(c, error) && LoadVariables(c, error);
}

void ZWSqlLoggerStore::NoteVariable(const Variable& variable)
{
    QMutexLocker lock(&m_mutex);
    m_variables.insert(variable.name, variable);
}

QList<ZWSqlLoggerStore::Variable> ZWSqlLoggerStore::Variables()
{
    ZWSqlLoggerConnection& c = Connection();
    EnsureReady(c, nullptr);
    QMutexLocker lock(&m_mutex);
    QList<Variable> list = m_variables.values();
    std::sort(list.begin(), list.end(), [](const Variable& a, const Variable& b) { return a.name < b.name; });
    return list;
}

QStringList ZWSqlLoggerStore::VariableNames()
{
    QStringList names;
    for (const Variable& v : Variables())
        names << v.name;
    return names;
}

QStringList ZWSqlLoggerStore::FilterNames()
{
    return ZWPeriodAggregate::ReductionNames();
}

std::optional<ZWSqlLoggerStore::Variable> ZWSqlLoggerStore::Lookup(const QString& name)
{
    QMutexLocker lock(&m_mutex);
    const auto it = m_variables.constFind(name);
    if (it == m_variables.constEnd())
        return std::nullopt;
    return *it;
}

std::optional<ZWSqlLoggerStore::Variable> ZWSqlLoggerStore::FindVariable(const QString& plainName)
{
    Variable v;
    ZWLoggerReduction r;
    if (Resolve(plainName, v, r) && r == ZWLoggerReduction::Default)
        return v;
    return std::nullopt;
}

bool ZWSqlLoggerStore::Resolve(const QString& name, Variable& variable, ZWLoggerReduction& reduction)
{
    ZWSqlLoggerConnection& c = Connection();
    if (!EnsureReady(c, nullptr))
        return false;
    // Twice at most: a name unknown to the list read earlier may have been
    // added since by another process (at most one re-read a second).
    for (int pass = 0; pass < 2; ++pass) {
        if (const auto whole = Lookup(name)) {
            variable = *whole;
            reduction = ZWLoggerReduction::Default;
            return true;
        }
        QString device, plain, filter;
        if (SplitFilterDriverVariable(name, device, plain, filter) && !filter.isEmpty()) {
            if (!ZWPeriodAggregate::ParseReduction(filter, reduction))
                return false;
            if (const auto base = Lookup(device + QLatin1Char('.') + plain)) {
                variable = *base;
                return true;
            }
        }
        qint64 last;
        {
            QMutexLocker lock(&m_mutex);
            last = m_lastReloadMs;
        }
        if (pass > 0 || QDateTime::currentMSecsSinceEpoch() - last < 1000 || !LoadVariables(c, nullptr))
            return false;
    }
    return false;
}

bool ZWSqlLoggerStore::HoldsNoVariables()
{
    {
        QMutexLocker lock(&m_mutex);
        if (!m_variables.isEmpty())
            return false;
    }
    // Another process may have imported meanwhile: look again.
    if (!ReloadVariables(nullptr))
        return false;
    QMutexLocker lock(&m_mutex);
    return m_variables.isEmpty();
}

bool ZWSqlLoggerStore::HasVariable(const QString& name)
{
    Variable v;
    ZWLoggerReduction r;
    return Resolve(name, v, r);
}

bool ZWSqlLoggerStore::LiveValue(const QString& name, double& value)
{
    Variable v;
    ZWLoggerReduction r;
    if (!Resolve(name, v, r))
        return false;
    ZWSqlLoggerConnection& c = Connection();
    bool found = false;
    const bool ok = WithReconnect(
        c,
        [&](QString* why) {
            QSqlQuery* q = c.Prepared(QStringLiteral("SELECT s.value FROM samples s WHERE s.variable_id = ? AND s.t = "
                                                     "(SELECT MAX(x.t) FROM samples x WHERE x.variable_id = ?)"),
                why);
            if (!q)
                return false;
            q->bindValue(0, v.id);
            q->bindValue(1, v.id);
            if (!q->exec()) {
                *why = ZWSqlLoggerConnection::ErrorText(q->lastError());
                return false;
            }
            found = q->next();
            if (found)
                value = q->value(0).toDouble();
            q->finish();
            return true;
        },
        nullptr, ZWTextId::StoreCannotRead);
    return ok && found;
}

bool ZWSqlLoggerStore::PeriodValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
    std::vector<double>& values, ZWProgress* progress, QString* error)
{
    if (progress)
        progress->SetText(ZWLoadString(ZWTextId::StoreReading));
    if (!start.IsValid() || !end.IsValid()) {
        values.assign(size_t(names.size()), ZW_NO_VALUE);
        return true;
    }
    return PeriodValuesUtc(
        names, ZWLocalTime::ToUtc(start), ZWLocalTime::ToUtc(end), values, error, Method::Rollups, progress);
}

bool ZWSqlLoggerStore::RunPeriodQuery(ZWSqlLoggerConnection& c, const QString& sql, const QVariantList& binds,
    QHash<qint64, ZWPeriodAggregate>& out, const ZWProgress* progress, QString* error)
{
    return WithReconnect(
        c,
        [&](QString* why) {
            ++m_periodQueries;
            out.clear();
            QSqlQuery* q = c.Prepared(sql, why);
            if (!q)
                return false;
            for (int i = 0; i < binds.size(); ++i)
                q->bindValue(i, binds[i]);
            if (!c.ExecBounded(*q, progress, why))
                return false;
            while (q->next()) {
                const qint64 id = q->value(0).toLongLong();
                const int part = q->value(1).toInt();
                const qint64 a = q->value(2).toLongLong();
                const double b = q->value(3).toDouble();
                ZWPeriodAggregate& agg = out[id];
                if (part < 10) {
                    agg.AddPart(a, b, q->value(4).toDouble(), q->value(5).toDouble());
                } else if (part < 20) {
                    agg.SetSeek(ZWPeriodAggregate::Seek(part - 10), a, b);
                } else {
                    agg.AddReset(a, b, q->value(4).toDouble());
                }
            }
            if (q->lastError().isValid()) {
                *why = ZWSqlLoggerConnection::ErrorText(q->lastError());
                return false;
            }
            q->finish();
            return true;
        },
        error, ZWTextId::StoreCannotRead);
}

bool ZWSqlLoggerStore::PeriodValuesUtc(const QStringList& names, qint64 start, qint64 end, std::vector<double>& values,
    QString* error, Method method, const ZWProgress* progress)
{
    values.assign(size_t(names.size()), ZW_NO_VALUE);
    struct Item
    {
        int index;
        Variable variable;
        ZWLoggerReduction reduction;
    };
    std::vector<Item> items;
    for (int i = 0; i < names.size(); ++i) {
        Item item{i, {}, ZWLoggerReduction::Default};
        if (!Resolve(names[i], item.variable, item.reduction))
            continue;
        if (item.reduction == ZWLoggerReduction::Default)
            item.reduction = item.variable.kind == Kind::Counter ? ZWLoggerReduction::Delta : ZWLoggerReduction::Avg;
        items.push_back(item);
    }
    ZWSqlLoggerConnection& c = Connection();
    if (!EnsureReady(c, error))
        return false;
    if (items.empty() || end <= start)
        return true;

    // Which variables need which parts of the query: aggregates over the
    // samples (va), the samples next to the bounds (vs), the counter resets
    // kept in the database (vr) or found among the raw samples (vg).
    QList<qint64> va, vs, vr, vg;
    const auto add = [](QList<qint64>& list, qint64 id) {
        if (!list.contains(id))
            list.append(id);
    };
    for (const Item& item : items) {
        switch (item.reduction) {
        case ZWLoggerReduction::First:
        case ZWLoggerReduction::Last:
        case ZWLoggerReduction::Hours:
            add(vs, item.variable.id);
            break;
        case ZWLoggerReduction::Delta:
            add(vs, item.variable.id);
            // Resets are kept for counters only; a gauge's "delta" finds them
            // among its raw samples.
            add(method == Method::Rollups && item.variable.kind == Kind::Counter ? vr : vg, item.variable.id);
            break;
        default:
            add(va, item.variable.id);
            break;
        }
    }

    QStringList ctes;
    QVariantList binds;
    const auto cte = [&](const char* name, const QList<qint64>& ids) {
        if (ids.isEmpty())
            return;
        QStringList rows;
        for (const qint64 id : ids) {
            rows << QStringLiteral("(CAST(? AS BIGINT))");
            binds << id;
        }
        ctes << QLatin1String(name) + QStringLiteral("(id) AS (VALUES ") + rows.join(QLatin1Char(','))
                + QLatin1Char(')');
    };
    cte("va", va);
    cte("vs", vs);
    cte("vr", vr);
    cte("vg", vg);

    // Every part returns (variable, part, a, b, c, d); parts 0-9 are
    // aggregates in time order (a count, b sum, c min, d max), 10-13 the
    // seeks (a time, b value), 20 resets (a time, b value before, c value).
    static const QString nullReal = QStringLiteral("CAST(NULL AS DOUBLE PRECISION)");
    QStringList parts;
    if (!va.isEmpty()) {
        struct Range
        {
            const char* table;
            qint64 lo, hi;
        };
        std::vector<Range> ranges;
        const qint64 h0 = CeilTo(start, Hour), h1 = FloorTo(end, Hour);
        if (method == Method::Raw || h0 >= h1) {
            ranges.push_back({"samples", start, end});
        } else {
            ranges.push_back({"samples", start, h0});
            const qint64 d0 = CeilTo(h0, Day), d1 = FloorTo(h1, Day);
            if (d0 < d1) {
                ranges.push_back({"rollup_hour", h0, d0});
                ranges.push_back({"rollup_day", d0, d1});
                ranges.push_back({"rollup_hour", d1, h1});
            } else {
                ranges.push_back({"rollup_hour", h0, h1});
            }
            ranges.push_back({"samples", h1, end});
        }
        int part = 0;
        for (const Range& r : ranges) {
            if (r.lo >= r.hi)
                continue;
            if (qstrcmp(r.table, "samples") == 0)
                parts << QStringLiteral("SELECT variable_id, %1, COUNT(*), SUM(value), MIN(value), MAX(value) "
                                        "FROM samples WHERE variable_id IN (SELECT id FROM va) AND t >= ? AND t < ? "
                                        "GROUP BY variable_id")
                             .arg(part);
            else
                parts << QStringLiteral("SELECT variable_id, %1, CAST(SUM(n) AS BIGINT), SUM(total), MIN(lo), "
                                        "MAX(hi) FROM %2 WHERE variable_id IN (SELECT id FROM va) AND bucket >= ? "
                                        "AND bucket < ? GROUP BY variable_id")
                             .arg(part)
                             .arg(QLatin1String(r.table));
            binds << r.lo << r.hi;
            ++part;
        }
    }
    if (!vs.isEmpty()) {
        struct SeekSql
        {
            ZWPeriodAggregate::Seek seek;
            const char* function;
            const char* compare;
            qint64 bound;
        };
        const SeekSql seeks[] = {
            {ZWPeriodAggregate::AtOrBeforeStart, "MAX", "<=", start},
            {ZWPeriodAggregate::AfterStart, "MIN", ">", start},
            {ZWPeriodAggregate::BeforeEnd, "MAX", "<", end},
            {ZWPeriodAggregate::AtOrBeforeEnd, "MAX", "<=", end},
        };
        for (const SeekSql& s : seeks) {
            parts << QStringLiteral("SELECT s.variable_id, %1, s.t, s.value, %4, %4 FROM (SELECT vs.id, "
                                    "(SELECT %2(x.t) FROM samples x WHERE x.variable_id = vs.id AND x.t %3 ?) AS t "
                                    "FROM vs) b JOIN samples s ON s.variable_id = b.id AND s.t = b.t")
                         .arg(10 + int(s.seek))
                         .arg(QLatin1String(s.function), QLatin1String(s.compare), nullReal);
            binds << s.bound;
        }
    }
    if (!vr.isEmpty()) {
        parts << QStringLiteral("SELECT variable_id, 20, t, before_value, value, %1 FROM counter_resets "
                                "WHERE variable_id IN (SELECT id FROM vr) AND t > ? AND t <= ?")
                     .arg(nullReal);
        binds << start << end;
    }
    if (!vg.isEmpty()) {
        parts << QStringLiteral("SELECT w.variable_id, 20, w.t, w.prev, w.value, %1 FROM (SELECT variable_id, t, "
                                "value, LAG(value) OVER (PARTITION BY variable_id ORDER BY t) AS prev FROM samples "
                                "WHERE variable_id IN (SELECT id FROM vg) AND t > ? AND t <= ?) w "
                                "WHERE w.value < w.prev")
                     .arg(nullReal);
        binds << start << end;
    }
    const QString sql = QStringLiteral("WITH ") + ctes.join(QStringLiteral(", ")) + QLatin1Char(' ')
        + parts.join(QStringLiteral(" UNION ALL ")) + QStringLiteral(" ORDER BY 1, 2, 3");

    QHash<qint64, ZWPeriodAggregate> aggregates;
    if (!RunPeriodQuery(c, sql, binds, aggregates, progress, error))
        return false;
    for (const qint64 id : vg)
        aggregates[id].AddResetAcrossStart(end);
    for (const Item& item : items) {
        const auto it = aggregates.constFind(item.variable.id);
        if (it != aggregates.constEnd())
            values[size_t(item.index)] = it->Value(item.reduction, start, end);
    }
    return true;
}
