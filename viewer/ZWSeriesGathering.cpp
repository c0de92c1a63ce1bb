#include "viewer/ZWSeriesGathering.h"

#include "formula/ZWEvaluator.h"
#include "formula/ZWToken.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWSimpleXml.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWLoggerData.h"
#include "host/drivers/ZWLoggerInfo.h"
#include "host/drivers/ZWPeriodShift.h"
#include "template/ZWCardFormule.h"
#include "template/ZWFormat.h"

#include <QtDebug>
#include <algorithm>
#include <cmath>

namespace {

// The elements that hold a card's formulas, and what a card's rows are.
struct Layout
{
    QLatin1StringView item;
    QLatin1StringView defaultLabelFormat;
};

Layout LayoutOf(const QString& kind)
{
    if (kind == QLatin1String("table"))
        return {QLatin1StringView("column"), QLatin1StringView("dd/MM")};
    return {QLatin1StringView("series"), QLatin1StringView("dd")};
}

bool IsSeriesCard(const QString& kind)
{
    return kind == QLatin1String("chart") || kind == QLatin1String("table");
}

QString UnitOf(const XmlDocument::XmlNode& card)
{
    const QString text = card.Value(QStringLiteral("/unit"), QStringLiteral("day")).trimmed().toLower();
    ZWSeriesUnit unit;
    return ZWSeriesUnitFromName(text, unit) ? text : QStringLiteral("day");
}

QString ShiftOf(const XmlDocument::XmlNode& item)
{
    return item.Value(QStringLiteral("/shift")).trimmed();
}

// A number as the value document carries it: 15 significant digits, so that
// sums of readings show as 6.6 rather than 6.6000000000000005.
QString NumberText(double value)
{
    return IsNoValue(value) ? QString() : QString::number(value, 'g', 15);
}

QString Formatted(double value, const XmlDocument::XmlNode& item)
{
    if (IsNoValue(value))
        return QString();
    return ZWCardFormule::FormatNumber(value, item.Value(QStringLiteral("/format"), QStringLiteral(".3")),
        item.Value(QStringLiteral("/thousandSeparator")) == QLatin1String("T"));
}

// The total of a column's defined values by the rule ("sum", "mean", "min",
// "max"); no value when the column has none.
double Total(const std::vector<double>& values, const QString& rule)
{
    double acc = ZW_NO_VALUE;
    int n = 0;
    for (const double v : values) {
        if (IsNoValue(v) || !std::isfinite(v))
            continue;
        if (n == 0)
            acc = v;
        else if (rule == QLatin1String("min"))
            acc = std::min(acc, v);
        else if (rule == QLatin1String("max"))
            acc = std::max(acc, v);
        else
            acc += v;
        ++n;
    }
    if (n > 0 && rule == QLatin1String("mean"))
        acc /= n;
    return acc;
}

constexpr int MaxReferenceDepth = 100;

} // namespace

void ZWSeriesGathering::Clear()
{
    m_results.clear();
    m_bounds.clear();
}

void ZWSeriesGathering::AddVariables(const QString& formula, QStringList& names, int depth) const
{
    if (depth > MaxReferenceDepth)
        return;
    ZWEvaluator evaluator(formula);
    if (evaluator.AnalizeExpression() < 0)
        return;
    std::vector<ZWToken> tokens;
    evaluator.GetDeviceVariables(tokens);
    for (const ZWToken& token : tokens) {
        if (token.GetType() == 21 && !names.contains(token.GetValue()))
            names.append(token.GetValue());
    }
    // Formulas of the library that this one refers to read variables too.
    std::vector<ZWBasicString> references;
    if (!m_formules || !evaluator.GetFormules(references))
        return;
    for (const ZWBasicString& name : references) {
        const XmlDocument::XmlNode node = m_formules->Node(QStringLiteral("/formule?name=%s?"), name);
        if (!node.IsNull())
            AddVariables(node.Value(QStringLiteral("/text")), names, depth + 1);
    }
}

