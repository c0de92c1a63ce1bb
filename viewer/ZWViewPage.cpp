#include "viewer/ZWViewPage.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWRemote.h"
#include "host/core/ZWTextId.h"
#include "template/ZWCardChart.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWCardTable.h"
#include "template/ZWColorRef.h"
#include "template/ZWDataCardDrawing.h"
#include "template/ZWPageRenderer.h"
#include "viewer/ZWViewZoom.h"

#include <QPaintDevice>
#include <QPainter>
#include <cmath>

namespace {

// The alignment words of a card turned a quarter: the horizontal word
// becomes the vertical one and the other way round, remapped to the sides
// they now face.
void TurnAlignment(int& horizontal, int& vertical, bool right)
{
    const int oldH = horizontal;
    const int oldV = vertical;
    const auto map = [](int v, int from1, int to1, int from2, int to2) {
        return v == from1 ? to1 : v == from2 ? to2 : v;
    };
    if (right) {
        vertical = map(oldH, 1, 4, 2, 8);
        horizontal = map(oldV, 4, 2, 8, 1);
    } else {
        vertical = map(oldH, 1, 8, 2, 4);
        horizontal = map(oldV, 4, 1, 8, 2);
    }
}

// What a quarter turn does to a card's own look (not its place): alignment,
// text angle, picture. Conditioned cards turn every alternative.
void TurnContent(ZWCardControl& card, bool right)
{
    if (auto* label = dynamic_cast<ZWCardLabel*>(&card)) {
        TurnAlignment(label->horizontalAlign, label->verticalAlign, right);
        // The text turns with the page so that it still runs along its card.
        label->orientation += right ? -90.0 : 90.0;
    } else if (auto* image = dynamic_cast<ZWCardImage*>(&card)) {
        TurnAlignment(image->horizontalAlign, image->verticalAlign, right);
        image->RotatePicture(right);
    } else if (auto* conditioned = dynamic_cast<ZWCardConditioned*>(&card)) {
        for (auto& control : conditioned->controls)
            TurnContent(*control, right);
    } else if (auto* chart = dynamic_cast<ZWCardChart*>(&card)) {
        chart->turn += right ? 1 : -1;
    } else if (auto* table = dynamic_cast<ZWCardTable*>(&card)) {
        table->turn += right ? 1 : -1;
    }
}

} // namespace

ZWViewPage::ZWViewPage() : m_factor(ZW_NO_VALUE)
{}

ZWViewPage::~ZWViewPage() = default;

bool ZWViewPage::SetTemplate(const XmlDocument::XmlNode& page)
{
    m_page.SetTemplate(page);
    m_page.UpdateStylesFromFile();
    m_hasTemplate = true;
    m_flipped = false;
    RechargeUserDataValues();
    return true;
}

bool ZWViewPage::SetUserData(const QByteArray& text)
{
    XmlDocument parsed;
    if (!parsed.Parse(text))
        return false;
    m_userData = parsed;
    return RechargeUserDataValues();
}

bool ZWViewPage::RechargeUserDataValues()
{
    if (m_userData.IsEmpty())
        return false;
    for (const XmlDocument::XmlNode& child : m_userData.Root().Children()) {
        const XmlDocument::XmlNode id = child.Node(QStringLiteral("/id"));
        if (id.IsNull())
            continue;
        if (ZWCardControl* card = m_page.FindCard(id.Text()))
            RechargeValue(card, child);
    }
    return true;
}

