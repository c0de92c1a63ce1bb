#pragma once

#include "host/core/ZWBasicString.h"
#include "host/core/ZWNoValue.h"

#include <QStringList>
#include <vector>

class XmlDocument;

// The checks a formula of the library passes before it is stored: its name,
// its text, the other formulas it refers to and its value. The formula
// dialogs show the outcome; nothing here shows anything.
class ZWFormuleCheck
{
public:
    // The outcome of Evaluate: the text id of the result line, whether the
    // formula may be stored, and what the line shows.
    struct Result
    {
        int textId = 0;
        bool okEnabled = false;
        // The evaluation's result code; -1 when a check before it failed.
        int code = -1;
        double value = ZW_NO_VALUE;
        // The names without a value, device variables in brackets.
        QStringList undefined;
        // The result line: the text of `textId` with what it reports put in.
        QString text;
    };

    // Non-empty, no decimal digit first, letters and digits only, and none
    // of the function names as they stand (so "Sqrt" is a name, although the
    // tokenizer reads it as the function).
    static bool IsValidName(const ZWBasicString& name);

    // The library document of `names` and `texts` without entry `leaveOut`
    // (-1 keeps every formula).
    static bool BuildFormulesDoc(const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts,
        int leaveOut, XmlDocument& doc);

    // The six checks of a formula named `name` with text `text` against the
    // library `names`/`texts`, in which entry `edited` (-1 for a new
    // formula) is the formula's previous form. With `nameRequired` false an
    // empty name skips the name checks (a formula that is not stored in the
    // library, such as a card's). Device variables are read from the
    // installed logger store.
    static Result Evaluate(const ZWBasicString& name, const ZWBasicString& text,
        const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, int edited,
        bool nameRequired = true);

    // Whether the library holds a reference loop: the only fault that
    // refuses a whole library (a missing or invalid formula does not).
    static bool HasLoop(const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts);

    // A value as the result line shows it: "%.5f".
    static QString FormatValue(double value);
};
