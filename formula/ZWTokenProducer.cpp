#include "formula/ZWTokenProducer.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <locale.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace {

bool IsDigit(QChar c)
{
    return c.unicode() >= u'0' && c.unicode() <= u'9';
}

// Letters and digits of names follow Unicode; a lone surrogate is neither,
// so a character outside the basic plane ends a name as it does for a
// 16-bit wide-character classification.
bool IsLetter(QChar c)
{
    return c.isLetter();
}

bool IsLetterOrDigit(QChar c)
{
    return c.isLetterOrNumber();
}

// The number text is plain ASCII already checked against the number grammar;
// it is converted with the "C" conventions whatever the process locale says
// (the decimal separator of a formula is always ".").
double ToDouble(const ZWBasicString& text)
{
    const QByteArray ascii = text.toLatin1();
#if defined(_WIN32)
    static const _locale_t c = _create_locale(LC_NUMERIC, "C");
    return _strtod_l(ascii.constData(), nullptr, c);
#else
    static const locale_t c = newlocale(LC_NUMERIC_MASK, "C", locale_t(nullptr));
    return strtod_l(ascii.constData(), nullptr, c);
#endif
}

} // namespace

ZWTokenProducer::ZWTokenProducer()
{
    InitFunctions();
}

ZWTokenProducer::ZWTokenProducer(const ZWBasicString& text)
{
    Set(text);
}

ZWTokenProducer::~ZWTokenProducer() = default;

void ZWTokenProducer::Set(const ZWBasicString& text)
{
    m_text = text;
    // Positions are 32-bit; text beyond that is never read.
    m_length = int(std::min<qsizetype>(m_text.size(), INT_MAX - 1));
    InitFunctions();
}

void ZWTokenProducer::Clear()
{
    m_text.clear();
    m_length = 0;
    m_position = 0;
    m_functionNames.clear();
    m_functionIds.clear();
}

void ZWTokenProducer::InitFunctions()
{
    m_functionNames.clear();
    m_functionIds.clear();
    static const struct
    {
        const char16_t* name;
        int id;
    } builtIn[] = {
        {u"sqrt", ZWToken::Sqrt},
        {u"log", ZWToken::Log},
        {u"exp", ZWToken::Exp},
        {u"sin", ZWToken::Sin},
        {u"cos", ZWToken::Cos},
        {u"tan", ZWToken::Tan},
        {u"asin", ZWToken::Asin},
        {u"acos", ZWToken::Acos},
        {u"atan", ZWToken::Atan},
        {u"atan2", ZWToken::Atan2},
        {u"log10", ZWToken::Log10},
    };
    for (const auto& f : builtIn)
        AddFunction(QString::fromUtf16(f.name), f.id);
}

void ZWTokenProducer::AddFunction(const ZWBasicString& name, int id)
{
    m_functionNames.push_back(name);
    m_functionIds.push_back(id);
}

QStringList ZWTokenProducer::FunctionNames()
{
    const ZWTokenProducer table;
    QStringList names;
    for (int i = 0; i < table.NumberOfFunctions(); ++i) {
        ZWBasicString name;
        table.GetFunction(i, name);
        names << name;
    }
    return names;
}

void ZWTokenProducer::GetFunction(int index, ZWBasicString& name) const
{
    if (index < 0 || index >= NumberOfFunctions()) {
        name.clear();
        return;
    }
    name = m_functionNames[size_t(index)];
}

int ZWTokenProducer::GetFunctionId(int index) const
{
    if (index < 0 || size_t(index) >= m_functionIds.size())
        return -2;
    return m_functionIds[size_t(index)];
}

void ZWTokenProducer::GetToken(ZWToken& token)
{
    token.Set(ZWBasicString(), ZWToken::End, m_position, ZWToken::NoValueType);

    // Only the space is a blank; a tab or a line break is an error.
    while (!AtEnd() && Current() == u' ')
        ++m_position;
    if (AtEnd())
        return;

    const int start = m_position;
    auto op = [&](const char16_t* text, int length, int type) {
        token.Set(QString::fromUtf16(text, length), type, start, ZWToken::NoValueType);
        m_position += length;
    };
    auto error = [&](int advance) {
        token.Set(ZWBasicString(), ZWToken::Error, start, ZWToken::NoValueType);
        m_position += advance;
    };

    const char16_t c = Current().unicode();
    const char16_t n = Next().unicode();
    switch (c) {
    case u'!':
        return n == u'=' ? op(u"!=", 2, ZWToken::NotEqual) : op(u"!", 1, ZWToken::Not);
    case u'&':
        return n == u'&' ? op(u"&&", 2, ZWToken::And) : error(1);
    case u'(':
        return op(u"(", 1, ZWToken::LeftParenthesis);
    case u')':
        return op(u")", 1, ZWToken::RightParenthesis);
    case u'*':
        return op(u"*", 1, ZWToken::Multiply);
    case u'+':
        if (n == u'+')
            return op(u"++", 2, ZWToken::PlusPlus);
        if (n == u'-')
            return op(u"+-", 2, ZWToken::PlusMinus);
        return op(u"+", 1, ZWToken::Add);
    case u',':
        return op(u",", 1, ZWToken::Separator);
    case u'-':
        if (n == u'+')
            return op(u"-+", 2, ZWToken::MinusPlus);
        if (n == u'-')
            return op(u"--", 2, ZWToken::MinusMinus);
        return op(u"-", 1, ZWToken::Subtract);
    case u'/':
        return op(u"/", 1, ZWToken::Divide);
    case u'<':
        return n == u'=' ? op(u"<=", 2, ZWToken::LessEqual) : op(u"<", 1, ZWToken::Less);
    case u'=':
        return n == u'=' ? op(u"==", 2, ZWToken::Equal) : error(1);
    case u'>':
        return n == u'=' ? op(u">=", 2, ZWToken::GreaterEqual) : op(u">", 1, ZWToken::Greater);
    case u'[':
        return GetVariableDevice(token);
    case u'^':
        return op(u"^", 1, ZWToken::Power);
    case u'|':
        return n == u'|' ? op(u"||", 2, ZWToken::Or) : error(1);
    default:
        break;
    }
    if (IsDigit(Current()) || c == u'.')
        return GetConstant(token);
    if (IsLetter(Current()))
        return GetVarOrFunction(token);
    error(0);
}

