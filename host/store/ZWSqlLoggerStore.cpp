#include "host/store/ZWSqlLoggerStore.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/store/ZWLoggerSchema.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "host/store/ZWSqliteTariffHours.h"

#include <QDateTime>
#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <map>

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
    QStringList names = ZWPeriodAggregate::ReductionNames();
    if (const auto calendar = TariffCalendar())
        names << calendar->PeriodNames();
    return names;
}

bool ZWSqlLoggerStore::SetTariffCalendar(std::shared_ptr<const ZWTariffCalendar> calendar, QString* error)
{
    if (calendar) {
        for (const QString& period : calendar->PeriodNames()) {
            ZWLoggerReduction r;
            if (ZWPeriodAggregate::ParseReduction(period, r)) {
                if (error)
                    *error = ZWLoadString(ZWTextId::StoreTariffPeriodIsReduction).arg(calendar->Name(), period);
                return false;
            }
        }
    }
    QMutexLocker lock(&m_mutex);
    m_calendar = std::move(calendar);
    return true;
}

std::shared_ptr<const ZWTariffCalendar> ZWSqlLoggerStore::TariffCalendar()
{
    QMutexLocker lock(&m_mutex);
    return m_calendar;
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
    ZWPeriodShift shift;
    int tariff = -1;
    if (Resolve(plainName, v, r, shift, tariff) && r == ZWLoggerReduction::Default && shift.IsNone() && tariff < 0)
        return v;
    return std::nullopt;
}

bool ZWSqlLoggerStore::Resolve(const QString& name, Variable& variable, ZWLoggerReduction& reduction)
{
    ZWPeriodShift shift;
    return Resolve(name, variable, reduction, shift);
}

bool ZWSqlLoggerStore::Resolve(
    const QString& name, Variable& variable, ZWLoggerReduction& reduction, ZWPeriodShift& shift)
{
    int tariff = -1;
    return Resolve(name, variable, reduction, shift, tariff);
}

bool ZWSqlLoggerStore::ParseFilter(
    const QString& filter, const Variable& variable, ZWLoggerReduction& reduction, ZWPeriodShift& shift, int& tariff)
{
    QString text;
    reduction = ZWLoggerReduction::Default;
    tariff = -1;
    if (filter.isEmpty() || !ZWPeriodShift::Parse(filter, text, shift))
        return false;
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    QString period;
    if (colon >= 0) {
        period = text.mid(colon + 1);
        text = text.left(colon);
        if (text.isEmpty() || period.isEmpty())
            return false;
    }
    if (!text.isEmpty() && !ZWPeriodAggregate::ParseReduction(text, reduction)) {
        if (!period.isEmpty())
            return false;
        period = text;
    }
    if (period.isEmpty())
        return true;
    const auto calendar = TariffCalendar();
    tariff = calendar ? calendar->PeriodIndex(period) : -1;
    if (tariff < 0)
        return false;
    // Within a tariff period's hours: the reductions that add up over
    // stretches of samples, and a counter's increase.
    switch (reduction) {
    case ZWLoggerReduction::Default:
    case ZWLoggerReduction::Avg:
    case ZWLoggerReduction::Min:
    case ZWLoggerReduction::Max:
    case ZWLoggerReduction::Sum:
    case ZWLoggerReduction::Count:
        return true;
    case ZWLoggerReduction::Delta:
        return variable.kind == Kind::Counter;
    default:
        return false;
    }
}

