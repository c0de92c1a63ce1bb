#include "viewer/ZWReportData.h"

#include "formula/ZWEvaluator.h"
#include "formula/ZWToken.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWLocale.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWSimpleXml.h"
#include "host/core/ZWTextId.h"
#include "template/ZWCardFormule.h"
#include "template/ZWFormat.h"
#include "template/ZWReportLimits.h"
#include "viewer/ZWReportFiles.h"

#include <QFileInfo>

namespace {

const QString kDefaultDateFormat = QStringLiteral("dd/MM/yyyy hh:mm:ss");

QString ShortDateTime(const ZWDateTime& t)
{
    return LocaleInformationWide().locale.toString(t.ToLocalQDateTime(), QLocale::ShortFormat);
}

} // namespace

ZWReportData::ZWReportData()
{
    m_design.Create(QStringLiteral("design"));
}

ZWReportData::~ZWReportData() = default;

bool ZWReportData::GetDesign(QString& name)
{
    name = ZWReportFiles::ReportPath(name.isEmpty() ? ZWReportFiles::LastReport() : name);
    m_design.Reset();
    m_designError.clear();
    if (!name.isEmpty() && m_design.Load(name)) {
        // Other XML (a style file, a value document) would show a blank report.
        const QString problem = m_design.Root().Name() != QLatin1String("design")
            ? ZWLoadString(ZWTextId::ReportRootNotDesign).arg(m_design.Root().Name())
            : ZWReportLimits::Problem(m_design);
        if (problem.isEmpty())
            return true;
        m_designError = QStringLiteral("%1: %2").arg(name, problem);
        m_design.Create(QStringLiteral("design"));
        return false;
    }
    m_designError = name.isEmpty() ? QStringLiteral("no report was named and none was opened before")
                                   : QStringLiteral("%1: %2").arg(name, m_design.ErrorString());
    m_design.Create(QStringLiteral("design"));
    return false;
}

void ZWReportData::SetDesign(const XmlDocument& design)
{
    m_design = design;
    m_designError.clear();
    SetupLoggerData();
}

bool ZWReportData::GetLoggerInfo(ZWLoggerInfo& info)
{
    info.DeleteAll();
    if (m_design.IsEmpty())
        return false;
    const XmlDocument::XmlNode root = m_design.Root();
    m_formules.Reset();
    for (const XmlDocument::XmlNode& library : root.Nodes(QStringLiteral("formules"))) {
        m_formules.Parse(library.ToXml());
        for (const XmlDocument::XmlNode& formule : m_formules.Root().Nodes(QStringLiteral("formule"))) {
            const XmlDocument::XmlNode text = formule.Node(QStringLiteral("/text"));
            if (!text.IsNull())
                AddDeviceVariables(text.Text(), info, false);
        }
    }
    for (const XmlDocument::XmlNode& page : root.Nodes(QStringLiteral("page"))) {
        for (const XmlDocument::XmlNode& card : page.Children()) {
            if (card.Name() == QLatin1String("formule")) {
                const XmlDocument::XmlNode value = card.Node(QStringLiteral("/value"));
                if (!value.IsNull())
                    AddDeviceVariables(value.Text(), info, false);
            } else if (card.Name() == QLatin1String("conditioned")) {
                // Only the first alternative's condition is scanned; the
                // variables of the others reach the list through the library.
                const XmlDocument::XmlNode condition = card.Node(QStringLiteral("/control/condition"));
                if (!condition.IsNull())
                    AddDeviceVariables(condition.Text(), info, true);
            }
        }
    }
    return true;
}

void ZWReportData::AddDeviceVariables(const QString& expression, ZWLoggerInfo& info, bool isCondition)
{
    ZWEvaluator evaluator(expression);
    if (evaluator.AnalizeExpression() != (isCondition ? 1 : 0))
        return;
    std::vector<ZWToken> tokens;
    evaluator.GetDeviceVariables(tokens);
    for (const ZWToken& token : tokens) {
        if (token.GetType() != 21)
            continue;
        const QString name = token.GetValue();
        if (!info.Contains(name))
            info.AddVariable(name);
    }
}

