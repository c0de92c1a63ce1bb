#include "formula/ZWWizzardText.h"

#include <algorithm>

ZWBasicString ZWWizzardText::Placeholder(int kind)
{
    switch (kind) {
    case DeviceVariable:
        return QStringLiteral("[Vx]");
    case Formula:
        return QStringLiteral("Fx");
    case Function:
        return QStringLiteral("F(x)");
    default:
        return QStringLiteral("x");
    }
}

void ZWWizzardText::Clamp(const ZWBasicString& text, int& start, int& end)
{
    const int length = int(text.size());
    start = std::clamp(start, 0, length);
    end = std::clamp(end, 0, length);
    if (start > end)
        std::swap(start, end);
}

ZWBasicString ZWWizzardText::ActualizeExpression(const ZWBasicString& text, int start, int end, int kind)
{
    Clamp(text, start, end);
    return text.left(start) + Placeholder(kind) + text.mid(end);
}

ZWBasicString ZWWizzardText::Element(int kind, const ZWBasicString& chosen)
{
    switch (kind) {
    case DeviceVariable:
        return QLatin1Char('[') + chosen + QLatin1Char(']');
    case Function:
        return chosen + QStringLiteral("()");
    default:
        return chosen;
    }
}

ZWBasicString ZWWizzardText::Insert(
    const ZWBasicString& text, int start, int end, int kind, const ZWBasicString& element, int* cursor)
{
    Clamp(text, start, end);
    if (cursor) {
        const bool inParentheses = kind == Function && element.endsWith(QStringLiteral("()"));
        *cursor = start + int(element.size()) - (inParentheses ? 1 : 0);
    }
    return text.left(start) + element + text.mid(end);
}

const QStringList& ZWWizzardText::OtherElements()
{
    static const QStringList elements = {QStringLiteral("("), QStringLiteral(")"), QStringLiteral("^"),
        QStringLiteral("*"), QStringLiteral("/"), QStringLiteral("+"), QStringLiteral("-"), QStringLiteral("<"),
        QStringLiteral(">"), QStringLiteral("<="), QStringLiteral(">="), QStringLiteral("=="), QStringLiteral("!="),
        QStringLiteral("!"), QStringLiteral("&&"), QStringLiteral("||")};
    return elements;
}

QString ZWWizzardText::ConstantFormat(int decimals)
{
    return QString::asprintf("%%.%df", std::clamp(decimals, 0, MaxDecimals));
}

ZWBasicString ZWWizzardText::Constant(double value, int decimals)
{
    // The format is one of sixteen made above, never user text.
    const QByteArray format = ConstantFormat(decimals).toLatin1();
    return QString::asprintf(format.constData(), value);
}
