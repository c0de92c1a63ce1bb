#pragma once

#include "formula/ZWPolaca.h"
#include "formula/ZWToken.h"
#include "formula/ZWTokenProducer.h"
#include "host/core/ZWBasicString.h"

#include <vector>

class XmlDocument;
class ZWLoggerData;
class ZWTreeNode;

// The formula engine's front door: checks a formula text against the
// grammar (translating it to postfix on the way), evaluates it, guards the
// formula library against reference loops and turns result codes into
// messages.
//
// Grammar (operator precedence comes from the translator, not from here):
//   expression = [ "+" | "-" | "!" ] term { op term }
//                op: + - < > <= >= == != && ||
//   term       = factor { ( "*" | "/" | "^" ) factor }
//   factor     = number | name | [device variable] | "-" term
//              | "(" expression ")" | function "(" expression ")"
//              | "atan2" "(" expression "," expression ")"
class ZWEvaluator
{
public:
    // Parentheses (and function calls) nested deeper than this make the text
    // invalid, so that hostile text cannot exhaust the stack of the checker.
    static constexpr int MaxNesting = 256;

    ZWEvaluator();
    explicit ZWEvaluator(const ZWBasicString& text);
    ZWEvaluator(const ZWEvaluator&) = default;
    ZWEvaluator& operator=(const ZWEvaluator&) = default;
    virtual ~ZWEvaluator();

    // Replaces the text and rebuilds the function table; neither rewinds the
    // tokenizer nor clears the translation (a text is checked once, on a
    // fresh evaluator).
    void Set(const ZWBasicString& text);

    // The grammar check: -1 when the text is not a valid formula, else the
    // result type, 0 numeric or 1 boolean.
    int AnalizeExpression();
    // Valid only after AnalizeExpression succeeded.
    int Evaluate(double& result, int& valueType) { return m_polaca.Evaluate(result, valueType); }

    bool SetFormules(const XmlDocument* formulas) { return m_polaca.SetFormules(formulas); }
    bool SetLoggerData(ZWLoggerData* data) { return m_polaca.SetLoggerData(data); }
    void EnableDiscriminators(bool enable) { m_polaca.EnableDiscriminators(enable); }
    std::vector<ZWToken>* GetUndefinedTokens() { return m_polaca.GetUndefinedTokens(); }
    void GetDeviceVariables(std::vector<ZWToken>& out) { m_polaca.GetDeviceVariables(out); }
    bool IsOnlyOneDeviceVariable() { return m_polaca.IsOnlyOneDeviceVariable(); }
    bool GetFormules(std::vector<ZWBasicString>& names) { return m_polaca.GetFormules(names); }

    const ZWBasicString& Expr() const { return m_expression; }
    const ZWPolaca& GetPolaca() const { return m_polaca; }
    // Where the grammar check stopped: after a failed check, the position of
    // the token it could not accept.
    int ErrorPosition() const { return m_current.GetPosition(); }

    // Loop check of a formula library given as parallel lists of names and
    // texts, over the first `count` formulas (all when -1). 0 no problem,
    // 1 a reference loop (or a chain of references deeper than
    // ZWPolaca::MaxReferenceDepth, which evaluation would refuse), 2 a
    // reference to a formula not in the lists, 3 a formula that fails the
    // grammar check.
    static int CheckBucles(const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, int count);
    // One step of the loop check: expands the references of `node`'s formula
    // into children, depth first.
    static int Expand(
        ZWTreeNode* node, const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts);

    // The message for a result code; always true.
    static bool ErrorMsg(int code, ZWBasicString& text);
    static int ErrorMsgId(int code);

    // The name under which a formula without a name yet enters the loop check.
    static ZWBasicString ReservedName() { return QStringLiteral("abc123def456ghi789jkl"); }

private:
    friend class ZWPolaca;

    void Next() { m_tokenizer.GetToken(m_current); }
    void Fail();
    bool AnalizeTerm();
    void AnalizeFactor();
    void AnalizeParenthesised();
    // Counts one more level of parentheses; false (and an error) beyond
    // MaxNesting.
    bool Enter();
    void AddCurrent() { m_polaca.AddToken(m_current); }

    ZWBasicString m_expression;
    ZWToken m_current;
    ZWTokenProducer m_tokenizer;
    ZWPolaca m_polaca;
    int m_nesting = 0;
};
