#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <vector>

class QSqlDatabase;

// An SQL aggregate that SQLite connections of the store get:
//
//   zw_tariff_hours(map, h0, bucket, n, total, lo, hi)
//   zw_tariff_hours(map, h0, bucket, value)      (n 1, total = lo = hi = value)
//   zw_tariff_days(map, h0, day, r0, ..., r23)   (hours day + i * 3600 with value
//                                                 r<i>, NULL for none)
//
// adds up rollup rows (count n, sum total, minimum lo, maximum hi of an hour
// starting at UTC second `bucket`) by the class that `map` gives the hour:
// map is a BLOB of 32-bit classes (in the machine's byte order: it never
// leaves the process), one per hour from h0; rows
// outside it or of a negative class are left out. The result is a BLOB of
// one Entry per class met, in class order (NULL when none).
//
// It lets one query group a year's 8,760 hours of each variable into tariff
// periods in one pass over the rollups (365 rows of counter_day for a
// counter), where SQLite's GROUP BY would sort every hour first.
class ZWSqliteTariffHours
{
public:
    struct Entry
    {
        qint32 hourClass;
        qint64 count;
        double sum, minimum, maximum;
    };

    // Registers the aggregate on an open SQLite connection; false when the
    // driver gives no SQLite handle (the caller then does without it).
    static bool Register(QSqlDatabase& db);
    static QByteArray Map(const std::vector<qint32>& classes);
    // The entries of a result; false for a malformed one.
    static bool Read(const QByteArray& result, std::vector<Entry>& entries);
};
