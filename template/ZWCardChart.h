#pragma once

#include "template/ZWCardControl.h"

#include <QStringList>
#include <vector>

// A chart of one or more series over the sub-periods of the report's period
// (hours, days, weeks or months): grouped bars, stacked bars or lines, with a
// value axis in the card's number format, category labels by a date
// pattern, titles and a legend. A series with a shift ("-1", "-1y") is the
// same kind of formula over an earlier period and is drawn lighter (bars) or
// dashed (lines) beside the one it is compared with. The report puts the
// labels and values in (SetValues); without them the card draws sample data.
class ZWCardChart : public ZWCardControl
{
public:
    enum class Type { Bar, Stacked, Line };

    struct Series
    {
        QString title;
        QString formula;
        quint32 color = 0x000000;
        // Empty: the report's period; else a shift such as "-1" or "-1y".
        QString shift;
        bool operator==(const Series&) const = default;
    };

    ZWCardChart();

    const char* GetRuntimeClass() const override;
    bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const override;
    bool GetFromXml(const XmlDocument::XmlNode& element) override;
    void Draw(QPainter& dc, const tagDraw& draw) override;
    std::unique_ptr<ZWCardControl> GetClone() const override;

    static QString TypeName(Type type);
    // False (and `type` unchanged) for a name that is none of the types.
    static bool TypeFromName(const QString& name, Type& type);
    // The units of the sub-periods, as the file names them.
    static const QStringList& UnitNames();
    // The colour a new series takes, by its position.
    static quint32 DefaultColor(int index);

    // The report's values: one label per sub-period, one list of values per
    // series in card order (the no-value marker where there is none), or
    // the reason there are none.
    void SetValues(QStringList labels, std::vector<std::vector<double>> values, QString error = QString());
    void ClearValues();
    bool HasValues() const { return m_hasValues; }
    const QStringList& Labels() const { return m_labels; }
    const std::vector<std::vector<double>>& Values() const { return m_values; }
    const QString& Error() const { return m_error; }

    // Where the last Draw put the plot (device pixels, unturned), for the
    // designer and tests.
    QRectF PlotRect() const { return m_plot; }

    static constexpr int MaxSeries = 20;
    static constexpr int MaxPoints = 1000;

    Type type = Type::Bar;
    QString unit = QStringLiteral("day");
    QString title;
    QString xTitle;
    QString yTitle;
    // The value axis's number format (a formula card's format string).
    QString format = QStringLiteral(".1");
    bool thousandSeparator = false;
    // The date pattern of the category labels.
    QString labelFormat = QStringLiteral("dd");
    bool legend = true;
    QString font = QStringLiteral("Arial");
    double size = 8.0;
    std::vector<Series> series;
    // A quarter turn with a printed page (+1 right, −1 left); not stored.
    int turn = 0;

private:
    QStringList m_labels;
    std::vector<std::vector<double>> m_values;
    QString m_error;
    bool m_hasValues = false;
    QRectF m_plot;
};
