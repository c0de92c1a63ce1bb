#include "viewer/ZWUserInterval.h"
#include "host/core/ZWSettingsKeys.h"

#include <QSettings>

namespace {

struct Parts
{
    int year, month, day, hour, minute, second;
};

Parts Split(const ZWDateTime& t)
{
    Parts p{};
    t.DateTime2DMY(p.year, p.month, p.day);
    p.hour = t.Hour();
    p.minute = t.Minute();
    p.second = t.Second();
    return p;
}

ZWDateTime ReadParts(QSettings& settings, const QString& prefix, const ZWDateTime& fallback)
{
    Parts p = Split(fallback);
    const std::pair<const char*, int*> fields[] = {
        {"Year", &p.year},
        {"Month", &p.month},
        {"Day", &p.day},
        {"Hour", &p.hour},
        {"Minute", &p.minute},
        {"Second", &p.second},
    };
    for (const auto& [name, target] : fields) {
        const QVariant value = settings.value(prefix + QLatin1String(name));
        bool ok = false;
        const int n = value.toInt(&ok);
        if (value.isValid() && ok)
            *target = n;
    }
    const ZWDateTime composed = ZWDateTime::FromDMY(p.year, p.month, p.day, p.hour, p.minute, p.second);
    return composed.IsValid() ? composed : fallback;
}

void WriteParts(QSettings& settings, const QString& prefix, const ZWDateTime& t)
{
    const Parts p = Split(t);
    settings.setValue(prefix + QStringLiteral("Year"), p.year);
    settings.setValue(prefix + QStringLiteral("Month"), p.month);
    settings.setValue(prefix + QStringLiteral("Day"), p.day);
    settings.setValue(prefix + QStringLiteral("Hour"), p.hour);
    settings.setValue(prefix + QStringLiteral("Minute"), p.minute);
    settings.setValue(prefix + QStringLiteral("Second"), p.second);
}

} // namespace

ZWUserInterval ZWUserInterval::Load(QSettings& settings, const ZWDateTime& now)
{
    ZWUserInterval interval;
    interval.from = ReadParts(settings, ZWSettingsKeys::UserIntervalFrom, now.Date());
    interval.to = ReadParts(settings, ZWSettingsKeys::UserIntervalTo, now);
    return interval;
}

void ZWUserInterval::Save(QSettings& settings) const
{
    WriteParts(settings, ZWSettingsKeys::UserIntervalFrom, from);
    WriteParts(settings, ZWSettingsKeys::UserIntervalTo, to);
}

ZWUserInterval::Check ZWUserInterval::Validate(const ZWDateTime& from, const ZWDateTime& to, const ZWDateTime& now)
{
    if (from >= to)
        return FromNotBeforeTo;
    // The small constant is added to the seconds, not to the days: it only
    // absorbs the error of going through a fraction of days.
    const double days = (to - from).GetTotalDays();
    const auto seconds = static_cast<long long>(days * 86400.0 + 5.787037037037037e-06);
    if (seconds < 3600)
        return ShorterThanAnHour;
    if (to > now)
        return EndsInTheFuture;
    return Accepted;
}
