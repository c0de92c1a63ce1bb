#include "formula/ZWPolaca.h"

#include "formula/ZWEvaluator.h"
#include "host/core/XmlDocument.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWDriverVariable.h"
#include "host/drivers/ZWLoggerData.h"

#include <QHash>
#include <QMultiHash>
#include <QSet>
#include <algorithm>
#include <cmath>

// Shared by one evaluation and the evaluations of the formulas it refers to.
struct ZWPolaca::Context
{
    struct Outcome
    {
        int code = 0;
        double value = ZW_NO_VALUE;
        std::vector<ZWToken> undefined;
    };

    // The evaluator that Evaluate was called on; it keeps the checked
    // referenced formulas between evaluations.
    ZWPolaca* top = nullptr;
    // The referenced formulas being evaluated, outermost first.
    std::vector<ZWBasicString> active;
    // Outcome of every referenced formula evaluated so far. Within one
    // evaluation the library and the data do not change, so a formula used
    // many times (or reached on many paths) is evaluated once.
    QHash<ZWBasicString, Outcome> done;
    // A reference loop or a too deep chain was met: every evaluation on the
    // way up stops with code 40.
    bool aborted = false;
};

struct ZWPolaca::ReferenceCache
{
    struct Entry
    {
        ZWBasicString text;
        ZWEvaluator evaluator;
        int type = -1;
    };
    QHash<ZWBasicString, std::shared_ptr<Entry>> entries;
};

ZWPolaca::ZWPolaca() = default;

ZWPolaca::ZWPolaca(const ZWPolaca& other)
    : m_translation(other.m_translation), m_stack(other.m_stack), m_values(other.m_values),
      m_undefined(other.m_undefined), m_undefinedIndex(other.m_undefinedIndex), m_formules(other.m_formules),
      m_loggerData(other.m_loggerData), m_discriminators(other.m_discriminators)
{}

ZWPolaca& ZWPolaca::operator=(const ZWPolaca& other)
{
    if (this != &other) {
        m_translation = other.m_translation;
        m_stack = other.m_stack;
        m_values = other.m_values;
        m_undefined = other.m_undefined;
        m_undefinedIndex = other.m_undefinedIndex;
        m_formules = other.m_formules;
        m_loggerData = other.m_loggerData;
        m_discriminators = other.m_discriminators;
        m_references.reset();
    }
    return *this;
}

ZWPolaca::~ZWPolaca() = default;

void ZWPolaca::Clear()
{
    m_translation.clear();
    m_stack.clear();
    m_values.clear();
    ClearUndefined();
}

bool ZWPolaca::SetFormules(const XmlDocument* formulas)
{
    m_formules = formulas;
    return true;
}

bool ZWPolaca::SetLoggerData(ZWLoggerData* data)
{
    m_loggerData = data;
    return true;
}

int ZWPolaca::Prioridad(const ZWToken& token)
{
    switch (token.GetType()) {
    case ZWToken::Sqrt:
    case ZWToken::Log:
    case ZWToken::Exp:
    case ZWToken::Sin:
    case ZWToken::Cos:
    case ZWToken::Tan:
    case ZWToken::Asin:
    case ZWToken::Acos:
    case ZWToken::Atan:
    case ZWToken::Log10:
    case ZWToken::Atan2:
        return 8;
    case ZWToken::UnaryMinus:
    case ZWToken::Not:
        return 7;
    case ZWToken::Power:
        return 6;
    case ZWToken::Multiply:
    case ZWToken::Divide:
        return 5;
    case ZWToken::Add:
    case ZWToken::Subtract:
        return 4;
    case ZWToken::Less:
    case ZWToken::Greater:
    case ZWToken::LessEqual:
    case ZWToken::GreaterEqual:
    case ZWToken::Equal:
    case ZWToken::NotEqual:
        return 3;
    case ZWToken::And:
    case ZWToken::Or:
        return 2;
    case ZWToken::LeftParenthesis:
    case ZWToken::Separator:
        return 1;
    case ZWToken::RightParenthesis:
        return 0;
    default:
        return -1;
    }
}

