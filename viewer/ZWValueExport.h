#pragma once

#include "host/core/XmlDocument.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

// A report's value document in the forms other programs read: the document
// itself (xml), JSON, CSV and an Excel workbook (xlsx). The design, when
// given, lends what the value document does not carry: the formula of a
// formula card, the number formats, the titles of charts and table columns.
//
// CSV and the workbook's "Values" sheet hold one row per shown value: the
// card id, its kind (the value document's element name), a text saying
// which value it is (the formula of a formula card, "series (label)" for a
// chart point, "column (row label)" for a table cell) and the value as the
// value document has it. The workbook adds one sheet per chart and table,
// its labels down the first column and one column per series or column.
class ZWValueExport
{
public:
    enum class Format { Xml, Json, Csv, Xlsx };

    // "xml", "json", "csv", "xlsx" (any letter case).
    static std::optional<Format> FormatFromName(const QString& name);
    // The format a file name's extension asks for.
    static std::optional<Format> FormatOfPath(const QString& path);

    // Reads `values` (a value document, root "fields"). False, with the
    // reason in Error(), when it is no value document.
    bool Read(const QByteArray& values, const XmlDocument& design = XmlDocument());
    QString Error() const { return m_error; }

    QByteArray Xml() const { return m_xml; }
    QByteArray Json() const;
    QByteArray Csv() const;
    // The workbook's bytes; false (with `error`) when it cannot be made.
    bool Xlsx(QByteArray& out, QString& error) const;
    QByteArray Bytes(Format format, QString& error) const;

    // Writes the values in `format` to `path` atomically: a file that cannot
    // be written completely leaves what was there before.
    bool Write(const QString& path, Format format, QString& error) const;

    // One CSV field (RFC 4180): quoted when it holds a comma, a quote or a
    // line break, its quotes doubled.
    static QString CsvField(const QString& text);
    // The Excel number format of a card's number format ("03.02", ".2"...);
    // empty when the card shows numbers as they come (General).
    static QString ExcelNumberFormat(const QString& format, bool thousandSeparator);
    // A number as a card shows it (the locale's separators), read back;
    // nullopt when the text is no finite number ("***", a formula's text).
    static std::optional<double> ReadShownNumber(const QString& text);
    // A sheet name that Excel accepts (at most 31 characters, none of
    // []:*?/\, no apostrophe at either end, not "History"), made unique
    // among `taken` (compared in any letter case), which receives it.
    static QString SheetName(const QString& wanted, QStringList& taken);

    // One shown value, as a CSV row or a row of the "Values" sheet.
    struct Row
    {
        QString id;
        QString kind;
        QString text;
        QString value;
        // The value as a number, when it is one, and the Excel number format
        // it is shown with.
        std::optional<double> number;
        QString numberFormat;
    };
    std::vector<Row> Rows() const;

private:
    struct NumberFormat
    {
        QString format;
        bool thousands = false;
        QString Excel() const;
    };
    struct Series
    {
        QString title;
        std::vector<std::optional<double>> values;
    };
    struct TableRow
    {
        QString label;
        QStringList cells;
    };
    struct Entry
    {
        QString kind;
        QString id;
        QString value;
        bool hasValue = false;
        // What the design says of the card: its formula, its date field.
        QString text;
        NumberFormat number;
        // A conditioned card's alternative (empty id: none holds).
        QString altKind;
        QString altId;
        QString altValue;
        NumberFormat altNumber;
        // Charts and tables.
        QString title;
        QString labelTitle;
        QStringList labels;
        std::vector<Series> series;
        std::vector<TableRow> rows;
        std::optional<TableRow> total;
        QStringList columnTitles;
        std::vector<NumberFormat> columnFormats;
        QString error;
    };

    static QString PointText(const QString& title, const QString& label);
    QString ColumnTitle(const Entry& e, size_t column) const;

    QByteArray m_xml;
    std::vector<Entry> m_entries;
    QString m_error;
};
