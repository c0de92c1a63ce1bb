#pragma once

#include <QLatin1StringView>

// The result codes of the formula engine. They stay plain ints, the engine's
// interface (ErrorMsg turns each into the text with id 32555 + code); the
// names are for the people who read and test the engine.
class ZWResultCode
{
public:
    // Outcomes of an evaluation. For every operator a "Stack" code (too few
    // operands) and a "Type" code (an operand of the wrong value type); some
    // functions add a "Domain" code.
    enum : int {
        Ok = 0,
        UnknownDeviceVariable = 1,
        AddStack = 2,
        AddType = 3,
        SubtractStack = 4,
        SubtractType = 5,
        MultiplyStack = 6,
        MultiplyType = 7,
        DivideStack = 8,
        DivideType = 9,
        DivideByZero = 10,
        PowerStack = 11,
        PowerType = 12,
        NegateStack = 13,
        NegateType = 14,
        SqrtStack = 15,
        SqrtType = 16,
        SqrtDomain = 17,
        LogStack = 18,
        LogType = 19,
        // Also the domain fault of log10: 39 is never produced.
        LogDomain = 20,
        ExpStack = 21,
        ExpType = 22,
        SinStack = 23,
        SinType = 24,
        CosStack = 25,
        CosType = 26,
        TanStack = 27,
        TanType = 28,
        AsinStack = 29,
        AsinType = 30,
        AsinDomain = 31,
        AcosStack = 32,
        AcosType = 33,
        AcosDomain = 34,
        AtanStack = 35,
        AtanType = 36,
        Log10Stack = 37,
        Log10Type = 38,
        // Values were missing (the names are in the undefined tokens), or a
        // referenced formula was not found or formed a loop.
        UndefinedValues = 40,
        EmptyFormula = 41,
        NotAValue = 42,
        ReferenceSyntaxError = 43,
        NotStack = 44,
        NotType = 45,
        LessStack = 46,
        LessType = 47,
        GreaterStack = 48,
        GreaterType = 49,
        LessEqualStack = 50,
        LessEqualType = 51,
        GreaterEqualStack = 52,
        GreaterEqualType = 53,
        EqualStack = 54,
        EqualType = 55,
        NotEqualStack = 56,
        NotEqualType = 57,
        AndStack = 58,
        AndType = 59,
        OrStack = 60,
        OrType = 61,
        // The last device variable looked up had no current value.
        NoCurrentValue = 62,
        Atan2Stack = 63,
        Atan2Type = 64,
    };

    // Outcomes of the reference loop check.
    enum : int {
        NoLoop = 0,
        ReferenceLoop = 1,
        MissingFormula = 2,
        InvalidFormula = 3,
    };

    // "DivideByZero" for 10, empty for a number that is no evaluation code.
    static QLatin1StringView Name(int code);
};
