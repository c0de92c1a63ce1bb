#pragma once

#include "host/core/ZWDateTime.h"
#include "host/core/ZWTextId.h"

class QSettings;

// The user's own report interval: its defaults, the per-user values that
// remember it ("ZWIFromYear" ... "ZWIToSecond") and the checks its dialog
// makes before accepting it.
class ZWUserInterval
{
public:
    // Message ids of the refusals; 0 when the interval is accepted.
    enum Check : int {
        Accepted = 0,
        FromNotBeforeTo = ZWTextId::UserIntervalStartAfterEnd,
        ShorterThanAnHour = ZWTextId::UserIntervalTooShort,
        EndsInTheFuture = ZWTextId::UserIntervalInFuture,
    };

    // From today 00:00:00 to now, then each stored part that exists (and
    // reads as a number) replaces its part. A stored combination that is no
    // date keeps the default.
    static ZWUserInterval Load(QSettings& settings, const ZWDateTime& now);
    // Writes the twelve parts as 32-bit numbers.
    void Save(QSettings& settings) const;

    // The checks of the dialog's OK, in order.
    static Check Validate(const ZWDateTime& from, const ZWDateTime& to, const ZWDateTime& now);

    ZWDateTime from;
    ZWDateTime to;
};
