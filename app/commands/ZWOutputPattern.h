#pragma once

#include "host/core/ZWDateTime.h"

#include <QString>
#include <vector>

// The name of a file written for one period of a batch: a path with
// placeholders {name} (the report's file name without extension), {unit}
// (day, week, month, 3month, year), {start} and {end} (the period's local
// start and exclusive end), the dates optionally with a Qt date pattern
// after a colon: {start:yyyy-MM}, {end:yyyyMMdd}. Without a pattern a date
// is written yyyy-MM-dd.
class ZWOutputPattern
{
public:
    // False, with `error`, for a "{" that starts no known placeholder or is
    // never closed.
    bool Parse(const QString& pattern, QString& error);
    bool HasPlaceholders() const;
    QString Expand(const QString& name, const QString& unit, const ZWDateTime& start, const ZWDateTime& end) const;

private:
    enum class Kind { Text, Name, Unit, Start, End };
    struct Part
    {
        Kind kind;
        // The text itself, or the date pattern.
        QString text;
    };
    std::vector<Part> m_parts;
};
