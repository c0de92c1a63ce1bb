#pragma once

#include "host/store/ZWSqlLoggerStore.h"

#include <QString>
#include <QStringList>

class ZWProgress;

// Logged data of a small site, made up but plausible, for demonstrations and
// benchmarks: an office building with an electricity meter, a PV inverter,
// gas and water meters, a boiler room and an office. Counters follow the
// power they integrate (daily and weekly rhythm, seasons, weather that
// changes day by day); now and then a meter is replaced and starts again
// from zero. The same options and seed always give the same samples.
class ZWDemoData
{
public:
    struct Options
    {
        int months = 14;
        int stepSeconds = 900;
        // Variables in all: the seven of the site, then synthetic circuits
        // ("Circuit 001.Active power", "Circuit 002.Active energy"...).
        int variables = 7;
        // Last sample at or before this UTC instant (default: now).
        qint64 endUtc = 0;
        quint32 seed = 20240601;
    };

    // The seven variables of the site, in order: name, unit, counter?
    struct SiteVariable
    {
        const char* name;
        const char* unit;
        bool counter;
    };
    static const std::vector<SiteVariable>& SiteVariables();

    // Writes the samples (in bulk mode, one transaction a variable). The
    // database must not hold them already.
    bool Generate(ZWSqlLoggerStore& store, const Options& options, ZWProgress* progress, QString* error);
    qint64 SamplesWritten() const { return m_samples; }
    qint64 FirstUtc() const { return m_first; }
    qint64 LastUtc() const { return m_last; }

private:
    qint64 m_samples = 0;
    qint64 m_first = 0;
    qint64 m_last = 0;
};
