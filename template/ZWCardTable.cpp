#include "template/ZWCardTable.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "template/ZWCardFormule.h"
#include "template/ZWDataCardDrawing.h"
#include "template/ZWFormat.h"
#include "template/ZWXmlFields.h"

#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

namespace {

const QString kTotalNames[] = {QStringLiteral("none"), QStringLiteral("sum"), QStringLiteral("mean"),
    QStringLiteral("min"), QStringLiteral("max")};

constexpr int kSampleRows = 7;

QString NormalisedFormat(const QString& text, const QString& fallback)
{
    if (!text.contains(QLatin1Char('.')))
        return fallback;
    int digits = 0, decimals = 0;
    bool fillInteger = false, fillDecimal = false;
    ZWCardFormule::ParseFormat(text, digits, decimals, fillInteger, fillDecimal);
    return ZWCardFormule::BuildFormat(digits, decimals, fillInteger, fillDecimal);
}

QString FormatBy(const ZWCardTable::Column& column, double value)
{
    int digits = 0, decimals = 0;
    bool fillInteger = false, fillDecimal = false;
    ZWCardFormule::ParseFormat(column.format, digits, decimals, fillInteger, fillDecimal);
    return ZWFormat::FormatDouble(value, digits, decimals, column.thousandSeparator, fillInteger, fillDecimal);
}

} // namespace

ZWCardTable::ZWCardTable() : totalTitle(ZWLoadString(ZWTextId::TableTotalTitle))
{
    layer = 1;
}

const char* ZWCardTable::GetRuntimeClass() const
{
    return "ZWCardTable";
}

QString ZWCardTable::TotalName(Total t)
{
    return kTotalNames[int(t)];
}

bool ZWCardTable::TotalFromName(const QString& name, Total& t)
{
    for (int i = 0; i < 5; ++i) {
        if (name == kTotalNames[i]) {
            t = Total(i);
            return true;
        }
    }
    return false;
}

ZWCardTable::Total ZWCardTable::ColumnTotal(int index) const
{
    Total rule = total;
    if (index >= 0 && size_t(index) < columns.size())
        TotalFromName(columns[size_t(index)].total, rule);
    return rule;
}

bool ZWCardTable::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    XmlDocument::XmlNode e = TargetElement(node, createElement);
    SaveCommon(e);
    e.NewChild(QStringLiteral("unit"), unit);
    e.NewChild(QStringLiteral("labelFormat"), labelFormat);
    e.NewChild(QStringLiteral("labelTitle"), labelTitle);
    e.NewChild(QStringLiteral("font"), font);
    e.NewChild(QStringLiteral("size"), ZWXmlFields::WriteMm(size));
    e.NewChild(QStringLiteral("headerColor"), ZWXmlFields::WriteColor(headerColor));
    e.NewChild(QStringLiteral("stripeColor"), ZWXmlFields::WriteColor(stripeColor));
    e.NewChild(QStringLiteral("gridColor"), ZWXmlFields::WriteColor(gridColor));
    e.NewChild(QStringLiteral("total"), TotalName(total));
    e.NewChild(QStringLiteral("totalTitle"), totalTitle);
    for (const Column& c : columns) {
        XmlDocument::XmlNode child = e.NewChild(QStringLiteral("column"));
        child.NewChild(QStringLiteral("title"), c.title);
        child.NewChild(QStringLiteral("formula"), c.formula);
        child.NewChild(QStringLiteral("format"), c.format);
        child.NewChild(QStringLiteral("thousandSeparator"), ZWXmlFields::WriteBool(c.thousandSeparator));
        child.NewChild(QStringLiteral("shift"), c.shift);
        if (!c.total.isEmpty())
            child.NewChild(QStringLiteral("total"), c.total);
    }
    return true;
}

