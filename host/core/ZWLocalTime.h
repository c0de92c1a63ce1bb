#pragma once

#include "host/core/ZWDateTime.h"

#include <QtGlobal>

// Conversion between the host's local wall-clock time (ZWDateTime) and UTC
// instants (seconds since 1970-01-01T00:00:00Z), with the process's time zone
// (the TZ environment variable, which --tz sets, or the system's).
//
// A wall-clock time maps to the first instant at which the local clock shows
// that time or a later one:
// - in an autumn fold (a time that occurs twice) it is the first occurrence,
//   so a day with the fold lasts 25 hours;
// - in a spring gap (a time that never occurs) it is the instant of the
//   change, so a period bound at 02:30 on a day whose clock jumps from 02:00
//   to 03:00 begins at 03:00 local, and that day lasts 23 hours.
// This keeps the mapping non-decreasing: a later wall-clock bound never gives
// an earlier instant, so consecutive periods neither overlap nor leave holes.
class ZWLocalTime
{
public:
    static qint64 ToUtc(const ZWDateTime& local);
    static ZWDateTime FromUtc(qint64 utcSeconds);
    // The zone's offset from UTC, in seconds, at an instant.
    static qint64 OffsetAt(qint64 utcSeconds);
};
