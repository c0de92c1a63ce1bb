#pragma once

#include "host/store/ZWSqlLoggerStore.h"

#include <QSet>
#include <QString>
#include <QStringList>

class QIODevice;
class ZWProgress;

// Reads samples from CSV text into a logger database:
//
//   time,Main meter.Active energy,Office.Temperature
//   2024-03-01T00:00:00Z,48213.5,21.3
//   2024-03-01 00:15:00+01:00,48214.1,
//   2024-03-01T00:30:00,48214.9,21.4
//
// The header names one variable ("device.variable") per column after
// "time"; cells may be quoted as in RFC 4180 (a name with a comma or a
// quote). A time is ISO 8601 ("T" or a blank between date and time; seconds
// and fractions optional, fractions dropped): with "Z" or an offset it is an
// instant, without one a local wall-clock time (see ZWLocalTime). Values are
// numbers with a "." for decimals; an empty cell is no sample. Variables
// not in the database are made, as gauges unless named as counters. A sample
// for a variable and time already stored replaces it.
//
// Lines end with LF, CR LF or a lone CR. A file holds at most MaxColumns
// variable columns and lines of at most MaxLineChars characters; variable
// names hold no control characters (NUL...).
//
// All or nothing: the first bad row (or any database failure) stops the
// import, and nothing of the file is kept; the message names the line and
// quotes at most QuoteChars characters of the bad cell.
class ZWLoggerImport
{
public:
    explicit ZWLoggerImport(ZWSqlLoggerStore& store);
    // Variables to make (or turn into) counters.
    void SetCounters(const QStringList& names);

    bool ImportFile(const QString& path, ZWProgress* progress, QString* error);
    // `sourceName` names the data in messages; `totalBytes` (or 0) scales the progress.
    bool Import(QIODevice& device, const QString& sourceName, qint64 totalBytes, ZWProgress* progress, QString* error);

    static constexpr int MaxColumns = 10000;
    static constexpr qsizetype MaxLineChars = 4 * 1024 * 1024;
    static constexpr qsizetype QuoteChars = 80;

    qint64 Samples() const { return m_samples; }
    qint64 Rows() const { return m_rows; }
    int Variables() const { return m_variables; }
    int CreatedVariables() const { return m_created; }

    // One CSV line into cells; false when a quoted cell is not closed.
    static bool SplitCsvLine(const QString& line, QStringList& cells);
    // An ISO 8601 time stamp to UTC seconds; false when it is not one.
    static bool ParseTime(const QString& text, qint64& utc);
    // A cell as a message quotes it: at most QuoteChars characters (then
    // "…" and its length), control characters written as \uXXXX.
    static QString Quoted(const QString& cell);
    // The first control character of a name as "U+0000", or empty.
    static QString ControlCharacter(const QString& name);

private:
    ZWSqlLoggerStore& m_store;
    QSet<QString> m_counters;
    qint64 m_samples = 0;
    qint64 m_rows = 0;
    int m_variables = 0;
    int m_created = 0;
};
