#include "template/ZWCardKinds.h"

#include "template/ZWCardChart.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWCardTable.h"

namespace {

template <class T> std::unique_ptr<ZWCardControl> Make()
{
    return std::make_unique<T>();
}

using namespace Qt::StringLiterals;

// Explicit rather than self-registered: the order is fixed and every kind is
// linked wherever the template library is.
const ZWCardKinds::Kind kKinds[] = {
    {"ZWCardControl", QLatin1StringView(), nullptr, &Make<ZWCardControl>},
    {"ZWCardImage", "image"_L1, "ZWCardControl", &Make<ZWCardImage>},
    {"ZWCardLabel", "label"_L1, "ZWCardControl", &Make<ZWCardLabel>},
    {"ZWCardDate", "date"_L1, "ZWCardLabel", &Make<ZWCardDate>},
    {"ZWCardFormule", "formule"_L1, "ZWCardLabel", &Make<ZWCardFormule>},
    {"ZWCardConditioned", "conditioned"_L1, "ZWCardControl", &Make<ZWCardConditioned>},
    {"ZWCardChart", "chart"_L1, "ZWCardControl", &Make<ZWCardChart>},
    {"ZWCardTable", "table"_L1, "ZWCardControl", &Make<ZWCardTable>},
};

} // namespace

std::span<const ZWCardKinds::Kind> ZWCardKinds::All()
{
    return kKinds;
}

const ZWCardKinds::Kind* ZWCardKinds::ByClass(QLatin1StringView className)
{
    for (const Kind& kind : kKinds) {
        if (className == QLatin1StringView(kind.className))
            return &kind;
    }
    return nullptr;
}

const ZWCardKinds::Kind* ZWCardKinds::ByElement(QStringView element)
{
    if (element.isEmpty())
        return nullptr;
    for (const Kind& kind : kKinds) {
        if (element == kind.element)
            return &kind;
    }
    return nullptr;
}

bool ZWCardKinds::Derives(const char* className, const char* ancestor)
{
    // The table has no cycles; the bound only guards against a future typo.
    const Kind* kind = ByClass(QLatin1StringView(className));
    for (int depth = 0; kind && depth < int(std::size(kKinds)); ++depth) {
        if (qstrcmp(kind->className, ancestor) == 0)
            return true;
        kind = kind->baseClass ? ByClass(QLatin1StringView(kind->baseClass)) : nullptr;
    }
    return false;
}
