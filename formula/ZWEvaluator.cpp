#include "formula/ZWEvaluator.h"

#include "formula/ZWResultCode.h"
#include "formula/ZWTreeNode.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <memory>
#include <optional>

ZWEvaluator::ZWEvaluator() = default;

ZWEvaluator::ZWEvaluator(const ZWBasicString& text) : m_expression(text), m_tokenizer(text)
{}

ZWEvaluator::~ZWEvaluator() = default;

void ZWEvaluator::Set(const ZWBasicString& text)
{
    m_expression = text;
    m_tokenizer.Set(text);
}

void ZWEvaluator::Fail()
{
    m_current.Set(ZWBasicString(), ZWToken::Error, m_current.GetPosition(), ZWToken::NoValueType);
}

bool ZWEvaluator::Enter()
{
    if (m_nesting >= MaxNesting) {
        Fail();
        return false;
    }
    ++m_nesting;
    return true;
}

int ZWEvaluator::AnalizeExpression()
{
    Next();

    // A leading sign: "+" is skipped, "-" becomes the unary minus, "!" is
    // taken as it is. Only here are "!" and a unary "+" accepted.
    switch (m_current.GetType()) {
    case ZWToken::Add:
        Next();
        break;
    case ZWToken::Subtract:
        m_current.SetType(ZWToken::UnaryMinus);
        m_current.SetValueType(ZWToken::NoValueType);
        AddCurrent();
        Next();
        break;
    case ZWToken::Not:
        AddCurrent();
        Next();
        break;
    default:
        break;
    }

    for (;;) {
        AnalizeTerm();
        const int type = m_current.GetType();
        if (type == ZWToken::Add || type == ZWToken::Subtract || (type >= ZWToken::Less && type <= ZWToken::Or)) {
            AddCurrent();
            Next();
            continue;
        }
        break;
    }

    // Resolves a closing ")" or "," against the operator stack, or flushes
    // the stack at the end of the text (or at an error).
    const int type = m_current.GetType();
    if (type != ZWToken::Constant && type != ZWToken::Variable)
        AddCurrent();
    if (m_current.GetType() != ZWToken::End)
        return -1;
    return m_polaca.GetType();
}

bool ZWEvaluator::AnalizeTerm()
{
    // A factor "-" applies to the term that follows it. Parsing that term is
    // the tail of this loop, so the unary minus is handled here without a
    // nested call: "2*-2*-2*..." needs no stack however long it is.
    for (;;) {
        if (m_current.GetType() == ZWToken::Subtract) {
            m_current.SetType(ZWToken::UnaryMinus);
            m_current.SetValueType(ZWToken::NoValueType);
            AddCurrent();
            Next();
            if (m_current.GetType() == ZWToken::Subtract) {
                Fail();
                break;
            }
            continue;
        }
        AnalizeFactor();
        const int type = m_current.GetType();
        if (type == ZWToken::Multiply || type == ZWToken::Divide || type == ZWToken::Power) {
            AddCurrent();
            Next();
            continue;
        }
        break;
    }
    return m_current.GetType() >= 0;
}

// "(" expression ")", the current token being the "(".
void ZWEvaluator::AnalizeParenthesised()
{
    if (!Enter())
        return;
    AddCurrent();
    AnalizeExpression();
    --m_nesting;
    if (m_current.GetType() != ZWToken::RightParenthesis)
        return Fail();
    Next();
}

void ZWEvaluator::AnalizeFactor()
{
    const int type = m_current.GetType();
    switch (type) {
    case ZWToken::Constant:
    case ZWToken::Variable:
    case ZWToken::DeviceVariable:
        AddCurrent();
        Next();
        return;
    case ZWToken::LeftParenthesis:
        AnalizeParenthesised();
        return;
    case ZWToken::Atan2:
        AddCurrent();
        Next();
        if (m_current.GetType() != ZWToken::LeftParenthesis)
            return Fail();
        if (!Enter())
            return;
        AddCurrent();
        AnalizeExpression();
        if (m_current.GetType() != ZWToken::Separator) {
            --m_nesting;
            return Fail();
        }
        // Reads the token after the "," first.
        AnalizeExpression();
        --m_nesting;
        if (m_current.GetType() != ZWToken::RightParenthesis)
            return Fail();
        Next();
        return;
    default:
        break;
    }
    if (type >= ZWToken::Sqrt && type <= ZWToken::Log10) {
        AddCurrent();
        Next();
        if (m_current.GetType() != ZWToken::LeftParenthesis)
            return Fail();
        AnalizeParenthesised();
        return;
    }
    // "+", "!", ")", ",", the doubled signs, the end and error tokens.
    Fail();
}

// ---------------------------------------------------------------------------
// Loop check

namespace {

// What the loop check learns of a library once: where each name is, which
// names each formula refers to, and which formulas expanded cleanly.
class LoopCheck
{
public:
    LoopCheck(const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, bool remember)
        : m_texts(texts), m_remember(remember)
    {
        const size_t n = std::min(names.size(), texts.size());
        m_index.reserve(qsizetype(n));
        for (size_t i = 0; i < n; ++i)
            if (!m_index.contains(names[i]))
                m_index.insert(names[i], int(i));
        m_references.resize(n);
    }