bool ZWCardTable::GetFromXml(const XmlDocument::XmlNode& e)
{
    ZWCardControl::GetFromXml(e);
    QString text;
    if (ZWXmlFields::Read(e, QStringLiteral("unit"), text) && text.trimmed().size() > 0) {
        static const QStringList units
            = {QStringLiteral("hour"), QStringLiteral("day"), QStringLiteral("week"), QStringLiteral("month")};
        if (units.contains(text.trimmed()))
            unit = text.trimmed();
    }
    ZWXmlFields::Read(e, QStringLiteral("labelFormat"), labelFormat);
    ZWXmlFields::Read(e, QStringLiteral("labelTitle"), labelTitle);
    ZWXmlFields::Read(e, QStringLiteral("font"), font);
    double points = size;
    if (ZWXmlFields::Read(e, QStringLiteral("size"), points) && points > 0.0 && points <= 1000.0)
        size = points;
    // Colours keep "none" (FFFFFFFF); anything else is a colour reference.
    const auto colour = [&e](const QString& name, quint32& value) {
        quint32 read = value;
        if (ZWXmlFields::ReadColor(e, name, read))
            value = read == ZW_NO_COLOR ? read : read & 0xFFFFFF;
    };
    colour(QStringLiteral("headerColor"), headerColor);
    colour(QStringLiteral("stripeColor"), stripeColor);
    colour(QStringLiteral("gridColor"), gridColor);
    if (ZWXmlFields::Read(e, QStringLiteral("total"), text))
        TotalFromName(text.trimmed(), total);
    ZWXmlFields::Read(e, QStringLiteral("totalTitle"), totalTitle);
    columns.clear();
    const std::vector<XmlDocument::XmlNode> elements = e.Nodes(QStringLiteral("column"));
    for (const XmlDocument::XmlNode& child : elements) {
        if (columns.size() == size_t(MaxColumns)) {
            qWarning(
                "table %s: %d columns, only the first %d are kept", qPrintable(id), int(elements.size()), MaxColumns);
            break;
        }
        Column c;
        ZWXmlFields::Read(child, QStringLiteral("title"), c.title);
        ZWXmlFields::Read(child, QStringLiteral("formula"), c.formula);
        if (ZWXmlFields::Read(child, QStringLiteral("format"), text))
            c.format = NormalisedFormat(text, c.format);
        ZWXmlFields::Read(child, QStringLiteral("thousandSeparator"), c.thousandSeparator);
        ZWXmlFields::Read(child, QStringLiteral("shift"), c.shift);
        c.shift = c.shift.trimmed();
        Total rule = Total::None;
        if (ZWXmlFields::Read(child, QStringLiteral("total"), text) && TotalFromName(text.trimmed(), rule))
            c.total = text.trimmed();
        columns.push_back(std::move(c));
    }
    return true;
}

std::unique_ptr<ZWCardControl> ZWCardTable::GetClone() const
{
    return std::make_unique<ZWCardTable>(*this);
}

void ZWCardTable::SetRows(std::vector<Row> rows, bool hasTotal, Row totalRow, QString error)
{
    if (rows.size() > size_t(MaxRows))
        rows.resize(size_t(MaxRows));
    m_rows = std::move(rows);
    m_hasTotal = hasTotal;
    m_total = hasTotal ? std::move(totalRow) : Row();
    m_error = std::move(error);
    m_hasValues = true;
}

void ZWCardTable::ClearValues()
{
    m_rows.clear();
    m_total = Row();
    m_hasTotal = false;
    m_error.clear();
    m_hasValues = false;
}

