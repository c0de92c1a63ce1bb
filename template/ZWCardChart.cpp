#include "template/ZWCardChart.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWTextId.h"
#include "template/ZWCardFormule.h"
#include "template/ZWDataCardDrawing.h"
#include "template/ZWFormat.h"
#include "template/ZWXmlFields.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <cmath>

namespace {

const QString kTypeNames[] = {QStringLiteral("bar"), QStringLiteral("stacked"), QStringLiteral("line")};

// A comparison series is drawn lighter than the series it is compared with.
constexpr double kComparisonTint = 0.55;
constexpr int kSamplePoints = 12;

bool IsComparison(const ZWCardChart::Series& s)
{
    return !s.shift.isEmpty();
}

} // namespace

ZWCardChart::ZWCardChart()
{
    layer = 1;
}

const char* ZWCardChart::GetRuntimeClass() const
{
    return "ZWCardChart";
}

QString ZWCardChart::TypeName(Type t)
{
    return kTypeNames[int(t)];
}

bool ZWCardChart::TypeFromName(const QString& name, Type& t)
{
    for (int i = 0; i < 3; ++i) {
        if (name == kTypeNames[i]) {
            t = Type(i);
            return true;
        }
    }
    return false;
}

const QStringList& ZWCardChart::UnitNames()
{
    static const QStringList names
        = {QStringLiteral("hour"), QStringLiteral("day"), QStringLiteral("week"), QStringLiteral("month")};
    return names;
}

quint32 ZWCardChart::DefaultColor(int index)
{
    static constexpr quint32 palette[] = {ZWRGB(31, 119, 180), ZWRGB(255, 127, 14), ZWRGB(44, 160, 44),
        ZWRGB(214, 39, 40), ZWRGB(148, 103, 189), ZWRGB(140, 86, 75), ZWRGB(227, 119, 194), ZWRGB(127, 127, 127)};
    return palette[size_t(std::max(index, 0)) % std::size(palette)];
}

bool ZWCardChart::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    XmlDocument::XmlNode e = TargetElement(node, createElement);
    SaveCommon(e);
    e.NewChild(QStringLiteral("type"), TypeName(type));
    e.NewChild(QStringLiteral("unit"), unit);
    e.NewChild(QStringLiteral("title"), title);
    e.NewChild(QStringLiteral("xTitle"), xTitle);
    e.NewChild(QStringLiteral("yTitle"), yTitle);
    e.NewChild(QStringLiteral("format"), format);
    e.NewChild(QStringLiteral("thousandSeparator"), ZWXmlFields::WriteBool(thousandSeparator));
    e.NewChild(QStringLiteral("labelFormat"), labelFormat);
    e.NewChild(QStringLiteral("legend"), ZWXmlFields::WriteBool(legend));
    e.NewChild(QStringLiteral("font"), font);
    e.NewChild(QStringLiteral("size"), ZWXmlFields::WriteMm(size));
    for (const Series& s : series) {
        XmlDocument::XmlNode child = e.NewChild(QStringLiteral("series"));
        child.NewChild(QStringLiteral("title"), s.title);
        child.NewChild(QStringLiteral("formula"), s.formula);
        child.NewChild(QStringLiteral("color"), ZWXmlFields::WriteColor(s.color));
        child.NewChild(QStringLiteral("shift"), s.shift);
    }
    return true;
}