    // The references of the formula named `name` (first in the lists), or
    // null with `code` MissingFormula or InvalidFormula.
    const std::vector<ZWBasicString>* References(const ZWBasicString& name, int& code)
    {
        const auto it = m_index.constFind(name);
        if (it == m_index.constEnd()) {
            code = ZWResultCode::MissingFormula;
            return nullptr;
        }
        std::optional<std::vector<ZWBasicString>>& refs = m_references[size_t(*it)];
        if (!refs) {
            ZWEvaluator evaluator(m_texts[size_t(*it)]);
            std::vector<ZWBasicString> names;
            if (evaluator.AnalizeExpression() != -1)
                evaluator.GetFormules(names);
            else
                m_invalid.insert(*it);
            refs = std::move(names);
        }
        if (m_invalid.contains(*it)) {
            code = ZWResultCode::InvalidFormula;
            return nullptr;
        }
        code = ZWResultCode::NoLoop;
        return &*refs;
    }

    // A formula that once expanded to 0 expands to 0 under any branch (a
    // name of the branch reached again from it would close a loop through
    // the formula itself, which its own expansion would have met), as long
    // as its subtree still fits under the depth limit.
    bool KnownClean(const ZWBasicString& name, int depth, int& height) const
    {
        const auto it = m_clean.constFind(name);
        if (it == m_clean.constEnd() || depth + *it >= ZWPolaca::MaxReferenceDepth)
            return false;
        height = *it;
        return true;
    }
    void SetClean(const ZWBasicString& name, int height)
    {
        if (m_remember)
            m_clean.insert(name, height);
    }

private:
    const std::vector<ZWBasicString>& m_texts;
    bool m_remember;
    QHash<ZWBasicString, int> m_index;
    std::vector<std::optional<std::vector<ZWBasicString>>> m_references;
    QSet<int> m_invalid;
    // Formulas expanded to 0, with the height of their subtree.
    QHash<ZWBasicString, int> m_clean;
};

// Depth first; `depth` is the node's distance from the root and `height`
// receives the height of the subtree grown below it.
int ExpandNode(ZWTreeNode* node, int depth, LoopCheck& check, int& height)
{
    height = 0;
    int code = 0;
    const std::vector<ZWBasicString>* references = check.References(node->GetValue(), code);
    if (!references)
        return code;
    for (const ZWBasicString& name : *references) {
        if (node->IsInBranch(name))
            return ZWResultCode::ReferenceLoop;
        // Deeper than evaluation would follow: refused like a loop.
        if (depth + 1 >= ZWPolaca::MaxReferenceDepth)
            return ZWResultCode::ReferenceLoop;
        int childHeight = 0;
        if (!check.KnownClean(name, depth + 1, childHeight)) {
            auto* child = new ZWTreeNode(node, name);
            node->AddChild(child);
            if (const int result = ExpandNode(child, depth + 1, check, childHeight))
                return result;
        }
        height = std::max(height, childHeight + 1);
    }
    check.SetClean(node->GetValue(), height);
    return 0;
}

} // namespace

int ZWEvaluator::CheckBucles(
    const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, int count)
{
    const int available = int(std::min(names.size(), texts.size()));
    const int n = count == -1 ? available : std::min(count, available);
    LoopCheck check(names, texts, true);
    for (int i = 0; i < n; ++i) {
        int height = 0;
        if (check.KnownClean(names[size_t(i)], 0, height))
            continue;
        ZWTreeNode root(nullptr, names[size_t(i)]);
        if (const int result = ExpandNode(&root, 0, check, height))
            return result;
    }
    return 0;
}

int ZWEvaluator::Expand(
    ZWTreeNode* node, const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts)
{
    if (!node)
        return ZWResultCode::MissingFormula;
    int depth = 0;
    for (const ZWTreeNode* p = node->GetParent(); p; p = p->GetParent())
        ++depth;
    // The whole tree, every formula re-expanded on each path it is reached by.
    LoopCheck check(names, texts, false);
    int height = 0;
    return ExpandNode(node, depth, check, height);
}

// ---------------------------------------------------------------------------
// Messages

int ZWEvaluator::ErrorMsgId(int code)
{
    if (code >= ZWResultCode::UnknownDeviceVariable && code <= ZWResultCode::OrType)
        return 32555 + code;
    switch (code) {
    case ZWResultCode::NoCurrentValue:
        return ZWTextId::FormulaNoCurrentValue;
    case ZWResultCode::Atan2Stack:
        return ZWTextId::FormulaAtan2Stack;
    case ZWResultCode::Atan2Type:
        return ZWTextId::FormulaAtan2Type;
    default:
        return ZWTextId::FormulaUnknownCode;
    }
}

bool ZWEvaluator::ErrorMsg(int code, ZWBasicString& text)
{
    ZWLoadString(ErrorMsgId(code), text);
    return true;
}
