#include "formula/ZWToken.h"

ZWToken::~ZWToken() = default;

void ZWToken::Set(const ZWBasicString& value, int type, int position, int valueType)
{
    m_value = value;
    m_doubleValue = ZW_NO_VALUE;
    m_type = type;
    m_position = position;
    m_valueType = valueType;
}

void ZWToken::Set(double value, int type, int position, int valueType)
{
    m_value.clear();
    m_doubleValue = value;
    m_type = type;
    m_position = position;
    m_valueType = valueType;
}

void ZWToken::Clear()
{
    m_value.clear();
    m_doubleValue = ZW_NO_VALUE;
    m_type = Cleared;
    m_position = 0;
    m_valueType = NoValueType;
}

bool ZWToken::SameAs(const ZWToken& other) const
{
    return m_type == other.m_type && m_valueType == other.m_valueType && m_doubleValue == other.m_doubleValue
        && m_value == other.m_value;
}
