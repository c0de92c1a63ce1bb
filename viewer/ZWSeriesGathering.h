#pragma once

#include "host/core/XmlDocument.h"
#include "host/drivers/ZWLoggerStore.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <map>
#include <utility>

class ZWProgress;
class ZWSimpleXml;

// The values of a report's chart and table cards: each of their formulas
// evaluated once per sub-period (hour, day, week or month) of the report's
// period, or of that period shifted back for a comparison series. Collect
// finds what the cards need, Select reads it from the store with one series
// query per (unit, shift) for the whole report, WriteCard puts a card's
// labels and values into the value document.
class ZWSeriesGathering
{
public:
    static constexpr int MaxTableRows = 100;

    // Finds the chart and table cards of the design and the device variables
    // their formulas need (through the formula library too).
    void Collect(const XmlDocument& design, const XmlDocument* formules);
    bool IsEmpty() const { return m_requests.empty(); }

    // Reads every sub-period of [start, end) (and of its shifted periods).
    // False (with `error`) when the store could not be read; cards whose
    // points would be too many get their error text instead.
    bool Select(
        ZWLoggerStore& store, const ZWDateTime& start, const ZWDateTime& end, ZWProgress* progress, QString* error);
    // Forgets what Select read (no period: the cards show their samples).
    void Clear();

    // Writes the "chart" or "table" entry of `card` into the value document;
    // nothing when Select has not read the card's unit.
    void WriteCard(const XmlDocument::XmlNode& card, ZWSimpleXml& xml) const;

private:
    using Key = std::pair<QString, QString>; // unit name, shift ("" or "-1y"...)
    struct Request
    {
        QStringList names;
    };
    struct Result
    {
        ZWSeries series;
        QString error;
    };
    // The values of one formula at every sub-period of the key's series; no
    // value where it cannot be computed.
    std::vector<double> Evaluate(const QString& formula, const Key& key, size_t points) const;
    void AddVariables(const QString& formula, QStringList& names, int depth) const;

    const XmlDocument* m_formules = nullptr;
    std::map<Key, Request> m_requests;
    std::map<Key, Result> m_results;
    // Sub-period starts of the unshifted period per unit: the labels.
    QHash<QString, std::vector<ZWDateTime>> m_bounds;
};
