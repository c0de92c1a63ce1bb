#include "formula/ZWPolaca.h"

#include "formula/ZWEvaluator.h"
#include "formula/ZWResultCode.h"
#include "host/core/XmlDocument.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWDriverVariable.h"
#include "host/drivers/ZWLoggerData.h"

#include <QHash>
#include <QMultiHash>
#include <QSet>
#include <algorithm>
#include <array>
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

namespace {

// How each operator and function evaluates. `b` is the top of the stack, `a`
// the value below it (unary rules see only `b`). A rule fails with its stack
// code when the stack holds fewer than `arity` values, with its type code
// when an operand is not of the `operands` value type (kSameType: the two
// operands of one type, whichever), and with its domain code where
// `outOfDomain` says so.
struct OperatorRule
{
    int type;
    int arity;
    int operands;
    int result;
    int stackCode;
    int typeCode;
    int domainCode;
    bool (*outOfDomain)(double a, double b);
    double (*apply)(double a, double b);
};

using R = ZWResultCode;
constexpr int kNum = ZWToken::Numeric;
constexpr int kBool = ZWToken::Boolean;
constexpr int kSameType = -1;

constexpr double Truth(bool value)
{
    return value ? 1.0 : 0.0;
}

// clang-format off
constexpr OperatorRule kOperatorRules[] = {
    {ZWToken::Add,          2, kNum,      kNum,  R::AddStack,          R::AddType,          0, nullptr, [](double a, double b) { return a + b; }},
    {ZWToken::Subtract,     2, kNum,      kNum,  R::SubtractStack,     R::SubtractType,     0, nullptr, [](double a, double b) { return a - b; }},
    {ZWToken::Multiply,     2, kNum,      kNum,  R::MultiplyStack,     R::MultiplyType,     0, nullptr, [](double a, double b) { return a * b; }},
    {ZWToken::Divide,       2, kNum,      kNum,  R::DivideStack,       R::DivideType,       R::DivideByZero,
        [](double, double b) { return b == 0.0; }, [](double a, double b) { return a / b; }},
    {ZWToken::Power,        2, kNum,      kNum,  R::PowerStack,        R::PowerType,        0, nullptr, [](double a, double b) { return std::pow(a, b); }},
    {ZWToken::UnaryMinus,   1, kNum,      kNum,  R::NegateStack,       R::NegateType,       0, nullptr, [](double, double b) { return -b; }},
    {ZWToken::Sqrt,         1, kNum,      kNum,  R::SqrtStack,         R::SqrtType,         R::SqrtDomain,
        [](double, double b) { return b < 0.0; }, [](double, double b) { return std::sqrt(b); }},
    {ZWToken::Log,          1, kNum,      kNum,  R::LogStack,          R::LogType,          R::LogDomain,
        [](double, double b) { return b <= 0.0; }, [](double, double b) { return std::log(b); }},
    {ZWToken::Exp,          1, kNum,      kNum,  R::ExpStack,          R::ExpType,          0, nullptr, [](double, double b) { return std::exp(b); }},
    {ZWToken::Sin,          1, kNum,      kNum,  R::SinStack,          R::SinType,          0, nullptr, [](double, double b) { return std::sin(b); }},
    {ZWToken::Cos,          1, kNum,      kNum,  R::CosStack,          R::CosType,          0, nullptr, [](double, double b) { return std::cos(b); }},
    {ZWToken::Tan,          1, kNum,      kNum,  R::TanStack,          R::TanType,          0, nullptr, [](double, double b) { return std::tan(b); }},
    {ZWToken::Asin,         1, kNum,      kNum,  R::AsinStack,         R::AsinType,         R::AsinDomain,
        [](double, double b) { return b < -1.0 || b > 1.0; }, [](double, double b) { return std::asin(b); }},
    {ZWToken::Acos,         1, kNum,      kNum,  R::AcosStack,         R::AcosType,         R::AcosDomain,
        [](double, double b) { return b < -1.0 || b > 1.0; }, [](double, double b) { return std::acos(b); }},
    {ZWToken::Atan,         1, kNum,      kNum,  R::AtanStack,         R::AtanType,         0, nullptr, [](double, double b) { return std::atan(b); }},
    // The domain fault shares the natural logarithm's code.
    {ZWToken::Log10,        1, kNum,      kNum,  R::Log10Stack,        R::Log10Type,        R::LogDomain,
        [](double, double b) { return b <= 0.0; }, [](double, double b) { return std::log10(b); }},
    {ZWToken::Less,         2, kNum,      kBool, R::LessStack,         R::LessType,         0, nullptr, [](double a, double b) { return Truth(a < b); }},
    {ZWToken::Greater,      2, kNum,      kBool, R::GreaterStack,      R::GreaterType,      0, nullptr, [](double a, double b) { return Truth(a > b); }},
    {ZWToken::LessEqual,    2, kNum,      kBool, R::LessEqualStack,    R::LessEqualType,    0, nullptr, [](double a, double b) { return Truth(a <= b); }},
    {ZWToken::GreaterEqual, 2, kNum,      kBool, R::GreaterEqualStack, R::GreaterEqualType, 0, nullptr, [](double a, double b) { return Truth(a >= b); }},
    {ZWToken::Equal,        2, kSameType, kBool, R::EqualStack,        R::EqualType,        0, nullptr, [](double a, double b) { return Truth(a == b); }},
    {ZWToken::NotEqual,     2, kSameType, kBool, R::NotEqualStack,     R::NotEqualType,     0, nullptr, [](double a, double b) { return Truth(a != b); }},
    {ZWToken::And,          2, kBool,     kBool, R::AndStack,          R::AndType,          0, nullptr, [](double a, double b) { return Truth(a == 1.0 && b == 1.0); }},
    {ZWToken::Or,           2, kBool,     kBool, R::OrStack,           R::OrType,           0, nullptr, [](double a, double b) { return Truth(a == 1.0 || b == 1.0); }},
    {ZWToken::Not,          1, kBool,     kBool, R::NotStack,          R::NotType,          0, nullptr, [](double, double b) { return Truth(b == 0.0); }},
    {ZWToken::Atan2,        2, kNum,      kNum,  R::Atan2Stack,        R::Atan2Type,        0, nullptr, [](double a, double b) { return std::atan2(a, b); }},
};
// clang-format on

// One operator applied to the value stack `s` of `n` values: 0, or the code
// of the fault. A template per rule, so that the rule's checks and its
// function compile to straight code, as a hand-written case would.
template <size_t I, class V> int Step(V* s, size_t& n, const std::vector<ZWToken>& undefined)
{
    constexpr const OperatorRule& rule = kOperatorRules[I];
    if (n < size_t(rule.arity))
        return rule.stackCode;
    const V& top = s[n - 1];
    if constexpr (rule.arity == 2) {
        const V& below = s[n - 2];
        const bool wrongType = rule.operands == kSameType
            ? below.valueType != top.valueType
            : below.valueType != rule.operands || top.valueType != rule.operands;
        if (wrongType)
            return rule.typeCode;
    } else if (top.valueType != rule.operands) {
        return rule.typeCode;
    }
    const double a = rule.arity == 2 ? s[n - 2].value : 0.0;
    const double b = top.value;
    if constexpr (rule.outOfDomain != nullptr) {
        // A domain fault after a missing value may come from the placeholder
        // 1.0 rather than from the data: it is reported as missing data.
        if (rule.outOfDomain(a, b))
            return !undefined.empty() ? int(R::UndefinedValues) : rule.domainCode;
    }
    n -= size_t(rule.arity - 1);
    s[n - 1] = V{rule.apply(a, b), rule.result};
    return 0;
}

constexpr size_t RuleIndex(int type)
{
    for (size_t i = 0; i < std::size(kOperatorRules); ++i)
        if (kOperatorRules[i].type == type)
            return i;
    throw "no rule for this token type"; // a compile-time error where used
}

// The rule's step for the token type `T`.
template <int T, class V> int Apply(V* s, size_t& n, const std::vector<ZWToken>& undefined)
{
    return Step<RuleIndex(T), V>(s, n, undefined);
}

} // namespace

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

    auto push = [&](double r, int type) { s[n++] = Value{r, type}; };

    for (const ZWToken& token : m_translation) {
        switch (token.GetType()) {
        case ZWToken::Constant:
            push(token.GetDoubleValue(), token.GetValueType());
            break;
        case ZWToken::Variable: {
            double value = ZW_NO_VALUE;
            lastLookup = IsValidFormule(context, token, value);
            if (lastLookup == R::Ok) {
                // A reference counts as numeric even when the formula is boolean.
                push(value, kNum);
            } else if (lastLookup == R::UnknownDeviceVariable || lastLookup == R::UndefinedValues) {
                // The placeholder lets the evaluation run on and collect
                // every missing name; the result is not delivered.
                push(1.0, kNum);
                AddUndefined(token);
                if (context.aborted)
                    return R::UndefinedValues;
            } else {
                return lastLookup;
            }
            break;
        }
        case ZWToken::DeviceVariable: {
            double value = ZW_NO_VALUE;
            lastLookup = IsValidVariableDevice(token, value);
            if (lastLookup == R::UnknownDeviceVariable)
                return R::UnknownDeviceVariable;
            if (value == ZW_NO_VALUE) {
                push(1.0, kNum);
                AddUndefined(token);
            } else {
                push(value, kNum);
            }
            break;
        }
        // The operators and functions, each by its rule of the table. A
        // switch rather than a table of functions, so that every rule's step
        // is inlined into the loop.
        case ZWToken::Add:
            if (const int code = Apply<ZWToken::Add>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Subtract:
            if (const int code = Apply<ZWToken::Subtract>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Multiply:
            if (const int code = Apply<ZWToken::Multiply>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Divide:
            if (const int code = Apply<ZWToken::Divide>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Power:
            if (const int code = Apply<ZWToken::Power>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::UnaryMinus:
            if (const int code = Apply<ZWToken::UnaryMinus>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Sqrt:
            if (const int code = Apply<ZWToken::Sqrt>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Log:
            if (const int code = Apply<ZWToken::Log>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Exp:
            if (const int code = Apply<ZWToken::Exp>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Sin:
            if (const int code = Apply<ZWToken::Sin>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Cos:
            if (const int code = Apply<ZWToken::Cos>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Tan:
            if (const int code = Apply<ZWToken::Tan>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Asin:
            if (const int code = Apply<ZWToken::Asin>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Acos:
            if (const int code = Apply<ZWToken::Acos>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Atan:
            if (const int code = Apply<ZWToken::Atan>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Log10:
            if (const int code = Apply<ZWToken::Log10>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Less:
            if (const int code = Apply<ZWToken::Less>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Greater:
            if (const int code = Apply<ZWToken::Greater>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::LessEqual:
            if (const int code = Apply<ZWToken::LessEqual>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::GreaterEqual:
            if (const int code = Apply<ZWToken::GreaterEqual>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Equal:
            if (const int code = Apply<ZWToken::Equal>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::NotEqual:
            if (const int code = Apply<ZWToken::NotEqual>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::And:
            if (const int code = Apply<ZWToken::And>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Or:
            if (const int code = Apply<ZWToken::Or>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Not:
            if (const int code = Apply<ZWToken::Not>(s, n, m_undefined))
                return code;
            break;
        case ZWToken::Atan2:
            if (const int code = Apply<ZWToken::Atan2>(s, n, m_undefined))
                return code;
            break;
        default:
            // A "(" left in the translation by an unbalanced text has no
            // rule: a no-op.
            break;
        }
    }

    if (!m_undefined.empty()) {
        if (n == 1)
            valueType = s[0].valueType;
        // Which of 40 and 62 comes out depends on the last lookup: kept so.
        return lastLookup != 0 ? lastLookup : int(R::UndefinedValues);
    }
    if (n == 0)
        return R::EmptyFormula;
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
        return R::UnknownDeviceVariable;

    if (!m_discriminators) {
        // Only plain "device.variable" names: a name with a filter part
        // does not rebuild to itself.
        ZWBasicString device, variablePart, filter;
        SplitFilterDriverVariable(name, device, variablePart, filter);
        if (device + QLatin1Char('.') + variablePart != name)
            return R::UnknownDeviceVariable;
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
    return R::NoCurrentValue;
}

int ZWPolaca::IsValidFormule(Context& context, const ZWToken& token, double& value)
{
    value = ZW_NO_VALUE;
    if (!m_formules)
        return R::UndefinedValues;
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
        return R::UndefinedValues;
    }

    const XmlDocument::XmlNode node = m_formules->Node(QStringLiteral("/formule?name=%s?"), name);
    if (node.IsNull())
        return R::UndefinedValues;
    const XmlDocument::XmlNode textNode = node.Node(QStringLiteral("/text"));
    if (textNode.IsNull())
        return R::UndefinedValues;
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

    int code = R::ReferenceSyntaxError;
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
