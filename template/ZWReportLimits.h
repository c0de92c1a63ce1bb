#pragma once

#include "host/core/XmlDocument.h"

#include <QString>

// The size a report may have, so that opening, drawing and printing one
// stays within a few hundred MB and a few seconds whatever the file holds
// (the XML reader bounds the document as a whole: XmlDocument::MaxBytes,
// MaxElements). Pictures are bounded by ZWImageSupport.
class ZWReportLimits
{
public:
    static constexpr int MaxCardsPerPage = 5000;
    // Characters of one text of a card: a label's text, a formula, a date
    // pattern, a condition, a name... (a picture's base64 bytes are not
    // text and not counted here).
    static constexpr int MaxCardText = 10000;

    // What makes the "design" document too large to open ("page 2 has 6000
    // cards; at most 5000"), or an empty text when it is within the limits.
    static QString Problem(const XmlDocument& design);
};
