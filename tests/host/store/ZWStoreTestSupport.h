#pragma once

#include "host/store/ZWLoggerUrl.h"
#include "host/store/ZWSqlLoggerStore.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <utility>
#include <vector>

namespace zwtest {

enum class Backend { SQLite, PostgreSQL };
std::string BackendName(const testing::TestParamInfo<Backend>& info);

using Samples = std::vector<std::pair<qint64, double>>;

// Writes samples of one variable (made with `kind` when missing).
void WriteSamples(ZWSqlLoggerStore& store, const QString& name, ZWSqlLoggerStore::Kind kind, const Samples& samples);

// A fresh, empty logger database on each back end for every test.
class StoreTest : public testing::TestWithParam<Backend>
{
protected:
    void SetUp() override;
    void Write(const QString& name, ZWSqlLoggerStore::Kind kind, const Samples& samples)
    {
        WriteSamples(*m_store, name, kind, samples);
    }
    double Value(const QString& name, qint64 start, qint64 end,
        ZWSqlLoggerStore::Method method = ZWSqlLoggerStore::Method::Rollups);
    std::vector<double> Values(const QStringList& names, qint64 start, qint64 end,
        ZWSqlLoggerStore::Method method = ZWSqlLoggerStore::Method::Rollups);
    qint64 CountRows(const QString& table);

    QTemporaryDir m_dir;
    QString m_url;
    ZWLoggerUrl m_parsed;
    std::unique_ptr<ZWSqlLoggerStore> m_store;
};

// The definitions, computed the plainest way from the samples in memory.
struct Reference
{
    explicit Reference(Samples s);
    // "avg", "min", "max", "sum", "count", "first", "last" or "delta" of the
    // samples over [start, end).
    double Reduce(const QString& reduction, qint64 start, qint64 end) const;
    double Increase(qint64 start, qint64 end) const;

    Samples samples;
};

// Equal within `relative`, or both the no-value marker.
bool Close(double a, double b, double relative);

// A local time written as ISO 8601.
ZWDateTime At(const char* iso);

// 2025-01-06T00:00:00Z, a Monday.
constexpr qint64 T0 = 1736121600;

} // namespace zwtest
