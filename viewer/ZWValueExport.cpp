#include "viewer/ZWValueExport.h"

#include "host/core/ZWLocale.h"
#include "template/ZWCardFormule.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QSaveFile>
#include <QTemporaryDir>
#include <cmath>
#include <map>
#include <xlsxwriter.h>

namespace {

const QString kFormule = QStringLiteral("formule");
const QString kDate = QStringLiteral("date");
const QString kLabel = QStringLiteral("label");
const QString kImage = QStringLiteral("image");
const QString kConditioned = QStringLiteral("conditioned");
const QString kChart = QStringLiteral("chart");
const QString kTable = QStringLiteral("table");

bool IsCardKind(const QString& name)
{
    return name == kFormule || name == kDate || name == kLabel || name == kImage || name == kConditioned
        || name == kChart || name == kTable;
}

// Every card element of the design by its id, alternatives of conditioned
// cards included; the first of an id wins, as in the page windows.
void IndexCards(const XmlDocument::XmlNode& node, QHash<QString, XmlDocument::XmlNode>& cards, int depth = 0)
{
    if (depth > 64)
        return;
    for (const XmlDocument::XmlNode& child : node.Children()) {
        if (IsCardKind(child.Name()) && child.HasNode(QStringLiteral("id"))) {
            const QString id = child.Value(QStringLiteral("id"));
            if (!cards.contains(id))
                cards.insert(id, child);
        }
        IndexCards(child, cards, depth + 1);
    }
}

// The series values of a chart: ';'-separated C-locale numbers, empty for
// no value.
std::vector<std::optional<double>> ReadSeriesValues(const QString& text)
{
    std::vector<std::optional<double>> values;
    if (text.isEmpty())
        return values;
    for (const QString& part : text.split(QLatin1Char(';'))) {
        bool ok = false;
        const double v = part.trimmed().toDouble(&ok);
        values.push_back(ok && std::isfinite(v) ? std::optional<double>(v) : std::nullopt);
    }
    return values;
}

QString SeriesValueText(const std::optional<double>& v)
{
    return v ? QString::number(*v, 'g', QLocale::FloatingPointShortest) : QString();
}

QJsonValue JsonNumber(const std::optional<double>& v)
{
    return v ? QJsonValue(*v) : QJsonValue(QJsonValue::Null);
}

// Texts for libxlsxwriter: UTF-8, within Excel's limit of a cell.
QByteArray Utf8Cell(const QString& text)
{
    constexpr qsizetype kMaxCell = 32767;
    return (text.size() > kMaxCell ? text.left(kMaxCell) : text).toUtf8();
}

} // namespace

std::optional<ZWValueExport::Format> ZWValueExport::FormatFromName(const QString& name)
{
    const QString n = name.toLower();
    if (n == QLatin1String("xml"))
        return Format::Xml;
    if (n == QLatin1String("json"))
        return Format::Json;
    if (n == QLatin1String("csv"))
        return Format::Csv;
    if (n == QLatin1String("xlsx"))
        return Format::Xlsx;
    return std::nullopt;
}

std::optional<ZWValueExport::Format> ZWValueExport::FormatOfPath(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    return suffix.isEmpty() ? std::nullopt : FormatFromName(suffix);
}

QString ZWValueExport::NumberFormat::Excel() const
{
    return ExcelNumberFormat(format, thousands);
}

