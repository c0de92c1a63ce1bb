#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <vector>

// How a variable's samples over a period become one number. A name selects
// one with a filter after its last ":" ("Main meter.Active power:max");
// without one a gauge gives its mean and a counter its increase.
// "hours" is the time, in hours, that a counter's increase ("delta") spans:
// from the last sample at or before the period's start (or its first sample
// inside the period) to the last one at or before its end. An energy divided
// by it is the mean power over that time, also for a period not over yet.
enum class ZWLoggerReduction { Default, Avg, Min, Max, Sum, First, Last, Count, Delta, Hours };

// The partial results of one variable over one period [start, end), in UTC
// seconds, as the store's query returns them, and the reductions computed
// from them. The same arithmetic, in the same order, serves the rollup-based
// and the raw reading, so that both give the same bits wherever they are
// given the same partials.
class ZWPeriodAggregate
{
public:
    // "avg", "min"... (case-insensitive); false for an unknown filter.
    static bool ParseReduction(const QString& text, ZWLoggerReduction& out);
    static QString ReductionName(ZWLoggerReduction reduction);
    // Every filter name, "avg" to "hours".
    static QStringList ReductionNames();

    // The four samples found by index seeks around the bounds.
    enum Seek { AtOrBeforeStart, AfterStart, BeforeEnd, AtOrBeforeEnd, SeekCount };

    // Count, sum, minimum and maximum of a stretch of samples in [start, end);
    // stretches come in time order and are added in that order.
    void AddPart(qint64 count, double sum, double minimum, double maximum);
    void SetSeek(Seek which, qint64 t, double value);
    // A sample in (start, end] below the one before it; in time order.
    void AddReset(qint64 t, double before, double value);
    // The raw reading finds resets between samples after the start; the pair
    // across the start (the last sample at or before it and the first after
    // it) comes from the seeks.
    void AddResetAcrossStart(qint64 end);

    // The period value; the no-value marker when the period has no data for it.
    double Value(ZWLoggerReduction reduction, qint64 start, qint64 end) const;
    qint64 Count() const { return m_count; }

private:
    struct Sample
    {
        bool valid = false;
        qint64 t = 0;
        double value = 0.0;
    };
    struct Reset
    {
        qint64 t;
        double before;
        double value;
    };
    double Increase(qint64 end) const;
    // The first and last samples a counter's increase is measured between;
    // false when there are not two of them.
    bool IncreaseBounds(qint64 end, Sample& first, Sample& last) const;

    qint64 m_count = 0;
    double m_sum = 0.0;
    double m_min = 0.0;
    double m_max = 0.0;
    Sample m_seek[SeekCount];
    std::vector<Reset> m_resets;
};
