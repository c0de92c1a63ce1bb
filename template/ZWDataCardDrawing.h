#pragma once

#include "template/ZWRect.h"
#include "template/tagDraw.h"

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>
#include <vector>

class QPainter;
class QPaintDevice;

// What the chart and table cards share when they draw: their font, the
// quarter turn of a printed page, the error text in place of the data, the
// sample data the designer shows, the value axis and reading the values of
// a value document.
class ZWDataCardDrawing
{
public:
    // The card's text font at the record's scale; `bold` for titles.
    static QFont Font(const QPaintDevice* device, const tagDraw& draw, const QString& face, double size, bool bold);
    // For a card turned a quarter with its page (`turn` +1 right, −1 left):
    // turns the painter so that drawing into the returned rectangle lands
    // upright-relative-to-the-card in `rect`. With turn 0, `rect` itself.
    static QRectF Upright(QPainter& dc, const ZWRect& rect, int turn);
    // `text` wrapped into `rect` in `colour`, in place of the card's data.
    static void DrawError(QPainter& dc, const QRectF& rect, const QFont& font, const QString& text, QColor colour);

    // `count` labels of successive sub-periods of `unit` ("hour", "day",
    // "week", "month") from a fixed date, written by `pattern`.
    static QStringList SampleLabels(const QString& unit, const QString& pattern, int count);
    // A gentle wave of `count` positive values; `phase` tells series apart.
    static std::vector<double> SampleValues(int count, int phase);

    // The ticks of a value axis over [low, high]: "nice" steps (1, 2, 2.5 or
    // 5 times a power of ten), from a multiple of the step at or below `low`
    // to one at or above `high`, with at most `maxTicks` intervals (at least
    // one). An empty range is widened so that it has one. With `decimals`
    // (the axis format's) at 0 or more, only steps that those decimals show
    // exactly are taken: a format without decimals never gets 2.5 apart
    // ticks that would print as 3, 5, 8.
    static std::vector<double> NiceTicks(double low, double high, int maxTicks, int decimals = -1);
    // `colour` mixed with white: 0 the colour, 1 white.
    static QColor Tint(const QColor& colour, double amount);

    // The ';'-separated values of a value document ("12.5;13;;14"): an empty
    // entry, or one that is no finite number (counted in `malformed`), is the
    // no-value marker. At most `maxCount` entries are kept; `total` gets how
    // many there were.
    static std::vector<double> ParseValues(const QString& text, int maxCount, int& total, int& malformed);
};
