#include "template/ZWCardConditioned.h"

ZWCardConditioned::ZWCardConditioned()
{
    ActualizeLevel();
}

ZWCardConditioned::ZWCardConditioned(const ZWCardConditioned& other) : ZWCardControl(other)
{
    CopyAlternatives(other);
}

ZWCardConditioned& ZWCardConditioned::operator=(const ZWCardConditioned& other)
{
    if (this != &other) {
        ZWCardControl::operator=(other);
        CopyAlternatives(other);
    }
    return *this;
}

ZWCardConditioned::~ZWCardConditioned() = default;

void ZWCardConditioned::CopyAlternatives(const ZWCardConditioned& other)
{
    std::vector<std::unique_ptr<ZWCardControl>> copies;
    copies.reserve(other.controls.size());
    for (const auto& control : other.controls)
        copies.push_back(control ? control->GetClone() : nullptr);
    controls = std::move(copies);
    conditions = other.conditions;
    level = other.level;
}

const char* ZWCardConditioned::GetRuntimeClass() const
{
    return "ZWCardConditioned";
}

bool ZWCardConditioned::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    XmlDocument::XmlNode e = TargetElement(node, createElement);
    SaveCommon(e);
    const size_t count = std::min(controls.size(), conditions.size());
    for (size_t i = 0; i < count; ++i) {
        ZWCardControl* control = controls[i].get();
        if (!control)
            continue;
        XmlDocument::XmlNode alternative = e.NewChild(QStringLiteral("control"));
        alternative.NewChild(QStringLiteral("condition"), conditions[i]);
        control->x = x;
        control->y = y;
        control->width = width;
        control->height = height;
        control->SaveTemplate(alternative, true);
    }
    return true;
}

bool ZWCardConditioned::GetFromXml(const XmlDocument::XmlNode& e)
{
    ZWCardControl::GetFromXml(e);
    Clear();
    static const QString kinds[]
        = {QStringLiteral("label"), QStringLiteral("image"), QStringLiteral("date"), QStringLiteral("formule")};
    for (const XmlDocument::XmlNode& alternative : e.Nodes(QStringLiteral("control"))) {
        const QString condition = alternative.Value(QStringLiteral("condition"));
        for (const QString& kind : kinds) {
            const XmlDocument::XmlNode cardElement = alternative.Node(kind);
            if (cardElement.IsNull())
                continue;
            std::unique_ptr<ZWCardControl> card = CreateFromElement(kind);
            card->GetFromXml(cardElement);
            controls.push_back(std::move(card));
            conditions.push_back(condition);
            break;
        }
    }
    level = controls.empty() ? -1 : 0;
    ActualizeLevel();
    return true;
}

void ZWCardConditioned::Draw(QPainter& dc, const tagDraw& draw)
{
    ZWCardControl* control = GetCurrentControl();
    if (!control)
        return;
    control->x = x;
    control->y = y;
    control->width = width;
    control->height = height;
    control->Draw(dc, draw);
}

std::unique_ptr<ZWCardControl> ZWCardConditioned::GetClone() const
{
    return std::make_unique<ZWCardConditioned>(*this);
}

bool ZWCardConditioned::UpdateStyleFromFile()
{
    for (const auto& control : controls)
        if (control)
            control->UpdateStyleFromFile();
    return true;
}

void ZWCardConditioned::ActualizeLevel()
{
    const ZWCardControl* control = GetCurrentControl();
    layer = control && control->IsKindOf("ZWCardImage") ? 0 : 1;
}

bool ZWCardConditioned::DeleteCondition(int index)
{
    if (index < 0 || index >= GetNumberOfConditions())
        return false;
    controls.erase(controls.begin() + index);
    if (size_t(index) < conditions.size())
        conditions.erase(conditions.begin() + index);
    const int count = GetNumberOfConditions();
    level = index < count ? index : count - 1;
    ActualizeLevel();
    return true;
}

bool ZWCardConditioned::AddCondition(const QString& condition, std::unique_ptr<ZWCardControl> card)
{
    if (!card || card->ElementName().isEmpty() || card->IsKindOf("ZWCardConditioned"))
        return false;
    controls.push_back(std::move(card));
    conditions.push_back(condition);
    ActualizeLevel();
    return true;
}

ZWCardControl* ZWCardConditioned::GetControl(int index) const
{
    return index >= 0 && index < GetNumberOfConditions() ? controls[size_t(index)].get() : nullptr;
}

QString ZWCardConditioned::GetCondition(int index) const
{
    return index >= 0 && index < GetNumberOfConditions() ? conditions[size_t(index)] : QString();
}

void ZWCardConditioned::SetCondition(int index, const QString& condition)
{
    if (index >= 0 && index < GetNumberOfConditions())
        conditions[size_t(index)] = condition;
}

ZWCardControl* ZWCardConditioned::GetCurrentControl() const
{
    return GetControl(level);
}

int ZWCardConditioned::FindControl(const QString& controlId) const
{
    for (int i = 0; i < GetNumberOfConditions(); ++i)
        if (controls[size_t(i)] && controls[size_t(i)]->id == controlId)
            return i;
    return -1;
}

void ZWCardConditioned::Clear()
{
    controls.clear();
    conditions.clear();
    level = -1;
    ActualizeLevel();
}
