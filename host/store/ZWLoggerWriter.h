#pragma once

#include "host/store/ZWSqlLoggerStore.h"

#include <QHash>
#include <QSet>
#include <vector>

// Writes samples into a logger database in one transaction, and keeps the
// derived tables (hour and day rollups, counter resets) right for every
// stretch of time it touched (counter hours too). Writing a sample for a variable and time that
// already have one replaces its value.
//
//   ZWLoggerWriter w(store);
//   w.Begin(&error); w.EnsureVariable(...); w.Add(...)...; w.Commit(&error);
//
// Nothing is kept unless Commit succeeds; a writer destroyed before it rolls
// back. Use it on one thread.
class ZWLoggerWriter
{
public:
    explicit ZWLoggerWriter(ZWSqlLoggerStore& store);
    ~ZWLoggerWriter();
    ZWLoggerWriter(const ZWLoggerWriter&) = delete;
    ZWLoggerWriter& operator=(const ZWLoggerWriter&) = delete;

    // For loads of millions of samples: SQLite keeps its journal in memory
    // and does not wait for the disk; PostgreSQL does not wait for its log.
    // A crash in the middle may then cost the database (demo data only).
    void SetBulk(bool bulk) { m_bulk = bulk; }

    bool Begin(QString* error);
    // The id of the variable `name` ("device.variable"), made with its
    // device when missing (with `kind` and `unit`). With `forceKind` an
    // existing variable of the other kind takes `kind`.
    bool EnsureVariable(const QString& name, ZWSqlLoggerStore::Kind kind, const QString& unit, bool forceKind,
        qint64& id, bool& created, QString* error);
    // One sample; `t` in UTC seconds.
    bool Add(qint64 variableId, qint64 t, double value, QString* error);
    bool Commit(QString* error);
    void Rollback();
    // Deletes every device, variable and sample (inside the transaction).
    bool DeleteAll(QString* error);

    qint64 SamplesWritten() const { return m_written; }

private:
    struct Row
    {
        qint64 id;
        qint64 t;
        double value;
    };
    struct Range
    {
        qint64 first;
        qint64 last;
    };
    bool Flush(QString* error);
    bool UpdateDerived(QString* error);
    bool UpdateRollups(qint64 id, const Range& range, QString* error);
    bool UpdateResets(qint64 id, const Range& range, QString* error);
    bool UpdateCounterHours(qint64 id, const Range& range, QString* error);
    bool Run(const QString& sql, const QVariantList& binds, QString* error, QVariantList* firstRow = nullptr);
    bool Fail(QString* error, const QString& why);

    ZWSqlLoggerStore& m_store;
    bool m_bulk = false;
    bool m_open = false;
    int m_batchRows;
    std::vector<Row> m_rows;
    QHash<QPair<qint64, qint64>, size_t> m_rowIndex;
    QHash<qint64, Range> m_touched;
    QHash<qint64, ZWSqlLoggerStore::Kind> m_kinds;
    QSet<qint64> m_kindChanged;
    qint64 m_written = 0;
};