void ZWCardTable::Draw(QPainter& dc, const tagDraw& draw)
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
    const QFont boldFont = ZWDataCardDrawing::Font(dc.device(), draw, font, size, true);
    const QColor ink = ZWColorRefToQColor(color & 0xFFFFFF);
    m_drawnRows = 0;
    if (!m_error.isEmpty()) {
        ZWDataCardDrawing::DrawError(dc, area, textFont, m_error, ink);
        dc.restore();
        return;
    }

    // The rows: the report's, or samples in the columns' formats.
    std::vector<Column> shown = columns;
    std::vector<Row> rows = m_rows;
    bool hasTotal = m_hasTotal;
    Row totalRow = m_total;
    if (!m_hasValues) {
        if (shown.empty()) {
            Column sample;
            sample.title = ZWLoadString(ZWTextId::TableSampleColumn);
            shown.push_back(sample);
        }
        const QStringList labels = ZWDataCardDrawing::SampleLabels(unit, labelFormat, kSampleRows);
        rows.assign(size_t(kSampleRows), Row());
        for (int r = 0; r < kSampleRows; ++r)
            rows[size_t(r)].label = labels[r];
        hasTotal = false;
        totalRow = Row{totalTitle, {}};
        for (size_t c = 0; c < shown.size(); ++c) {
            const std::vector<double> values = ZWDataCardDrawing::SampleValues(kSampleRows, int(c));
            for (int r = 0; r < kSampleRows; ++r)
                rows[size_t(r)].cells << FormatBy(shown[c], values[size_t(r)]);
            const Total rule = c < columns.size() ? ColumnTotal(int(c)) : total;
            double result = 0.0;
            switch (rule) {
            case Total::None:
                totalRow.cells << QString();
                continue;
            case Total::Sum:
            case Total::Mean:
                for (double v : values)
                    result += v;
                if (rule == Total::Mean)
                    result /= double(values.size());
                break;
            case Total::Min:
                result = *std::min_element(values.begin(), values.end());
                break;
            case Total::Max:
                result = *std::max_element(values.begin(), values.end());
                break;
            }
            hasTotal = true;
            totalRow.cells << FormatBy(shown[c], result);
        }
    }

    const QFontMetricsF metrics(textFont, dc.device());
    const QFontMetricsF boldMetrics(boldFont, dc.device());
    const double lh = std::max(metrics.height(), boldMetrics.height());
    const double rowHeight = std::max(1.0, std::ceil(lh * 1.3));
    const double pad = std::max(1.0, lh * 0.3);

    // Column edges: the label column as wide as its texts (at most 40 % of
    // the card), the others sharing the rest.
    double labelWidth = std::max(boldMetrics.horizontalAdvance(labelTitle),
        boldMetrics.horizontalAdvance(hasTotal ? totalRow.label : QString()));
    for (const Row& row : rows)
        labelWidth = std::max(labelWidth, metrics.horizontalAdvance(row.label));
    labelWidth = std::min(std::ceil(labelWidth + 2 * pad), area.width() * (shown.empty() ? 1.0 : 0.4));
    std::vector<double> edges{area.left(), area.left() + labelWidth};
    const double cellWidth = shown.empty() ? 0.0 : (area.right() - edges.back()) / double(shown.size());
    for (size_t c = 0; c < shown.size(); ++c)
        edges.push_back(std::round(edges[1] + cellWidth * double(c + 1)));
    edges[1] = std::round(edges[1]);

    const auto drawRow = [&](double top, const QString& label, const QStringList& cells, const QFont& font,
                             const QFontMetricsF& fm, Qt::Alignment cellAlign) {
        dc.setFont(font);
        dc.setPen(ink);
        const auto cell = [&](size_t c, const QString& text, Qt::Alignment align) {
            const QRectF box(edges[c] + pad, top, edges[c + 1] - edges[c] - 2 * pad, rowHeight);
            if (box.width() > 0)
                dc.drawText(box, align | Qt::AlignVCenter, fm.elidedText(text, Qt::ElideRight, box.width()));
        };
        cell(0, label, Qt::AlignLeft);
        for (size_t c = 0; c < shown.size(); ++c)
            cell(c + 1, c < size_t(cells.size()) ? cells[qsizetype(c)] : QString(), cellAlign);
    };

    // Header.
    double y0 = area.top();
    if (headerColor != ZW_NO_COLOR)
        dc.fillRect(QRectF(area.left(), y0, area.width(), rowHeight), ZWColorRefToQColor(headerColor));
    QStringList titles;
    for (const Column& c : shown)
        titles << c.title;
    drawRow(y0, labelTitle, titles, boldFont, boldMetrics, Qt::AlignHCenter);
    y0 += rowHeight;

    // Body: as many rows as fit above the totals row; when some do not, the
    // last place says how many are left out.
    const double bodyBottom = area.bottom() - (hasTotal ? rowHeight : 0.0);
    const int fit = std::max(0, int(std::floor((bodyBottom - y0) / rowHeight + 1e-9)));
    const int rowCount = int(rows.size());
    const bool cut = rowCount > fit;
    m_drawnRows = cut ? std::max(0, fit - 1) : rowCount;
    for (int r = 0; r < m_drawnRows; ++r) {
        const double top = y0 + r * rowHeight;
        if (r % 2 == 1 && stripeColor != ZW_NO_COLOR)
            dc.fillRect(QRectF(area.left(), top, area.width(), rowHeight), ZWColorRefToQColor(stripeColor));
        drawRow(top, rows[size_t(r)].label, rows[size_t(r)].cells, textFont, metrics, Qt::AlignRight);
    }
    double next = y0 + m_drawnRows * rowHeight;
    if (cut && fit >= 1) {
        QFont italic = textFont;
        italic.setItalic(true);
        dc.setFont(italic);
        dc.setPen(ink);
        const QString more = ZWLoadString(ZWTextId::TableMoreRows).arg(rowCount - m_drawnRows);
        const QRectF box(area.left() + pad, next, area.width() - 2 * pad, rowHeight);
        dc.drawText(box, Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetricsF(italic, dc.device()).elidedText(more, Qt::ElideRight, std::max(0.0, box.width())));
        next += rowHeight;
    }
    const double gridBottom = next + (hasTotal ? rowHeight : 0.0);
    if (hasTotal)
        drawRow(next, totalRow.label, totalRow.cells, boldFont, boldMetrics, Qt::AlignRight);

    // The grid over it all; the totals row under a double-weight line.
    if (gridColor != ZW_NO_COLOR) {
        const QColor line = ZWColorRefToQColor(gridColor);
        dc.setPen(QPen(line, 0));
        const double right = area.right() - 1;
        for (double ly = area.top(); ly <= gridBottom + 0.5; ly += rowHeight)
            dc.drawLine(QPointF(area.left(), ly), QPointF(right, ly));
        dc.drawLine(QPointF(area.left(), std::min(gridBottom, area.bottom() - 1)),
            QPointF(right, std::min(gridBottom, area.bottom() - 1)));
        for (size_t c = 0; c < edges.size(); ++c) {
            const double lx = c + 1 == edges.size() ? right : edges[c];
            dc.drawLine(QPointF(lx, area.top()), QPointF(lx, std::min(gridBottom, area.bottom() - 1)));
        }
        if (hasTotal)
            dc.fillRect(QRectF(area.left(), next, area.width(), std::max(1.0, lh * 0.08)), line);
    }
    dc.restore();
}