bool ZWCardChart::GetFromXml(const XmlDocument::XmlNode& e)
{
    ZWCardControl::GetFromXml(e);
    QString text;
    if (ZWXmlFields::Read(e, QStringLiteral("type"), text))
        TypeFromName(text.trimmed(), type);
    if (ZWXmlFields::Read(e, QStringLiteral("unit"), text) && UnitNames().contains(text.trimmed()))
        unit = text.trimmed();
    ZWXmlFields::Read(e, QStringLiteral("title"), title);
    ZWXmlFields::Read(e, QStringLiteral("xTitle"), xTitle);
    ZWXmlFields::Read(e, QStringLiteral("yTitle"), yTitle);
    // A format is kept as this program writes it; text without its "." is
    // no format at all and leaves the default.
    if (ZWXmlFields::Read(e, QStringLiteral("format"), text) && text.contains(QLatin1Char('.'))) {
        int digits = 0, decimals = 0;
        bool fillInteger = false, fillDecimal = false;
        ZWCardFormule::ParseFormat(text, digits, decimals, fillInteger, fillDecimal);
        format = ZWCardFormule::BuildFormat(digits, decimals, fillInteger, fillDecimal);
    }
    ZWXmlFields::Read(e, QStringLiteral("thousandSeparator"), thousandSeparator);
    ZWXmlFields::Read(e, QStringLiteral("labelFormat"), labelFormat);
    ZWXmlFields::Read(e, QStringLiteral("legend"), legend);
    ZWXmlFields::Read(e, QStringLiteral("font"), font);
    double points = size;
    if (ZWXmlFields::Read(e, QStringLiteral("size"), points) && points > 0.0 && points <= 1000.0)
        size = points;
    series.clear();
    const std::vector<XmlDocument::XmlNode> elements = e.Nodes(QStringLiteral("series"));
    for (const XmlDocument::XmlNode& child : elements) {
        if (series.size() == size_t(MaxSeries)) {
            qWarning(
                "chart %s: %d series, only the first %d are kept", qPrintable(id), int(elements.size()), MaxSeries);
            break;
        }
        Series s;
        s.color = DefaultColor(int(series.size()));
        ZWXmlFields::Read(child, QStringLiteral("title"), s.title);
        ZWXmlFields::Read(child, QStringLiteral("formula"), s.formula);
        ZWXmlFields::ReadColor(child, QStringLiteral("color"), s.color);
        ZWXmlFields::Read(child, QStringLiteral("shift"), s.shift);
        s.color &= 0xFFFFFF;
        s.shift = s.shift.trimmed();
        series.push_back(std::move(s));
    }
    return true;
}

std::unique_ptr<ZWCardControl> ZWCardChart::GetClone() const
{
    return std::make_unique<ZWCardChart>(*this);
}

void ZWCardChart::SetValues(QStringList labels, std::vector<std::vector<double>> values, QString error)
{
    if (labels.size() > MaxPoints)
        labels.resize(MaxPoints);
    if (values.size() > size_t(MaxSeries))
        values.resize(size_t(MaxSeries));
    for (auto& v : values)
        if (v.size() > size_t(MaxPoints))
            v.resize(size_t(MaxPoints));
    m_labels = std::move(labels);
    m_values = std::move(values);
    m_error = std::move(error);
    m_hasValues = true;
}

void ZWCardChart::ClearValues()
{
    m_labels.clear();
    m_values.clear();
    m_error.clear();
    m_hasValues = false;
}