bool ZWPolaca::AddToken(const ZWToken& token)
{
    const int type = token.GetType();
    switch (type) {
    case ZWToken::Constant:
    case ZWToken::Variable:
    case ZWToken::DeviceVariable:
        m_translation.push_back(token);
        break;
    case ZWToken::LeftParenthesis:
        m_stack.push_back(token);
        break;
    case ZWToken::RightParenthesis:
        FromStackToTraduction(true);
        break;
    case ZWToken::Separator:
        FromStackToTraductionParameter();
        break;
    default:
        if ((type >= ZWToken::Add && type <= ZWToken::UnaryMinus) || (type >= ZWToken::Sqrt && type <= ZWToken::Log10)
            || (type >= ZWToken::Less && type <= ZWToken::Atan2))
            PutOverStack(token);
        else
            FromStackToTraduction(false);
        break;
    }
    return true;
}

void ZWPolaca::PutOverStack(const ZWToken& token)
{
    // Only a strictly higher priority goes on top: every binary operator,
    // "^" included, is left-associative, and a leading unary minus binds
    // tighter than "^" (-2^2 is 4).
    const int priority = Prioridad(token);
    while (!m_stack.empty() && priority <= Prioridad(m_stack.back())) {
        m_translation.push_back(std::move(m_stack.back()));
        m_stack.pop_back();
    }
    m_stack.push_back(token);
}

void ZWPolaca::FromStackToTraduction(bool stopAtParenthesis)
{
    while (!m_stack.empty()) {
        if (stopAtParenthesis && m_stack.back().GetType() == ZWToken::LeftParenthesis) {
            m_stack.pop_back();
            return;
        }
        m_translation.push_back(std::move(m_stack.back()));
        m_stack.pop_back();
    }
}

void ZWPolaca::FromStackToTraductionParameter()
{
    while (!m_stack.empty() && m_stack.back().GetType() != ZWToken::LeftParenthesis) {
        m_translation.push_back(std::move(m_stack.back()));
        m_stack.pop_back();
    }
}

int ZWPolaca::GetType() const
{
    if (m_translation.empty())
        return -1;
    const int type = m_translation.back().GetType();
    if (type <= ZWToken::End || (type >= ZWToken::Separator && type <= ZWToken::MinusMinus))
        return -1;
    if (type >= ZWToken::Less && type <= ZWToken::Not)
        return 1;
    return 0;
}

void ZWPolaca::GetDeviceVariables(std::vector<ZWToken>& out)
{
    for (const ZWToken& token : m_translation)
        if (token.GetType() == ZWToken::DeviceVariable)
            out.push_back(token);
}

bool ZWPolaca::IsOnlyOneDeviceVariable()
{
    return m_translation.size() == 1 && m_translation.front().GetType() == ZWToken::DeviceVariable;
}

bool ZWPolaca::GetFormules(std::vector<ZWBasicString>& names)
{
    names.clear();
    QSet<ZWBasicString> seen;
    for (const ZWToken& token : m_translation) {
        if (token.GetType() != ZWToken::Variable)
            continue;
        const qsizetype before = seen.size();
        seen.insert(token.Text());
        if (seen.size() != before)
            names.push_back(token.Text());
    }
    return true;
}

void ZWPolaca::AddIfNotFound(std::vector<ZWToken>& list, const ZWToken& token)
{
    for (const ZWToken& t : list)
        if (t.SameAs(token))
            return;
    list.push_back(token);
}

void ZWPolaca::AddUndefined(const ZWToken& token)
{
    // A formula may name a great many distinct missing variables; past a
    // few, the list is indexed by text so that collecting them stays linear.
    constexpr size_t IndexFrom = 16;
    if (m_undefined.size() < IndexFrom) {
        AddIfNotFound(m_undefined, token);
        return;
    }
    if (m_undefinedIndex.isEmpty())
        for (size_t i = 0; i < m_undefined.size(); ++i)
            m_undefinedIndex.insert(m_undefined[i].Text(), i);
    const auto [first, last] = m_undefinedIndex.equal_range(token.Text());
    for (auto it = first; it != last; ++it)
        if (m_undefined[*it].SameAs(token))
            return;
    m_undefinedIndex.insert(token.Text(), m_undefined.size());
    m_undefined.push_back(token);
}

