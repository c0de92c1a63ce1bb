#include "host/store/ZWSqliteTariffHours.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QVariant>
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <sqlite3.h>

namespace {

constexpr qint64 HourSeconds = 3600;
// The result's record: class, 4 bytes of padding, count, sum, min, max.
constexpr size_t RecordBytes = 40;

// One aggregate's run: the map and h0 (the same for every row, read from
// the first) and the sums by class (small dense numbers: range * periods +
// period).
struct Sums
{
    std::vector<qint32> map;
    qint64 h0 = 0;
    std::vector<ZWSqliteTariffHours::Entry> byClass;

    // Adds an hour's row to its class, if the map gives it one.
    void Add(qint64 bucket, qint64 n, double total, double lo, double hi)
    {
        if (bucket < h0 || (bucket - h0) % HourSeconds != 0)
            return;
        const auto index = size_t((bucket - h0) / HourSeconds);
        if (index >= map.size() || map[index] < 0)
            return;
        const qint32 hourClass = map[index];
        if (size_t(hourClass) >= byClass.size())
            byClass.resize(size_t(hourClass) + 1, ZWSqliteTariffHours::Entry{-1, 0, 0.0, 0.0, 0.0});
        ZWSqliteTariffHours::Entry& e = byClass[size_t(hourClass)];
        if (e.hourClass < 0) {
            e = {hourClass, n, total, lo, hi};
        } else {
            e.count += n;
            e.sum += total;
            e.minimum = std::min(e.minimum, lo);
            e.maximum = std::max(e.maximum, hi);
        }
    }
};

Sums** State(sqlite3_context* context, bool create)
{
    return static_cast<Sums**>(sqlite3_aggregate_context(context, create ? int(sizeof(Sums*)) : 0));
}

void Step(sqlite3_context* context, int argc, sqlite3_value** argv)
{
    // (map, h0, bucket, n, total, lo, hi), (map, h0, bucket, value) for
    // one value an hour (n 1, total = lo = hi = value), or (map, h0, day,
    // value of hour 0, ..., value of hour 23), NULL for none.
    if (argc != 7 && argc != 4 && argc != 3 + 24)
        return;
    Sums** state = State(context, true);
    if (!state) {
        sqlite3_result_error_nomem(context);
        return;
    }
    try {
        if (!*state) {
            auto sums = std::make_unique<Sums>();
            const int bytes = sqlite3_value_bytes(argv[0]);
            if (const void* map = sqlite3_value_blob(argv[0]); map && bytes >= 4) {
                sums->map.resize(size_t(bytes / 4));
                std::memcpy(sums->map.data(), map, sums->map.size() * 4);
            }
            sums->h0 = sqlite3_value_int64(argv[1]);
            *state = sums.release();
        }
        Sums& sums = **state;
        const sqlite3_int64 bucket = sqlite3_value_int64(argv[2]);
        if (argc == 3 + 24) {
            for (int h = 0; h < 24; ++h) {
                if (sqlite3_value_type(argv[3 + h]) == SQLITE_NULL)
                    continue;
                const double v = sqlite3_value_double(argv[3 + h]);
                sums.Add(bucket + h * HourSeconds, 1, v, v, v);
            }
        } else {
            const bool one = argc == 4;
            const double total = sqlite3_value_double(argv[one ? 3 : 4]);
            sums.Add(bucket, one ? 1 : sqlite3_value_int64(argv[3]), total, one ? total : sqlite3_value_double(argv[5]),
                one ? total : sqlite3_value_double(argv[6]));
        }
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

void Final(sqlite3_context* context)
{
    Sums** state = State(context, false);
    const std::unique_ptr<Sums> sums(state ? *state : nullptr);
    if (!sums) {
        sqlite3_result_null(context);
        return;
    }
    try {
        QByteArray out;
        for (const ZWSqliteTariffHours::Entry& e : sums->byClass) {
            if (e.hourClass < 0)
                continue;
            char record[RecordBytes] = {};
            std::memcpy(record, &e.hourClass, 4);
            std::memcpy(record + 8, &e.count, 8);
            std::memcpy(record + 16, &e.sum, 8);
            std::memcpy(record + 24, &e.minimum, 8);
            std::memcpy(record + 32, &e.maximum, 8);
            out.append(record, qsizetype(RecordBytes));
        }
        sqlite3_result_blob(context, out.constData(), int(out.size()), SQLITE_TRANSIENT);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

} // namespace

bool ZWSqliteTariffHours::Register(QSqlDatabase& db)
{
    if (!db.isOpen() || !db.driver())
        return false;
    const QVariant handle = db.driver()->handle();
    if (qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return false;
    sqlite3* connection = *static_cast<sqlite3* const*>(handle.constData());
    const std::pair<const char*, int> functions[]
        = {{"zw_tariff_hours", 7}, {"zw_tariff_hours", 4}, {"zw_tariff_days", 3 + 24}};
    for (const auto& [name, args] : functions) {
        if (!connection
            || sqlite3_create_function_v2(
                   connection, name, args, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, nullptr, Step, Final, nullptr)
                != SQLITE_OK)
            return false;
    }
    return true;
}

QByteArray ZWSqliteTariffHours::Map(const std::vector<qint32>& classes)
{
    QByteArray map(qsizetype(classes.size() * 4), Qt::Uninitialized);
    for (size_t i = 0; i < classes.size(); ++i) {
        std::memcpy(map.data() + i * 4, &classes[i], 4);
    }
    return map;
}

bool ZWSqliteTariffHours::Read(const QByteArray& result, std::vector<Entry>& entries)
{
    entries.clear();
    if (result.size() % qsizetype(RecordBytes) != 0)
        return false;
    for (qsizetype at = 0; at < result.size(); at += qsizetype(RecordBytes)) {
        const char* r = result.constData() + at;
        Entry e;
        std::memcpy(&e.hourClass, r, 4);
        std::memcpy(&e.count, r + 8, 8);
        std::memcpy(&e.sum, r + 16, 8);
        std::memcpy(&e.minimum, r + 24, 8);
        std::memcpy(&e.maximum, r + 32, 8);
        entries.push_back(e);
    }
    return true;
}
