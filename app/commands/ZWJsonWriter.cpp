#include "app/commands/ZWJsonWriter.h"

#include <charconv>
#include <cmath>

void ZWJsonWriter::BeforeValue()
{
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (!m_hasItem.empty()) {
        if (m_hasItem.back())
            m_out += ',';
        m_hasItem.back() = true;
    }
}

ZWJsonWriter& ZWJsonWriter::BeginObject()
{
    BeforeValue();
    m_out += '{';
    m_hasItem.push_back(false);
    return *this;
}

ZWJsonWriter& ZWJsonWriter::EndObject()
{
    m_out += '}';
    m_hasItem.pop_back();
    return *this;
}

ZWJsonWriter& ZWJsonWriter::BeginArray()
{
    BeforeValue();
    m_out += '[';
    m_hasItem.push_back(false);
    return *this;
}

ZWJsonWriter& ZWJsonWriter::EndArray()
{
    m_out += ']';
    m_hasItem.pop_back();
    return *this;
}

ZWJsonWriter& ZWJsonWriter::Key(const char* name)
{
    BeforeValue();
    Quote(QString::fromUtf8(name));
    m_out += ':';
    m_afterKey = true;
    return *this;
}

ZWJsonWriter& ZWJsonWriter::Null()
{
    BeforeValue();
    m_out += "null";
    return *this;
}

ZWJsonWriter& ZWJsonWriter::Bool(bool value)
{
    BeforeValue();
    m_out += value ? "true" : "false";
    return *this;
}

ZWJsonWriter& ZWJsonWriter::Int(long long value)
{
    BeforeValue();
    m_out += QByteArray::number(value);
    return *this;
}

ZWJsonWriter& ZWJsonWriter::Number(double value)
{
    BeforeValue();
    m_out += FormatNumber(value);
    return *this;
}

QByteArray ZWJsonWriter::FormatNumber(double value)
{
    if (!std::isfinite(value))
        return QByteArrayLiteral("null");
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return QByteArray(buffer, result.ptr - buffer);
}

ZWJsonWriter& ZWJsonWriter::String(const QString& text)
{
    BeforeValue();
    Quote(text);
    return *this;
}

void ZWJsonWriter::Quote(const QString& text)
{
    m_out += '"';
    const QByteArray utf8 = text.toUtf8();
    for (const char ch : utf8) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
        case '"':
            m_out += "\\\"";
            break;
        case '\\':
            m_out += "\\\\";
            break;
        case '\n':
            m_out += "\\n";
            break;
        case '\r':
            m_out += "\\r";
            break;
        case '\t':
            m_out += "\\t";
            break;
        default:
            if (c < 0x20) {
                static const char hex[] = "0123456789abcdef";
                m_out += "\\u00";
                m_out += hex[c >> 4];
                m_out += hex[c & 0xF];
            } else {
                m_out += ch;
            }
        }
    }
    m_out += '"';
}
