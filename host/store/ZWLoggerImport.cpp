#include "host/store/ZWLoggerImport.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerWriter.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>
#include <cmath>

ZWLoggerImport::ZWLoggerImport(ZWSqlLoggerStore& store) : m_store(store)
{}

void ZWLoggerImport::SetCounters(const QStringList& names)
{
    m_counters = QSet<QString>(names.begin(), names.end());
}

bool ZWLoggerImport::SplitCsvLine(const QString& line, QStringList& cells)
{
    cells.clear();
    QString cell;
    bool quoted = false;
    bool wasQuoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar ch = line[i];
        if (quoted) {
            if (ch == QLatin1Char('"')) {
                if (i + 1 < line.size() && line[i + 1] == QLatin1Char('"')) {
                    cell += ch;
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                cell += ch;
            }
        } else if (ch == QLatin1Char('"') && cell.trimmed().isEmpty() && !wasQuoted) {
            cell.clear();
            quoted = true;
            wasQuoted = true;
        } else if (ch == QLatin1Char(',')) {
            cells << (wasQuoted ? cell : cell.trimmed());
            cell.clear();
            wasQuoted = false;
        } else if (!wasQuoted || !ch.isSpace()) {
            cell += ch;
        }
    }
    if (quoted)
        return false;
    cells << (wasQuoted ? cell : cell.trimmed());
    return true;
}

bool ZWLoggerImport::ParseTime(const QString& text, qint64& utc)
{
    static const QRegularExpression iso(
        QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})(?:[T ](\\d{2}):(\\d{2})(?::(\\d{2})(?:[.,]\\d+)?)?)?"
                       "\\s*(Z|[+-]\\d{2}(?::?\\d{2})?)?$"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = iso.match(text.trimmed());
    if (!m.hasMatch())
        return false;
    const auto part = [&m](int i) { return m.captured(i).isEmpty() ? 0 : m.captured(i).toInt(); };
    const ZWDateTime wall = ZWDateTime::FromDMY(part(1), part(2), part(3), part(4), part(5), part(6));
    if (!wall.IsValid())
        return false;
    const QString zone = m.captured(7);
    if (zone.isEmpty()) {
        utc = ZWLocalTime::ToUtc(wall);
        return true;
    }
    qint64 offset = 0;
    if (zone.compare(QLatin1String("Z"), Qt::CaseInsensitive) != 0) {
        const QString digits = zone.mid(1).remove(QLatin1Char(':'));
        const int hours = digits.left(2).toInt();
        const int minutes = digits.size() > 2 ? digits.mid(2, 2).toInt() : 0;
        if (hours > 23 || minutes > 59)
            return false;
        offset = (hours * 3600 + minutes * 60) * (zone.startsWith(QLatin1Char('-')) ? -1 : 1);
    }
    utc = wall.Seconds() - offset;
    return true;
}

QString ZWLoggerImport::Quoted(const QString& cell)
{
    const QString head = cell.left(QuoteChars);
    QString out;
    out.reserve(head.size());
    for (const QChar ch : head) {
        if (ch.unicode() < 0x20 || ch.unicode() == 0x7F)
            out += QStringLiteral("\\u%1").arg(ch.unicode(), 4, 16, QLatin1Char('0'));
        else
            out += ch;
    }
    if (cell.size() > QuoteChars)
        out += ZWLoadString(ZWTextId::ImportCellCut).arg(cell.size());
    return out;
}

QString ZWLoggerImport::ControlCharacter(const QString& name)
{
    for (const QChar ch : name)
        if (ch.unicode() < 0x20 || ch.unicode() == 0x7F)
            return QStringLiteral("U+%1").arg(ch.unicode(), 4, 16, QLatin1Char('0')).toUpper();
    return QString();
}

namespace {

// Lines of a text stream ending with LF, CR LF or a lone CR (old Mac files);
// a line longer than the bound stops the reading.
class LineReader
{
public:
    explicit LineReader(QTextStream& in) : m_in(in) {}

    // The next line into `line`; false at the end or when a line is too long
    // (TooLong() then says so).
    bool Next(QString& line)
    {
        line.clear();
        bool any = false;
        for (;;) {
            if (m_pos >= m_buffer.size() && !Fill())
                return any;
            any = true;
            const qsizetype start = m_pos;
            while (
                m_pos < m_buffer.size() && m_buffer[m_pos] != QLatin1Char('\n') && m_buffer[m_pos] != QLatin1Char('\r'))
                ++m_pos;
            line += QStringView(m_buffer).mid(start, m_pos - start);
            if (line.size() > ZWLoggerImport::MaxLineChars) {
                m_tooLong = true;
                return false;
            }
            if (m_pos < m_buffer.size()) {
                const bool cr = m_buffer[m_pos] == QLatin1Char('\r');
                ++m_pos;
                // CR LF is one line end, even across two reads.
                if (cr && (m_pos < m_buffer.size() || Fill()) && m_buffer[m_pos] == QLatin1Char('\n'))
                    ++m_pos;
                return true;
            }
        }
    }
    bool TooLong() const { return m_tooLong; }

private:
    bool Fill()
    {
        if (m_in.atEnd())
            return false;
        m_buffer = m_in.read(64 * 1024);
        m_pos = 0;
        return !m_buffer.isEmpty();
    }

    QTextStream& m_in;
    QString m_buffer;
    qsizetype m_pos = 0;
    bool m_tooLong = false;
};

} // namespace