bool ZWValueExport::Read(const QByteArray& values, const XmlDocument& design)
{
    m_entries.clear();
    m_error.clear();
    m_xml = values;
    XmlDocument doc;
    if (!doc.Parse(values)) {
        m_error = doc.ErrorString();
        return false;
    }
    if (doc.Root().Name() != QLatin1String("fields")) {
        m_error = QStringLiteral("the root element is \"%1\", not \"fields\"").arg(doc.Root().Name());
        return false;
    }
    QHash<QString, XmlDocument::XmlNode> cards;
    if (!design.IsEmpty())
        IndexCards(design.Root(), cards);
    const auto numberFormat = [](const XmlDocument::XmlNode& card) {
        // A formula card without a format shows three decimals.
        return NumberFormat{card.Value(QStringLiteral("format"), QStringLiteral(".3")),
            card.Value(QStringLiteral("thousandSeparator")) == QLatin1String("T")};
    };

    for (const XmlDocument::XmlNode& element : doc.Root().Children()) {
        Entry e;
        e.kind = element.Name();
        e.id = element.Value(QStringLiteral("id"));
        e.hasValue = element.HasNode(QStringLiteral("value"));
        e.value = element.Value(QStringLiteral("value"));
        const XmlDocument::XmlNode card = cards.value(e.id);
        if (e.kind == kFormule) {
            e.text = card.Value(QStringLiteral("value"));
            e.number = numberFormat(card);
        } else if (e.kind == kDate) {
            e.text = card.Value(QStringLiteral("field"));
        } else if (e.kind == kConditioned) {
            for (const QString& kind : {kLabel, kImage, kDate, kFormule}) {
                const XmlDocument::XmlNode alt = element.Node(kind);
                if (alt.IsNull())
                    continue;
                e.altKind = kind;
                e.altId = alt.Value(QStringLiteral("id"));
                const XmlDocument::XmlNode altCard = cards.value(e.altId);
                // A label alternative shows its own text.
                e.altValue = kind == kLabel ? altCard.Value(QStringLiteral("value"))
                    : kind == kImage        ? QString()
                                            : alt.Value(QStringLiteral("value"));
                if (kind == kFormule)
                    e.altNumber = numberFormat(altCard);
                break;
            }
        } else if (e.kind == kChart) {
            e.title = card.Value(QStringLiteral("title"));
            e.labelTitle = card.Value(QStringLiteral("xTitle"));
            e.number = {card.Value(QStringLiteral("format")),
                card.Value(QStringLiteral("thousandSeparator")) == QLatin1String("T")};
            for (const XmlDocument::XmlNode& label : element.Nodes(QStringLiteral("label")))
                e.labels << label.Text();
            for (const XmlDocument::XmlNode& s : element.Nodes(QStringLiteral("series")))
                e.series.push_back(
                    {s.Value(QStringLiteral("title")), ReadSeriesValues(s.Value(QStringLiteral("values")))});
            e.error = element.Value(QStringLiteral("error"));
        } else if (e.kind == kTable) {
            e.labelTitle = card.Value(QStringLiteral("labelTitle"));
            for (const XmlDocument::XmlNode& column : card.Nodes(QStringLiteral("column"))) {
                e.columnTitles << column.Value(QStringLiteral("title"));
                e.columnFormats.push_back({column.Value(QStringLiteral("format")),
                    column.Value(QStringLiteral("thousandSeparator")) == QLatin1String("T")});
            }
            const auto readRow = [](const XmlDocument::XmlNode& row) {
                TableRow r{row.Value(QStringLiteral("label")), {}};
                for (const XmlDocument::XmlNode& cell : row.Nodes(QStringLiteral("cell")))
                    r.cells << cell.Text();
                return r;
            };
            for (const XmlDocument::XmlNode& row : element.Nodes(QStringLiteral("row")))
                e.rows.push_back(readRow(row));
            if (const XmlDocument::XmlNode total = element.Node(QStringLiteral("total")); !total.IsNull())
                e.total = readRow(total);
            e.error = element.Value(QStringLiteral("error"));
        }
        m_entries.push_back(std::move(e));
    }
    return true;
}

QString ZWValueExport::PointText(const QString& title, const QString& label)
{
    if (title.isEmpty())
        return label;
    return QStringLiteral("%1 (%2)").arg(title, label);
}

QString ZWValueExport::ColumnTitle(const Entry& e, size_t column) const
{
    if (column < size_t(e.columnTitles.size()) && !e.columnTitles[qsizetype(column)].isEmpty())
        return e.columnTitles[qsizetype(column)];
    return QStringLiteral("%1").arg(column + 1);
}