bool ZWReportData::Setup(QString& name)
{
    const bool loaded = GetDesign(name);
    SetupLoggerData();
    return loaded;
}

void ZWReportData::SetupLoggerData()
{
    GetLoggerInfo(m_info);
    m_series.Collect(m_design, &m_formules);
    if (!m_loggerData)
        m_loggerData = std::make_unique<ZWLoggerData>();
    m_loggerData->Setup(m_info);
}

void ZWReportData::SetLoggerData(std::unique_ptr<ZWLoggerData> data)
{
    m_loggerData = std::move(data);
    if (m_loggerData)
        m_loggerData->Setup(m_info);
}

ZWDateTime ZWReportData::Now() const
{
    return m_now.IsValid() ? m_now : ZWDateTime::LTC();
}

bool ZWReportData::SetupDataWork(bool reload, ZWProgress* progress)
{
    m_error.clear();
    bool ok = true;
    if (reload && m_loggerData) {
        m_notice.clear();
        if (!m_loggerData->SelectData(m_period.Start(), m_period.End(), progress)) {
            m_error = m_loggerData->LastError();
            ok = false;
        } else if (!SelectSeries(progress)) {
            ok = false;
        } else if (m_info.GetCount() > 0) {
            if (m_loggerData->StoreHoldsNoVariables())
                m_notice = ZWLoadString(ZWTextId::NoVariables);
            else if (!m_loggerData->HasAnyValue())
                m_notice = ZWLoadString(ZWTextId::NoLoggedData)
                               .arg(ShortDateTime(m_period.Start()), ShortDateTime(m_period.End()));
        }
    }
    GetDatabaseValues(m_values, progress);
    return ok;
}

bool ZWReportData::SelectSeries(ZWProgress* progress)
{
    if (m_series.IsEmpty())
        return true;
    const std::shared_ptr<ZWLoggerStore> store = m_loggerData->Store();
    if (!store) {
        m_series.Clear();
        return true;
    }
    return m_series.Select(*store, m_period.Start(), m_period.End(), progress, &m_error);
}

bool ZWReportData::GetDatabaseValues(QByteArray& out, ZWProgress* progress)
{
    const std::vector<XmlDocument::XmlNode> pages = m_design.Root().Nodes(QStringLiteral("page"));
    const int pageCount = int(pages.size());
    if (progress) {
        progress->SetText(ZWLoadString(ZWTextId::ComputingValues));
        progress->SetRange(0, pageCount * 100);
    }
    ZWSimpleXml xml;
    xml.Open(QStringLiteral("fields"));
    for (int i = 0; i < pageCount; ++i) {
        const std::vector<XmlDocument::XmlNode> cards = pages[size_t(i)].Children();
        const int n = int(cards.size());
        for (int j = 0; j < n; ++j) {
            if (progress)
                progress->SetPos(i * 100 + (j * 100) / n);
            const XmlDocument::XmlNode& card = cards[size_t(j)];
            const QString kind = card.Name();
            const QString id = card.Value(QStringLiteral("/id"));
            if (kind == QLatin1String("date") || kind == QLatin1String("formule")) {
                const QString value = kind == QLatin1String("date") ? GetDateValue(card) : GetFormuleValue(card);
                if (!value.isEmpty()) {
                    xml.Open(kind);
                    xml.Add(QStringLiteral("id"), id);
                    xml.Add(QStringLiteral("value"), value);
                    xml.Close(kind);
                }
            } else if (kind == QLatin1String("chart") || kind == QLatin1String("table")) {
                m_series.WriteCard(card, xml);
            } else if (kind == QLatin1String("conditioned")) {
                xml.Open(kind);
                xml.Add(QStringLiteral("id"), id);
                GetConditionedControl(card, xml);
                xml.Close(kind);
            }
        }
    }
    xml.Close(QStringLiteral("fields"));
    out = xml.GetXml();
    if (progress)
        progress->SetPos(pageCount * 100);
    return true;
}

