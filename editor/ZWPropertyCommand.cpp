#include "editor/ZWPropertyCommand.h"

#include "template/ZWCardChart.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWCardTable.h"
#include "template/ZWTemplatePage.h"

#include <cstring>

namespace {

template <typename Card> bool AssignAs(ZWCardControl& to, const ZWCardControl& from)
{
    auto* target = dynamic_cast<Card*>(&to);
    const auto* source = dynamic_cast<const Card*>(&from);
    if (!target || !source)
        return false;
    *target = *source;
    return true;
}

QByteArray CardXml(const ZWCardControl& card)
{
    XmlDocument doc;
    doc.Create(QStringLiteral("card"));
    card.SaveTemplate(doc.Root(), true);
    return doc.ToXml();
}

QByteArray PageXml(const ZWGlobalProperties& properties)
{
    XmlDocument doc;
    doc.Create(QStringLiteral("page"));
    properties.SaveTemplate(doc.Root());
    return doc.ToXml();
}

bool SamePage(const ZWGlobalProperties& a, const ZWGlobalProperties& b)
{
    return a.outColor == b.outColor && PageXml(a) == PageXml(b);
}

} // namespace

ZWPropertyCommand::ZWPropertyCommand(ZWTemplatePage& page, std::vector<int> indices, const QString& text, int field)
    : QUndoCommand(text), m_page(page), m_field(field), m_indices(std::move(indices))
{
    for (int index : m_indices)
        m_before.push_back(m_page.cards.at(size_t(index))->GetClone());
}

ZWPropertyCommand::ZWPropertyCommand(ZWTemplatePage& page, const QString& text, int field)
    : QUndoCommand(text), m_page(page), m_pageEdit(true), m_field(field),
      m_pageBefore(std::make_unique<ZWGlobalProperties>(page.properties))
{}

ZWPropertyCommand::~ZWPropertyCommand() = default;

bool ZWPropertyCommand::Assign(ZWCardControl& to, const ZWCardControl& from)
{
    if (std::strcmp(to.GetRuntimeClass(), from.GetRuntimeClass()) != 0)
        return false;
    // The most derived kinds first: a date card is also a label.
    return AssignAs<ZWCardDate>(to, from) || AssignAs<ZWCardFormule>(to, from) || AssignAs<ZWCardConditioned>(to, from)
        || AssignAs<ZWCardChart>(to, from) || AssignAs<ZWCardTable>(to, from) || AssignAs<ZWCardImage>(to, from)
        || AssignAs<ZWCardLabel>(to, from) || AssignAs<ZWCardControl>(to, from);
}

bool ZWPropertyCommand::SameCard(const ZWCardControl& a, const ZWCardControl& b)
{
    return a.layer == b.layer && std::strcmp(a.GetRuntimeClass(), b.GetRuntimeClass()) == 0 && CardXml(a) == CardXml(b);
}

bool ZWPropertyCommand::CaptureAfter()
{
    if (m_pageEdit) {
        m_pageAfter = std::make_unique<ZWGlobalProperties>(m_page.properties);
    } else {
        m_after.clear();
        for (int index : m_indices)
            m_after.push_back(m_page.cards.at(size_t(index))->GetClone());
    }
    return !Unchanged();
}

bool ZWPropertyCommand::Unchanged() const
{
    if (m_pageEdit)
        return m_pageAfter && SamePage(*m_pageBefore, *m_pageAfter);
    for (size_t i = 0; i < m_before.size(); ++i)
        if (i >= m_after.size() || !SameCard(*m_before[i], *m_after[i]))
            return false;
    return true;
}

void ZWPropertyCommand::Apply(bool after)
{
    if (m_pageEdit) {
        m_page.properties = after ? *m_pageAfter : *m_pageBefore;
        return;
    }
    const auto& source = after ? m_after : m_before;
    for (size_t i = 0; i < m_indices.size() && i < source.size(); ++i) {
        const size_t index = size_t(m_indices[i]);
        if (index < m_page.cards.size())
            Assign(*m_page.cards[index], *source[i]);
    }
}

void ZWPropertyCommand::undo()
{
    Apply(false);
}

void ZWPropertyCommand::redo()
{
    // The change is already made when the command is pushed.
    if (m_done) {
        m_done = false;
        return;
    }
    Apply(true);
}

bool ZWPropertyCommand::mergeWith(const QUndoCommand* other)
{
    const auto* next = dynamic_cast<const ZWPropertyCommand*>(other);
    if (!next || &next->m_page != &m_page || next->m_field != m_field || next->m_pageEdit != m_pageEdit
        || next->m_indices != m_indices)
        return false;
    if (m_pageEdit) {
        m_pageAfter = std::make_unique<ZWGlobalProperties>(*next->m_pageAfter);
    } else {
        m_after.clear();
        for (const auto& card : next->m_after)
            m_after.push_back(card->GetClone());
    }
    setObsolete(Unchanged());
    return true;
}