std::vector<ZWValueExport::Row> ZWValueExport::Rows() const
{
    std::vector<Row> rows;
    const auto shown = [](Row row, const NumberFormat& format) {
        row.number = ReadShownNumber(row.value);
        if (row.number)
            row.numberFormat = format.Excel();
        return row;
    };
    for (const Entry& e : m_entries) {
        if (e.kind == kChart) {
            const QString chartFormat = e.number.format.isEmpty() ? QString() : e.number.Excel();
            for (const Series& s : e.series)
                for (size_t i = 0; i < s.values.size(); ++i) {
                    const QString label = i < size_t(e.labels.size()) ? e.labels[qsizetype(i)] : QString();
                    rows.push_back({e.id, e.kind, PointText(s.title, label), SeriesValueText(s.values[i]), s.values[i],
                        s.values[i] ? chartFormat : QString()});
                }
        } else if (e.kind == kTable) {
            std::vector<TableRow> all = e.rows;
            if (e.total)
                all.push_back(*e.total);
            for (const TableRow& r : all)
                for (qsizetype c = 0; c < r.cells.size(); ++c) {
                    const NumberFormat format
                        = size_t(c) < e.columnFormats.size() ? e.columnFormats[size_t(c)] : NumberFormat{};
                    rows.push_back(shown(
                        {e.id, e.kind, PointText(ColumnTitle(e, size_t(c)), r.label), r.cells[c], {}, {}}, format));
                }
        } else if (e.kind == kConditioned) {
            Row row{e.id, e.kind, e.altId, e.altValue, {}, {}};
            rows.push_back(e.altKind == kFormule ? shown(row, e.altNumber) : row);
            continue;
        } else {
            // An image's value is the picture itself: no cell's business.
            Row row{e.id, e.kind, e.text, e.kind == kImage ? QString() : e.value, {}, {}};
            rows.push_back(e.kind == kFormule ? shown(row, e.number) : row);
            continue;
        }
        if (!e.error.isEmpty())
            rows.push_back({e.id, e.kind, QStringLiteral("error"), e.error, {}, {}});
    }
    return rows;
}

QByteArray ZWValueExport::Json() const
{
    QJsonArray cards;
    for (const Entry& e : m_entries) {
        QJsonObject o{{QStringLiteral("id"), e.id}, {QStringLiteral("kind"), e.kind}};
        if (e.kind == kFormule || e.kind == kDate || e.kind == kLabel) {
            if (e.hasValue)
                o.insert(QStringLiteral("value"), e.value);
            if (!e.text.isEmpty())
                o.insert(QStringLiteral("text"), e.text);
            if (e.kind == kFormule)
                if (const std::optional<double> n = ReadShownNumber(e.value))
                    o.insert(QStringLiteral("number"), *n);
        } else if (e.kind == kConditioned) {
            if (e.altId.isEmpty() && e.altKind.isEmpty()) {
                o.insert(QStringLiteral("alternative"), QJsonValue::Null);
            } else {
                QJsonObject alt{{QStringLiteral("id"), e.altId}, {QStringLiteral("kind"), e.altKind}};
                if (e.altKind != kImage)
                    alt.insert(QStringLiteral("value"), e.altValue);
                o.insert(QStringLiteral("alternative"), alt);
            }
        } else if (e.kind == kChart) {
            if (!e.title.isEmpty())
                o.insert(QStringLiteral("title"), e.title);
            o.insert(QStringLiteral("labels"), QJsonArray::fromStringList(e.labels));
            QJsonArray series;
            for (const Series& s : e.series) {
                QJsonArray values;
                for (const std::optional<double>& v : s.values)
                    values.append(JsonNumber(v));
                series.append(QJsonObject{{QStringLiteral("title"), s.title}, {QStringLiteral("values"), values}});
            }
            o.insert(QStringLiteral("series"), series);
        } else if (e.kind == kTable) {
            if (!e.columnTitles.isEmpty())
                o.insert(QStringLiteral("columns"), QJsonArray::fromStringList(e.columnTitles));
            const auto row = [](const TableRow& r) {
                return QJsonObject{
                    {QStringLiteral("label"), r.label}, {QStringLiteral("cells"), QJsonArray::fromStringList(r.cells)}};
            };
            QJsonArray rows;
            for (const TableRow& r : e.rows)
                rows.append(row(r));
            o.insert(QStringLiteral("rows"), rows);
            if (e.total)
                o.insert(QStringLiteral("total"), row(*e.total));
        }
        if (!e.error.isEmpty())
            o.insert(QStringLiteral("error"), e.error);
        cards.append(o);
    }
    return QJsonDocument(cards).toJson(QJsonDocument::Compact) + '\n';
}