namespace {

void ReplacePicture(ZWCardImage& image, const XmlDocument::XmlNode& element)
{
    image.DeletePicture();
    QByteArray bytes;
    if (DecodeBase64(element.Value(QStringLiteral("/value")), bytes) && !bytes.isEmpty())
        image.SetPictureBytes(bytes);
}

bool IsTextKind(const QString& name)
{
    return name == QLatin1String("label") || name == QLatin1String("date") || name == QLatin1String("formule");
}

// A text card takes the value document's text; a date card shows it as it
// stands, since it is the report's date already written by the pattern.
void SetText(ZWCardControl& card, const QString& text)
{
    static_cast<ZWCardLabel&>(card).value = text;
    if (card.IsKindOf("ZWCardDate"))
        static_cast<ZWCardDate&>(card).filled = true;
}

bool KindMatches(const QString& name, const ZWCardControl& card)
{
    if (name == QLatin1String("label"))
        return card.IsKindOf("ZWCardLabel");
    if (name == QLatin1String("date"))
        return card.IsKindOf("ZWCardDate");
    if (name == QLatin1String("formule"))
        return card.IsKindOf("ZWCardFormule");
    if (name == QLatin1String("image"))
        return card.IsKindOf("ZWCardImage");
    return false;
}

// A chart's labels and series values. Points past the limit are dropped and
// the card says so instead of drawing a part of its period.
void SetChartValues(ZWCardChart& chart, const XmlDocument::XmlNode& element)
{
    QStringList labels;
    for (const XmlDocument::XmlNode& label : element.Nodes(QStringLiteral("label")))
        labels << label.Text();
    qsizetype points = labels.size();
    int malformed = 0;
    std::vector<std::vector<double>> values;
    for (const XmlDocument::XmlNode& series : element.Nodes(QStringLiteral("series"))) {
        if (values.size() == size_t(ZWCardChart::MaxSeries))
            break;
        int total = 0, bad = 0;
        values.push_back(
            ZWDataCardDrawing::ParseValues(series.Value(QStringLiteral("values")), ZWCardChart::MaxPoints, total, bad));
        points = std::max<qsizetype>(points, total);
        malformed += bad;
    }
    QString error = element.Value(QStringLiteral("error"));
    if (points > ZWCardChart::MaxPoints) {
        qWarning("chart %s: %lld points, only the first %d are kept", qPrintable(chart.id), qint64(points),
            ZWCardChart::MaxPoints);
        if (error.isEmpty())
            error = ZWLoadString(ZWTextId::ChartTooManyPoints).arg(points).arg(ZWCardChart::MaxPoints);
    }
    if (malformed > 0)
        qWarning("chart %s: %d values that are no numbers are drawn as gaps", qPrintable(chart.id), malformed);
    chart.SetValues(std::move(labels), std::move(values), error);
}

ZWCardTable::Row ReadRow(const XmlDocument::XmlNode& element)
{
    ZWCardTable::Row row;
    row.label = element.Value(QStringLiteral("label"));
    for (const XmlDocument::XmlNode& cell : element.Nodes(QStringLiteral("cell"))) {
        if (row.cells.size() == ZWCardTable::MaxColumns)
            break;
        row.cells << cell.Text();
    }
    return row;
}

void SetTableRows(ZWCardTable& table, const XmlDocument::XmlNode& element)
{
    std::vector<ZWCardTable::Row> rows;
    const std::vector<XmlDocument::XmlNode> rowElements = element.Nodes(QStringLiteral("row"));
    for (const XmlDocument::XmlNode& row : rowElements) {
        if (rows.size() == size_t(ZWCardTable::MaxRows))
            break;
        rows.push_back(ReadRow(row));
    }
    QString error = element.Value(QStringLiteral("error"));
    if (rowElements.size() > size_t(ZWCardTable::MaxRows)) {
        qWarning("table %s: %d rows, only the first %d are kept", qPrintable(table.id), int(rowElements.size()),
            ZWCardTable::MaxRows);
        if (error.isEmpty())
            error = ZWLoadString(ZWTextId::TableTooManyRows).arg(rowElements.size()).arg(ZWCardTable::MaxRows);
    }
    const XmlDocument::XmlNode total = element.Node(QStringLiteral("total"));
    table.SetRows(std::move(rows), !total.IsNull(), total.IsNull() ? ZWCardTable::Row() : ReadRow(total), error);
}

} // namespace

bool ZWViewPage::RechargeValue(ZWCardControl* card, const XmlDocument::XmlNode& element)
{
    if (!card)
        return false;
    const QString name = element.Name();
    if (name == QLatin1String("image") && card->IsKindOf("ZWCardImage")) {
        ReplacePicture(static_cast<ZWCardImage&>(*card), element);
    } else if (IsTextKind(name) && KindMatches(name, *card)) {
        const XmlDocument::XmlNode value = element.Node(QStringLiteral("/value"));
        if (!value.IsNull())
            SetText(*card, value.Text());
    } else if (name == QLatin1String("chart") && card->IsKindOf("ZWCardChart")) {
        SetChartValues(static_cast<ZWCardChart&>(*card), element);
    } else if (name == QLatin1String("table") && card->IsKindOf("ZWCardTable")) {
        SetTableRows(static_cast<ZWCardTable&>(*card), element);
    } else if (name == QLatin1String("conditioned") && card->IsKindOf("ZWCardConditioned")) {
        auto* conditioned = static_cast<ZWCardConditioned*>(card);
        XmlDocument::XmlNode chosen;
        for (const char* kind : {"label", "image", "date", "formule"}) {
            chosen = element.Node(QLatin1Char('/') + QLatin1String(kind));
            if (!chosen.IsNull())
                break;
        }
        conditioned->level = -1;
        const QString altId = chosen.IsNull() ? QString() : chosen.Value(QStringLiteral("/id"));
        if (!altId.isEmpty()) {
            conditioned->level = conditioned->FindControl(altId);
            ZWCardControl* alternative = conditioned->GetCurrentControl();
            if (alternative && KindMatches(chosen.Name(), *alternative)) {
                const XmlDocument::XmlNode value = chosen.Node(QStringLiteral("/value"));
                if (chosen.Name() == QLatin1String("image")) {
                    if (!value.IsNull())
                        ReplacePicture(static_cast<ZWCardImage&>(*alternative), chosen);
                } else if (!value.IsNull()) {
                    SetText(*alternative, value.Text());
                }
            }
        }
        conditioned->ActualizeLevel();
    }
    return false;
}

