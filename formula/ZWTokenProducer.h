#pragma once

#include "formula/ZWToken.h"
#include "host/core/ZWBasicString.h"

#include <QStringList>

#include <vector>

// Cuts a formula text into tokens, one per GetToken call, left to right.
// Purely lexical: whatever cannot be read becomes an error token (type -2)
// at the position where reading failed; the grammar check refuses it.
class ZWTokenProducer
{
public:
    ZWTokenProducer();
    explicit ZWTokenProducer(const ZWBasicString& text);
    ZWTokenProducer(const ZWTokenProducer&) = default;
    ZWTokenProducer& operator=(const ZWTokenProducer&) = default;
    virtual ~ZWTokenProducer();

    // Takes a new text and rebuilds the function table. The position stays
    // where it was: a caller that reuses a producer calls Reset as well.
    void Set(const ZWBasicString& text);
    void Reset() { m_position = 0; }
    // Empties the text, the position and the function table.
    void Clear();

    // Reads the next token; always fills `token`. Past the end it keeps
    // returning the end token (type 0).
    void GetToken(ZWToken& token);

    void AddFunction(const ZWBasicString& name, int id);
    int NumberOfFunctions() const { return int(m_functionNames.size()); }
    void GetFunction(int index, ZWBasicString& name) const;
    // -2 when `index` is outside the table.
    int GetFunctionId(int index) const;

    int GetPosition() const { return m_position; }

    // The names of the built-in functions, in table order.
    static QStringList FunctionNames();

private:
    void InitFunctions();
    void GetVariableDevice(ZWToken& token);
    void GetVarOrFunction(ZWToken& token);
    void GetConstant(ZWToken& token);
    void IntegerZone(ZWBasicString& out);
    ZWBasicString DecimalZone(bool leading);
    ZWBasicString ExponentialZone();

    bool AtEnd() const { return m_position >= m_length; }
    QChar Current() const { return m_text.constData()[m_position]; }
    // The character after the current one, or a null character at the end.
    QChar Next() const { return m_position + 1 < m_length ? m_text.constData()[m_position + 1] : QChar(); }

    ZWBasicString m_text;
    int m_length = 0;
    int m_position = 0;
    // Lower-case names and their ids, in registration order.
    std::vector<ZWBasicString> m_functionNames;
    std::vector<int> m_functionIds;
};
