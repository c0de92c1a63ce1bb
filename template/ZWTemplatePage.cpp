#include "template/ZWTemplatePage.h"

#include "template/ZWCardConditioned.h"
#include "template/ZWCardImage.h"

ZWTemplatePage::ZWTemplatePage(const ZWTemplatePage& other) : properties(other.properties)
{
    cards.reserve(other.cards.size());
    for (const auto& card : other.cards)
        cards.push_back(card->GetClone());
}

ZWTemplatePage& ZWTemplatePage::operator=(const ZWTemplatePage& other)
{
    if (this != &other) {
        ZWTemplatePage copy(other);
        *this = std::move(copy);
    }
    return *this;
}

bool ZWTemplatePage::SaveTemplate(XmlDocument::XmlNode design) const
{
    XmlDocument::XmlNode page = design.NewChild(QStringLiteral("page"));
    properties.SaveTemplate(page);
    for (const auto& card : cards)
        card->SaveTemplate(page, true);
    return true;
}

bool ZWTemplatePage::SetTemplate(const XmlDocument::XmlNode& page)
{
    properties.DeleteBackground();
    DeleteControlList();
    properties.GetFromXml(page);
    // Every stored kind of the kinds table; other elements are skipped.
    for (const XmlDocument::XmlNode& child : page.Children()) {
        std::unique_ptr<ZWCardControl> card = ZWCardControl::CreateFromElement(child.Name());
        if (!card)
            continue;
        card->GetFromXml(child);
        cards.push_back(std::move(card));
    }
    return true;
}

void ZWTemplatePage::DeleteControlList()
{
    cards.clear();
}

void ZWTemplatePage::UpdateStylesFromFile()
{
    for (const auto& card : cards)
        card->UpdateStyleFromFile();
}

ZWCardControl* ZWTemplatePage::FindCard(const QString& cardId) const
{
    for (const auto& card : cards)
        if (card->id == cardId)
            return card.get();
    return nullptr;
}

QStringList ZWTemplatePage::PictureProblems() const
{
    QStringList problems;
    if (const QString why = properties.background->PictureProblem(); !why.isEmpty())
        problems << QStringLiteral("background: the picture is not drawn: %1").arg(why);
    const auto note = [&problems](const ZWCardControl& card) {
        if (!card.IsKindOf("ZWCardImage"))
            return;
        const QString why = static_cast<const ZWCardImage&>(card).PictureProblem();
        if (!why.isEmpty())
            problems << QStringLiteral("card %1: the picture is not drawn: %2").arg(card.id, why);
    };
    for (const auto& card : cards) {
        note(*card);
        if (card->IsKindOf("ZWCardConditioned"))
            for (const auto& alternative : static_cast<const ZWCardConditioned&>(*card).controls)
                note(*alternative);
    }
    return problems;
}