bool ZWViewPage::SetMode(int mode, const QSize& clientSize, const QPointF& pixelsPerMm)
{
    double factor = 1.0;
    switch (mode) {
    case 0: {
        const double fit = m_hasTemplate && clientSize.isValid() ? ZWViewZoom::FitFactor(clientSize.width(),
                               clientSize.height(), pixelsPerMm.x(), pixelsPerMm.y(), GetWidth(), GetHeight())
                                                                 : ZW_NO_VALUE;
        factor = IsNoValue(fit) ? ZW_NO_VALUE : -fit;
        break;
    }
    case 1:
    case 2:
    case 3:
    case 4:
        factor = double(mode);
        break;
    case 100:
        return false;
    default:
        factor = 1.0;
        break;
    }
    return SetMode(factor);
}

bool ZWViewPage::SetMode(double factor)
{
    if (factor == m_factor)
        return false;
    m_factor = factor;
    return true;
}

QSizeF ZWViewPage::GetMinimumControlDimensions(const QPaintDevice* device) const
{
    const tagDraw draw
        = ZWPageRenderer::MakeDraw(device, m_page.properties, IsNoValue(m_factor) ? 1.0 : m_factor, QRect(0, 0, 1, 1));
    return QSizeF(draw.pageWidthPx, draw.pageHeightPx);
}

void ZWViewPage::Draw(QPainter& dc, const QRect& target, bool logicalResolution, bool noBackground, const QRect& clip,
    int scrollX, int scrollY)
{
    if (!m_hasTemplate)
        return;
    // A fit that could not be computed yet draws at real size.
    if (IsNoValue(m_factor))
        SetMode(1);
    tagDraw draw = ZWPageRenderer::MakeDraw(dc.device(), m_page.properties, m_factor, target, scrollX, scrollY);
    draw.logicalResolution = logicalResolution;
    draw.noBackground = noBackground;
    draw.markProblems = m_markProblems;
    draw.clipToPage = false;
    const ZWRect visible{clip.left(), clip.top(), clip.right(), clip.bottom()};
    draw.visibleArea = &visible;
    dc.save();
    dc.setBackgroundMode(Qt::TransparentMode);
    ZWPageRenderer::DrawBackground(dc, draw, m_page.properties, GetOutColor(), clip);
    ZWPageRenderer::DrawCards(dc, draw, m_page.cards);
    dc.restore();
}

void ZWViewPage::Print(QPainter& dc, const QPointF& physicalOffset)
{
    if (!m_hasTemplate || !dc.device())
        return;
    const QPaintDevice* device = dc.device();
    const QRect area(0, 0, device->width(), device->height());
    const double r = double(device->width()) / double(device->height());
    const double t = GetWidth() / GetHeight();
    const bool turn = (r < 1.0 && t > 1.0) || (r > 1.0 && t < 1.0);
    if (turn)
        FlipCard(true);
    const double factor = m_factor;
    const quint32 out = GetOutColor();
    const bool mark = m_markProblems;
    m_factor = 1.0;
    m_markProblems = false;
    SetOutColor(ZW_NO_COLOR);
    dc.save();
    dc.translate(-physicalOffset);
    Draw(dc, area, true, false, area.translated(physicalOffset.toPoint()));
    dc.restore();
    SetOutColor(out);
    m_markProblems = mark;
    m_factor = factor;
    if (turn)
        FlipCard(false);
}

void ZWViewPage::FlipCard(bool right)
{
    ZWGlobalProperties& props = m_page.properties;
    std::swap(props.width, props.height);
    props.background->RotatePicture(right);
    props.FitBackground();
    const double pageW = props.width;
    const double pageH = props.height;
    for (auto& card : m_page.cards) {
        const double x = card->x;
        const double y = card->y;
        const double w = card->width;
        const double h = card->height;
        if (right) {
            card->x = pageW - y - h;
            card->y = x;
        } else {
            card->x = y;
            card->y = pageH - x - w;
        }
        card->width = h;
        card->height = w;
        TurnContent(*card, right);
    }
    m_flipped = right;
}
