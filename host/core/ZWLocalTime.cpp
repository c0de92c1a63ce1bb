#include "host/core/ZWLocalTime.h"

#include <ctime>

qint64 ZWLocalTime::OffsetAt(qint64 utcSeconds)
{
    const time_t t = time_t(utcSeconds);
    struct tm local
    {};
    if (!localtime_r(&t, &local))
        return 0;
    return qint64(local.tm_gmtoff);
}

ZWDateTime ZWLocalTime::FromUtc(qint64 utcSeconds)
{
    return ZWDateTime::FromSeconds(utcSeconds + OffsetAt(utcSeconds));
}

qint64 ZWLocalTime::ToUtc(const ZWDateTime& local)
{
    const qint64 wall = local.Seconds();
    // Zone offsets lie within a day of UTC and change at most once within a
    // few hours, so the offsets a day and a half either side are the two
    // candidates.
    const qint64 before = OffsetAt(wall - 36 * 3600);
    const qint64 after = OffsetAt(wall + 36 * 3600);
    qint64 best = 0;
    bool found = false;
    for (const qint64 offset : {before, after}) {
        const qint64 u = wall - offset;
        if (u + OffsetAt(u) == wall && (!found || u < best)) {
            best = u;
            found = true;
        }
    }
    if (found)
        return best;
    // A gap: the clock jumps from before the wall-clock time to after it. The
    // answer is the instant of the jump, found between the two readings.
    qint64 lo = wall - std::max(before, after); // shows a time before `wall`
    qint64 hi = wall - std::min(before, after); // shows a time after `wall`
    while (hi - lo > 1) {
        const qint64 mid = lo + (hi - lo) / 2;
        if (mid + OffsetAt(mid) >= wall)
            hi = mid;
        else
            lo = mid;
    }
    return hi;
}
