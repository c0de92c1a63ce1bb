#pragma once

#include <QLatin1StringView>
#include <QString>
#include <memory>
#include <span>

class ZWCardControl;

// The kinds of card, in one table: the class name, the element a page
// stores the kind as, the kind it derives from and how to make a default
// one. Creation by class name or element, kind tests, the page reader and
// the designer's tools all go through it, so a new kind is one row here.
class ZWCardKinds
{
public:
    struct Kind
    {
        const char* className;
        // Empty for the bare base, which is never stored.
        QLatin1StringView element;
        // Null for the root of the hierarchy.
        const char* baseClass;
        std::unique_ptr<ZWCardControl> (*create)();
    };

    static std::span<const Kind> All();
    static const Kind* ByClass(QLatin1StringView className);
    static const Kind* ByElement(QStringView element);
    // Whether `className` is `ancestor` or derives from it.
    static bool Derives(const char* className, const char* ancestor);
};