void ZWPolaca::ClearUndefined()
{
    m_undefined.clear();
    m_undefinedIndex.clear();
}

int ZWPolaca::Evaluate(double& result, int& valueType)
{
    Context context;
    context.top = this;
    return Evaluate(context, result, valueType);
}

int ZWPolaca::Evaluate(Context& context, double& result, int& valueType)
{
    result = ZW_NO_VALUE;
    ClearUndefined();
    int lastLookup = 0;

    // Every token pushes at most one value, so a stack as long as the
    // translation never overflows; it is sized once and kept.
    if (m_values.size() < m_translation.size())
        m_values.resize(m_translation.size());
    Value* const s = m_values.data();
    size_t n = 0;

    // A domain fault after a missing value may come from the placeholder
    // 1.0 rather than from the data: it is reported as missing data (40).
    auto domain = [this](int code) { return m_undefined.empty() ? code : 40; };
    // Operand checks: 0, or the code of the fault. `need` -1 asks for two
    // operands of the same value type.
    auto checkBinary = [&](int stackCode, int typeCode, int need) {
        if (n < 2)
            return stackCode;
        const int a = s[n - 2].valueType;
        const int b = s[n - 1].valueType;
        return (need < 0 ? a != b : (a != need || b != need)) ? typeCode : 0;
    };
    auto checkUnary = [&](int stackCode, int typeCode, int need) {
        if (n < 1)
            return stackCode;
        return s[n - 1].valueType != need ? typeCode : 0;
    };
    auto a = [&]() { return s[n - 2].value; };
    auto b = [&]() { return s[n - 1].value; };
    // Replaces the operands by the result.
    auto binary = [&](double r, int type) {
        --n;
        s[n - 1] = Value{r, type};
    };
    auto unary = [&](double r, int type) { s[n - 1] = Value{r, type}; };
    auto push = [&](double r, int type) { s[n++] = Value{r, type}; };
    constexpr int N = ZWToken::Numeric;
    constexpr int B = ZWToken::Boolean;

    for (const ZWToken& token : m_translation) {
        int code = 0;
        switch (token.GetType()) {
        case ZWToken::Constant:
            push(token.GetDoubleValue(), token.GetValueType());
            break;
        case ZWToken::Variable: {
            double value = ZW_NO_VALUE;
            lastLookup = IsValidFormule(context, token, value);
            if (lastLookup == 0) {
                // A reference counts as numeric even when the formula is boolean.
                push(value, N);
            } else if (lastLookup == 1 || lastLookup == 40) {
                // The placeholder lets the evaluation run on and collect
                // every missing name; the result is not delivered.
                push(1.0, N);
                AddUndefined(token);
                if (context.aborted)
                    return 40;
            } else {
                return lastLookup;
            }
            break;
        }
        case ZWToken::DeviceVariable: {
            double value = ZW_NO_VALUE;
            lastLookup = IsValidVariableDevice(token, value);
            if (lastLookup == 1)
                return 1;
            if (value == ZW_NO_VALUE) {
                push(1.0, N);
                AddUndefined(token);
            } else {
                push(value, N);
            }
            break;
        }
        case ZWToken::Add:
            if ((code = checkBinary(2, 3, N)))
                return code;
            binary(a() + b(), N);
            break;
        case ZWToken::Subtract:
            if ((code = checkBinary(4, 5, N)))
                return code;
            binary(a() - b(), N);
            break;
        case ZWToken::Multiply:
            if ((code = checkBinary(6, 7, N)))
                return code;
            binary(a() * b(), N);
            break;
        case ZWToken::Divide:
            if ((code = checkBinary(8, 9, N)))
                return code;
            if (b() == 0.0)
                return domain(10);
            binary(a() / b(), N);
            break;
        case ZWToken::Power:
            if ((code = checkBinary(11, 12, N)))
                return code;
            binary(std::pow(a(), b()), N);
            break;
        case ZWToken::UnaryMinus:
            if ((code = checkUnary(13, 14, N)))
                return code;
            unary(-b(), N);
            break;
        case ZWToken::Sqrt:
            if ((code = checkUnary(15, 16, N)))
                return code;
            if (b() < 0.0)
                return domain(17);
            unary(std::sqrt(b()), N);
            break;
        case ZWToken::Log:
            if ((code = checkUnary(18, 19, N)))
                return code;
            if (b() <= 0.0)
                return domain(20);
            unary(std::log(b()), N);
            break;
        case ZWToken::Exp:
            if ((code = checkUnary(21, 22, N)))
                return code;
            unary(std::exp(b()), N);
            break;
        case ZWToken::Sin:
            if ((code = checkUnary(23, 24, N)))
                return code;
            unary(std::sin(b()), N);
            break;
        case ZWToken::Cos:
            if ((code = checkUnary(25, 26, N)))
                return code;
            unary(std::cos(b()), N);
            break;
        case ZWToken::Tan:
            if ((code = checkUnary(27, 28, N)))
                return code;
            unary(std::tan(b()), N);
            break;
        case ZWToken::Asin:
            if ((code = checkUnary(29, 30, N)))
                return code;
            if (b() < -1.0 || b() > 1.0)
                return domain(31);
            unary(std::asin(b()), N);
            break;
        case ZWToken::Acos:
            if ((code = checkUnary(32, 33, N)))
                return code;
            if (b() < -1.0 || b() > 1.0)
                return domain(34);
            unary(std::acos(b()), N);
            break;
        case ZWToken::Atan:
            if ((code = checkUnary(35, 36, N)))
                return code;
            unary(std::atan(b()), N);
            break;
        case ZWToken::Log10:
            if ((code = checkUnary(37, 38, N)))
                return code;
            // The domain fault shares the natural logarithm's code.
            if (b() <= 0.0)
                return domain(20);
            unary(std::log10(b()), N);
            break;
        case ZWToken::Less:
            if ((code = checkBinary(46, 47, N)))
                return code;
            binary(a() < b() ? 1.0 : 0.0, B);
            break;
        case ZWToken::Greater:
            if ((code = checkBinary(48, 49, N)))
                return code;
            binary(a() > b() ? 1.0 : 0.0, B);
            break;
        case ZWToken::LessEqual:
            if ((code = checkBinary(50, 51, N)))
                return code;
            binary(a() <= b() ? 1.0 : 0.0, B);
            break;
        case ZWToken::GreaterEqual:
            if ((code = checkBinary(52, 53, N)))
                return code;
            binary(a() >= b() ? 1.0 : 0.0, B);
            break;
        case ZWToken::Equal:
            if ((code = checkBinary(54, 55, -1)))
                return code;
            binary(a() == b() ? 1.0 : 0.0, B);
            break;
        case ZWToken::NotEqual:
            if ((code = checkBinary(56, 57, -1)))
                return code;
            binary(a() != b() ? 1.0 : 0.0, B);
            break;
        case ZWToken::And:
            if ((code = checkBinary(58, 59, B)))
                return code;
            binary(a() == 1.0 && b() == 1.0 ? 1.0 : 0.0, B);
            break;
        case ZWToken::Or:
            if ((code = checkBinary(60, 61, B)))
                return code;
            binary(a() == 1.0 || b() == 1.0 ? 1.0 : 0.0, B);
            break;
        case ZWToken::Not:
            if ((code = checkUnary(44, 45, B)))
                return code;
            unary(b() == 0.0 ? 1.0 : 0.0, B);
            break;
        case ZWToken::Atan2:
            if ((code = checkBinary(63, 64, N)))
                return code;
            binary(std::atan2(a(), b()), N);
            break;
        default:
            // A "(" left in the translation by an unbalanced text: no-op.
            break;
        }
    }

    if (!m_undefined.empty()) {
        if (n == 1)
            valueType = s[0].valueType;
        // Which of 40 and 62 comes out depends on the last lookup: kept so.
        return lastLookup != 0 ? lastLookup : 40;
    }
    if (n == 0)
        return 41;
    // Every value on the stack is a constant, so the "not a value" outcome
    // (42) cannot arise; values below the top are ignored.
    result = s[n - 1].value;
    valueType = s[n - 1].valueType;
    return 0;
}

