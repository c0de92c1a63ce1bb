#include "template/ZWDataCardDrawing.h"

#include "host/core/ZWDateTime.h"
#include "host/core/ZWFont.h"
#include "host/core/ZWMath.h"
#include "host/core/ZWNoValue.h"
#include "template/ZWFormat.h"

#include <QDate>
#include <QLocale>
#include <QPainter>
#include <cmath>

QFont ZWDataCardDrawing::Font(
    const QPaintDevice* device, const tagDraw& draw, const QString& face, double size, bool bold)
{
    const double points = std::fabs(draw.fontScale) * size * 10.0;
    // A size beyond any page is as good as a page-high one.
    const int deciPoints = std::isfinite(points) ? roundi(std::clamp(points, 0.0, 100000.0)) : 0;
    return EzCreateFont(device, face, std::max(deciPoints, 1), 0, bold ? 1 : 0, draw.logicalResolution);
}

QRectF ZWDataCardDrawing::Upright(QPainter& dc, const ZWRect& rect, int turn)
{
    const QRectF r = rect.ToQRect();
    if (turn == 0)
        return r;
    // The card's own top-left corner went to its top-right (a right turn)
    // or bottom-left (a left turn) with the page.
    if (turn > 0) {
        dc.translate(r.right(), r.top());
        dc.rotate(90.0);
    } else {
        dc.translate(r.left(), r.bottom());
        dc.rotate(-90.0);
    }
    return QRectF(0.0, 0.0, r.height(), r.width());
}

void ZWDataCardDrawing::DrawError(
    QPainter& dc, const QRectF& rect, const QFont& font, const QString& text, QColor colour)
{
    dc.save();
    dc.setFont(font);
    dc.setPen(colour);
    dc.drawText(rect.adjusted(2, 2, -2, -2), Qt::AlignCenter | Qt::TextWordWrap, text);
    dc.restore();
}

QStringList ZWDataCardDrawing::SampleLabels(const QString& unit, const QString& pattern, int count)
{
    const QDate first(2024, 1, 1); // a Monday, so that weeks start as they would
    QStringList labels;
    for (int i = 0; i < count; ++i) {
        QDate date = first;
        int hour = 0;
        if (unit == QLatin1String("hour"))
            hour = i % 24;
        else if (unit == QLatin1String("week"))
            date = first.addDays(7 * i);
        else if (unit == QLatin1String("month"))
            date = first.addMonths(i);
        else
            date = first.addDays(i);
        labels << ZWFormat::ParseDate(pattern, ZWDateTime::FromDMY(date.year(), date.month(), date.day(), hour));
    }
    return labels;
}

std::vector<double> ZWDataCardDrawing::SampleValues(int count, int phase)
{
    std::vector<double> values;
    values.reserve(size_t(std::max(count, 0)));
    for (int i = 0; i < count; ++i)
        values.push_back(std::round(100.0 + 35.0 * std::sin(0.7 * i + 1.3 * phase) + 4.0 * i - 12.0 * phase));
    return values;
}

std::vector<double> ZWDataCardDrawing::NiceTicks(double low, double high, int maxTicks, int decimals)
{
    if (!std::isfinite(low) || !std::isfinite(high))
        low = high = 0.0;
    if (low > high)
        std::swap(low, high);
    // Values near the double's limits would make an infinite range.
    low = std::clamp(low, -1e300, 1e300);
    high = std::clamp(high, -1e300, 1e300);
    if (high - low < 1e-300) {
        // One value: the axis runs from zero to it, or over one unit.
        if (low > 0.0)
            low = 0.0;
        else if (high < 0.0)
            high = 0.0;
        else
            high = 1.0;
    }
    maxTicks = std::clamp(maxTicks, 1, 50);
    const double raw = (high - low) / maxTicks;
    const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
    // The smallest step the format can write: 1 for no decimals, 0.1 for one.
    const double shown = decimals >= 0 ? std::pow(10.0, -std::min(decimals, 15)) : 0.0;
    const auto writable = [shown](double candidate) {
        if (shown == 0.0)
            return true;
        const double k = candidate / shown;
        return k >= 1.0 - 1e-9 && std::fabs(k - std::round(k)) < 1e-6;
    };
    double step = 10.0 * magnitude;
    bool found = false;
    for (double scale = magnitude; !found && scale < 1e301; scale *= 10.0) {
        for (const double m : {1.0, 2.0, 2.5, 5.0}) {
            const double candidate = m * scale;
            if (writable(candidate)
                && std::ceil(high / candidate - 1e-9) - std::floor(low / candidate + 1e-9) <= maxTicks) {
                step = candidate;
                found = true;
                break;
            }
        }
    }
    const double first = std::floor(low / step + 1e-9);
    const double last = std::ceil(high / step - 1e-9);
    std::vector<double> ticks;
    for (double k = first; k <= last + 0.5; k += 1.0) {
        const double v = k * step;
        ticks.push_back(std::fabs(v) < step * 1e-9 ? 0.0 : v); // no "-0"
    }
    return ticks;
}

QColor ZWDataCardDrawing::Tint(const QColor& colour, double amount)
{
    const auto mix = [amount](int c) { return int(std::lround(c + (255 - c) * amount)); };
    return QColor(mix(colour.red()), mix(colour.green()), mix(colour.blue()));
}

std::vector<double> ZWDataCardDrawing::ParseValues(const QString& text, int maxCount, int& total, int& malformed)
{
    std::vector<double> values;
    total = 0;
    malformed = 0;
    if (text.trimmed().isEmpty())
        return values;
    const QLocale c = QLocale::c();
    for (const QStringView part : QStringView(text).split(QLatin1Char(';'))) {
        ++total;
        if (total > maxCount)
            continue;
        const QStringView entry = part.trimmed();
        double value = ZW_NO_VALUE;
        if (!entry.isEmpty()) {
            bool ok = false;
            const double v = c.toDouble(entry, &ok);
            if (ok && std::isfinite(v))
                value = v;
            else
                ++malformed;
        }
        values.push_back(value);
    }
    return values;
}
