#pragma once

#include "formula/ZWToken.h"
#include "host/core/XmlDocument.h"

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class ZWLiveValues;
class ZWLoggerData;

namespace zwtest {

// Everything one check-and-evaluate of a formula tells.
struct Evaluation
{
    int analyze = -1;
    int code = -1;
    double value = 0.0;
    int valueType = -1;
    QStringList undefined;
};

struct EvaluationOptions
{
    const XmlDocument* formulas = nullptr;
    ZWLoggerData* loggerData = nullptr;
    bool discriminators = true;
};

Evaluation Evaluate(const QString& formula, const EvaluationOptions& options = {});

// "DivideByZero (10)": a result code as a test reports it.
std::string CodeName(int code);

// A library document from (name, text) pairs, in order.
std::unique_ptr<XmlDocument> Library(const std::vector<std::pair<QString, QString>>& formulas);

// Installs an in-process store of live device values for the lifetime of
// the object; the host knows no other device variable.
class LiveValuesScope
{
public:
    LiveValuesScope();
    ~LiveValuesScope();
    void Set(const QString& name, std::optional<double> value);

private:
    std::shared_ptr<ZWLiveValues> m_store;
};

} // namespace zwtest
