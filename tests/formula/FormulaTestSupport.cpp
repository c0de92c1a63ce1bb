#include "tests/formula/FormulaTestSupport.h"

#include "formula/ZWEvaluator.h"
#include "formula/ZWFormulaLibrary.h"
#include "formula/ZWResultCode.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLiveValues.h"

using namespace Qt::StringLiterals;

namespace zwtest {

std::string CodeName(int code)
{
    const QLatin1StringView name = ZWResultCode::Name(code);
    return (name.isEmpty() ? std::string("Code") : name.toString().toStdString()) + "_" + std::to_string(code);
}

Evaluation Evaluate(const QString& formula, const EvaluationOptions& options)
{
    Evaluation out;
    ZWEvaluator evaluator(formula);
    out.analyze = evaluator.AnalizeExpression();
    if (out.analyze == -1)
        return out;
    evaluator.SetFormules(options.formulas);
    evaluator.SetLoggerData(options.loggerData);
    evaluator.EnableDiscriminators(options.discriminators);
    out.code = evaluator.Evaluate(out.value, out.valueType);
    for (const ZWToken& token : *evaluator.GetUndefinedTokens())
        out.undefined << token.Text();
    return out;
}

std::unique_ptr<XmlDocument> Library(const std::vector<std::pair<QString, QString>>& formulas)
{
    std::vector<QString> names, texts;
    for (const auto& [name, text] : formulas) {
        names.push_back(name);
        texts.push_back(text);
    }
    auto doc = std::make_unique<XmlDocument>();
    ZWFormulaLibrary::Build(names, texts, *doc);
    return doc;
}

LiveValuesScope::LiveValuesScope() : m_store(std::make_shared<ZWLiveValues>())
{
    ZWDriverSupport::SetStore(m_store);
}

LiveValuesScope::~LiveValuesScope()
{
    ZWDriverSupport::SetStore(nullptr);
}

void LiveValuesScope::Set(const QString& name, std::optional<double> value)
{
    m_store->Set(name, value);
}

} // namespace zwtest
