#include "editor/ZWPropertyEdit.h"

#include "template/ZWCardConditioned.h"

ZWPropertyEdit::ZWPropertyEdit(ZWTemplatePage& page, QUndoStack& stack) : m_page(page), m_stack(stack)
{}

void ZWPropertyEdit::SetSelection(std::vector<int> indices)
{
    std::erase_if(indices, [this](int index) { return index < 0 || size_t(index) >= m_page.cards.size(); });
    m_indices = std::move(indices);
    m_alternative = -1;
}

void ZWPropertyEdit::SetAlternative(int alternative)
{
    m_alternative = -1;
    if (alternative < 0 || m_indices.size() != 1)
        return;
    const auto* conditioned = dynamic_cast<const ZWCardConditioned*>(m_page.cards[size_t(m_indices[0])].get());
    if (conditioned && alternative < conditioned->GetNumberOfConditions())
        m_alternative = alternative;
}

std::vector<ZWCardControl*> ZWPropertyEdit::Cards() const
{
    std::vector<ZWCardControl*> cards;
    for (int index : m_indices) {
        if (size_t(index) >= m_page.cards.size())
            continue;
        ZWCardControl* card = m_page.cards[size_t(index)].get();
        if (m_alternative >= 0) {
            if (const auto* conditioned = dynamic_cast<const ZWCardConditioned*>(card))
                card = conditioned->GetControl(m_alternative);
        }
        if (card)
            cards.push_back(card);
    }
    return cards;
}

const char* ZWPropertyEdit::SharedKind() const
{
    const auto cards = Cards();
    if (cards.empty())
        return "";
    static const char* const kinds[] = {"ZWCardDate", "ZWCardFormule", "ZWCardLabel", "ZWCardImage",
        "ZWCardConditioned", "ZWCardChart", "ZWCardTable", "ZWCardControl"};
    for (const char* kind : kinds) {
        if (std::all_of(cards.begin(), cards.end(), [kind](const ZWCardControl* card) { return card->IsKindOf(kind); }))
            return kind;
    }
    return "ZWCardControl";
}

bool ZWPropertyEdit::ApplyAny(Field field, const QString& text, const std::function<void(ZWCardControl&)>& change)
{
    if (m_indices.empty())
        return false;
    // An alternative is part of its conditioned card: the step keeps the
    // whole card.
    auto command = std::make_unique<ZWPropertyCommand>(m_page, m_indices, text, int(field));
    for (ZWCardControl* card : Cards())
        change(*card);
    if (m_alternative >= 0) {
        if (auto* conditioned = dynamic_cast<ZWCardConditioned*>(m_page.cards[size_t(m_indices[0])].get()))
            conditioned->ActualizeLevel();
    }
    if (!command->CaptureAfter())
        return false;
    m_stack.push(command.release());
    return true;
}

bool ZWPropertyEdit::ApplyPage(Field field, const QString& text, const std::function<void(ZWGlobalProperties&)>& change)
{
    auto command = std::make_unique<ZWPropertyCommand>(m_page, text, int(field));
    change(m_page.properties);
    if (!command->CaptureAfter())
        return false;
    m_stack.push(command.release());
    return true;
}
