#include "template/ZWCardControl.h"

#include "host/core/ZWGuid.h"
#include "template/ZWCardKinds.h"
#include "template/ZWXmlFields.h"

#include <QPainter>
#include <array>

ZWCardControl::ZWCardControl()
{
    InitializeId();
}

ZWCardControl::~ZWCardControl() = default;

const char* ZWCardControl::GetRuntimeClass() const
{
    return "ZWCardControl";
}

QString ZWCardControl::ElementName() const
{
    const ZWCardKinds::Kind* kind = ZWCardKinds::ByClass(QLatin1StringView(GetRuntimeClass()));
    return kind ? QString(kind->element) : QString();
}

bool ZWCardControl::IsKindOf(const char* className) const
{
    return ZWCardKinds::Derives(GetRuntimeClass(), className);
}

std::unique_ptr<ZWCardControl> ZWCardControl::CreateObject(const QString& className)
{
    const ZWCardKinds::Kind* kind = ZWCardKinds::ByClass(QLatin1StringView(className.toLatin1()));
    return kind ? kind->create() : nullptr;
}

std::unique_ptr<ZWCardControl> ZWCardControl::CreateFromElement(const QString& elementName)
{
    const ZWCardKinds::Kind* kind = ZWCardKinds::ByElement(elementName);
    return kind ? kind->create() : nullptr;
}

XmlDocument::XmlNode ZWCardControl::TargetElement(XmlDocument::XmlNode node, bool createElement) const
{
    const QString name = ElementName();
    return createElement && !name.isEmpty() ? node.NewChild(name) : node;
}

void ZWCardControl::SaveCommon(XmlDocument::XmlNode e) const
{
    e.NewChild(QStringLiteral("x"), ZWXmlFields::WriteMm(x));
    e.NewChild(QStringLiteral("y"), ZWXmlFields::WriteMm(y));
    e.NewChild(QStringLiteral("width"), ZWXmlFields::WriteMm(width));
    e.NewChild(QStringLiteral("height"), ZWXmlFields::WriteMm(height));
    e.NewChild(QStringLiteral("color"), ZWXmlFields::WriteColor(color));
    if (backcolor != ZW_NO_COLOR)
        e.NewChild(QStringLiteral("backcolor"), ZWXmlFields::WriteColor(backcolor));
    if (!id.isEmpty())
        e.NewChild(QStringLiteral("id"), id);
    if (!field.isEmpty())
        e.NewChild(QStringLiteral("field"), field);
}

bool ZWCardControl::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    SaveCommon(TargetElement(node, createElement));
    return true;
}

bool ZWCardControl::GetFromXml(const XmlDocument::XmlNode& e)
{
    ZWXmlFields::Read(e, QStringLiteral("x"), x);
    ZWXmlFields::Read(e, QStringLiteral("y"), y);
    ZWXmlFields::Read(e, QStringLiteral("width"), width);
    ZWXmlFields::Read(e, QStringLiteral("height"), height);
    ZWXmlFields::ReadColor(e, QStringLiteral("color"), color);
    // "backcolor", "id" and "field" are left out when transparent or empty,
    // so a missing one means exactly that, whatever the kind's default.
    backcolor = ZW_NO_COLOR;
    ZWXmlFields::ReadColor(e, QStringLiteral("backcolor"), backcolor);
    id = e.Value(QStringLiteral("id"));
    field = e.Value(QStringLiteral("field"));
    return true;
}

void ZWCardControl::Draw(QPainter&, const tagDraw&)
{}

std::vector<QRect> ZWCardControl::BorderRuns(const ZWRect& rect, bool thick, bool dashed, bool densePattern, int phase)
{
    static constexpr std::array<bool, 6> Sparse = {true, true, false, false, false, false};
    static constexpr std::array<bool, 6> Dense = {true, true, true, true, true, false};
    const std::array<bool, 6>& pattern = densePattern ? Dense : Sparse;
    const int n = thick ? 3 : 1;
    const int start = int(((5 - qint64(phase)) % 6 + 6) % 6);
    // The outline of an absurdly large card is cut to what a device can show.
    const qint64 limit = ZWRect::MaxExtent;
    const int left = int(std::clamp<qint64>(rect.left, -limit, limit));
    const int right = int(std::clamp<qint64>(rect.right, -limit, limit));
    const int top = int(std::clamp<qint64>(rect.top, -limit, limit));
    const int bottom = int(std::clamp<qint64>(rect.bottom, -limit, limit));

    std::vector<QRect> runs;
    // Walks [from, to] along one edge, advancing the pattern index, and adds
    // the runs that are on; `make` turns a run into its rectangle of n lines.
    const auto edge = [&](int from, int to, int& index, auto make) {
        int runStart = 0;
        bool inRun = false;
        for (int p = from; p <= to; ++p) {
            const bool on = !dashed || pattern[size_t(index)];
            index = (index + 1) % 6;
            if (on && !inRun) {
                runStart = p;
                inRun = true;
            } else if (!on && inRun) {
                runs.push_back(make(runStart, p - 1));
                inRun = false;
            }
        }
        if (inRun)
            runs.push_back(make(runStart, to));
    };
    const auto row = [n](int yEdge, int direction) {
        return [=](int a, int b) {
            const int y0 = direction > 0 ? yEdge : yEdge - n + 1;
            return QRect(a, y0, b - a + 1, n);
        };
    };
    const auto column = [n](int xEdge, int direction) {
        return [=](int a, int b) {
            const int x0 = direction > 0 ? xEdge : xEdge - n + 1;
            return QRect(x0, a, n, b - a + 1);
        };
    };
    int first = start;
    edge(left, right, first, row(top, +1));
    edge(top, bottom, first, column(right, -1));
    int second = start;
    edge(top, bottom, second, column(left, +1));
    edge(left, right, second, row(bottom, -1));
    return runs;
}

void ZWCardControl::DrawBorder(QPainter& dc, const ZWRect& rect, bool thick, bool dashed, bool densePattern, int phase)
{
    const QColor colour = ZWColorRefToQColor(color);
    dc.save();
    dc.setRenderHint(QPainter::Antialiasing, false);
    for (const QRect& run : BorderRuns(rect, thick, dashed, densePattern, phase))
        dc.fillRect(run, colour);
    dc.restore();
}

std::unique_ptr<ZWCardControl> ZWCardControl::GetClone() const
{
    return std::make_unique<ZWCardControl>(*this);
}

bool ZWCardControl::Resizable() const
{
    return true;
}

bool ZWCardControl::UpdateStyleFromFile()
{
    return true;
}

void ZWCardControl::InitializeId()
{
    id = guidtow(NewGUID());
}
