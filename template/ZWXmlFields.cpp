#include "template/ZWXmlFields.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace {

// The ASCII text of a number field: blanks skipped, then every character
// that can belong to a number (the parse stops at the first one that does
// not fit anyway). Non-ASCII characters end it.
std::string NumberText(const QString& text)
{
    std::string out;
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    for (; i < text.size() && out.size() < 400; ++i) {
        const char16_t c = text.at(i).unicode();
        if (c >= 0x80)
            break;
        out.push_back(char(c));
    }
    return out;
}

// An optional sign, then what from_chars reads.
template <typename Parse> bool WithSign(const std::string& s, Parse parse)
{
    size_t start = 0;
    bool negative = false;
    if (!s.empty() && (s[0] == '+' || s[0] == '-')) {
        negative = s[0] == '-';
        start = 1;
    }
    return parse(s.data() + start, s.data() + s.size(), negative);
}

} // namespace

double ZWXmlFields::ReadDouble(const QString& text)
{
    const std::string s = NumberText(text);
    double result = 0.0;
    WithSign(s, [&result](const char* first, const char* last, bool negative) {
        if (first == last || !(std::isdigit(static_cast<unsigned char>(*first)) || *first == '.'))
            return false; // no "inf", "nan" or a second sign
        double value = 0.0;
        const auto r = std::from_chars(first, last, value, std::chars_format::general);
        if (r.ec != std::errc() || !std::isfinite(value))
            return false;
        result = negative ? -value : value;
        return true;
    });
    return result;
}

int ZWXmlFields::ReadInt(const QString& text)
{
    const std::string s = NumberText(text);
    int result = 0;
    WithSign(s, [&result](const char* first, const char* last, bool negative) {
        long long value = 0;
        const auto r = std::from_chars(first, last, value, 10);
        if (r.ec != std::errc() || r.ptr == first)
            return false;
        if (negative)
            value = -value;
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
            return false;
        result = int(value);
        return true;
    });
    return result;
}

quint32 ZWXmlFields::ReadColor(const QString& text)
{
    std::string s = NumberText(text);
    quint32 result = 0;
    WithSign(s, [&result](const char* first, const char* last, bool negative) {
        if (last - first >= 2 && first[0] == '0' && (first[1] == 'x' || first[1] == 'X'))
            first += 2;
        unsigned long long value = 0;
        const auto r = std::from_chars(first, last, value, 16);
        if (r.ec != std::errc() || r.ptr == first || value > 0xFFFFFFFFull)
            return false;
        result = negative ? quint32(0u - quint32(value)) : quint32(value);
        return true;
    });
    return result;
}

bool ZWXmlFields::ReadBool(const QString& text)
{
    return text == QLatin1String("T");
}

QString ZWXmlFields::WriteMm(double value)
{
    char buffer[400];
    const auto r = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 2);
    if (r.ec != std::errc())
        return QStringLiteral("0.00");
    return QString::fromLatin1(buffer, r.ptr - buffer);
}

QString ZWXmlFields::WriteInt(int value)
{
    return QString::number(value);
}

QString ZWXmlFields::WriteColor(quint32 colour)
{
    return QStringLiteral("%1").arg(colour, 6, 16, QLatin1Char('0')).toUpper();
}

QString ZWXmlFields::WriteBool(bool value)
{
    return value ? QStringLiteral("T") : QStringLiteral("F");
}

bool ZWXmlFields::Read(const XmlDocument::XmlNode& node, const QString& name, double& value)
{
    const XmlDocument::XmlNode child = node.Node(name);
    if (child.IsNull())
        return false;
    value = ReadDouble(child.Text());
    return true;
}

bool ZWXmlFields::Read(const XmlDocument::XmlNode& node, const QString& name, int& value)
{
    const XmlDocument::XmlNode child = node.Node(name);
    if (child.IsNull())
        return false;
    value = ReadInt(child.Text());
    return true;
}

bool ZWXmlFields::Read(const XmlDocument::XmlNode& node, const QString& name, bool& value)
{
    const XmlDocument::XmlNode child = node.Node(name);
    if (child.IsNull())
        return false;
    value = ReadBool(child.Text());
    return true;
}

bool ZWXmlFields::Read(const XmlDocument::XmlNode& node, const QString& name, QString& value)
{
    const XmlDocument::XmlNode child = node.Node(name);
    if (child.IsNull())
        return false;
    value = child.Text();
    return true;
}

bool ZWXmlFields::ReadColor(const XmlDocument::XmlNode& node, const QString& name, quint32& value)
{
    const XmlDocument::XmlNode child = node.Node(name);
    if (child.IsNull())
        return false;
    value = ReadColor(child.Text());
    return true;
}
