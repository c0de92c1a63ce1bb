// The formula engine against muparser, on the same expressions in the same
// run: grammar check + translation, and evaluation of a checked formula.
//
// muparser folds constant subexpressions when its optimizer is on, which
// would turn these formulas (numbers only, as our side has no other operand
// that costs nothing to read) into a single constant; it runs with the
// optimizer off so that both sides compute every operation.
#include "formula/ZWEvaluator.h"
#include "formula/ZWFormulaLibrary.h"
#include "host/core/XmlDocument.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLiveValues.h"
#include "host/drivers/ZWLoggerData.h"

#include <benchmark/benchmark.h>
#include <muParser.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

struct Formula
{
    const char* name;
    const char* ours;
    const char* muparser; // the same computation in muparser's syntax
};

// Arithmetic with functions, comparisons and logic: what cards and
// conditions of a report compute.
const std::vector<Formula> kFormulas = {
    {"arith", "(1250.5 - 1180.25) * 0.1432 + 12.5", "(1250.5 - 1180.25) * 0.1432 + 12.5"},
    {"functions", "sqrt(3.5^2 + 4.25^2) * 2 - log(2.75) + exp(0.5)", "sqrt(3.5^2 + 4.25^2) * 2 - ln(2.75) + exp(0.5)"},
    {"trig", "atan2(3.2, 4.1) * 180 / 3.141592653589793 + sin(0.5)^2 + cos(0.5)^2",
        "atan2(3.2, 4.1) * 180 / 3.141592653589793 + sin(0.5)^2 + cos(0.5)^2"},
    {"compare", "(231.5 > 220) && (231.5 < 240) || (49.9 >= 50.2)", "(231.5 > 220) && (231.5 < 240) || (49.9 >= 50.2)"},
    {"mixed", "(1520.75 / 24 - 55.2) / 55.2 * 100 >= 5 && (log10(1520.75) < 4)",
        "(1520.75 / 24 - 55.2) / 55.2 * 100 >= 5 && (log(1520.75) < 4)"},
};

// Device variables of logged data, and references to library formulas.
const std::vector<std::pair<const char*, const char*>> kOurOnly = {
    {"devices", "([m1.energy] - [m1.energy:first]) * 0.1432 + [m2.power] / 1000"},
    {"references", "Cost + Fixed * 2"},
    {"references-deep", "Share >= 0.5 && (Total > 100)"},
};

class Fixture
{
public:
    Fixture()
    {
        m_live = std::make_shared<ZWLiveValues>();
        m_live->Set(QStringLiteral("m1.energy"), 1250.5);
        m_live->Set(QStringLiteral("m2.power"), 4200.0);
        ZWDriverSupport::SetStore(m_live);
        ZWLoggerInfo info;
        info.AddVariable(QStringLiteral("m1.energy"));
        info.AddVariable(QStringLiteral("m1.energy:first"));
        info.AddVariable(QStringLiteral("m2.power"));
        m_data.Setup(info);
        const ZWDateTime begin = ZWDateTime::FromDMY(2024, 1, 1);
        m_data.SetData(begin, ZWDateTime::FromDMY(2024, 2, 1), ZWDataRecord{begin, {1250.5, 1180.25, 4200.0}});
        ZWFormulaLibrary::Build({QStringLiteral("Energy"), QStringLiteral("Cost"), QStringLiteral("Fixed"),
                                    QStringLiteral("Total"), QStringLiteral("Share")},
            {QStringLiteral("[m1.energy] - [m1.energy:first]"), QStringLiteral("Energy * 0.1432"),
                QStringLiteral("12.5"), QStringLiteral("Cost + Fixed"), QStringLiteral("Cost / Total")},
            m_library);
    }
    const XmlDocument* Library() const { return &m_library; }
    ZWLoggerData* Data() { return &m_data; }

private:
    std::shared_ptr<ZWLiveValues> m_live;
    ZWLoggerData m_data;
    XmlDocument m_library;
};

Fixture& Shared()
{
    static Fixture fixture;
    return fixture;
}

