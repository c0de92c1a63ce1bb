#include "app/demo/ZWDemoData.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerWriter.h"

#include <QDateTime>
#include <QTimeZone>
#include <cmath>
#include <numbers>
#include <random>

namespace {

constexpr double Pi = std::numbers::pi;

double Round(double x, double step)
{
    return std::round(x / step) * step;
}

// The weather and the building's use at one instant, shared by all meters so
// that they agree with each other.
struct Moment
{
    double localHour; // 0..24
    int weekday;      // 1 Monday .. 7 Sunday
    double dayOfYear; // 0..365
    bool workday;
    double outdoor; // degrees C
    double sun;     // 0..1, clear-sky irradiance share
    double cloud;   // 0.25..1, the day's weather
    bool heating;   // boiler running
};

class Site
{
public:
    explicit Site(quint32 seed) : m_seed(seed) {}

    Moment At(qint64 utc)
    {
        if (utc >= m_offsetUntil || utc < m_offsetFrom) {
            m_offset = ZWLocalTime::OffsetAt(utc);
            m_offsetFrom = utc - utc % 3600;
            m_offsetUntil = m_offsetFrom + 3600;
        }
        const qint64 local = utc + m_offset;
        const qint64 day = ZWDateTime::FloorDiv(local, 86400);
        Moment m{};
        m.localHour = double(ZWDateTime::FloorMod(local, 86400)) / 3600.0;
        m.weekday = int(ZWDateTime::FloorMod(day + 3, 7)) + 1;
        m.workday = m.weekday <= 5;
        if (day != m_day) {
            // Day-to-day weather: fixed pseudo-random numbers per calendar day.
            m_day = day;
            const ZWDateTime date = ZWDateTime::FromSeconds(local);
            m_dayOfYear = double(ZWDateTime::FromDMY(date.Year(), date.Month(), date.Day()).Seconds()
                              - ZWDateTime::FromDMY(date.Year(), 1, 1).Seconds())
                / 86400.0;
            std::mt19937 dayRng(m_seed ^ quint32(quint64(day) * 2654435761u));
            std::uniform_real_distribution<double> u(0.0, 1.0);
            m_weather = u(dayRng);
            m_warmth = (u(dayRng) - 0.5) * 6.0;
        }
        m.dayOfYear = m_dayOfYear;
        const double weather = m_weather;
        const double warmth = m_warmth;
        m.cloud = 0.25 + 0.75 * weather;
        const double season = std::sin(2 * Pi * (m.dayOfYear - 110.0) / 365.0); // +1 mid-summer
        m.outdoor = 12.0 + 10.0 * season + 5.0 * std::sin(2 * Pi * (m.localHour - 9.0) / 24.0) + warmth;
        const double dayLength = 12.0 + 3.5 * season;
        const double sunrise = 13.0 - dayLength / 2.0;
        const double x = (m.localHour - sunrise) / dayLength;
        m.sun = x > 0.0 && x < 1.0 ? std::sin(Pi * x) * (0.75 + 0.25 * season) : 0.0;
        const bool occupied
            = m.workday ? m.localHour >= 6.0 && m.localHour < 20.0 : m.localHour >= 8.0 && m.localHour < 13.0;
        m.heating = occupied && m.outdoor < 16.0;
        return m;
    }

private:
    quint32 m_seed;
    qint64 m_offset = 0;
    qint64 m_offsetFrom = 1;
    qint64 m_offsetUntil = 0;
    qint64 m_day = std::numeric_limits<qint64>::min();
    double m_dayOfYear = 0.0;
    double m_weather = 0.0;
    double m_warmth = 0.0;
};

double OfficeLoad(const Moment& m)
{
    // kW: base load, working hours with a soft ramp, less on Saturdays.
    double load = 3.0;
    if (m.workday) {
        const double x = (m.localHour - 7.0) / 12.0;
        if (x > 0.0 && x < 1.0)
            load += 14.0 * std::pow(std::sin(Pi * x), 0.6);
    } else if (m.weekday == 6 && m.localHour > 8.0 && m.localHour < 13.0) {
        load += 3.0;
    }
    // Cooling in summer afternoons, electric backup heating on cold mornings.
    load += std::max(0.0, m.outdoor - 24.0) * 1.2 * (m.workday ? 1.0 : 0.3);
    if (m.heating)
        load += std::max(0.0, 5.0 - m.outdoor) * 0.4;
    return load;
}

} // namespace

const std::vector<ZWDemoData::SiteVariable>& ZWDemoData::SiteVariables()
{
    static const std::vector<SiteVariable> list = {
        {"Main meter.Active energy", "kWh", true},
        {"Main meter.Active power", "kW", false},
        {"PV inverter.Energy", "kWh", true},
        {"Gas meter.Volume", "m3", true},
        {"Water meter.Volume", "m3", true},
        {"Boiler room.Temperature", "\u00B0C", false},
        {"Office.Temperature", "\u00B0C", false},
    };
    return list;
}

