#pragma once

#include "template/ZWCardControl.h"

#include <QStringList>
#include <vector>

// A table of one row per sub-period of the report's period and one column
// per formula, with a header row, a label column, striped rows, a grid and a
// totals row. Rows that do not fit the card are cut at its bottom with a row
// that says how many more there were. The report puts the formatted rows in
// (SetRows); without them the card draws sample rows.
class ZWCardTable : public ZWCardControl
{
public:
    enum class Total { None, Sum, Mean, Min, Max };

    struct Column
    {
        QString title;
        QString formula;
        // A formula card's format string.
        QString format = QStringLiteral(".2");
        bool thousandSeparator = false;
        QString shift;
        // Empty: the table's rule; else the name of a Total.
        QString total;
        bool operator==(const Column&) const = default;
    };

    struct Row
    {
        QString label;
        QStringList cells;
        bool operator==(const Row&) const = default;
    };

    ZWCardTable();

    const char* GetRuntimeClass() const override;
    bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const override;
    bool GetFromXml(const XmlDocument::XmlNode& element) override;
    void Draw(QPainter& dc, const tagDraw& draw) override;
    std::unique_ptr<ZWCardControl> GetClone() const override;

    static QString TotalName(Total total);
    // False (and `total` unchanged) for a name that is none of the rules.
    static bool TotalFromName(const QString& name, Total& total);
    // The rule of column `index`: its own when it has a valid one, else the
    // table's.
    Total ColumnTotal(int index) const;

    // The report's rows, the totals row (when `hasTotal`) and the reason
    // there are none. At most MaxRows rows are kept.
    void SetRows(std::vector<Row> rows, bool hasTotal, Row totalRow, QString error = QString());
    void ClearValues();
    bool HasValues() const { return m_hasValues; }
    const std::vector<Row>& Rows() const { return m_rows; }
    bool HasTotalRow() const { return m_hasTotal; }
    const Row& TotalRow() const { return m_total; }
    const QString& Error() const { return m_error; }
    // How many data rows the last Draw showed (the rest were cut).
    int DrawnRows() const { return m_drawnRows; }

    static constexpr int MaxColumns = 20;
    static constexpr int MaxRows = 100;

    QString unit = QStringLiteral("day");
    QString labelFormat = QStringLiteral("dd/MM");
    QString labelTitle;
    QString font = QStringLiteral("Arial");
    double size = 8.0;
    quint32 headerColor = ZWRGB(221, 227, 234);
    quint32 stripeColor = ZWRGB(244, 246, 248);
    quint32 gridColor = ZWRGB(170, 170, 170);
    Total total = Total::Sum;
    QString totalTitle;
    std::vector<Column> columns;
    // A quarter turn with a printed page (+1 right, −1 left); not stored.
    int turn = 0;

private:
    std::vector<Row> m_rows;
    Row m_total;
    bool m_hasTotal = false;
    QString m_error;
    bool m_hasValues = false;
    int m_drawnRows = 0;
};
