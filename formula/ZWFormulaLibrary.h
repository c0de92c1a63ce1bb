#pragma once

#include "host/core/ZWBasicString.h"

#include <vector>

class XmlDocument;

// The formula library document: root "formules", one "formule" per formula
// with the children "name" and "text", in list order. A report keeps it as
// the "formules" element of its "design" document.
class ZWFormulaLibrary
{
public:
    // Writes the library with the sequential writer and parses it into `doc`.
    static bool Build(
        const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, XmlDocument& doc);
    // Names and texts of every "formule" of `doc`, in document order (a
    // missing child reads as an empty text).
    static void Read(const XmlDocument& doc, std::vector<ZWBasicString>& names, std::vector<ZWBasicString>& texts);
    // Loads a library file ("formules" root) or the library of a report file
    // ("design" root; a report without one has an empty library). False with
    // `error` when the file cannot be read or is neither.
    static bool Load(const ZWBasicString& path, XmlDocument& doc, ZWBasicString& error);
};
