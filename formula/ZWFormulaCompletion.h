#pragma once

#include "host/core/ZWBasicString.h"

#include <QStringList>

// Completion of the word being typed in a formula text: a name (of a
// formula, a function or, in brackets, a device variable), the part of a
// device variable between "[" and the cursor, or the filter after its ":".
class ZWFormulaCompletion
{
public:
    enum class Context { Name, DeviceVariable, Filter };

    // The word at the cursor: [start, end) is what a completion replaces,
    // `prefix` the part of it before the cursor.
    struct Word
    {
        int start = 0;
        int end = 0;
        ZWBasicString prefix;
        Context context = Context::Name;
    };

    // At most this many candidates: a database may hold thousands of
    // variables.
    static constexpr int MaxCandidates = 200;

    void SetVariables(const QStringList& names) { m_variables = names; }
    void SetFormulas(const QStringList& names) { m_formulas = names; }
    void SetFilters(const QStringList& names) { m_filters = names; }

    // Inside an open "[" (no "]" between it and the cursor) the word is the
    // device variable up to the cursor, or the filter after its last ":";
    // elsewhere it is the run of letters and digits around the cursor.
    static Word WordAt(const ZWBasicString& text, int cursor);

    // What may replace the word, best first. Names: formulas, functions and
    // device variables (in brackets, by their device or variable part)
    // starting with the prefix, letter case ignored; an empty prefix offers
    // nothing. Device variables: those
    // containing the prefix, those starting with it first. Filters: those
    // starting with the prefix.
    QStringList Candidates(const Word& word) const;

    // The text with the word replaced by `candidate`; `cursor` receives the
    // position after it. A function gets its parentheses (the cursor goes
    // between them) unless one follows; a device variable or filter gets
    // its closing "]" unless one follows.
    ZWBasicString Complete(
        const ZWBasicString& text, const Word& word, const ZWBasicString& candidate, int* cursor = nullptr) const;

private:
    QStringList m_variables;
    QStringList m_formulas;
    QStringList m_filters;
};