void ZWTokenProducer::GetVariableDevice(ZWToken& token)
{
    token.Set(ZWBasicString(), ZWToken::Error, m_position, ZWToken::NoValueType);
    ++m_position; // "["
    const int first = m_position;
    // Everything up to the next "]" is the name, verbatim: there is no escape.
    while (!AtEnd() && Current() != u']')
        ++m_position;
    if (AtEnd())
        return;
    const int length = m_position - first;
    ++m_position; // "]"
    if (length > 0)
        token.Set(m_text.mid(first, length), ZWToken::DeviceVariable, first, ZWToken::Numeric);
}

void ZWTokenProducer::GetVarOrFunction(ZWToken& token)
{
    const int start = m_position;
    token.Set(ZWBasicString(), ZWToken::Error, start, ZWToken::NoValueType);
    while (!AtEnd() && IsLetterOrDigit(Current()))
        ++m_position;
    const int length = m_position - start;
    if (length == 0)
        return;
    const QChar* run = m_text.constData() + start;
    // Function names are matched case-insensitively: the run is lowered
    // character by character and compared with the lower-case table.
    for (size_t i = 0; i < m_functionNames.size(); ++i) {
        const ZWBasicString& name = m_functionNames[i];
        if (name.size() != length)
            continue;
        bool same = true;
        for (int k = 0; k < length && same; ++k)
            same = run[k].toLower() == name.at(k);
        if (!same)
            continue;
        if (i >= m_functionIds.size())
            token.Set(m_text.mid(start, length), ZWToken::Error, start, ZWToken::NoValueType);
        else
            token.Set(m_text.mid(start, length), m_functionIds[i], start, ZWToken::NoValueType);
        return;
    }
    token.Set(m_text.mid(start, length), ZWToken::Variable, start, ZWToken::Numeric);
}

void ZWTokenProducer::GetConstant(ZWToken& token)
{
    const int start = m_position;
    token.Set(ZWBasicString(), ZWToken::Error, start, ZWToken::NoValueType);
    ZWBasicString number;
    if (Current() == u'.')
        number = DecimalZone(true);
    else
        IntegerZone(number);
    if (!number.isEmpty())
        token.Set(ToDouble(number), ZWToken::Constant, start, ZWToken::Numeric);
}

void ZWTokenProducer::IntegerZone(ZWBasicString& out)
{
    while (!AtEnd() && IsDigit(Current())) {
        out += Current();
        ++m_position;
    }
    if (AtEnd())
        return;
    if (Current() == u'.') {
        out += DecimalZone(false);
    } else if (Current() == u'e' || Current() == u'E') {
        // An exponent that comes out empty is dropped, but what it read stays
        // consumed: "2e+x" is the number 2 followed by the name "x".
        out += ExponentialZone();
    }
}

ZWBasicString ZWTokenProducer::DecimalZone(bool leading)
{
    ZWBasicString part;
    if (AtEnd() || Current() != u'.')
        return part;
    part += u'.';
    ++m_position;
    if (AtEnd()) {
        // A lone "." is no number; "5." is the number 5.
        if (leading)
            part.clear();
        return part;
    }
    while (!AtEnd() && IsDigit(Current())) {
        part += Current();
        ++m_position;
    }
    if (leading && part.size() == 1)
        part.clear();
    if (!AtEnd() && (Current() == u'e' || Current() == u'E'))
        part += ExponentialZone();
    return part;
}

ZWBasicString ZWTokenProducer::ExponentialZone()
{
    ZWBasicString part;
    if (AtEnd() || (Current() != u'e' && Current() != u'E'))
        return part;
    part += Current();
    ++m_position;
    if (AtEnd())
        return ZWBasicString();
    if (Current() == u'+' || Current() == u'-') {
        part += Current();
        ++m_position;
    }
    while (!AtEnd() && IsDigit(Current())) {
        part += Current();
        ++m_position;
    }
    if (!IsDigit(part.back()))
        part.clear();
    return part;
}