void ZWSeriesGathering::Collect(const XmlDocument& design, const XmlDocument* formules)
{
    m_formules = formules && !formules->IsEmpty() ? formules : nullptr;
    m_requests.clear();
    Clear();
    if (design.IsEmpty())
        return;
    for (const XmlDocument::XmlNode& page : design.Root().Nodes(QStringLiteral("page"))) {
        for (const XmlDocument::XmlNode& card : page.Children()) {
            if (!IsSeriesCard(card.Name()))
                continue;
            const QString unit = UnitOf(card);
            // The unshifted series is always read: its bounds are the labels.
            m_requests[{unit, QString()}];
            for (const XmlDocument::XmlNode& item : card.Nodes(LayoutOf(card.Name()).item)) {
                Request& request = m_requests[{unit, ShiftOf(item)}];
                AddVariables(item.Value(QStringLiteral("/formula")), request.names, 0);
            }
        }
    }
}

bool ZWSeriesGathering::Select(
    ZWLoggerStore& store, const ZWDateTime& start, const ZWDateTime& end, ZWProgress* progress, QString* error)
{
    Clear();
    if (m_requests.empty() || !start.IsValid() || !end.IsValid() || !(start < end))
        return true;
    bool ok = true;
    for (const auto& [key, request] : m_requests) {
        const auto& [unitName, shiftText] = key;
        ZWSeriesUnit unit = ZWSeriesUnit::Day;
        ZWSeriesUnitFromName(unitName, unit);
        Result& result = m_results[key];
        ZWDateTime from = start;
        ZWDateTime to = end;
        if (!shiftText.isEmpty()) {
            ZWPeriodShift shift;
            if (!ZWPeriodShift::ParseShift(shiftText, shift)) {
                result.error = ZWLoadString(ZWTextId::SeriesBadShift).arg(shiftText);
                continue;
            }
            shift.Apply(from, to);
        }
        const std::vector<ZWDateTime> bounds = ZWLoggerStore::SubPeriodBounds(from, to, unit);
        if (shiftText.isEmpty())
            m_bounds.insert(unitName, bounds);
        if (bounds.size() > size_t(ZWLoggerStore::MaxSeriesPoints) + 1) {
            result.error = ZWLoggerStore::TooManyPointsMessage(from, to, unit);
            qWarning().noquote() << result.error;
            continue;
        }
        if (request.names.isEmpty()) {
            result.series.bounds = bounds;
            result.series.values.assign(bounds.empty() ? 0 : bounds.size() - 1, {});
            continue;
        }
        QString why;
        if (!store.SeriesValues(request.names, from, to, unit, result.series, progress, &why)) {
            result.error = why;
            if (error && error->isEmpty())
                *error = why;
            ok = false;
        }
        if (progress && progress->IsCancelled())
            return false;
    }
    return ok;
}

std::vector<double> ZWSeriesGathering::Evaluate(const QString& formula, const Key& key, size_t points) const
{
    std::vector<double> out(points, ZW_NO_VALUE);
    const auto found = m_results.find(key);
    const auto request = m_requests.find(key);
    if (found == m_results.end() || request == m_requests.end() || !found->second.error.isEmpty())
        return out;
    ZWEvaluator evaluator(formula);
    if (evaluator.AnalizeExpression() != 0)
        return out;
    evaluator.SetFormules(m_formules);
    const ZWSeries& series = found->second.series;
    ZWLoggerInfo info;
    for (const QString& name : request->second.names)
        info.AddVariable(name);
    // One record per sub-period, read by the formula as if it were the
    // report's period.
    ZWLoggerData data(nullptr);
    data.Setup(info);
    const size_t n = std::min(points, series.values.size());
    for (size_t i = 0; i < n; ++i) {
        ZWDataRecord record{series.bounds[i], series.values[i]};
        record.values.resize(size_t(info.GetCount()), ZW_NO_VALUE);
        data.SetData(series.bounds[i], series.bounds[i + 1], record);
        evaluator.SetLoggerData(&data);
        double value = 0.0;
        int valueType = 0;
        if (evaluator.Evaluate(value, valueType) == 0 && valueType == 0)
            out[i] = value;
    }
    return out;
}

