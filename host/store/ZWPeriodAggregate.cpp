#include "host/store/ZWPeriodAggregate.h"

#include "host/core/ZWNoValue.h"

#include <algorithm>

namespace {

struct ReductionText
{
    ZWLoggerReduction reduction;
    const char* name;
};

constexpr ReductionText g_reductions[] = {
    {ZWLoggerReduction::Avg, "avg"},
    {ZWLoggerReduction::Min, "min"},
    {ZWLoggerReduction::Max, "max"},
    {ZWLoggerReduction::Sum, "sum"},
    {ZWLoggerReduction::First, "first"},
    {ZWLoggerReduction::Last, "last"},
    {ZWLoggerReduction::Count, "count"},
    {ZWLoggerReduction::Delta, "delta"},
    {ZWLoggerReduction::Hours, "hours"},
};

} // namespace

bool ZWPeriodAggregate::ParseReduction(const QString& text, ZWLoggerReduction& out)
{
    for (const ReductionText& r : g_reductions) {
        if (text.compare(QLatin1String(r.name), Qt::CaseInsensitive) == 0) {
            out = r.reduction;
            return true;
        }
    }
    return false;
}

QString ZWPeriodAggregate::ReductionName(ZWLoggerReduction reduction)
{
    for (const ReductionText& r : g_reductions)
        if (r.reduction == reduction)
            return QLatin1String(r.name);
    return QString();
}

QStringList ZWPeriodAggregate::ReductionNames()
{
    QStringList names;
    for (const ReductionText& r : g_reductions)
        names << QLatin1String(r.name);
    return names;
}

void ZWPeriodAggregate::AddPart(qint64 count, double sum, double minimum, double maximum)
{
    if (count <= 0)
        return;
    if (m_count == 0) {
        m_sum = sum;
        m_min = minimum;
        m_max = maximum;
    } else {
        m_sum += sum;
        m_min = std::min(m_min, minimum);
        m_max = std::max(m_max, maximum);
    }
    m_count += count;
}

void ZWPeriodAggregate::SetSeek(Seek which, qint64 t, double value)
{
    m_seek[which] = Sample{true, t, value};
}

void ZWPeriodAggregate::AddReset(qint64 t, double before, double value)
{
    m_resets.push_back(Reset{t, before, value});
}

void ZWPeriodAggregate::AddResetAcrossStart(qint64 end)
{
    const Sample& a = m_seek[AtOrBeforeStart];
    const Sample& b = m_seek[AfterStart];
    // A reading over several ranges at once may have found it already.
    const bool known = !m_resets.empty() && m_resets.front().t == b.t;
    if (a.valid && b.valid && b.t <= end && b.value < a.value && !known)
        m_resets.insert(m_resets.begin(), Reset{b.t, a.value, b.value});
}

bool ZWPeriodAggregate::IncreaseBounds(qint64 end, Sample& first, Sample& last) const
{
    first = m_seek[AtOrBeforeStart];
    if (!first.valid) {
        first = m_seek[AfterStart];
        if (!first.valid || first.t > end)
            return false;
    }
    last = m_seek[AtOrBeforeEnd];
    return last.valid && last.t > first.t;
}

double ZWPeriodAggregate::Increase(qint64 end) const
{
    // From the last sample at or before the start (or, when the data begins
    // inside the period, its first sample) to the last one at or before the
    // end. Between resets the readings only grow, so each such stretch adds
    // its last reading minus its first: the sum of its consecutive
    // differences, rounded once instead of once per sample. A reset adds its
    // own reading (the meter started again from zero).
    Sample first, last;
    if (!IncreaseBounds(end, first, last))
        return ZW_NO_VALUE;
    double increase = 0.0;
    double stretchStart = first.value;
    for (const Reset& r : m_resets) {
        if (r.t <= first.t || r.t > last.t)
            continue;
        increase += r.before - stretchStart;
        increase += r.value;
        stretchStart = r.value;
    }
    increase += last.value - stretchStart;
    return increase;
}

double ZWPeriodAggregate::Value(ZWLoggerReduction reduction, qint64 start, qint64 end) const
{
    switch (reduction) {
    case ZWLoggerReduction::Default:
    case ZWLoggerReduction::Avg:
        return m_count > 0 ? m_sum / double(m_count) : ZW_NO_VALUE;
    case ZWLoggerReduction::Min:
        return m_count > 0 ? m_min : ZW_NO_VALUE;
    case ZWLoggerReduction::Max:
        return m_count > 0 ? m_max : ZW_NO_VALUE;
    case ZWLoggerReduction::Sum:
        return m_count > 0 ? m_sum : ZW_NO_VALUE;
    case ZWLoggerReduction::Count:
        return m_count > 0 ? double(m_count) : ZW_NO_VALUE;
    case ZWLoggerReduction::First: {
        const Sample& a = m_seek[AtOrBeforeStart];
        if (a.valid && a.t == start)
            return a.value;
        const Sample& b = m_seek[AfterStart];
        return b.valid && b.t < end ? b.value : ZW_NO_VALUE;
    }
    case ZWLoggerReduction::Last: {
        const Sample& c = m_seek[BeforeEnd];
        return c.valid && c.t >= start ? c.value : ZW_NO_VALUE;
    }
    case ZWLoggerReduction::Delta:
        return Increase(end);
    case ZWLoggerReduction::Hours: {
        Sample first, last;
        return IncreaseBounds(end, first, last) ? double(last.t - first.t) / 3600.0 : ZW_NO_VALUE;
    }
    }
    return ZW_NO_VALUE;
}
