#include "formula/ZWResultCode.h"

#include <array>

using namespace Qt::StringLiterals;

QLatin1StringView ZWResultCode::Name(int code)
{
    static constexpr std::array<QLatin1StringView, 65> kNames = {"Ok"_L1, "UnknownDeviceVariable"_L1, "AddStack"_L1,
        "AddType"_L1, "SubtractStack"_L1, "SubtractType"_L1, "MultiplyStack"_L1, "MultiplyType"_L1, "DivideStack"_L1,
        "DivideType"_L1, "DivideByZero"_L1, "PowerStack"_L1, "PowerType"_L1, "NegateStack"_L1, "NegateType"_L1,
        "SqrtStack"_L1, "SqrtType"_L1, "SqrtDomain"_L1, "LogStack"_L1, "LogType"_L1, "LogDomain"_L1, "ExpStack"_L1,
        "ExpType"_L1, "SinStack"_L1, "SinType"_L1, "CosStack"_L1, "CosType"_L1, "TanStack"_L1, "TanType"_L1,
        "AsinStack"_L1, "AsinType"_L1, "AsinDomain"_L1, "AcosStack"_L1, "AcosType"_L1, "AcosDomain"_L1, "AtanStack"_L1,
        "AtanType"_L1, "Log10Stack"_L1, "Log10Type"_L1, QLatin1StringView(), "UndefinedValues"_L1, "EmptyFormula"_L1,
        "NotAValue"_L1, "ReferenceSyntaxError"_L1, "NotStack"_L1, "NotType"_L1, "LessStack"_L1, "LessType"_L1,
        "GreaterStack"_L1, "GreaterType"_L1, "LessEqualStack"_L1, "LessEqualType"_L1, "GreaterEqualStack"_L1,
        "GreaterEqualType"_L1, "EqualStack"_L1, "EqualType"_L1, "NotEqualStack"_L1, "NotEqualType"_L1, "AndStack"_L1,
        "AndType"_L1, "OrStack"_L1, "OrType"_L1, "NoCurrentValue"_L1, "Atan2Stack"_L1, "Atan2Type"_L1};
    return code >= 0 && code < int(kNames.size()) ? kNames[size_t(code)] : QLatin1StringView();
}
