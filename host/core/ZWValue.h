#pragma once

#include <QVariant>

// A value of the host (a live variable's reading): a number, a boolean or text.
class ZWValue
{
public:
    ZWValue() = default;
    explicit ZWValue(double value) : m_value(value) {}
    explicit ZWValue(const QVariant& value) : m_value(value) {}

    bool IsEmpty() const { return !m_value.isValid(); }
    // The value read as a double (0 when it is not a number).
    double ToDouble() const
    {
        bool ok = false;
        const double d = m_value.toDouble(&ok);
        return ok ? d : 0.0;
    }
    operator double() const { return ToDouble(); }
    const QVariant& Variant() const { return m_value; }

private:
    QVariant m_value;
};