void OursCheck(benchmark::State& state, const char* text)
{
    const QString formula = QString::fromUtf8(text);
    for (auto _ : state) {
        ZWEvaluator evaluator(formula);
        benchmark::DoNotOptimize(evaluator.AnalizeExpression());
    }
}

void OursEvaluate(benchmark::State& state, const char* text)
{
    ZWEvaluator evaluator(QString::fromUtf8(text));
    if (evaluator.AnalizeExpression() == -1) {
        state.SkipWithError("invalid formula");
        return;
    }
    evaluator.SetFormules(Shared().Library());
    evaluator.SetLoggerData(Shared().Data());
    double value = 0;
    int valueType = 0;
    if (evaluator.Evaluate(value, valueType) != 0) {
        state.SkipWithError("evaluation failed");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(evaluator.Evaluate(value, valueType));
        benchmark::DoNotOptimize(value);
    }
}

void MuCheck(benchmark::State& state, const char* text)
{
    const std::string formula = text;
    for (auto _ : state) {
        mu::Parser parser;
        parser.EnableOptimizer(false);
        parser.SetExpr(formula);
        benchmark::DoNotOptimize(parser.Eval()); // muparser parses on the first Eval
    }
}

void MuEvaluate(benchmark::State& state, const char* text)
{
    mu::Parser parser;
    parser.EnableOptimizer(false);
    parser.SetExpr(text);
    parser.Eval();
    for (auto _ : state)
        benchmark::DoNotOptimize(parser.Eval());
}

// Collects the time per iteration of every run, to print ratios at the end.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        // With repetitions the median stands for the benchmark.
        for (const Run& run : runs) {
            if (run.error_occurred)
                continue;
            if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
                m_times[run.run_name.function_name] = run.GetAdjustedCPUTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void PrintRatios() const
    {
        std::printf("\nours / muparser (CPU time per operation, same run):\n");
        double productCheck = 1, productEval = 1;
        int checks = 0, evaluations = 0;
        for (const Formula& f : kFormulas) {
            const auto get = [&](const std::string& key) {
                const auto it = m_times.find(key + f.name);
                return it == m_times.end() ? 0.0 : it->second;
            };
            const double oc = get("Check/ours/"), mc = get("Check/muparser/");
            const double oe = get("Evaluate/ours/"), me = get("Evaluate/muparser/");
            std::printf("  %-10s", f.name);
            if (oc > 0 && mc > 0) {
                std::printf("  check %5.2fx (%6.0f ns vs %6.0f ns)", oc / mc, oc, mc);
                productCheck *= oc / mc;
                ++checks;
            }
            if (oe > 0 && me > 0) {
                std::printf("  evaluate %5.2fx (%5.1f ns vs %5.1f ns)", oe / me, oe, me);
                productEval *= oe / me;
                ++evaluations;
            }
            std::printf("\n");
        }
        if (checks > 0)
            std::printf("  geometric mean, check:    %.2fx\n", std::pow(productCheck, 1.0 / checks));
        if (evaluations > 0)
            std::printf("  geometric mean, evaluate: %.2fx\n", std::pow(productEval, 1.0 / evaluations));
        std::fflush(stdout);
    }

private:
    std::map<std::string, double> m_times;
};

} // namespace

int main(int argc, char** argv)
{
    for (const Formula& f : kFormulas) {
        benchmark::RegisterBenchmark((std::string("Check/ours/") + f.name).c_str(), OursCheck, f.ours);
        benchmark::RegisterBenchmark((std::string("Check/muparser/") + f.name).c_str(), MuCheck, f.muparser);
    }
    for (const Formula& f : kFormulas) {
        benchmark::RegisterBenchmark((std::string("Evaluate/ours/") + f.name).c_str(), OursEvaluate, f.ours);
        benchmark::RegisterBenchmark((std::string("Evaluate/muparser/") + f.name).c_str(), MuEvaluate, f.muparser);
    }
    for (const auto& [name, text] : kOurOnly) {
        benchmark::RegisterBenchmark((std::string("Check/ours/") + name).c_str(), OursCheck, text);
        benchmark::RegisterBenchmark((std::string("Evaluate/ours/") + name).c_str(), OursEvaluate, text);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios();
    benchmark::Shutdown();
    return 0;
}