int ZWPolaca::IsValidVariableDevice(const ZWToken& token, double& value)
{
    value = ZW_NO_VALUE;
    const ZWBasicString& name = token.Text();
    ZWDriverVariable variable;
    variable.Setup(name);
    if (!variable.Lock(false))
        return 1;

    if (!m_discriminators) {
        // Only plain "device.variable" names: a name with a filter part
        // does not rebuild to itself.
        ZWBasicString device, variablePart, filter;
        SplitFilterDriverVariable(name, device, variablePart, filter);
        if (device + QLatin1Char('.') + variablePart != name)
            return 1;
    }

    if (m_loggerData) {
        const ZWDataRecord* record = m_loggerData->DataRecord(m_loggerData->GetBegin(), m_loggerData->GetEnd());
        if (!record)
            return 0;
        const qsizetype column = m_loggerData->GetVariables().indexOf(name);
        if (column < 0 || size_t(column) >= record->values.size())
            return 0;
        if (!(record->time < m_loggerData->GetEnd()))
            return 0;
        value = record->values[size_t(column)];
        return 0;
    }

    if (variable.HasValue()) {
        value = variable.Value().ToDouble();
        return 0;
    }
    return 62;
}

int ZWPolaca::IsValidFormule(Context& context, const ZWToken& token, double& value)
{
    value = ZW_NO_VALUE;
    if (!m_formules)
        return 40;
    const ZWBasicString& name = token.Text();

    if (auto it = context.done.constFind(name); it != context.done.constEnd()) {
        for (const ZWToken& t : it->undefined)
            AddUndefined(t);
        value = it->value;
        return it->code;
    }
    // A formula met again while it is being evaluated would recurse for
    // ever; a chain too long would exhaust the stack.
    if (int(context.active.size()) >= MaxReferenceDepth
        || std::find(context.active.begin(), context.active.end(), name) != context.active.end()) {
        context.aborted = true;
        return 40;
    }

    const XmlDocument::XmlNode node = m_formules->Node(QStringLiteral("/formule?name=%s?"), name);
    if (node.IsNull())
        return 40;
    const XmlDocument::XmlNode textNode = node.Node(QStringLiteral("/text"));
    if (textNode.IsNull())
        return 40;
    const ZWBasicString text = textNode.Text();

    ZWPolaca* top = context.top ? context.top : this;
    if (!top->m_references)
        top->m_references = std::make_unique<ReferenceCache>();
    std::shared_ptr<ReferenceCache::Entry>& slot = top->m_references->entries[name];
    if (!slot || slot->text != text) {
        slot = std::make_shared<ReferenceCache::Entry>();
        slot->text = text;
        slot->evaluator.Set(text);
        slot->type = slot->evaluator.AnalizeExpression();
    }
    // Held for the nested evaluation: the cache may change underneath.
    const std::shared_ptr<ReferenceCache::Entry> entry = slot;

    int code = 43;
    std::vector<ZWToken>* nestedUndefined = nullptr;
    if (entry->type != -1) {
        ZWPolaca& nested = entry->evaluator.m_polaca;
        nested.SetFormules(m_formules);
        nested.SetLoggerData(m_loggerData);
        context.active.push_back(name);
        int valueType = ZWToken::NoValueType;
        code = nested.Evaluate(context, value, valueType);
        context.active.pop_back();
        nestedUndefined = &nested.m_undefined;
        for (const ZWToken& t : nested.m_undefined)
            AddUndefined(t);
    }
    if (!context.aborted) {
        Context::Outcome& outcome = context.done[name];
        outcome.code = code;
        outcome.value = value;
        if (nestedUndefined)
            outcome.undefined = *nestedUndefined;
    }
    return code;
}