bool ZWSqlLoggerStore::Resolve(
    const QString& name, Variable& variable, ZWLoggerReduction& reduction, ZWPeriodShift& shift, int& tariff)
{
    ZWSqlLoggerConnection& c = Connection();
    if (!EnsureReady(c, nullptr))
        return false;
    // Twice at most: a name unknown to the list read earlier may have been
    // added since by another process (at most one re-read a second).
    for (int pass = 0; pass < 2; ++pass) {
        shift = ZWPeriodShift();
        tariff = -1;
        if (const auto whole = Lookup(name)) {
            variable = *whole;
            reduction = ZWLoggerReduction::Default;
            return true;
        }
        // The variable is what precedes the last or the one but last ":"
        // (a reduction and a tariff period), the longer name first.
        const qsizetype dot = name.indexOf(QLatin1Char('.'));
        qsizetype colon = name.size();
        for (int k = 0; k < 2 && dot > 0; ++k) {
            colon = name.lastIndexOf(QLatin1Char(':'), colon - 1);
            if (colon <= dot)
                break;
            if (const auto base = Lookup(name.left(colon))) {
                if (!ParseFilter(name.mid(colon + 1), *base, reduction, shift, tariff))
                    return false;
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

// What a period query returned, by what it is about.
struct ZWSqlLoggerStore::Rows
{
    struct Partial
    {
        qint64 count;
        double sum, minimum, maximum;
    };
    struct Found
    {
        bool valid = false;
        qint64 t = 0;
        double value = 0.0;
    };
    using Key = QPair<qint64, qint64>;
    // (variable, piece): the piece's count, sum, minimum and maximum.
    QHash<Key, Partial> partials;
    // (variable, instant): the samples at or before it, after it and before it.
    QHash<Key, std::array<Found, 3>> seeks;
    // variable: its resets by time (value before, value).
    QHash<qint64, std::map<qint64, std::pair<double, double>>> resets;
    // (variable, tariff label): the aggregate of the samples in its hours
    // (part 30), and a counter's rises in its whole hours (part 31: count of
    // hours, sum of rises). Several statements' rows add up.
    QHash<Key, Partial> tariffParts, tariffRises;
    // (variable, HourKey(group, hour class)): the same from hour maps
    // (parts 32 and 33).
    QHash<Key, Partial> hourParts, hourRises;

    static void Add(QHash<Key, Partial>& to, const Key& key, const Partial& p)
    {
        const auto it = to.find(key);
        if (it == to.end()) {
            to.insert(key, p);
            return;
        }
        it->count += p.count;
        it->sum += p.sum;
        it->minimum = std::min(it->minimum, p.minimum);
        it->maximum = std::max(it->maximum, p.maximum);
    }

    void Merge(Rows&& other)
    {
        for (auto it = other.tariffParts.cbegin(); it != other.tariffParts.cend(); ++it)
            Add(tariffParts, it.key(), it.value());
        for (auto it = other.tariffRises.cbegin(); it != other.tariffRises.cend(); ++it)
            Add(tariffRises, it.key(), it.value());
        for (auto it = other.hourParts.cbegin(); it != other.hourParts.cend(); ++it)
            Add(hourParts, it.key(), it.value());
        for (auto it = other.hourRises.cbegin(); it != other.hourRises.cend(); ++it)
            Add(hourRises, it.key(), it.value());
        for (auto it = other.partials.cbegin(); it != other.partials.cend(); ++it)
            partials.insert(it.key(), it.value());
        for (auto it = other.seeks.cbegin(); it != other.seeks.cend(); ++it) {
            std::array<Found, 3>& to = seeks[it.key()];
            for (size_t k = 0; k < 3; ++k)
                if (it.value()[k].valid)
                    to[k] = it.value()[k];
        }
        for (auto it = other.resets.cbegin(); it != other.resets.cend(); ++it)
            resets[it.key()].insert(it.value().begin(), it.value().end());
    }
};

namespace {

// Bound values a statement may carry before a call is split (SQLite allows
// 32,766, PostgreSQL 65,535).
constexpr int MostBinds = 30000;
// Statements with more bound values than this are prepared for one use
// instead of being kept with the connection (preparing a month's series by
// day costs about as much as running it).
constexpr int MostBindsKept = 4000;

enum Table { Samples, RollupHour, RollupDay, CounterHour };

struct Piece
{
    Table table;
    qint64 lo, hi;
    qint64 id;
};

// The reading plan of one group of ranges.
struct PlanGroup
{
    // Which variables need which parts of the query: aggregates over the
    // samples (va), the samples next to the bounds (vs), the counter resets
    // kept in the database (vr) or found among the raw samples (vg),
    // aggregates over tariff hours (vt) and counter rises in them (vc).
    QList<qint64> va, vs, vr, vg, vt, vc;
    std::vector<Piece> pieces;
    // Per range: its pieces in time order.
    std::vector<std::vector<qint64>> rangePieces;
    // Where samples are sought: at or before, after, before these instants.
    std::vector<qint64> atOrBefore, after, before;
    // Where resets are read: the ranges joined into spans (lo, hi].
    std::vector<std::pair<qint64, qint64>> spans;

    bool Empty() const { return va.isEmpty() && vs.isEmpty() && vr.isEmpty() && vg.isEmpty(); }
    int Binds() const
    {
        return int(2 * (va.size() + vs.size() + vr.size() + vg.size()) + 4 * pieces.size()
            + 2 * (atOrBefore.size() + after.size() + before.size()) + 3 * spans.size());
    }
};

// A stretch of a tariff period's hours to read: of group g's variables in vt
// (from samples or rollups) or vc (counter_hour), summed up per label.
struct TariffPiece
{
    Table table;
    int g;
    qint64 label, lo, hi;
};
// What a piece counts against a statement's bound values: they travel in one
// text, but a statement should stay of a size that a server takes.
constexpr int TariffPieceBinds = 1;

// The whole hours of a group's tariff ranges as one map for
// zw_tariff_hours (SQLite): hour i from h0 has class range * periods +
// period, or -1 outside the ranges.
struct TariffMap
{
    int g;
    qint64 h0, h1;
    QByteArray map;
};
// Past some twenty years of hours a group is read by stretches instead.
constexpr qint64 MostMapHours = 24 * 366 * 20;

qint64 HourKey(int g, qint32 hourClass)
{
    return (qint64(g) << 32) | quint32(hourClass);
}

void AddOnce(QList<qint64>& list, qint64 id)
{
    if (!list.contains(id))
        list.append(id);
}

void SortUnique(std::vector<qint64>& v)
{
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
}

// [lo, hi) in pieces: raw samples for the partial hours at the edges, hour
// rollups for whole hours, day rollups for whole (UTC) days.
void Split(qint64 lo, qint64 hi, bool raw, qint64& nextId, std::vector<Piece>& pieces, std::vector<qint64>& ids)
{
    const auto add = [&](Table table, qint64 a, qint64 b) {
        if (a >= b)
            return;
        pieces.push_back({table, a, b, nextId});
        ids.push_back(nextId++);
    };
    const qint64 h0 = CeilTo(lo, Hour), h1 = FloorTo(hi, Hour);
    if (raw || h0 >= h1) {
        add(Samples, lo, hi);
        return;
    }
    add(Samples, lo, h0);
    const qint64 d0 = CeilTo(h0, Day), d1 = FloorTo(h1, Day);
    if (d0 < d1) {
        add(RollupHour, h0, d0);
        add(RollupDay, d0, d1);
        add(RollupHour, d1, h1);
    } else {
        add(RollupHour, h0, h1);
    }
    add(Samples, h1, hi);
}

// The pieces, seek instants and reset spans of a group's ranges.
void PlanRanges(PlanGroup& g, const std::vector<std::pair<qint64, qint64>>& ranges, bool raw, qint64& nextId)
{
    std::vector<qint64> cuts;
    for (const auto& [s, e] : ranges) {
        if (s < e) {
            cuts.push_back(s);
            cuts.push_back(e);
        }
    }
    SortUnique(cuts);
    const auto at = [&](qint64 t) { return size_t(std::lower_bound(cuts.begin(), cuts.end(), t) - cuts.begin()); };
    if (!g.va.isEmpty()) {
        // The ranges' bounds cut the time axis into stretches; each covered
        // stretch is read once, and each range adds up its stretches.
        std::vector<int> cover(cuts.size() + 1, 0);
        for (const auto& [s, e] : ranges) {
            if (s < e) {
                ++cover[at(s)];
                --cover[at(e)];
            }
        }
        std::vector<std::vector<qint64>> stretch(cuts.size());
        int depth = 0;
        for (size_t k = 0; k + 1 < cuts.size(); ++k) {
            depth += cover[k];
            if (depth > 0)
                Split(cuts[k], cuts[k + 1], raw, nextId, g.pieces, stretch[k]);
        }
        g.rangePieces.resize(ranges.size());
        for (size_t r = 0; r < ranges.size(); ++r) {
            const auto& [s, e] = ranges[r];
            if (s >= e)
                continue;
            for (size_t k = at(s); k < at(e); ++k)
                g.rangePieces[r].insert(g.rangePieces[r].end(), stretch[k].begin(), stretch[k].end());
        }
    }
    if (!g.vs.isEmpty()) {
        for (const auto& [s, e] : ranges) {
            if (s < e) {
                g.atOrBefore.push_back(s);
                g.atOrBefore.push_back(e);
                g.after.push_back(s);
                g.before.push_back(e);
            }
        }
        SortUnique(g.atOrBefore);
        SortUnique(g.after);
        SortUnique(g.before);
    }
    if (!g.vr.isEmpty() || !g.vg.isEmpty()) {
        std::vector<std::pair<qint64, qint64>> sorted;
        for (const auto& range : ranges)
            if (range.first < range.second)
                sorted.push_back(range);
        std::sort(sorted.begin(), sorted.end());
        for (const auto& range : sorted) {
            if (!g.spans.empty() && range.first <= g.spans.back().second)
                g.spans.back().second = std::max(g.spans.back().second, range.second);
            else
                g.spans.push_back(range);
        }
    }
}

// One statement for the groups `batch`: common table expressions of the
// variables, pieces, seek instants and spans of each group (g = group
// index), then one part per kind of row. Every part returns (variable, part,
// key, a, b, c, d):
// - 0: a piece's aggregate: key the piece, a count, b sum, c min, d max;
// - 10, 11, 12: the sample at or before, after, before instant `key`: a its
//   time, b its value;
// - 20: a reset at time key = a: b the value before, c the value.
QString PeriodSql(const std::vector<PlanGroup>& plan, const std::vector<int>& batch, const TariffPiece* tariffBegin,
    const TariffPiece* tariffEnd, const std::vector<TariffMap>* maps, bool postgres, QVariantList& binds)
{
    QStringList ctes, parts;
    const auto cte = [&](const char* name, const char* columns, int arity, const std::vector<qint64>& flat) {
        if (flat.empty())
            return false;
        QStringList cells;
        for (int i = 0; i < arity; ++i)
            cells << QStringLiteral("CAST(? AS BIGINT)");
        const QString row = QLatin1Char('(') + cells.join(QLatin1Char(',')) + QLatin1Char(')');
        QStringList rows;
        for (size_t i = 0; i < flat.size(); i += size_t(arity))
            rows << row;
        for (const qint64 v : flat)
            binds << v;
        ctes << QLatin1String(name) + QLatin1Char('(') + QLatin1String(columns) + QStringLiteral(") AS (VALUES ")
                + rows.join(QLatin1Char(',')) + QLatin1Char(')');
        return true;
    };
    const auto variables = [&](const char* name, QList<qint64> PlanGroup::*list) {
        std::vector<qint64> flat;
        for (const int g : batch) {
            for (const qint64 id : plan[size_t(g)].*list) {
                flat.push_back(g);
                flat.push_back(id);
            }
        }
        return cte(name, "g, id", 2, flat);
    };
    const bool va = variables("va", &PlanGroup::va);
    // The tariff pieces' groups, for their variables.
    std::vector<int> tariffGroups;
    for (const TariffPiece* t = tariffBegin; t != tariffEnd; ++t)
        tariffGroups.push_back(t->g);
    if (maps)
        for (const TariffMap& m : *maps)
            tariffGroups.push_back(m.g);
    std::sort(tariffGroups.begin(), tariffGroups.end());
    tariffGroups.erase(std::unique(tariffGroups.begin(), tariffGroups.end()), tariffGroups.end());
    const auto tariffVariables = [&](const char* name, QList<qint64> PlanGroup::*list) {
        std::vector<qint64> flat;
        for (const int g : tariffGroups) {
            for (const qint64 id : plan[size_t(g)].*list) {
                flat.push_back(g);
                flat.push_back(id);
            }
        }
        return cte(name, "g, id", 2, flat);
    };
    const bool vt = tariffVariables("vt", &PlanGroup::vt);
    const bool vc = tariffVariables("vc", &PlanGroup::vc);
    const bool vs = variables("vs", &PlanGroup::vs);
    const bool vr = variables("vr", &PlanGroup::vr);
    const bool vg = variables("vg", &PlanGroup::vg);

    static const QString nullReal = QStringLiteral("CAST(NULL AS DOUBLE PRECISION)");
    if (va) {
        const char* const names[] = {"pr", "ph", "pd"};
        for (const Table table : {Samples, RollupHour, RollupDay}) {
            std::vector<qint64> flat;
            for (const int g : batch) {
                for (const Piece& p : plan[size_t(g)].pieces) {
                    if (p.table == table)
                        flat.insert(flat.end(), {qint64(g), p.id, p.lo, p.hi});
                }
            }
            if (!cte(names[table], "g, p, lo, hi", 4, flat))
                continue;
            // The pieces and variables are the outer loops, the table the
            // inner one (SQLite keeps the order of a CROSS JOIN, even in a
            // flattened subquery; a plain join over a few dozen ranges made it
            // scan a variable's samples first): every piece is an index range
            // of its table.
            if (table == Samples)
                parts << QStringLiteral("SELECT v.id, 0, p.p, COUNT(*), SUM(s.value), MIN(s.value), MAX(s.value) "
                                        "FROM va v CROSS JOIN pr p CROSS JOIN samples s WHERE p.g = v.g "
                                        "AND s.variable_id = v.id AND s.t >= p.lo AND s.t < p.hi GROUP BY v.id, p.p");
            else
                parts << QStringLiteral("SELECT v.id, 0, p.p, CAST(SUM(r.n) AS BIGINT), SUM(r.total), MIN(r.lo), "
                                        "MAX(r.hi) FROM va v CROSS JOIN %1 p CROSS JOIN %2 r WHERE p.g = v.g "
                                        "AND r.variable_id = v.id AND r.bucket >= p.lo AND r.bucket < p.hi "
                                        "GROUP BY v.id, p.p")
                             .arg(QLatin1String(names[table]),
                                 QLatin1String(table == RollupHour ? "rollup_hour" : "rollup_day"));
        }
    }
    if (vs) {
        struct SeekSql
        {
            const char* name;
            std::vector<qint64> PlanGroup::*instants;
            const char* function;
            const char* compare;
        };
        const SeekSql seeks[] = {
            {"sa", &PlanGroup::atOrBefore, "MAX", "<="},
            {"sn", &PlanGroup::after, "MIN", ">"},
            {"sb", &PlanGroup::before, "MAX", "<"},
        };
        for (int k = 0; k < 3; ++k) {
            std::vector<qint64> flat;
            for (const int g : batch) {
                for (const qint64 t : plan[size_t(g)].*(seeks[k].instants)) {
                    flat.push_back(g);
                    flat.push_back(t);
                }
            }
            if (!cte(seeks[k].name, "g, b", 2, flat))
                continue;
            // The seeks are the outer loop: with a plain JOIN SQLite may scan
            // the samples and run the correlated seek for each of them.
            parts << QStringLiteral("SELECT s.variable_id, %1, q.b, s.t, s.value, %5, %5 FROM (SELECT v.id, b.b, "
                                    "(SELECT %2(x.t) FROM samples x WHERE x.variable_id = v.id AND x.t %3 b.b) AS t "
                                    "FROM vs v CROSS JOIN %4 b WHERE b.g = v.g) q "
                                    "CROSS JOIN samples s WHERE s.variable_id = q.id AND s.t = q.t")
                         .arg(QString::number(10 + k), QLatin1String(seeks[k].function),
                             QLatin1String(seeks[k].compare), QLatin1String(seeks[k].name), nullReal);
        }
    }
    if (vr || vg) {
        std::vector<qint64> flat;
        for (const int g : batch)
            for (const auto& [lo, hi] : plan[size_t(g)].spans)
                flat.insert(flat.end(), {qint64(g), lo, hi});
        cte("rs", "g, lo, hi", 3, flat);
    }
    if (vr)
        parts << QStringLiteral("SELECT r.variable_id, 20, r.t, r.t, r.before_value, r.value, %1 FROM vr v "
                                "CROSS JOIN rs p CROSS JOIN counter_resets r WHERE p.g = v.g AND r.variable_id = v.id "
                                "AND r.t > p.lo AND r.t <= p.hi")
                     .arg(nullReal);
    if (vg)
        parts << QStringLiteral("SELECT w.id, 20, w.t, w.t, w.prev, w.value, %1 FROM (SELECT v.id, s.t, s.value, "
                                "LAG(s.value) OVER (PARTITION BY v.id, p.g, p.lo ORDER BY s.t) AS prev FROM vg v "
                                "CROSS JOIN rs p CROSS JOIN samples s WHERE p.g = v.g AND s.variable_id = v.id "
                                "AND s.t > p.lo AND s.t <= p.hi) w WHERE w.value < w.prev")
                     .arg(nullReal);
    // Tariff hours: the pieces carry their label, and rows come back summed
    // per (variable, label), a few per tariff period, however many hours.
    const char* const tariffNames[] = {"ts", "th", "td", "tc"};
    for (const Table table : {Samples, RollupHour, RollupDay, CounterHour}) {
        if (!(table == CounterHour ? vc : vt))
            continue;
        std::vector<qint64> flat;
        for (const TariffPiece* t = tariffBegin; t != tariffEnd; ++t)
            if (t->table == table)
                flat.insert(flat.end(), {qint64(t->g), t->label, t->lo, t->hi});
        if (flat.empty())
            continue;
        // A year's tariff hours are thousands of pieces: they travel as one
        // bound JSON text of [g, k, lo, hi] rows (binding each number costs
        // the driver time that grows with the square of their count).
        QString json = QStringLiteral("[");
        json.reserve(qsizetype(flat.size()) * 12);
        for (size_t i = 0; i < flat.size(); i += 4)
            json += QStringLiteral("%1[%2,%3,%4,%5]")
                        .arg(i ? QStringLiteral(",") : QString())
                        .arg(flat[i])
                        .arg(flat[i + 1])
                        .arg(flat[i + 2])
                        .arg(flat[i + 3]);
        json += QLatin1Char(']');
        binds << json;
        ctes << QLatin1String(tariffNames[table])
                + (postgres ? QStringLiteral(
                       "(g, k, lo, hi) AS MATERIALIZED (SELECT CAST(e->>0 AS BIGINT), CAST(e->>1 AS BIGINT), "
                       "CAST(e->>2 AS BIGINT), CAST(e->>3 AS BIGINT) FROM "
                       "json_array_elements(CAST(? AS JSON)) e)")
                            : QStringLiteral("(g, k, lo, hi) AS MATERIALIZED (SELECT json_extract(e.value, '$[0]'), "
                                             "json_extract(e.value, '$[1]'), json_extract(e.value, '$[2]'), "
                                             "json_extract(e.value, '$[3]') FROM json_each(?) e)"));
        const QLatin1String cteName(tariffNames[table]);
        // The pieces' list is read once (MATERIALIZED) and joined from there.
        if (table == Samples)
            parts << QStringLiteral("SELECT v.id, 30, p.k, COUNT(*), SUM(s.value), MIN(s.value), MAX(s.value) "
                                    "FROM ts p CROSS JOIN vt v CROSS JOIN samples s WHERE p.g = v.g "
                                    "AND s.variable_id = v.id AND s.t >= p.lo AND s.t < p.hi GROUP BY v.id, p.k");
        else if (table == CounterHour)
            // Summed per piece first: grouping a year's hours at once would
            // sort every one of them. A piece without rows gives NULL, which
            // COUNT leaves out.
            parts << QStringLiteral("SELECT x.id, 31, x.k, COUNT(x.r), SUM(x.r), %1, %1 FROM (SELECT v.id, p.k, "
                                    "(SELECT SUM(c.rise) FROM counter_hour c WHERE c.variable_id = v.id "
                                    "AND c.bucket >= p.lo AND c.bucket < p.hi) AS r FROM vc v CROSS JOIN tc p "
                                    "WHERE p.g = v.g) x GROUP BY x.id, x.k")
                         .arg(nullReal);
        else
            parts << QStringLiteral("SELECT v.id, 30, p.k, CAST(SUM(r.n) AS BIGINT), SUM(r.total), MIN(r.lo), "
                                    "MAX(r.hi) FROM %1 p CROSS JOIN vt v CROSS JOIN %2 r WHERE p.g = v.g "
                                    "AND r.variable_id = v.id AND r.bucket >= p.lo AND r.bucket < p.hi "
                                    "GROUP BY v.id, p.k")
                         .arg(cteName, QLatin1String(table == RollupHour ? "rollup_hour" : "rollup_day"));
    }
    // Hour maps: one aggregate per variable over its whole hours (a BLOB
    // of sums per hour class in the last column).
    // The map is a bound value of its own arm: SQLite reads it once per
    // variable, not once per hour as a column of a joined row.
    if (maps && (vt || vc)) {
        for (const TariffMap& m : *maps) {
            if (vc) {
                // A counter's rises by day: 24 hours a row.
                static const QString hours = [] {
                    QStringList r;
                    for (int h = 0; h < 24; ++h)
                        r << QStringLiteral("d.r%1").arg(h);
                    return r.join(QStringLiteral(", "));
                }();
                parts << QStringLiteral("SELECT v.id, 33, v.g, 0, 0, 0, (SELECT zw_tariff_days(?, CAST(? AS BIGINT), "
                                        "d.bucket, %1) FROM counter_day d WHERE d.variable_id = v.id AND d.bucket >= "
                                        "CAST(? AS BIGINT) AND d.bucket < CAST(? AS BIGINT)) FROM vc v "
                                        "WHERE v.g = CAST(? AS BIGINT)")
                             .arg(hours);
                binds << m.map << m.h0 << FloorTo(m.h0, Day) << m.h1 << qint64(m.g);
            }
            if (vt) {
                parts << QStringLiteral("SELECT v.id, 32, v.g, 0, 0, 0, (SELECT zw_tariff_hours(?, CAST(? AS BIGINT), "
                                        "r.bucket, r.n, r.total, r.lo, r.hi) FROM rollup_hour r WHERE r.variable_id "
                                        "= v.id AND r.bucket >= CAST(? AS BIGINT) AND r.bucket < CAST(? AS BIGINT)) "
                                        "FROM vt v WHERE v.g = CAST(? AS BIGINT)");
                binds << m.map << m.h0 << m.h0 << m.h1 << qint64(m.g);
            }
        }
    }
    return QStringLiteral("WITH ") + ctes.join(QStringLiteral(", ")) + QLatin1Char(' ')
        + parts.join(QStringLiteral(" UNION ALL "));
}

} // namespace

bool ZWSqlLoggerStore::PeriodValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
    std::vector<double>& values, ZWProgress* progress, QString* error)
{
    if (progress)
        progress->SetText(ZWLoadString(ZWTextId::StoreReading));
    if (!start.IsValid() || !end.IsValid()) {
        values.assign(size_t(names.size()), ZW_NO_VALUE);
        return true;
    }
    return ReadPeriod(names, start, end, ZWLocalTime::ToUtc(start), ZWLocalTime::ToUtc(end), values, error,
        Method::Rollups, progress);
}

bool ZWSqlLoggerStore::PeriodValuesUtc(const QStringList& names, qint64 start, qint64 end, std::vector<double>& values,
    QString* error, Method method, const ZWProgress* progress)
{
    return ReadPeriod(
        names, ZWLocalTime::FromUtc(start), ZWLocalTime::FromUtc(end), start, end, values, error, method, progress);
}

bool ZWSqlLoggerStore::ReadPeriod(const QStringList& names, const ZWDateTime& localStart, const ZWDateTime& localEnd,
    qint64 start, qint64 end, std::vector<double>& values, QString* error, Method method, const ZWProgress* progress)
{
    values.assign(size_t(names.size()), ZW_NO_VALUE);
    // One group per distinct range: the period and each shifted period.
    std::vector<Ranges> groups;
    std::vector<Ask> asks;
    std::vector<int> askName;
    for (int i = 0; i < names.size(); ++i) {
        Ask ask{{}, ZWLoggerReduction::Default, 0, 0, ZW_NO_VALUE};
        ZWPeriodShift shift;
        if (!Resolve(names[i], ask.variable, ask.reduction, shift, ask.tariff))
            continue;
        if (ask.reduction == ZWLoggerReduction::Default)
            ask.reduction = ask.variable.kind == Kind::Counter ? ZWLoggerReduction::Delta : ZWLoggerReduction::Avg;
        std::pair<qint64, qint64> range{start, end};
        if (!shift.IsNone()) {
            ZWDateTime s = localStart, e = localEnd;
            shift.Apply(s, e);
            if (!s.IsValid() || !e.IsValid())
                continue;
            range = {ZWLocalTime::ToUtc(s), ZWLocalTime::ToUtc(e)};
        }
        const auto it = std::find_if(groups.begin(), groups.end(), [&](const Ranges& r) { return r[0] == range; });
        ask.group = int(it - groups.begin());
        if (it == groups.end())
            groups.push_back({range});
        asks.push_back(ask);
        askName.push_back(i);
    }
    if (!ReadRanges(groups, asks, method, progress, error))
        return false;
    for (size_t k = 0; k < asks.size(); ++k)
        values[size_t(askName[k])] = asks[k].value;
    return true;
}

bool ZWSqlLoggerStore::SeriesValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
    ZWSeriesUnit unit, ZWSeries& out, ZWProgress* progress, QString* error)
{
    return SeriesValues(names, start, end, unit, out, progress, error, Method::Rollups);
}

bool ZWSqlLoggerStore::SeriesValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
    ZWSeriesUnit unit, ZWSeries& out, ZWProgress* progress, QString* error, Method method)
{
    out = ZWSeries();
    if (progress)
        progress->SetText(ZWLoadString(ZWTextId::StoreReading));
    const std::vector<qint64> instants = SubPeriodInstants(start, end, unit);
    if (instants.size() > size_t(MaxSeriesPoints) + 1) {
        if (error)
            *error = TooManyPointsMessage(start, end, unit);
        return false;
    }
    out.bounds = SubPeriodBounds(start, end, unit);
    const size_t count = instants.empty() ? 0 : instants.size() - 1;
    out.values.assign(count, std::vector<double>(size_t(names.size()), ZW_NO_VALUE));

    // Group 0 the sub-periods of the period, then one group per shift: the
    // sub-periods of the shifted period, as many as the series has at most.
    const auto ranges = [count](const std::vector<qint64>& bounds) {
        Ranges r;
        for (size_t j = 0; j + 1 < bounds.size() && j < count; ++j)
            r.push_back({bounds[j], bounds[j + 1]});
        return r;
    };
    std::vector<Ranges> groups{ranges(instants)};
    std::vector<ZWPeriodShift> shifts{ZWPeriodShift()};
    std::vector<Ask> asks;
    std::vector<std::pair<size_t, size_t>> where; // (sub-period, name)
    for (int i = 0; i < names.size() && count > 0; ++i) {
        Variable variable;
        ZWLoggerReduction reduction;
        ZWPeriodShift shift;
        int tariff = -1;
        if (!Resolve(names[i], variable, reduction, shift, tariff))
            continue;
        if (reduction == ZWLoggerReduction::Default)
            reduction = variable.kind == Kind::Counter ? ZWLoggerReduction::Delta : ZWLoggerReduction::Avg;
        auto it = std::find(shifts.begin(), shifts.end(), shift);
        if (it == shifts.end()) {
            ZWDateTime s = start, e = end;
            shift.Apply(s, e);
            shifts.push_back(shift);
            groups.push_back(ranges(SubPeriodInstants(s, e, unit)));
            it = shifts.end() - 1;
        }
        const int g = int(it - shifts.begin());
        for (size_t j = 0; j < groups[size_t(g)].size(); ++j) {
            asks.push_back({variable, reduction, g, int(j), ZW_NO_VALUE, tariff});
            where.push_back({j, size_t(i)});
        }
    }
    if (!ReadRanges(groups, asks, method, progress, error))
        return false;
    for (size_t k = 0; k < asks.size(); ++k)
        out.values[where[k].first][where[k].second] = asks[k].value;
    return true;
}

bool ZWSqlLoggerStore::RunPeriodQuery(ZWSqlLoggerConnection& c, const QString& sql, const QVariantList& binds,
    Rows& out, const ZWProgress* progress, QString* error)
{
    return WithReconnect(
        c,
        [&](QString* why) {
            ++m_periodQueries;
            out = Rows();
            std::unique_ptr<QSqlQuery> once;
            QSqlQuery* q = nullptr;
            if (binds.size() <= MostBindsKept) {
                q = c.Prepared(sql, why);
                if (!q)
                    return false;
            } else {
                once = std::make_unique<QSqlQuery>(c.Database());
                once->setForwardOnly(true);
                if (!once->prepare(sql)) {
                    *why = ZWSqlLoggerConnection::ErrorText(once->lastError());
                    return false;
                }
                q = once.get();
            }
            for (int i = 0; i < binds.size(); ++i)
                q->bindValue(i, binds[i]);
            if (!c.ExecBounded(*q, progress, why))
                return false;
            while (q->next()) {
                const qint64 id = q->value(0).toLongLong();
                const int part = q->value(1).toInt();
                const qint64 key = q->value(2).toLongLong();
                if (part == 32 || part == 33) {
                    std::vector<ZWSqliteTariffHours::Entry> entries;
                    if (!ZWSqliteTariffHours::Read(q->value(6).toByteArray(), entries)) {
                        *why = QStringLiteral("malformed tariff hour sums");
                        return false;
                    }
                    for (const auto& e : entries)
                        Rows::Add(part == 32 ? out.hourParts : out.hourRises, {id, HourKey(int(key), e.hourClass)},
                            {e.count, e.sum, e.minimum, e.maximum});
                } else if (part == 0 || part == 30 || part == 31) {
                    const Rows::Partial partial{q->value(3).toLongLong(), q->value(4).toDouble(),
                        q->value(5).toDouble(), q->value(6).toDouble()};
                    if (part == 0)
                        out.partials.insert({id, key}, partial);
                    else
                        Rows::Add(part == 30 ? out.tariffParts : out.tariffRises, {id, key}, partial);
                } else if (part < 20) {
                    out.seeks[{id, key}][size_t(part - 10)]
                        = Rows::Found{true, q->value(3).toLongLong(), q->value(4).toDouble()};
                } else {
                    out.resets[id][key] = {q->value(4).toDouble(), q->value(5).toDouble()};
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

namespace {

// The stretches of [start, end) (UTC) in each tariff period: local hours
// by the calendar, neighbours of one period joined.
struct TariffRun
{
    qint64 lo, hi;
    int period;
};

std::vector<TariffRun> TariffRuns(const ZWTariffCalendar& calendar, qint64 start, qint64 end)
{
    std::vector<TariffRun> runs;
    for (qint64 u = start; u < end;) {
        const ZWDateTime local = ZWLocalTime::FromUtc(u);
        const qint64 into = ZWDateTime::FloorMod(local.Seconds(), Hour);
        const int period = calendar.PeriodAt(ZWDateTime::FromSeconds(local.Seconds() - into));
        const qint64 next = std::min(end, u + Hour - into);
        if (!runs.empty() && runs.back().period == period && runs.back().hi == u)
            runs.back().hi = next;
        else
            runs.push_back({u, next, period});
        u = next;
    }
    return runs;
}

} // namespace

bool ZWSqlLoggerStore::ReadRanges(const std::vector<Ranges>& groupsIn, std::vector<Ask>& asks, Method method,
    const ZWProgress* progress, QString* error)
{
    ZWSqlLoggerConnection& c = Connection();
    if (!EnsureReady(c, error))
        return false;
    const auto rawResets = [method](const Ask& a) {
        // Resets are kept for counters only; a gauge's "delta" finds them
        // among its raw samples, as the raw reading does for every variable.
        return method == Method::Raw || a.variable.kind != Kind::Counter;
    };
    // Tariff asks: their period's hours are labelled pieces of their range,
    // read per label. A counter's increase adds the rises of its whole hours
    // (counter_hour) and the increases over the partial hours at the edges,
    // which are asks of their own (helpers) over ranges added to the group;
    // read raw, every stretch of the period is such a helper.
    std::vector<Ranges> groups = groupsIn;
    const size_t asked = asks.size();
    std::vector<qint64> askLabel(asked, -1);
    std::vector<char> periodHours(asked, 0);
    std::vector<size_t> helperOf;
    std::vector<TariffPiece> tariffPieces;
    std::vector<PlanGroup> plan(groups.size());
    const auto calendar = TariffCalendar();
    // (group, range, period, rises): counters' rises and the other
    // reductions read different pieces.
    std::map<std::tuple<int, int, int, bool>, qint64> labels;
    std::map<std::pair<int, int>, std::vector<TariffRun>> runsOf;
    qint64 nextPiece = 0;
    const int periods = calendar ? int(calendar->PeriodNames().size()) : 0;
    // On SQLite the UTC hours that lie whole in one stretch of a period go
    // to zw_tariff_hours as one map per group; the rest of each stretch (its
    // range's partial hours, and both ends in a zone of half-hour offsets)
    // are edges.
    std::vector<TariffMap> maps;
    std::vector<int> mapOf(groups.size(), -1);
    if (calendar && method == Method::Rollups && c.HasTariffHours()) {
        for (size_t k = 0; k < asked; ++k) {
            const Ask& a = asks[k];
            const auto [s, e] = groups[size_t(a.group)][size_t(a.range)];
            if (a.tariff >= 0 && s < e && !runsOf.count({a.group, a.range}))
                runsOf.emplace(std::pair{a.group, a.range}, TariffRuns(*calendar, s, e));
        }
        std::vector<qint64> h0(groups.size(), std::numeric_limits<qint64>::max()), h1(groups.size(), 0);
        for (const auto& [where, runs] : runsOf) {
            const auto [s, e] = groups[size_t(where.first)][size_t(where.second)];
            h0[size_t(where.first)] = std::min(h0[size_t(where.first)], CeilTo(s, Hour));
            h1[size_t(where.first)] = std::max(h1[size_t(where.first)], FloorTo(e, Hour));
        }
        for (size_t g = 0; g < groups.size(); ++g) {
            if (h0[g] >= h1[g] || (h1[g] - h0[g]) / Hour > MostMapHours)
                continue;
            std::vector<qint32> classes(size_t((h1[g] - h0[g]) / Hour), -1);
            for (auto it = runsOf.lower_bound({int(g), 0}); it != runsOf.end() && it->first.first == int(g); ++it) {
                for (const TariffRun& run : it->second)
                    for (qint64 h = CeilTo(run.lo, Hour); h + Hour <= run.hi; h += Hour)
                        classes[size_t((h - h0[g]) / Hour)] = qint32(it->first.second * periods + run.period);
            }
            mapOf[g] = int(maps.size());
            maps.push_back({int(g), h0[g], h1[g], ZWSqliteTariffHours::Map(classes)});
        }
    }
    for (size_t k = 0; k < asked; ++k) {
        // Copies: helpers are added to `asks` and ranges to `groups`.
        const Ask a = asks[k];
        if (a.tariff < 0 || !calendar)
            continue;
        const auto [s, e] = groups[size_t(a.group)][size_t(a.range)];
        if (e <= s)
            continue;
        const bool rises = a.reduction == ZWLoggerReduction::Delta;
        const bool helpersOnly = rises && method == Method::Raw;
        const bool mapped = mapOf[size_t(a.group)] >= 0;
        PlanGroup& g = plan[size_t(a.group)];
        if (!helpersOnly)
            AddOnce(rises ? g.vc : g.vt, a.variable.id);
        auto runs = runsOf.find({a.group, a.range});
        if (runs == runsOf.end())
            runs = runsOf.emplace(std::pair{a.group, a.range}, TariffRuns(*calendar, s, e)).first;
        auto label = labels.find({a.group, a.range, a.tariff, rises});
        const bool newLabel = label == labels.end();
        if (newLabel)
            label = labels.emplace(std::tuple{a.group, a.range, a.tariff, rises}, qint64(labels.size())).first;
        askLabel[k] = label->second;
        for (const TariffRun& run : runs->second) {
            if (run.period != a.tariff)
                continue;
            periodHours[k] = 1;
            // The whole hours, read from the map or as a piece of their own,
            // and the edges.
            const qint64 h0 = helpersOnly ? run.hi : CeilTo(run.lo, Hour),
                         h1 = helpersOnly ? run.hi : FloorTo(run.hi, Hour);
            std::vector<std::pair<qint64, qint64>> edges;
            if (h0 < h1)
                edges = {{run.lo, h0}, {h1, run.hi}};
            else
                edges = {{run.lo, run.hi}};
            if (!rises) {
                if (!newLabel)
                    continue;
                std::vector<Piece> pieces;
                std::vector<qint64> ids;
                if (!mapped)
                    Split(run.lo, run.hi, method == Method::Raw, nextPiece, pieces, ids);
                else
                    for (const auto& edge : edges)
                        Split(edge.first, edge.second, false, nextPiece, pieces, ids);
                for (const Piece& p : pieces)
                    tariffPieces.push_back({p.table, a.group, label->second, p.lo, p.hi});
                continue;
            }
            if (h0 < h1 && newLabel && !mapped)
                tariffPieces.push_back({CounterHour, a.group, label->second, h0, h1});
            for (const auto& edge : edges) {
                if (edge.first >= edge.second)
                    continue;
                Ranges& ranges = groups[size_t(a.group)];
                ranges.push_back(edge);
                asks.push_back({a.variable, ZWLoggerReduction::Delta, a.group, int(ranges.size() - 1), ZW_NO_VALUE});
                helperOf.push_back(k);
            }
        }
    }
    for (size_t k = 0; k < asks.size(); ++k) {
        Ask& a = asks[k];
        a.value = ZW_NO_VALUE;
        const auto& [s, e] = groups[size_t(a.group)][size_t(a.range)];
        if (e <= s || (k < asked && a.tariff >= 0))
            continue;
        PlanGroup& g = plan[size_t(a.group)];
        switch (a.reduction) {
        case ZWLoggerReduction::First:
        case ZWLoggerReduction::Last:
        case ZWLoggerReduction::Hours:
            AddOnce(g.vs, a.variable.id);
            break;
        case ZWLoggerReduction::Delta:
            AddOnce(g.vs, a.variable.id);
            AddOnce(rawResets(a) ? g.vg : g.vr, a.variable.id);
            break;
        default:
            AddOnce(g.va, a.variable.id);
            break;
        }
    }
    std::vector<std::vector<int>> batches;
    int batchBinds = 0;
    for (size_t g = 0; g < plan.size(); ++g) {
        if (plan[g].Empty())
            continue;
        PlanRanges(plan[g], groups[g], method == Method::Raw, nextPiece);
        const int binds = plan[g].Binds();
        if (batches.empty() || batchBinds + binds > MostBinds) {
            batches.emplace_back();
            batchBinds = 0;
        }
        batches.back().push_back(int(g));
        batchBinds += binds;
    }
    // The tariff pieces go with the last statement while they fit, then in
    // statements of their own.
    const auto tariffVariableBinds = [&] {
        int n = 0;
        for (const PlanGroup& g : plan)
            n += int(2 * (g.vt.size() + g.vc.size()));
        return n;
    }();
    size_t tariffDone = 0;
    const auto tariffSlice = [&](int room) {
        const size_t from = tariffDone;
        room -= tariffVariableBinds;
        while (tariffDone < tariffPieces.size() && room >= TariffPieceBinds) {
            room -= TariffPieceBinds;
            ++tariffDone;
        }
        return std::pair{tariffPieces.data() + from, tariffPieces.data() + tariffDone};
    };
    // The hour maps go with the last statement.
    Rows rows;
    bool mapsDone = maps.empty();
    for (size_t b = 0; b < batches.size() || tariffDone < tariffPieces.size() || !mapsDone; ++b) {
        QVariantList binds;
        static const std::vector<int> none;
        const std::vector<int>& batch = b < batches.size() ? batches[b] : none;
        const bool last = b + 1 >= batches.size();
        const auto [from, to] = last ? tariffSlice(MostBinds - (b < batches.size() ? batchBinds : 0))
                                     : std::pair<const TariffPiece*, const TariffPiece*>{nullptr, nullptr};
        const std::vector<TariffMap>* withMaps = last && !mapsDone ? &maps : nullptr;
        if (batch.empty() && from == to && !withMaps)
            break;
        mapsDone = mapsDone || withMaps;
        const QString sql = PeriodSql(plan, batch, from, to, withMaps, c.IsPostgres(), binds);
        Rows part;
        if (!RunPeriodQuery(c, sql, binds, part, progress, error))
            return false;
        rows.Merge(std::move(part));
    }
    for (size_t k = 0; k < asks.size(); ++k) {
        Ask& a = asks[k];
        const auto& [s, e] = groups[size_t(a.group)][size_t(a.range)];
        if (e <= s)
            continue;
        const qint64 id = a.variable.id;
        ZWPeriodAggregate aggregate;
        if (k < asked && a.tariff >= 0) {
            if (askLabel[k] < 0)
                continue;
            const Rows::Key key{id, askLabel[k]};
            const Rows::Key hours{id, HourKey(a.group, qint32(a.range * periods + a.tariff))};
            const bool rises = a.reduction == ZWLoggerReduction::Delta;
            // Whole hours from the map, then the pieces: the stretches, or
            // only the edges beside a map.
            for (const bool whole : {true, false}) {
                const QHash<Rows::Key, Rows::Partial>& from
                    = whole ? (rises ? rows.hourRises : rows.hourParts) : (rises ? rows.tariffRises : rows.tariffParts);
                const auto it = from.constFind(whole ? hours : key);
                if (it == from.constEnd() || it->count <= 0)
                    continue;
                if (rises)
                    a.value = IsNoValue(a.value) ? it->sum : a.value + it->sum;
                else
                    aggregate.AddPart(it->count, it->sum, it->minimum, it->maximum);
            }
            // The helpers add the edges of an increase below.
            if (!rises)
                a.value = aggregate.Value(a.reduction, s, e);
            continue;
        }
        const PlanGroup& g = plan[size_t(a.group)];
        if (size_t(a.range) < g.rangePieces.size()) {
            for (const qint64 piece : g.rangePieces[size_t(a.range)]) {
                const auto it = rows.partials.constFind({id, piece});
                if (it != rows.partials.constEnd())
                    aggregate.AddPart(it->count, it->sum, it->minimum, it->maximum);
            }
        }
        const auto seek = [&](ZWPeriodAggregate::Seek which, qint64 t, size_t n) {
            const auto it = rows.seeks.constFind({id, t});
            if (it != rows.seeks.constEnd() && (*it)[n].valid)
                aggregate.SetSeek(which, (*it)[n].t, (*it)[n].value);
        };
        seek(ZWPeriodAggregate::AtOrBeforeStart, s, 0);
        seek(ZWPeriodAggregate::AfterStart, s, 1);
        seek(ZWPeriodAggregate::BeforeEnd, e, 2);
        seek(ZWPeriodAggregate::AtOrBeforeEnd, e, 0);
        const auto resets = rows.resets.constFind(id);
        if (resets != rows.resets.constEnd()) {
            for (auto r = resets->upper_bound(s); r != resets->end() && r->first <= e; ++r)
                aggregate.AddReset(r->first, r->second.first, r->second.second);
        }
        if (a.reduction == ZWLoggerReduction::Delta && rawResets(a))
            aggregate.AddResetAcrossStart(e);
        a.value = aggregate.Value(a.reduction, s, e);
    }
    // The edges add to the whole hours' rises: a tariff increase has no
    // value only when none of its stretches has one.
    for (size_t h = 0; h < helperOf.size(); ++h) {
        const double edge = asks[asked + h].value;
        double& total = asks[helperOf[h]].value;
        if (!IsNoValue(edge))
            total = IsNoValue(total) ? edge : total + edge;
    }
    asks.resize(asked);
    // Nothing is used in hours that the range does not have: a counter's
    // increase in them is 0, not unknown (costs add up over every period).
    for (size_t k = 0; k < asked; ++k)
        if (asks[k].tariff >= 0 && asks[k].reduction == ZWLoggerReduction::Delta && !periodHours[k] && calendar)
            asks[k].value = 0.0;
    return true;
}
