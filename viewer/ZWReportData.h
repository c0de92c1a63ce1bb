#pragma once

#include "host/core/XmlDocument.h"
#include "host/drivers/ZWLoggerData.h"
#include "host/drivers/ZWLoggerInfo.h"
#include "viewer/ZWReportPeriod.h"
#include "viewer/ZWSeriesGathering.h"

#include <QByteArray>
#include <QString>
#include <memory>

class ZWProgress;
class ZWSimpleXml;

// What the viewer dialog knows of a report apart from its windows: the
// design, its formula library, the logged data and the period. It finds the
// device variables the report needs, gathers their data for the period and
// computes every formula, date and conditioned card into the value document
// that the page windows apply.
class ZWReportData
{
public:
    ZWReportData();
    ~ZWReportData();

    // Loads the design. An empty name means the last report ("LastInforme");
    // other names lead to a file as ZWReportFiles::ReportPath says. A file
    // that cannot be loaded, or XML whose root is not "design", gives an
    // empty design (root "design"); false tells the caller so (DesignError
    // says why), so that callers can refuse it before gathering anything.
    bool GetDesign(QString& name);
    // Uses a design already in memory (the editor's, a test's), as Setup
    // does with a file.
    void SetDesign(const XmlDocument& design);
    const XmlDocument& Design() const { return m_design; }
    const XmlDocument& Formules() const { return m_formules; }
    QString DesignError() const { return m_designError; }

    // Fills `info` with the device variables the template needs.
    bool GetLoggerInfo(ZWLoggerInfo& info);
    static void AddDeviceVariables(const QString& expression, ZWLoggerInfo& info, bool isCondition);

    // Loads the design, finds its variables and sets the logger data up.
    bool Setup(QString& name);
    // The device variables of the design (found by Setup or SetDesign).
    const ZWLoggerInfo& LoggerInfo() const { return m_info; }
    // The logged data the report reads (owned; created by Setup).
    ZWLoggerData* LoggerData() const { return m_loggerData.get(); }
    void SetLoggerData(std::unique_ptr<ZWLoggerData> data);

    ZWReportPeriod& Period() { return m_period; }
    const ZWReportPeriod& Period() const { return m_period; }
    // The present, for ACTUAL_DATE cards; the clock unless set.
    void SetNow(const ZWDateTime& now) { m_now = now; }
    ZWDateTime Now() const;

    // The gathering behind every period change: selects the logged data of
    // the period again when `reload` is set, then builds the value document.
    // False when the logged data could not be read (LastError says why);
    // the value document is built anyway, with the values it could compute.
    bool SetupDataWork(bool reload, ZWProgress* progress);
    const QByteArray& ValueDocument() const { return m_values; }
    QString LastError() const { return m_error; }
    // What the last selection found that the values alone do not tell: the
    // database holds no variables, or none of the report's variables has
    // data in the period. Empty when there is nothing to say.
    QString Notice() const { return m_notice; }

    // The value document for the current period into `out`.
    bool GetDatabaseValues(QByteArray& out, ZWProgress* progress);
    // The text of one card element of the design (empty when it has none).
    QString GetFormuleValue(const XmlDocument::XmlNode& card);
    QString GetDateValue(const XmlDocument::XmlNode& card);
    // Writes the alternative of a conditioned card that holds; true when one held.
    bool GetConditionedControl(const XmlDocument::XmlNode& card, ZWSimpleXml& xml);

private:
    void SetupLoggerData();
    // Reads the sub-period values of the chart and table cards.
    bool SelectSeries(ZWProgress* progress);

    XmlDocument m_design;
    XmlDocument m_formules;
    QString m_designError;
    std::unique_ptr<ZWLoggerData> m_loggerData;
    ZWLoggerInfo m_info;
    ZWSeriesGathering m_series;
    ZWReportPeriod m_period;
    ZWDateTime m_now;
    QByteArray m_values;
    QString m_error;
    QString m_notice;
};