bool ZWDemoData::Generate(ZWSqlLoggerStore& store, const Options& options, ZWProgress* progress, QString* error)
{
    const qint64 step = std::max(1, options.stepSeconds);
    const qint64 endUtc = options.endUtc > 0 ? options.endUtc : QDateTime::currentSecsSinceEpoch();
    m_last = ZWDateTime::FloorDiv(endUtc, step) * step;
    const QDateTime startTime
        = QDateTime::fromSecsSinceEpoch(m_last, QTimeZone::utc()).addMonths(-std::max(1, options.months));
    m_first = ZWDateTime::FloorDiv(startTime.toSecsSinceEpoch(), step) * step;
    m_samples = 0;
    const qint64 count = (m_last - m_first) / step + 1;
    const double hours = double(step) / 3600.0;

    struct Spec
    {
        QString name;
        QString unit;
        bool counter;
        int kind; // site variable index, or -1 synthetic
        double scale;
    };
    std::vector<Spec> specs;
    for (size_t i = 0; i < SiteVariables().size() && int(specs.size()) < std::max(1, options.variables); ++i)
        specs.push_back({QString::fromUtf8(SiteVariables()[i].name), QString::fromUtf8(SiteVariables()[i].unit),
            SiteVariables()[i].counter, int(i), 1.0});
    for (int k = 1; int(specs.size()) < options.variables; ++k) {
        const bool counter = k % 2 == 0;
        specs.push_back({QStringLiteral("Circuit %1.%2")
                             .arg(k, 3, 10, QLatin1Char('0'))
                             .arg(counter ? QStringLiteral("Active energy") : QStringLiteral("Active power")),
            counter ? QStringLiteral("kWh") : QStringLiteral("kW"), counter, -1,
            0.05 + 0.9 * ((k * 37) % 100) / 100.0});
    }

    if (progress) {
        progress->SetText(ZWLoadString(ZWTextId::DemoProgress));
        progress->SetRange(0, int(specs.size()));
        progress->SetPos(0);
    }
    Site site(options.seed);
    for (size_t v = 0; v < specs.size(); ++v) {
        const Spec& spec = specs[v];
        ZWLoggerWriter writer(store);
        writer.SetBulk(true);
        qint64 id = 0;
        bool created = false;
        if (!writer.Begin(error)
            || !writer.EnsureVariable(spec.name,
                spec.counter ? ZWSqlLoggerStore::Kind::Counter : ZWSqlLoggerStore::Kind::Gauge, spec.unit, true, id,
                created, error))
            return false;
        std::mt19937 rng(options.seed + quint32(v) * 7919u);
        std::normal_distribution<double> noise(0.0, 1.0);
        std::uniform_real_distribution<double> uniform(0.0, 1.0);
        // Meters are replaced now and then: the site's main meter and water
        // meter once, every fourth synthetic counter once.
        qint64 resetAt = -1;
        if (spec.counter && (spec.kind == 0 || spec.kind == 4 || (spec.kind < 0 && v % 8 == 0)))
            resetAt = m_first + step * qint64(double(count) * (spec.kind == 4 ? 0.7 : 0.4 + 0.2 * uniform(rng)));
        double reading = spec.kind == 0 ? 48213.0
            : spec.kind == 2            ? 10342.0
            : spec.kind == 3            ? 7421.5
            : spec.kind == 4            ? 1523.2
                                        : 1000.0 * uniform(rng);
        double boiler = 30.0;
        for (qint64 t = m_first; t <= m_last; t += step) {
            const Moment m = site.At(t);
            double value = 0.0;
            switch (spec.kind) {
            case 0:   // Main meter.Active energy
            case 1: { // Main meter.Active power
                const double power = std::max(0.2, OfficeLoad(m) + 0.4 * noise(rng));
                if (spec.kind == 1) {
                    value = Round(power, 0.01);
                } else {
                    reading += power * hours;
                    value = Round(reading, 0.001);
                }
                break;
            }
            case 2: // PV inverter.Energy: 25 kWp
                reading += 25.0 * m.sun * m.cloud * (0.9 + 0.1 * uniform(rng)) * hours;
                value = Round(reading, 0.001);
                break;
            case 3: // Gas meter.Volume: boiler demand follows the cold
                if (m.heating)
                    reading += std::max(0.0, 18.0 - m.outdoor) * 0.45 * (0.8 + 0.4 * uniform(rng)) * hours;
                value = Round(reading, 0.001);
                break;
            case 4: {                // Water meter.Volume
                double flow = 0.004; // m3/h, a small leak
                if (m.workday && m.localHour >= 7.0 && m.localHour < 19.0)
                    flow += 0.25 * uniform(rng) + (uniform(rng) < 0.05 ? 1.5 : 0.0);
                reading += flow * hours;
                value = Round(reading, 0.001);
                break;
            }
            case 5: { // Boiler room.Temperature: heats up when running, cools off slowly
                const double target = m.heating ? 68.0 : 24.0;
                boiler += (target - boiler) * (1.0 - std::exp(-double(step) / (m.heating ? 2400.0 : 7200.0)));
                value = Round(boiler + 0.3 * noise(rng), 0.01);
                break;
            }
            case 6: { // Office.Temperature
                double set = m.workday && m.localHour >= 7.0 && m.localHour < 19.0 ? 21.5 : 18.5;
                set = std::max(set, 14.0 + 0.45 * m.outdoor);
                value = Round(set + 0.2 * noise(rng) + 0.5 * std::sin(2 * Pi * (m.localHour - 15.0) / 24.0), 0.01);
                break;
            }
            default: { // synthetic circuits
                const double power = std::max(0.0, spec.scale * (OfficeLoad(m) + 0.8 * noise(rng)));
                if (!spec.counter) {
                    value = Round(power, 0.01);
                } else {
                    reading += power * hours;
                    value = Round(reading, 0.001);
                }
                break;
            }
            }
            if (t == resetAt) {
                // The new meter starts from zero and has already counted this step.
                reading = 0.05;
                value = Round(reading, 0.001);
            }
            if (!writer.Add(id, t, value, error))
                return false;
        }
        if (!writer.Commit(error))
            return false;
        m_samples += writer.SamplesWritten();
        if (progress)
            progress->SetPos(int(v) + 1);
    }
    return true;
}
