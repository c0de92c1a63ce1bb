// Fuzzes the formula engine end to end: tokens, grammar, evaluation against a
// small library and live values, the queries and the loop check.
#include "formula/ZWEvaluator.h"
#include "formula/ZWFormulaLibrary.h"
#include "formula/ZWTokenProducer.h"
#include "host/core/XmlDocument.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLiveValues.h"
#include "host/drivers/ZWLoggerData.h"

#include <cstdint>
#include <cstdlib>

namespace {

// Breaks the run when the engine gives something its interface excludes.
void Require(bool condition)
{
    if (!condition)
        std::abort();
}

struct Environment
{
    Environment()
    {
        live = std::make_shared<ZWLiveValues>();
        live->Set(QStringLiteral("m.e"), 5.0);
        live->Set(QStringLiteral("m.zero"), 0.0);
        live->Set(QStringLiteral("m.none"), std::nullopt);
        live->Set(QStringLiteral("Meter 1.Power"), -2.5);
        ZWDriverSupport::SetStore(live);

        names = {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D"),
            QStringLiteral("Self"), QStringLiteral("Bad"), QStringLiteral("Loop1"), QStringLiteral("Loop2"),
            QStringLiteral("Bool")};
        texts = {QStringLiteral("[m.e] * 2"), QStringLiteral("A + 1"), QStringLiteral("B / [m.none]"),
            QStringLiteral("sqrt(A) - [m.zero]"), QStringLiteral("Self + 1"), QStringLiteral("2 +"),
            QStringLiteral("Loop2 * 2"), QStringLiteral("1 + Loop1"), QStringLiteral("A > 3 && (B < 20)")};
        ZWFormulaLibrary::Build(names, texts, library);

        ZWLoggerInfo info;
        info.AddVariable(QStringLiteral("m.e"));
        info.AddVariable(QStringLiteral("m.none"));
        data.Setup(info);
        const ZWDateTime begin = ZWDateTime::FromDMY(2024, 1, 1);
        data.SetData(begin, ZWDateTime::FromDMY(2024, 1, 2), ZWDataRecord{begin, {7.0, ZW_NO_VALUE}});
    }

    std::shared_ptr<ZWLiveValues> live;
    std::vector<QString> names;
    std::vector<QString> texts;
    XmlDocument library;
    ZWLoggerData data;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static Environment env;
    if (size == 0)
        return 0;
    // The first byte picks the evaluation's settings, the rest is the text.
    const uint8_t settings = bytes[0];
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(bytes + 1), qsizetype(size - 1));

    ZWTokenProducer producer(text);
    ZWToken token;
    int last = -1;
    for (qsizetype i = 0; i <= text.size() + 1; ++i) {
        producer.GetToken(token);
        Require(token.GetType() >= -2 && token.GetType() <= 36 && token.GetType() != -1);
        Require(token.GetPosition() >= 0 && token.GetPosition() <= text.size());
        if (token.GetType() <= 0) {
            last = token.GetType();
            break;
        }
    }
    // Every token but an unreadable character advances, so the end comes.
    Require(last == 0 || last == -2);

    ZWEvaluator evaluator(text);
    const int type = evaluator.AnalizeExpression();
    Require(type >= -1 && type <= 1);
    if (type == -1)
        return 0;

    if (settings & 1)
        evaluator.SetFormules(&env.library);
    if (settings & 2)
        evaluator.SetLoggerData(&env.data);
    evaluator.EnableDiscriminators(!(settings & 4));
    for (int round = 0; round < 2; ++round) {
        double value = 0;
        int valueType = -1;
        const int code = evaluator.Evaluate(value, valueType);
        Require(code >= 0 && code <= 64 && code != 39 && code != 42);
        if (code == 0)
            Require(valueType == 0 || valueType == 1);
        else
            Require(value == ZW_NO_VALUE);
        if (code == 40)
            Require(!evaluator.GetUndefinedTokens()->empty());
        QString message;
        Require(ZWEvaluator::ErrorMsg(code, message) && !message.isEmpty());
    }

    std::vector<ZWToken> devices;
    evaluator.GetDeviceVariables(devices);
    std::vector<QString> formulas;
    evaluator.GetFormules(formulas);
    (void)evaluator.IsOnlyOneDeviceVariable();

    // The input as the formula being edited, first in the library.
    std::vector<QString> names = env.names;
    std::vector<QString> texts = env.texts;
    names.insert(names.begin(), ZWEvaluator::ReservedName());
    texts.insert(texts.begin(), text);
    const int loops = ZWEvaluator::CheckBucles(names, texts, (settings & 8) ? -1 : 1);
    Require(loops >= 0 && loops <= 3);
    return 0;
}