QString ZWReportData::GetFormuleValue(const XmlDocument::XmlNode& card)
{
    const XmlDocument::XmlNode id = card.Node(QStringLiteral("/id"));
    const XmlDocument::XmlNode formula = card.Node(QStringLiteral("/value"));
    if (id.IsNull() || formula.IsNull())
        return QString();
    const QString text = formula.Text();
    ZWEvaluator evaluator(text);
    if (evaluator.AnalizeExpression() != 0)
        return QString();
    evaluator.SetFormules(m_formules.IsEmpty() ? nullptr : &m_formules);
    evaluator.SetLoggerData(m_loggerData.get());
    double result = 0.0;
    int valueType = 0;
    if (evaluator.Evaluate(result, valueType) != 0)
        return text;
    return ZWCardFormule::FormatNumber(result, card.Value(QStringLiteral("/format"), QStringLiteral(".3")),
        card.Value(QStringLiteral("/thousandSeparator")) == QLatin1String("T"));
}

QString ZWReportData::GetDateValue(const XmlDocument::XmlNode& card)
{
    if (card.Node(QStringLiteral("/id")).IsNull())
        return QString();
    const QString format = card.Value(QStringLiteral("/format"), kDefaultDateFormat);
    const XmlDocument::XmlNode field = card.Node(QStringLiteral("/field"));
    QString out;
    if (!field.IsNull()) {
        const QString which = field.Text();
        ZWDateTime date;
        if (which == QLatin1String("ACTUAL_DATE"))
            date = Now();
        else if (which == QLatin1String("BEGIN_DATE"))
            date = m_period.Start();
        else if (which == QLatin1String("END_DATE"))
            date = m_period.End();
        else
            return QString();
        ZWFormat::ParseDate(out, format, date);
        return out;
    }
    const QString value = card.Value(QStringLiteral("/value"));
    ZWDateTime date;
    if (String2DateTime(date, value)) {
        ZWFormat::ParseDate(out, format, date);
        return out;
    }
    return value;
}

bool ZWReportData::GetConditionedControl(const XmlDocument::XmlNode& card, ZWSimpleXml& xml)
{
    static const QString kinds[]
        = {QStringLiteral("label"), QStringLiteral("image"), QStringLiteral("date"), QStringLiteral("formule")};
    for (const XmlDocument::XmlNode& control : card.Nodes(QStringLiteral("control"))) {
        const XmlDocument::XmlNode condition = control.Node(QStringLiteral("/condition"));
        if (condition.IsNull())
            continue;
        ZWEvaluator evaluator(condition.Text());
        if (evaluator.AnalizeExpression() != 1)
            continue;
        evaluator.SetFormules(m_formules.IsEmpty() ? nullptr : &m_formules);
        evaluator.SetLoggerData(m_loggerData.get());
        double result = 0.0;
        int valueType = 0;
        const bool holds = evaluator.Evaluate(result, valueType) == 0 && valueType == 1 && result == 1.0;
        if (!holds)
            continue;
        for (const XmlDocument::XmlNode& child : control.Children()) {
            const QString kind = child.Name();
            if (std::find(std::begin(kinds), std::end(kinds), kind) == std::end(kinds))
                continue;
            const QString id = child.Value(QStringLiteral("/id"));
            QString value;
            if (kind == QLatin1String("date"))
                value = GetDateValue(child);
            else if (kind == QLatin1String("formule"))
                value = GetFormuleValue(child);
            const bool withValue = kind == QLatin1String("date") || kind == QLatin1String("formule");
            if (!withValue || !value.isEmpty()) {
                xml.Open(kind);
                xml.Add(QStringLiteral("id"), id);
                if (withValue)
                    xml.Add(QStringLiteral("value"), value);
                xml.Close(kind);
            }
            return true;
        }
    }
    return false;
}
