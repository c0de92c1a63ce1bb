#include "formula/ZWFormulaCompletion.h"

#include "formula/ZWTokenProducer.h"

#include <algorithm>

namespace {

bool IsNameChar(QChar c)
{
    return c.isLetterOrNumber();
}

void AddStartingWith(const QStringList& from, const QString& prefix, QStringList& out)
{
    for (const QString& s : from) {
        if (out.size() >= ZWFormulaCompletion::MaxCandidates)
            return;
        if (s.startsWith(prefix, Qt::CaseInsensitive) && !out.contains(s))
            out << s;
    }
}

} // namespace

ZWFormulaCompletion::Word ZWFormulaCompletion::WordAt(const ZWBasicString& text, int cursor)
{
    const int length = int(text.size());
    cursor = std::clamp(cursor, 0, length);
    Word word;

    // An open bracket before the cursor that no "]" closes yet.
    const int open = int(text.lastIndexOf(QLatin1Char('['), cursor - 1));
    const int closed = cursor > 0 ? int(text.lastIndexOf(QLatin1Char(']'), cursor - 1)) : -1;
    if (cursor > 0 && open >= 0 && open > closed) {
        // The variable's text ends at the "]" that closes it, if no other
        // "[" comes first; else at the cursor (the rest is other formula text).
        const int close = int(text.indexOf(QLatin1Char(']'), cursor));
        const int next = int(text.indexOf(QLatin1Char('['), cursor));
        const int stop = close >= 0 && (next < 0 || next > close) ? close : cursor;
        const int colon = int(text.lastIndexOf(QLatin1Char(':'), cursor - 1));
        if (colon > open) {
            word.context = Context::Filter;
            word.start = colon + 1;
        } else {
            word.context = Context::DeviceVariable;
            word.start = open + 1;
        }
        word.end = stop;
        // A ":" after the cursor ends a device variable's name part.
        if (word.context == Context::DeviceVariable) {
            const int colonAfter = int(text.indexOf(QLatin1Char(':'), cursor));
            if (colonAfter >= 0 && colonAfter < word.end)
                word.end = colonAfter;
        }
        word.prefix = text.mid(word.start, cursor - word.start);
        return word;
    }

    word.start = cursor;
    while (word.start > 0 && IsNameChar(text[word.start - 1]))
        --word.start;
    word.end = cursor;
    while (word.end < length && IsNameChar(text[word.end]))
        ++word.end;
    word.prefix = text.mid(word.start, cursor - word.start);
    return word;
}

QStringList ZWFormulaCompletion::Candidates(const Word& word) const
{
    QStringList out;
    switch (word.context) {
    case Context::Name: {
        if (word.prefix.isEmpty())
            return out;
        // A formula named like a function ("Sqrt") cannot be referred to:
        // the tokenizer reads the function.
        const QStringList functions = ZWTokenProducer::FunctionNames();
        QStringList formulas;
        for (const QString& f : m_formulas)
            if (!functions.contains(f, Qt::CaseInsensitive))
                formulas << f;
        AddStartingWith(formulas, word.prefix, out);
        AddStartingWith(functions, word.prefix, out);
        // A device variable whose device or variable part starts with the
        // prefix, offered in its bracket form.
        for (const QString& v : m_variables) {
            if (out.size() >= MaxCandidates)
                break;
            const int dot = int(v.indexOf(QLatin1Char('.')));
            if (v.startsWith(word.prefix, Qt::CaseInsensitive)
                || (dot >= 0 && QStringView(v).mid(dot + 1).startsWith(word.prefix, Qt::CaseInsensitive)))
                out << QLatin1Char('[') + v + QLatin1Char(']');
        }
        break;
    }
    case Context::DeviceVariable: {
        AddStartingWith(m_variables, word.prefix, out);
        for (const QString& v : m_variables) {
            if (out.size() >= MaxCandidates)
                break;
            if (v.contains(word.prefix, Qt::CaseInsensitive) && !out.contains(v))
                out << v;
        }
        break;
    }
    case Context::Filter:
        AddStartingWith(m_filters, word.prefix, out);
        break;
    }
    return out;
}

ZWBasicString ZWFormulaCompletion::Complete(
    const ZWBasicString& text, const Word& word, const ZWBasicString& candidate, int* cursor) const
{
    const int length = int(text.size());
    const int start = std::clamp(word.start, 0, length);
    const int end = std::clamp(word.end, start, length);
    QString insert = candidate;
    int back = 0;
    const QChar after = end < length ? text[end] : QChar();
    if (word.context == Context::Name) {
        if (ZWTokenProducer::FunctionNames().contains(candidate, Qt::CaseInsensitive) && after != QLatin1Char('(')) {
            insert += QStringLiteral("()");
            back = 1;
        }
    } else if (after != QLatin1Char(']') && after != QLatin1Char(':')) {
        insert += QLatin1Char(']');
    } else if (after == QLatin1Char(']')) {
        // Typing goes on after the bracket that is already there.
        back = -1;
    }
    if (cursor)
        *cursor = start + int(insert.size()) - back;
    return text.left(start) + insert + text.mid(end);
}