void ZWSeriesGathering::WriteCard(const XmlDocument::XmlNode& card, ZWSimpleXml& xml) const
{
    const QString kind = card.Name();
    if (!IsSeriesCard(kind))
        return;
    const QString unit = UnitOf(card);
    const auto bounds = m_bounds.constFind(unit);
    if (bounds == m_bounds.constEnd())
        return;
    const Layout layout = LayoutOf(kind);
    const bool table = kind == QLatin1String("table");
    const size_t points = bounds->empty() ? 0 : bounds->size() - 1;

    xml.Open(kind);
    xml.Add(QStringLiteral("id"), card.Value(QStringLiteral("/id")));
    QString error = m_results.at({unit, QString()}).error;
    if (error.isEmpty() && table && points > size_t(MaxTableRows)) {
        error = ZWLoadString(ZWTextId::SeriesTooManyRows).arg(points).arg(MaxTableRows);
        qWarning().noquote() << error;
    }
    const std::vector<XmlDocument::XmlNode> items = card.Nodes(layout.item);
    for (const XmlDocument::XmlNode& item : items) {
        const auto found = m_results.find({unit, ShiftOf(item)});
        if (error.isEmpty() && found != m_results.end())
            error = found->second.error;
    }
    if (!error.isEmpty()) {
        xml.Add(QStringLiteral("error"), error);
        xml.Close(kind);
        return;
    }

    const QString labelFormat = card.Value(QStringLiteral("/labelFormat"), QString(layout.defaultLabelFormat));
    std::vector<QString> labels;
    for (size_t i = 0; i < points; ++i)
        labels.push_back(ZWFormat::ParseDate(labelFormat, (*bounds)[i]));
    std::vector<std::vector<double>> columns;
    for (const XmlDocument::XmlNode& item : items)
        columns.push_back(Evaluate(item.Value(QStringLiteral("/formula")), {unit, ShiftOf(item)}, points));

    if (!table) {
        for (const QString& label : labels)
            xml.Add(QStringLiteral("label"), label);
        for (size_t s = 0; s < items.size(); ++s) {
            QStringList texts;
            for (const double v : columns[s])
                texts << NumberText(v);
            xml.Open(QStringLiteral("series"));
            xml.Add(QStringLiteral("title"), items[s].Value(QStringLiteral("/title")));
            xml.Add(QStringLiteral("values"), texts.join(QLatin1Char(';')));
            xml.Close(QStringLiteral("series"));
        }
        xml.Close(kind);
        return;
    }

    for (size_t r = 0; r < points; ++r) {
        xml.Open(QStringLiteral("row"));
        xml.Add(QStringLiteral("label"), labels[r]);
        for (size_t c = 0; c < items.size(); ++c)
            xml.Add(QStringLiteral("cell"), Formatted(columns[c][r], items[c]));
        xml.Close(QStringLiteral("row"));
    }
    const QString rule = card.Value(QStringLiteral("/total"), QStringLiteral("sum")).trimmed().toLower();
    if (rule != QLatin1String("none")) {
        xml.Open(QStringLiteral("total"));
        xml.Add(
            QStringLiteral("label"), card.Value(QStringLiteral("/totalTitle"), ZWLoadString(ZWTextId::SeriesTotal)));
        for (size_t c = 0; c < items.size(); ++c) {
            const QString own = items[c].Value(QStringLiteral("/total")).trimmed().toLower();
            const QString columnRule = own.isEmpty() ? rule : own;
            xml.Add(QStringLiteral("cell"),
                columnRule == QLatin1String("none") ? QString() : Formatted(Total(columns[c], columnRule), items[c]));
        }
        xml.Close(QStringLiteral("total"));
    }
    xml.Close(kind);
}