void ZWCardChart::Draw(QPainter& dc, const tagDraw& draw)
{
    const ZWRect rect = draw.CardRect(x, y, width, height);
    if (!draw.IsVisible(rect) || rect.IsEmpty())
        return;
    dc.save();
    dc.setClipRect(rect.ToQRect(), Qt::IntersectClip);
    if (draw.clipToPage)
        dc.setClipPath(draw.PageClipPath(), Qt::IntersectClip);
    if (backcolor != ZW_NO_COLOR)
        dc.fillRect(rect.ToQRect(), ZWColorRefToQColor(backcolor));
    const QRectF area = ZWDataCardDrawing::Upright(dc, rect, turn);
    const QFont textFont = ZWDataCardDrawing::Font(dc.device(), draw, font, size, false);
    const QFont titleFont = ZWDataCardDrawing::Font(dc.device(), draw, font, size * 1.2, true);
    const QColor ink = ZWColorRefToQColor(color & 0xFFFFFF);
    if (!m_error.isEmpty()) {
        ZWDataCardDrawing::DrawError(dc, area, textFont, m_error, ink);
        dc.restore();
        return;
    }

    // The data: the report's, or a sample that shows the look.
    std::vector<Series> shown = series;
    QStringList labels = m_labels;
    std::vector<std::vector<double>> values = m_values;
    if (!m_hasValues) {
        if (shown.empty())
            shown.push_back({ZWLoadString(ZWTextId::ChartSampleSeries).arg(1), QString(), DefaultColor(0), QString()});
        labels = ZWDataCardDrawing::SampleLabels(unit, labelFormat, kSamplePoints);
        values.clear();
        for (size_t i = 0; i < shown.size(); ++i) {
            // A comparison is a little below the series it follows.
            std::vector<double> v = ZWDataCardDrawing::SampleValues(kSamplePoints, int(i));
            if (IsComparison(shown[i]) && i > 0) {
                v = ZWDataCardDrawing::SampleValues(kSamplePoints, int(i - 1));
                for (double& d : v)
                    d = std::round(d * 0.85);
            }
            values.push_back(std::move(v));
        }
    }
    values.resize(shown.size());
    qsizetype count = labels.size();
    for (const auto& v : values)
        count = std::max<qsizetype>(count, qsizetype(v.size()));
    count = std::min<qsizetype>(count, MaxPoints);
    const auto valueAt
        = [&](size_t s, qsizetype i) { return i < qsizetype(values[s].size()) ? values[s][size_t(i)] : ZW_NO_VALUE; };

    const QFontMetricsF metrics(textFont, dc.device());
    const QFontMetricsF titleMetrics(titleFont, dc.device());
    const double lh = metrics.height();
    const double pad = std::max(2.0, lh * 0.4);
    const QRectF inner = area.adjusted(pad, pad, -pad, -pad);
    double top = inner.top();
    double bottom = inner.bottom();
    double left = inner.left();
    dc.setPen(ink);

    if (!title.isEmpty()) {
        dc.setFont(titleFont);
        const QRectF line(inner.left(), top, inner.width(), titleMetrics.height());
        dc.drawText(line, Qt::AlignHCenter | Qt::AlignTop,
            titleMetrics.elidedText(title, Qt::ElideRight, std::max(0.0, inner.width())));
        top += titleMetrics.height() + pad * 0.5;
    }

    // The legend: a swatch and a title per series, in rows that wrap.
    struct Item
    {
        size_t series;
        QString text;
        QRectF place;
    };
    std::vector<Item> items;
    if (legend && !shown.empty()) {
        const double swatch = lh * 1.2;
        double cx = inner.left();
        int rows = 1;
        for (size_t s = 0; s < shown.size(); ++s) {
            QString text = shown[s].title;
            if (text.isEmpty())
                text = ZWLoadString(ZWTextId::ChartSampleSeries).arg(s + 1);
            text = metrics.elidedText(text, Qt::ElideRight, std::max(0.0, inner.width() - swatch - pad));
            const double w = swatch + pad * 0.5 + metrics.horizontalAdvance(text);
            if (cx > inner.left() && cx + w > inner.right()) {
                cx = inner.left();
                ++rows;
            }
            items.push_back({s, text, QRectF(cx, (rows - 1) * lh, w, lh)});
            cx += w + pad * 1.5;
        }
        const double legendTop = bottom - rows * lh;
        for (Item& item : items)
            item.place.translate(0.0, legendTop);
        bottom = legendTop - pad * 0.5;
    }
    if (!xTitle.isEmpty()) {
        dc.setFont(textFont);
        dc.drawText(QRectF(inner.left(), bottom - lh, inner.width(), lh), Qt::AlignCenter,
            metrics.elidedText(xTitle, Qt::ElideRight, std::max(0.0, inner.width())));
        bottom -= lh + pad * 0.3;
    }
    const double labelTop = bottom - lh;
    const double plotBottom = labelTop - pad * 0.3;
    // Half a line above the plot for the top tick's label.
    top += lh * 0.5;
    if (!yTitle.isEmpty()) {
        dc.save();
        dc.setFont(textFont);
        const double span = plotBottom - top;
        dc.translate(left, plotBottom);
        dc.rotate(-90.0);
        dc.drawText(QRectF(0.0, 0.0, std::max(0.0, span), lh), Qt::AlignCenter,
            metrics.elidedText(yTitle, Qt::ElideRight, std::max(0.0, span)));
        dc.restore();
        left += lh + pad * 0.5;
    }

    // The value range: bars and stacks stand on zero; lines span their values.
    const bool stacked = type == Type::Stacked;
    double low = 0.0, high = 0.0;
    bool any = false;
    const auto take = [&](double v) {
        if (!any && type == Type::Line) {
            low = high = v;
        } else {
            low = std::min(low, v);
            high = std::max(high, v);
        }
        any = true;
    };
    for (qsizetype i = 0; i < count; ++i) {
        double sums[2][2] = {{0.0, 0.0}, {0.0, 0.0}}; // [comparison][negative]
        for (size_t s = 0; s < shown.size(); ++s) {
            const double v = valueAt(s, i);
            if (IsNoValue(v) || !std::isfinite(v))
                continue;
            if (stacked)
                take(sums[IsComparison(shown[s])][v < 0.0] += v);
            else
                take(v);
        }
    }
    int decimals = 0, digits = 0;
    bool fillInteger = false, fillDecimal = false;
    ZWCardFormule::ParseFormat(format, digits, decimals, fillInteger, fillDecimal);
    const int maxTicks = std::max(1, int((plotBottom - top) / (lh * 1.8)));
    const std::vector<double> ticks = ZWDataCardDrawing::NiceTicks(low, high, maxTicks, decimals);
    QStringList tickTexts;
    double tickWidth = 0.0;
    for (double t : ticks) {
        tickTexts << ZWFormat::FormatDouble(t, digits, decimals, thousandSeparator, fillInteger, fillDecimal);
        tickWidth = std::max(tickWidth, metrics.horizontalAdvance(tickTexts.back()));
    }
    left += tickWidth + pad * 0.5;
    m_plot = QRectF(QPointF(left, top), QPointF(inner.right(), plotBottom));
    if (m_plot.width() < 4.0 || m_plot.height() < 4.0 || count == 0) {
        dc.restore();
        return;
    }
    const QRectF plot = m_plot;
    const double t0 = ticks.front(), t1 = ticks.back();
    const auto yOf = [&](double v) { return plot.bottom() - (v - t0) / (t1 - t0) * plot.height(); };

    // Grid and tick labels, then the axes.
    dc.setFont(textFont);
    for (size_t k = 0; k < ticks.size(); ++k) {
        const double ty = yOf(ticks[k]);
        dc.setPen(QPen(QColor(220, 220, 220), 0));
        dc.drawLine(QPointF(plot.left(), ty), QPointF(plot.right(), ty));
        dc.setPen(ink);
        // The lowest label stands on its line, clear of the category labels.
        const QRectF box(plot.left() - pad * 0.5 - tickWidth, k == 0 ? ty - lh : ty - lh / 2, tickWidth, lh);
        dc.drawText(box, Qt::AlignRight | (k == 0 ? Qt::AlignBottom : Qt::AlignVCenter), tickTexts[qsizetype(k)]);
    }
    const double zeroY = yOf(std::clamp(0.0, t0, t1));
    dc.setPen(QPen(ink, 0));
    dc.drawLine(QPointF(plot.left(), plot.top()), QPointF(plot.left(), plot.bottom()));
    dc.drawLine(QPointF(plot.left(), zeroY), QPointF(plot.right(), zeroY));

    // Category labels, thinned so that they never overlap.
    const double slot = plot.width() / double(count);
    double labelWidth = 0.0;
    for (qsizetype i = 0; i < count && i < labels.size(); ++i)
        labelWidth = std::max(labelWidth, metrics.horizontalAdvance(labels[i]));
    const qsizetype every = std::max<qsizetype>(1, qsizetype(std::ceil((labelWidth + pad) / slot)));
    for (qsizetype i = 0; i < count && i < labels.size(); i += every) {
        const double centre = plot.left() + (double(i) + 0.5) * slot;
        const double w = std::min(double(every) * slot, plot.width());
        dc.drawText(QRectF(centre - w / 2, labelTop, w, lh), Qt::AlignHCenter | Qt::AlignTop,
            metrics.elidedText(labels[i], Qt::ElideRight, w));
    }

    const auto seriesColour = [&](size_t s) {
        const QColor base = ZWColorRefToQColor(shown[s].color & 0xFFFFFF);
        return IsComparison(shown[s]) && type != Type::Line ? ZWDataCardDrawing::Tint(base, kComparisonTint) : base;
    };
    const double penWidth = std::max(1.0, lh * 0.12);
    if (type == Type::Line) {
        dc.setRenderHint(QPainter::Antialiasing, true);
        for (size_t s = 0; s < shown.size(); ++s) {
            QPen pen(seriesColour(s), penWidth, IsComparison(shown[s]) ? Qt::DashLine : Qt::SolidLine);
            pen.setCapStyle(Qt::FlatCap);
            QPainterPath path;
            bool open = false;
            for (qsizetype i = 0; i < count; ++i) {
                const double v = valueAt(s, i);
                if (IsNoValue(v) || !std::isfinite(v)) {
                    open = false;
                    continue;
                }
                const QPointF p(plot.left() + (double(i) + 0.5) * slot, yOf(v));
                const bool alone
                    = !open && (i + 1 >= count || IsNoValue(valueAt(s, i + 1)) || !std::isfinite(valueAt(s, i + 1)));
                if (alone) {
                    // A point between two gaps is a dot.
                    dc.setPen(Qt::NoPen);
                    dc.setBrush(pen.color());
                    dc.drawEllipse(p, penWidth * 1.5, penWidth * 1.5);
                    dc.setBrush(Qt::NoBrush);
                }
                if (open)
                    path.lineTo(p);
                else
                    path.moveTo(p);
                open = true;
            }
            dc.strokePath(path, pen);
        }
        dc.setRenderHint(QPainter::Antialiasing, false);
    } else {
        // Grouped bars side by side; stacks side by side when comparisons
        // stand beside the report's own series.
        std::vector<int> column(shown.size(), 0);
        int columns = 0;
        if (stacked) {
            const bool hasOwn
                = std::any_of(shown.begin(), shown.end(), [](const Series& s) { return !IsComparison(s); });
            const bool hasComparison = std::any_of(shown.begin(), shown.end(), IsComparison);
            columns = int(hasOwn) + int(hasComparison);
            for (size_t s = 0; s < shown.size(); ++s)
                column[s] = hasOwn && IsComparison(shown[s]) ? 1 : 0;
        } else {
            columns = int(shown.size());
            for (size_t s = 0; s < shown.size(); ++s)
                column[s] = int(s);
        }
        const double group = slot * 0.8;
        const double barWidth = group / std::max(columns, 1);
        for (qsizetype i = 0; i < count; ++i) {
            double bases[2][2] = {{0.0, 0.0}, {0.0, 0.0}};
            for (size_t s = 0; s < shown.size(); ++s) {
                const double v = valueAt(s, i);
                if (IsNoValue(v) || !std::isfinite(v))
                    continue;
                double from = 0.0, to = v;
                if (stacked) {
                    double& base = bases[column[s]][v < 0.0];
                    from = base;
                    base += v;
                    to = base;
                }
                const double x0 = plot.left() + double(i) * slot + (slot - group) / 2 + column[s] * barWidth;
                const QRectF bar(QPointF(x0, std::min(yOf(from), yOf(to))),
                    QPointF(x0 + std::max(barWidth, 1.0), std::max(yOf(from), yOf(to))));
                dc.fillRect(bar, seriesColour(s));
            }
        }
    }

    // The legend's swatches and titles.
    dc.setFont(textFont);
    for (const Item& item : items) {
        const double swatch = lh * 1.2;
        const QRectF mark(item.place.left(), item.place.top() + lh * 0.25, swatch, lh * 0.5);
        if (type == Type::Line) {
            QPen pen(
                seriesColour(item.series), penWidth, IsComparison(shown[item.series]) ? Qt::DashLine : Qt::SolidLine);
            dc.setPen(pen);
            dc.drawLine(QPointF(mark.left(), mark.center().y()), QPointF(mark.right(), mark.center().y()));
        } else {
            dc.fillRect(mark, seriesColour(item.series));
        }
        dc.setPen(ink);
        dc.drawText(QRectF(mark.right() + pad * 0.5, item.place.top(), item.place.width(), lh),
            Qt::AlignLeft | Qt::AlignVCenter, item.text);
    }
    dc.restore();
}