bool ZWLoggerImport::ImportFile(const QString& path, ZWProgress* progress, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = ZWLoadString(ZWTextId::ImportErrorAt)
                         .arg(path)
                         .arg(0)
                         .arg(ZWLoadString(ZWTextId::ImportCannotOpen).arg(file.errorString()));
        return false;
    }
    return Import(file, QFileInfo(path).fileName(), file.size(), progress, error);
}

bool ZWLoggerImport::Import(
    QIODevice& device, const QString& sourceName, qint64 totalBytes, ZWProgress* progress, QString* error)
{
    m_samples = m_rows = 0;
    m_variables = m_created = 0;
    qint64 line = 0;
    const auto bad = [&](const QString& why) {
        if (error)
            *error = ZWLoadString(ZWTextId::ImportErrorAt).arg(sourceName).arg(line).arg(why);
        return false;
    };
    QTextStream in(&device);
    in.setEncoding(QStringConverter::Utf8);
    if (progress) {
        progress->SetText(ZWLoadString(ZWTextId::ImportProgress).arg(sourceName));
        progress->SetRange(0, 1000);
        progress->SetPos(0);
    }

    LineReader lines(in);
    const auto tooLong = [&] { return bad(ZWLoadString(ZWTextId::ImportLineTooLong).arg(MaxLineChars)); };

    // The header.
    QString text;
    QStringList cells;
    while (lines.Next(text)) {
        ++line;
        if (!text.trimmed().isEmpty())
            break;
    }
    if (lines.TooLong()) {
        ++line;
        return tooLong();
    }
    if (text.trimmed().isEmpty())
        return bad(ZWLoadString(ZWTextId::ImportEmptyFile));
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    if (!SplitCsvLine(text, cells))
        return bad(ZWLoadString(ZWTextId::ImportUnclosedQuote));
    if (cells.first().compare(QLatin1String("time"), Qt::CaseInsensitive) != 0)
        return bad(ZWLoadString(ZWTextId::ImportHeaderWithoutTime));
    if (cells.size() - 1 > MaxColumns)
        return bad(ZWLoadString(ZWTextId::ImportTooManyColumns).arg(cells.size() - 1).arg(MaxColumns));
    const QStringList names = cells.mid(1);
    QSet<QString> seen;
    seen.reserve(names.size());
    for (int i = 0; i < names.size(); ++i) {
        if (names[i].isEmpty())
            return bad(ZWLoadString(ZWTextId::ImportColumnWithoutName).arg(i + 2));
        if (seen.contains(names[i]))
            return bad(ZWLoadString(ZWTextId::ImportDuplicateColumn).arg(Quoted(names[i])));
        seen.insert(names[i]);
        const QString control = ControlCharacter(names[i]);
        if (!control.isEmpty())
            return bad(ZWLoadString(ZWTextId::ImportControlCharacter).arg(Quoted(names[i]), control));
        const qsizetype dot = names[i].indexOf(QLatin1Char('.'));
        if (dot <= 0 || dot == names[i].size() - 1)
            return bad(ZWLoadString(ZWTextId::ImportNotADeviceVariable).arg(Quoted(names[i])));
    }

    ZWLoggerWriter writer(m_store);
    QString why;
    if (!writer.Begin(&why))
        return bad(why);
    std::vector<qint64> ids;
    for (const QString& name : names) {
        const bool counter = m_counters.contains(name);
        qint64 id = 0;
        bool created = false;
        if (!writer.EnsureVariable(name, counter ? ZWSqlLoggerStore::Kind::Counter : ZWSqlLoggerStore::Kind::Gauge,
                QString(), counter, id, created, &why))
            return bad(why);
        ids.push_back(id);
        m_created += created ? 1 : 0;
    }
    m_variables = int(names.size());

    qint64 lastShown = 0;
    for (;;) {
        if (!lines.Next(text)) {
            if (lines.TooLong()) {
                ++line;
                return tooLong();
            }
            break;
        }
        ++line;
        if (text.trimmed().isEmpty())
            continue;
        if (!SplitCsvLine(text, cells))
            return bad(ZWLoadString(ZWTextId::ImportUnclosedQuote));
        if (cells.size() != names.size() + 1)
            return bad(ZWLoadString(ZWTextId::ImportCellCount).arg(cells.size()).arg(names.size() + 1));
        qint64 t = 0;
        if (!ParseTime(cells[0], t))
            return bad(ZWLoadString(ZWTextId::ImportNotADateTime).arg(Quoted(cells[0])));
        if (t < 0)
            return bad(ZWLoadString(ZWTextId::ImportBefore1970));
        for (int i = 0; i < names.size(); ++i) {
            const QString& cell = cells[i + 1];
            if (cell.isEmpty())
                continue;
            bool ok = false;
            const double value = cell.toDouble(&ok);
            if (!ok || !std::isfinite(value))
                return bad(ZWLoadString(ZWTextId::ImportNotANumber).arg(Quoted(cell)));
            if (!writer.Add(ids[size_t(i)], t, value, &why))
                return bad(why);
            ++m_samples;
        }
        ++m_rows;
        if (progress && totalBytes > 0 && (m_rows & 1023) == 0) {
            const qint64 pos = device.pos();
            if (pos - lastShown > totalBytes / 200) {
                lastShown = pos;
                progress->SetPos(int(std::min<qint64>(1000, pos * 1000 / totalBytes)));
            }
            if (progress->IsCancelled())
                return bad(ZWLoadString(ZWTextId::ImportCancelled));
        }
    }
    if (!writer.Commit(&why))
        return bad(why);
    if (progress) {
        progress->SetPos(1000);
        progress->End(true);
    }
    return true;
}
