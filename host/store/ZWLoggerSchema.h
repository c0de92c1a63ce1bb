#pragma once

#include <QString>
#include <QStringList>

class ZWSqlLoggerConnection;

// The tables of a logger database, the same on SQLite and PostgreSQL:
//
//   zw_schema       (version)                     one row: the schema version
//   devices         (id, name)                    a device: the part of a
//                                                 variable's name before the first "."
//   variables       (id, device_id, name, unit, kind)
//                                                 name is the whole
//                                                 "device.variable"; kind is
//                                                 'counter' (cumulative reading:
//                                                 its period value is the
//                                                 increase) or 'gauge' (its
//                                                 period value is the mean)
//   samples         (variable_id, t, value)       t: UTC instant in whole
//                                                 seconds since 1970-01-01T00:00:00Z;
//                                                 primary key (variable_id, t),
//                                                 which is also the period index
//   rollup_hour     (variable_id, bucket, n, total, lo, hi)
//   rollup_day      (variable_id, bucket, n, total, lo, hi)
//                                                 count, sum, minimum and maximum of
//                                                 the samples with bucket <= t <
//                                                 bucket + 3600 (or 86400), bucket
//                                                 a multiple of it (UTC); only
//                                                 buckets holding samples have a row
//   counter_resets  (variable_id, t, before_value, value)
//                                                 every sample of a counter whose
//                                                 value is below that of the sample
//                                                 before it (a meter reset or
//                                                 replacement), with that earlier value
//   counter_hour    (variable_id, bucket, rise)   a counter's increase over the
//                                                 samples with bucket < t <=
//                                                 bucket + 3600: each sample's
//                                                 rise over the one before it (a
//                                                 drop: its own reading), so that
//                                                 a sample on the hour closes the
//                                                 hour before, as a period's
//                                                 increase counts it; only hours
//                                                 closing samples have a row
//   counter_day     (variable_id, bucket, r0 … r23)
//                                                 the same rises by UTC day: r<i> is
//                                                 counter_hour's rise of hour
//                                                 bucket + i * 3600 (NULL: no row),
//                                                 so that a year is read in 365 rows
//
// The rollups and the resets are derived from the samples and kept up to date
// by every write (ZWLoggerWriter). Samples refer to variables by id; that
// reference is not declared as a foreign key, so that bulk loads are not
// slowed by a check per row.
class ZWLoggerSchema
{
public:
    // 2 added counter_hour, 3 counter_day (filled when an older database is
    // opened).
    static constexpr int Version = 3;

    // Creates the tables when the database has none (when the connection may
    // create a database; otherwise a database without them is refused);
    // checks the version otherwise. False with a message when the database
    // cannot be used.
    static bool Ensure(ZWSqlLoggerConnection& connection, QString* error);
    // The statements that create schema `Version` on the connection's back end.
    static QStringList CreateStatements(bool postgres);
    // The counter_hour table.
    static QString CounterHourStatement(bool postgres);
    // The counter_hour bucket of sample time `t` (an SQL expression).
    static QString CounterHourBucketSql(const QString& t);
    // Fills counter_hour from the samples that the SQL condition `samples`
    // selects (the first of each variable only gives the next its rise),
    // keeping the rises (w.t, w.value) that `rises` selects, when given.
    static QString CounterHourFillSql(const QString& samples, const QString& rises = QString());
    // The counter_day table, and its rows from the counter_hour rows (h)
    // that the SQL condition `hours` selects, whole days of them.
    static QString CounterDayStatement(bool postgres);
    static QString CounterDayFillSql(const QString& hours);

private:
    // Runs `statements` and sets the version to `to`, in one transaction,
    // unless another process did first.
    static bool Migrate(ZWSqlLoggerConnection& connection, int to, const QStringList& statements, QString* error);
};
