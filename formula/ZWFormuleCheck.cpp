#include "formula/ZWFormuleCheck.h"

#include "formula/ZWEvaluator.h"
#include "formula/ZWFormulaLibrary.h"
#include "formula/ZWResultCode.h"
#include "formula/ZWTokenProducer.h"
#include "host/core/XmlDocument.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <algorithm>

namespace {

using R = ZWResultCode;

ZWFormuleCheck::Result Failed(int textId, const QString& detail = QString())
{
    ZWFormuleCheck::Result r;
    r.textId = textId;
    r.text = ZWLoadString(textId);
    if (!detail.isEmpty())
        r.text += QLatin1Char(' ') + detail;
    return r;
}

// The names without a value, those that are no formula of the library, and
// the fault of each referenced formula that cannot be evaluated at all (an
// unknown device variable deep down shows only as a missing value).
QString DescribeUndefined(const std::vector<ZWToken>& undefined, const XmlDocument& library)
{
    QStringList withoutValue, notInLibrary, faults;
    for (const ZWToken& token : undefined) {
        if (token.GetType() == ZWToken::DeviceVariable) {
            withoutValue << QLatin1Char('[') + token.GetValue() + QLatin1Char(']');
            continue;
        }
        const XmlDocument::XmlNode node = library.Node(QStringLiteral("/formule?name=%s?"), token.GetValue());
        if (node.IsNull()) {
            notInLibrary << token.GetValue();
            continue;
        }
        withoutValue << token.GetValue();
        ZWEvaluator reference(node.Value(QStringLiteral("/text")));
        if (reference.AnalizeExpression() != 0)
            continue;
        reference.SetFormules(&library);
        double value = ZW_NO_VALUE;
        int valueType = 0;
        const int code = reference.Evaluate(value, valueType);
        // A fault that comes from a formula it refers to is that one's.
        const std::vector<ZWToken>& below = *reference.GetUndefinedTokens();
        const bool inherited = std::any_of(
            below.begin(), below.end(), [](const ZWToken& t) { return t.GetType() == ZWToken::Variable; });
        if (!inherited && code != R::Ok && code != R::UndefinedValues && code != R::NoCurrentValue) {
            QString message;
            ZWEvaluator::ErrorMsg(code, message);
            faults << ZWLoadString(ZWTextId::FormulaReferenceFault).arg(token.GetValue(), message);
        }
    }
    QString out;
    const QString separator = QStringLiteral(", ");
    if (!withoutValue.isEmpty())
        out += QLatin1Char('\n') + ZWLoadString(ZWTextId::FormulaWithoutValue).arg(withoutValue.join(separator));
    if (!notInLibrary.isEmpty())
        out += QLatin1Char('\n') + ZWLoadString(ZWTextId::FormulaNotInLibrary).arg(notInLibrary.join(separator));
    for (const QString& fault : faults)
        out += QLatin1Char('\n') + fault;
    return out;
}

} // namespace

bool ZWFormuleCheck::IsValidName(const ZWBasicString& name)
{
    if (name.isEmpty())
        return false;
    const QChar first = name.front();
    if (first.unicode() >= u'0' && first.unicode() <= u'9')
        return false;
    if (!std::all_of(name.begin(), name.end(), [](QChar c) { return c.isLetterOrNumber(); }))
        return false;
    return !ZWTokenProducer::FunctionNames().contains(name, Qt::CaseSensitive);
}

bool ZWFormuleCheck::BuildFormulesDoc(
    const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, int leaveOut, XmlDocument& doc)
{
    std::vector<ZWBasicString> otherNames, otherTexts;
    const size_t n = std::min(names.size(), texts.size());
    for (size_t i = 0; i < n; ++i) {
        if (int(i) == leaveOut)
            continue;
        otherNames.push_back(names[i]);
        otherTexts.push_back(texts[i]);
    }
    return ZWFormulaLibrary::Build(otherNames, otherTexts, doc);
}

ZWFormuleCheck::Result ZWFormuleCheck::Evaluate(const ZWBasicString& name, const ZWBasicString& text,
    const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, int edited, bool nameRequired)
{
    if (text.isEmpty())
        return Failed(ZWTextId::FormulaEmpty);
    const bool checkName = nameRequired || !name.isEmpty();
    if (checkName && !IsValidName(name))
        return Failed(ZWTextId::FormulaNameInvalid);

    XmlDocument others;
    BuildFormulesDoc(names, texts, edited, others);
    if (checkName && !others.Node(QStringLiteral("/formule?name=%s?"), name).IsNull())
        return Failed(ZWTextId::FormulaNameTaken);

    ZWEvaluator evaluator(text);
    if (evaluator.AnalizeExpression() != 0)
        return Failed(ZWTextId::FormulaInvalid);

    // The formula goes first, under the reserved name when it has none, so
    // that only its own references are followed.
    std::vector<ZWBasicString> loopNames{name.isEmpty() ? ZWEvaluator::ReservedName() : name};
    std::vector<ZWBasicString> loopTexts{text};
    const size_t n = std::min(names.size(), texts.size());
    for (size_t i = 0; i < n; ++i) {
        if (int(i) == edited)
            continue;
        loopNames.push_back(names[i]);
        loopTexts.push_back(texts[i]);
    }
    if (ZWEvaluator::CheckBucles(loopNames, loopTexts, 1) == R::ReferenceLoop)
        return Failed(ZWTextId::FormulaRefersToItself);

    evaluator.SetFormules(&others);
    Result r;
    int valueType = 0;
    r.code = evaluator.Evaluate(r.value, valueType);
    for (const ZWToken& token : *evaluator.GetUndefinedTokens()) {
        r.undefined << (token.GetType() == ZWToken::DeviceVariable
                ? QLatin1Char('[') + token.GetValue() + QLatin1Char(']')
                : token.GetValue());
    }
    switch (r.code) {
    case R::Ok:
        r.textId = ZWTextId::FormulaValue;
        r.okEnabled = true;
        r.text = ZWLoadString(r.textId).arg(FormatValue(r.value));
        break;
    case R::UnknownDeviceVariable:
        r.textId = ZWTextId::FormulaUnknownVariable;
        r.text = ZWLoadString(r.textId);
        break;
    case R::UndefinedValues:
    case R::NoCurrentValue:
        // Missing data does not make a formula wrong; the line says what is
        // missing, and why where a referenced formula is at fault.
        r.textId = r.code == R::NoCurrentValue ? ZWTextId::FormulaNoCurrentValue : ZWTextId::FormulaValueMissing;
        r.okEnabled = true;
        r.text = ZWLoadString(r.textId) + DescribeUndefined(*evaluator.GetUndefinedTokens(), others);
        break;
    default: {
        QString message;
        ZWEvaluator::ErrorMsg(r.code, message);
        r.textId = ZWTextId::FormulaCannotEvaluate;
        r.text = ZWLoadString(r.textId) + QLatin1Char(' ') + message;
        break;
    }
    }
    if (r.code != R::Ok)
        r.value = ZW_NO_VALUE;
    return r;
}

bool ZWFormuleCheck::HasLoop(const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts)
{
    return ZWEvaluator::CheckBucles(names, texts, -1) == R::ReferenceLoop;
}

QString ZWFormuleCheck::FormatValue(double value)
{
    return QString::asprintf("%.5f", value);
}
