#pragma once

#include "host/core/ZWBasicString.h"

#include <QStringList>

// The texts of the formula wizard: the element kinds and their
// placeholders, the preview of a formula with the element in place of the
// selection, the insertion of the chosen element, and the constants the
// wizard offers.
class ZWWizzardText
{
public:
    enum Kind { DeviceVariable = 0, Formula = 1, Function = 2, Other = 3 };

    // "[Vx]", "Fx", "F(x)", "x"; "x" for an unknown kind.
    static ZWBasicString Placeholder(int kind);

    // The formula before the selection, the placeholder of `kind`, and the
    // formula after the selection. The selection is clamped to the text and
    // may be given in either order.
    static ZWBasicString ActualizeExpression(const ZWBasicString& text, int start, int end, int kind);

    // The text of an element as it goes into a formula: a device variable in
    // brackets, a function with its parentheses, anything else as it is.
    static ZWBasicString Element(int kind, const ZWBasicString& chosen);

    // Replaces the selection by the element; `cursor` receives where typing
    // goes on: after the element, or between a function's parentheses.
    static ZWBasicString Insert(
        const ZWBasicString& text, int start, int end, int kind, const ZWBasicString& element, int* cursor = nullptr);

    // The operators and punctuation of the "other" elements, in the order
    // they are offered.
    static const QStringList& OtherElements();
    // The format of a constant with `decimals` decimals ("%.4f" for 4),
    // made with "%%.%df"; decimals outside 0 to 15 are clamped.
    static QString ConstantFormat(int decimals);
    static ZWBasicString Constant(double value, int decimals);

    static constexpr double Pi = 3.141592653589793;
    static constexpr double E = 2.718281828459045;
    static constexpr int MaxDecimals = 15;

private:
    static void Clamp(const ZWBasicString& text, int& start, int& end);
};
