#pragma once

#include "host/core/ZWBasicString.h"
#include "host/core/ZWNoValue.h"

// One token of a formula: an operator, a function, a name, a device
// variable, a number, the end of the text or an error. Also the values on
// the evaluator's stack (constants carrying a value type).
class ZWToken
{
public:
    // Token types. The numbers are part of the design: the translator and the
    // evaluator dispatch on them and the function table registers them.
    enum Type {
        Error = -2,
        Cleared = -1,
        End = 0,
        Constant = 1,
        Variable = 2,
        Add = 3,
        Subtract = 4,
        Multiply = 5,
        Divide = 6,
        Power = 7,
        UnaryMinus = 8,
        LeftParenthesis = 9,
        RightParenthesis = 10,
        Sqrt = 11,
        Log = 12,
        Exp = 13,
        Sin = 14,
        Cos = 15,
        Tan = 16,
        Asin = 17,
        Acos = 18,
        Atan = 19,
        Log10 = 20,
        DeviceVariable = 21,
        Less = 22,
        Greater = 23,
        LessEqual = 24,
        GreaterEqual = 25,
        Equal = 26,
        NotEqual = 27,
        And = 28,
        Or = 29,
        Not = 30,
        Atan2 = 31,
        Separator = 32,
        PlusPlus = 33,
        PlusMinus = 34,
        MinusPlus = 35,
        MinusMinus = 36,
    };

    // Value types: none (operators, punctuation, functions, end, error),
    // numeric, boolean.
    enum ValueType { NoValueType = -1, Numeric = 0, Boolean = 1 };

    ZWToken() = default;
    ZWToken(const ZWToken&) = default;
    ZWToken(ZWToken&&) noexcept = default;
    ZWToken& operator=(const ZWToken&) = default;
    ZWToken& operator=(ZWToken&&) noexcept = default;
    virtual ~ZWToken();

    // The text form clears the number to the no-value marker; the number
    // form clears the text.
    void Set(const ZWBasicString& value, int type, int position, int valueType);
    void Set(double value, int type, int position, int valueType);
    void Clear();

    int GetType() const { return m_type; }
    ZWBasicString GetValue() const { return m_value; }
    const ZWBasicString& Text() const { return m_value; }
    double GetDoubleValue() const { return m_doubleValue; }
    int GetPosition() const { return m_position; }
    int GetValueType() const { return m_valueType; }

    // Re-types the token in place (the grammar check turns a "-" into the
    // unary minus); text and position stay.
    void SetType(int type) { m_type = type; }
    void SetValueType(int valueType) { m_valueType = valueType; }

    // Equal type, text, number and value type; the position does not count.
    bool SameAs(const ZWToken& other) const;

private:
    ZWBasicString m_value;
    double m_doubleValue = ZW_NO_VALUE;
    int m_type = Cleared;
    int m_position = 0;
    int m_valueType = NoValueType;
};