QString ZWValueExport::CsvField(const QString& text)
{
    static const QString special = QStringLiteral(",\"\r\n");
    bool quote = false;
    for (const QChar c : text)
        if (special.contains(c)) {
            quote = true;
            break;
        }
    if (!quote)
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QByteArray ZWValueExport::Csv() const
{
    QString out = QStringLiteral("id,kind,text,value\r\n");
    for (const Row& r : Rows())
        out += QStringList{CsvField(r.id), CsvField(r.kind), CsvField(r.text), CsvField(r.value)}.join(QLatin1Char(','))
            + QStringLiteral("\r\n");
    return out.toUtf8();
}

QString ZWValueExport::ExcelNumberFormat(const QString& format, bool thousandSeparator)
{
    int integerDigits = -1, decimals = 3;
    bool fillIntegerZeros = false, fillDecimalZeros = false;
    ZWCardFormule::ParseFormat(format, integerDigits, decimals, fillIntegerZeros, fillDecimalZeros);
    // The integer part: as many zeros as a zero-filled width asks for, one
    // otherwise; grouping needs a comma between digit placeholders.
    const int zeros = fillIntegerZeros ? std::max(1, integerDigits) : 1;
    QString integer;
    if (!thousandSeparator) {
        integer = QString(zeros, QLatin1Char('0'));
    } else if (zeros <= 3) {
        integer = QStringLiteral("#,##0");
        for (int i = 1; i < zeros; ++i)
            integer[integer.size() - 1 - i] = QLatin1Char('0');
    } else {
        integer = QString(zeros, QLatin1Char('0'));
        integer.insert(zeros - 3, QLatin1Char(','));
    }
    if (decimals < 0) {
        // Up to five decimals: Excel's General does that without grouping.
        return thousandSeparator || fillIntegerZeros ? integer + QStringLiteral(".#####") : QString();
    }
    // Excel's optional digits ("#") leave a bare decimal point on whole
    // numbers, so the decimals are always shown.
    if (decimals == 0)
        return integer;
    return integer + QLatin1Char('.') + QString(decimals, QLatin1Char('0'));
}

std::optional<double> ZWValueExport::ReadShownNumber(const QString& text)
{
    const ZWLocaleInfo locale = LocaleInformationWide();
    QString t = text.trimmed();
    if (t.isEmpty())
        return std::nullopt;
    if (!locale.thousandSeparator.isEmpty() && locale.thousandSeparator != locale.decimalSeparator)
        t.remove(locale.thousandSeparator);
    if (!locale.decimalSeparator.isEmpty() && locale.decimalSeparator != QLatin1String("."))
        t.replace(locale.decimalSeparator, QStringLiteral("."));
    // Digits, one point and a leading sign only: "inf", "1e5" and a
    // formula's text stay texts.
    int points = 0;
    for (qsizetype i = 0; i < t.size(); ++i) {
        const QChar c = t.at(i);
        if (c == QLatin1Char('.'))
            ++points;
        else if (!(c.isDigit() && c.unicode() < 128) && !(i == 0 && c == QLatin1Char('-')))
            return std::nullopt;
    }
    bool ok = false;
    const double v = t.toDouble(&ok);
    if (!ok || points > 1 || !std::isfinite(v))
        return std::nullopt;
    return v;
}

QString ZWValueExport::SheetName(const QString& wanted, QStringList& taken)
{
    constexpr qsizetype kMax = 31;
    QString name;
    for (const QChar c : wanted) {
        if (QStringLiteral("[]:*?/\\").contains(c) || c.category() == QChar::Other_Control)
            name += QLatin1Char('_');
        else
            name += c;
    }
    while (name.startsWith(QLatin1Char('\'')))
        name.remove(0, 1);
    name = name.left(kMax);
    while (name.endsWith(QLatin1Char('\'')))
        name.chop(1);
    name = name.trimmed();
    if (name.isEmpty() || name.compare(QLatin1String("History"), Qt::CaseInsensitive) == 0)
        name = name.isEmpty() ? QStringLiteral("Sheet") : name + QStringLiteral(" 1");
    const auto isTaken = [&taken](const QString& n) { return taken.contains(n, Qt::CaseInsensitive); };
    QString unique = name;
    for (int k = 2; isTaken(unique); ++k) {
        const QString suffix = QStringLiteral(" (%1)").arg(k);
        unique = name.left(kMax - suffix.size()).trimmed() + suffix;
    }
    taken << unique;
    return unique;
}

bool ZWValueExport::Xlsx(QByteArray& out, QString& error) const
{
    // libxlsxwriter writes to a file of its own: a private folder, whose
    // bytes then go where they belong atomically.
    QTemporaryDir dir;
    if (!dir.isValid()) {
        error = dir.errorString();
        return false;
    }
    const QByteArray path = QFile::encodeName(dir.filePath(QStringLiteral("values.xlsx")));
    lxw_workbook_options options{};
    const QByteArray tmpdir = QFile::encodeName(dir.path());
    options.tmpdir = const_cast<char*>(tmpdir.constData());
    lxw_workbook* workbook = workbook_new_opt(path.constData(), &options);
    if (!workbook) {
        error = QStringLiteral("cannot start the workbook");
        return false;
    }
    lxw_format* bold = workbook_add_format(workbook);
    format_set_bold(bold);
    std::map<QString, lxw_format*> formats;
    const auto numberFormat = [&](const QString& excel, bool strong) -> lxw_format* {
        if (excel.isEmpty())
            return strong ? bold : nullptr;
        const QString key = excel + (strong ? QStringLiteral("\n1") : QString());
        auto it = formats.find(key);
        if (it == formats.end()) {
            lxw_format* f = workbook_add_format(workbook);
            format_set_num_format(f, excel.toUtf8().constData());
            if (strong)
                format_set_bold(f);
            it = formats.emplace(key, f).first;
        }
        return it->second;
    };
    const auto text = [](lxw_worksheet* sheet, lxw_row_t row, lxw_col_t col, const QString& t, lxw_format* f) {
        if (!t.isEmpty())
            worksheet_write_string(sheet, row, col, Utf8Cell(t).constData(), f);
    };
    // A cell that shows a number holds the number.
    const auto cell = [&](lxw_worksheet* sheet, lxw_row_t row, lxw_col_t col, const QString& shown,
                          std::optional<double> number, const QString& excel, bool strong) {
        if (number)
            worksheet_write_number(sheet, row, col, *number, numberFormat(excel, strong));
        else
            text(sheet, row, col, shown, strong ? bold : nullptr);
    };

    QStringList taken;
    lxw_worksheet* values
        = workbook_add_worksheet(workbook, SheetName(QStringLiteral("Values"), taken).toUtf8().constData());
    const char* headers[] = {"id", "kind", "text", "value"};
    for (lxw_col_t c = 0; c < 4; ++c)
        worksheet_write_string(values, 0, c, headers[c], bold);
    lxw_row_t r = 1;
    for (const Row& row : Rows()) {
        text(values, r, 0, row.id, nullptr);
        text(values, r, 1, row.kind, nullptr);
        text(values, r, 2, row.text, nullptr);
        cell(values, r, 3, row.value, row.number, row.numberFormat, false);
        ++r;
    }
    worksheet_set_column(values, 0, 0, 40, nullptr);
    worksheet_set_column(values, 1, 1, 12, nullptr);
    worksheet_set_column(values, 2, 2, 40, nullptr);
    worksheet_set_column(values, 3, 3, 16, nullptr);

    int charts = 0, tables = 0;
    for (const Entry& e : m_entries) {
        if (e.kind != kChart && e.kind != kTable)
            continue;
        const bool chart = e.kind == kChart;
        const int ordinal = chart ? ++charts : ++tables;
        QString wanted = chart ? e.title : QString();
        if (wanted.isEmpty())
            wanted
                = QStringLiteral("%1 %2").arg(chart ? QStringLiteral("Chart") : QStringLiteral("Table")).arg(ordinal);
        lxw_worksheet* sheet = workbook_add_worksheet(workbook, SheetName(wanted, taken).toUtf8().constData());
        if (!sheet) {
            workbook_close(workbook);
            error = QStringLiteral("cannot add the sheet of card %1").arg(e.id);
            return false;
        }
        text(sheet, 0, 0, e.labelTitle, bold);
        lxw_row_t row = 1;
        if (chart) {
            const QString excel = e.number.format.isEmpty() ? QString() : e.number.Excel();
            for (size_t s = 0; s < e.series.size(); ++s)
                text(sheet, 0, lxw_col_t(s + 1), e.series[s].title, bold);
            size_t points = size_t(e.labels.size());
            for (const Series& s : e.series)
                points = std::max(points, s.values.size());
            for (size_t i = 0; i < points; ++i, ++row) {
                if (i < size_t(e.labels.size()))
                    text(sheet, row, 0, e.labels[qsizetype(i)], nullptr);
                for (size_t s = 0; s < e.series.size(); ++s)
                    if (i < e.series[s].values.size() && e.series[s].values[i])
                        worksheet_write_number(
                            sheet, row, lxw_col_t(s + 1), *e.series[s].values[i], numberFormat(excel, false));
            }
        } else {
            qsizetype columns = e.columnTitles.size();
            for (const TableRow& tr : e.rows)
                columns = std::max(columns, tr.cells.size());
            for (qsizetype c = 0; c < columns; ++c)
                text(sheet, 0, lxw_col_t(c + 1), ColumnTitle(e, size_t(c)), bold);
            const auto writeRow = [&](const TableRow& tr, bool strong) {
                text(sheet, row, 0, tr.label, strong ? bold : nullptr);
                for (qsizetype c = 0; c < tr.cells.size(); ++c) {
                    const QString excel
                        = size_t(c) < e.columnFormats.size() ? e.columnFormats[size_t(c)].Excel() : QString();
                    cell(sheet, row, lxw_col_t(c + 1), tr.cells[c], ReadShownNumber(tr.cells[c]), excel, strong);
                }
                ++row;
            };
            for (const TableRow& tr : e.rows)
                writeRow(tr, false);
            if (e.total)
                writeRow(*e.total, true);
        }
        if (!e.error.isEmpty())
            text(sheet, row + 1, 0, e.error, nullptr);
        worksheet_set_column(sheet, 0, 0, 16, nullptr);
    }

    const lxw_error result = workbook_close(workbook);
    if (result != LXW_NO_ERROR) {
        error = QString::fromUtf8(lxw_strerror(result));
        return false;
    }
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return false;
    }
    out = file.readAll();
    return true;
}

QByteArray ZWValueExport::Bytes(Format format, QString& error) const
{
    switch (format) {
    case Format::Xml:
        return m_xml;
    case Format::Json:
        return Json();
    case Format::Csv:
        return Csv();
    case Format::Xlsx: {
        QByteArray out;
        if (!Xlsx(out, error))
            return QByteArray();
        return out;
    }
    }
    return QByteArray();
}

bool ZWValueExport::Write(const QString& path, Format format, QString& error) const
{
    error.clear();
    const QByteArray bytes = Bytes(format, error);
    if (!error.isEmpty())
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = file.errorString();
        return false;
    }
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        error = file.errorString();
        file.cancelWriting();
        return false;
    }
    return true;
}
