#pragma once

#include "formula/ZWToken.h"
#include "host/core/ZWBasicString.h"

#include <QMultiHash>
#include <memory>
#include <vector>

class XmlDocument;
class ZWLoggerData;

// The postfix (Polish) translation of one formula and its evaluation.
//
// The grammar check feeds the tokens in formula order to AddToken, which
// sorts operators by priority with an operator stack; Evaluate then runs the
// translation over a value stack. Names of other formulas are evaluated from
// the formula library, device variables are read from the logged data (or
// their live value when there is no logged data). The outcome is a result
// code: 0, or one of the codes that ZWEvaluator::ErrorMsg explains.
class ZWPolaca
{
public:
    // How deep formulas may refer to formulas. Evaluation runs referenced
    // formulas recursively, so a chain longer than this (or a formula that
    // refers back to itself) ends the evaluation with code 40, the name
    // concerned among the undefined tokens, instead of exhausting the stack.
    static constexpr int MaxReferenceDepth = 100;

    ZWPolaca();
    ZWPolaca(const ZWPolaca& other);
    ZWPolaca& operator=(const ZWPolaca& other);
    virtual ~ZWPolaca();

    // Empties the translation, the stacks and the undefined tokens.
    void Clear();

    // Feeds one token, in formula order. Always true.
    bool AddToken(const ZWToken& token);
    // Result type judged from the last token of the translation: -1 none,
    // 0 numeric, 1 boolean.
    int GetType() const;
    // Evaluates the translation. `result` is the no-value marker unless the
    // code is 0; `valueType` receives 0 (numeric) or 1 (boolean).
    int Evaluate(double& result, int& valueType);

    bool SetFormules(const XmlDocument* formulas);
    bool SetLoggerData(ZWLoggerData* data);
    void EnableDiscriminators(bool enable) { m_discriminators = enable; }
    std::vector<ZWToken>* GetUndefinedTokens() { return &m_undefined; }
    // Appends every device-variable token, in postfix order, repeats included.
    void GetDeviceVariables(std::vector<ZWToken>& out);
    bool IsOnlyOneDeviceVariable();
    // The names of the other formulas used, distinct, in postfix order.
    bool GetFormules(std::vector<ZWBasicString>& names);

    const std::vector<ZWToken>& GetTranslation() const { return m_translation; }

private:
    struct Context;
    struct ReferenceCache;
    struct Value
    {
        double value;
        int valueType;
    };

    int Evaluate(Context& context, double& result, int& valueType);
    void PutOverStack(const ZWToken& token);
    void FromStackToTraduction(bool stopAtParenthesis);
    void FromStackToTraductionParameter();
    static int Prioridad(const ZWToken& token);
    int IsValidVariableDevice(const ZWToken& token, double& value);
    int IsValidFormule(Context& context, const ZWToken& token, double& value);
    static void AddIfNotFound(std::vector<ZWToken>& list, const ZWToken& token);
    // AddIfNotFound on the undefined tokens, in linear time however many.
    void AddUndefined(const ZWToken& token);
    void ClearUndefined();

    std::vector<ZWToken> m_translation;
    // Operator stack while translating.
    std::vector<ZWToken> m_stack;
    // Value stack while evaluating: every value on it is a constant, so only
    // its number and value type are kept (no token text is copied). As long
    // as the translation once sized, then reused.
    std::vector<Value> m_values;
    std::vector<ZWToken> m_undefined;
    // Positions in m_undefined by text, once the list is long.
    QMultiHash<ZWBasicString, size_t> m_undefinedIndex;
    const XmlDocument* m_formules = nullptr;
    ZWLoggerData* m_loggerData = nullptr;
    bool m_discriminators = true;
    // Referenced formulas already checked, by name, with the text they were
    // checked from; looked up again in the library on every evaluation and
    // checked again when their text changed. Not copied.
    std::unique_ptr<ReferenceCache> m_references;
};
