#include "app/commands/ZWOutputPattern.h"

bool ZWOutputPattern::Parse(const QString& pattern, QString& error)
{
    m_parts.clear();
    qsizetype i = 0;
    while (i < pattern.size()) {
        const qsizetype open = pattern.indexOf(QLatin1Char('{'), i);
        if (open < 0) {
            m_parts.push_back({Kind::Text, pattern.mid(i)});
            break;
        }
        if (open > i)
            m_parts.push_back({Kind::Text, pattern.mid(i, open - i)});
        const qsizetype close = pattern.indexOf(QLatin1Char('}'), open);
        if (close < 0) {
            error = QStringLiteral("'{' at character %1 is not closed").arg(open + 1);
            return false;
        }
        const QString inside = pattern.mid(open + 1, close - open - 1);
        const qsizetype colon = inside.indexOf(QLatin1Char(':'));
        const QString key = colon < 0 ? inside : inside.left(colon);
        const QString datePattern = colon < 0 ? QStringLiteral("yyyy-MM-dd") : inside.mid(colon + 1);
        if (key == QLatin1String("name") && colon < 0) {
            m_parts.push_back({Kind::Name, {}});
        } else if (key == QLatin1String("unit") && colon < 0) {
            m_parts.push_back({Kind::Unit, {}});
        } else if ((key == QLatin1String("start") || key == QLatin1String("end")) && !datePattern.isEmpty()) {
            m_parts.push_back({key == QLatin1String("start") ? Kind::Start : Kind::End, datePattern});
        } else {
            error = QStringLiteral("unknown placeholder {%1} (use {name}, {unit}, {start:PATTERN}, {end:PATTERN})")
                        .arg(inside);
            return false;
        }
        i = close + 1;
    }
    return true;
}

bool ZWOutputPattern::HasPlaceholders() const
{
    for (const Part& part : m_parts)
        if (part.kind != Kind::Text)
            return true;
    return false;
}

QString ZWOutputPattern::Expand(
    const QString& name, const QString& unit, const ZWDateTime& start, const ZWDateTime& end) const
{
    QString out;
    for (const Part& part : m_parts) {
        switch (part.kind) {
        case Kind::Text:
            out += part.text;
            break;
        case Kind::Name:
            out += name;
            break;
        case Kind::Unit:
            out += unit;
            break;
        case Kind::Start:
            out += start.ToLocalQDateTime().toString(part.text);
            break;
        case Kind::End:
            out += end.ToLocalQDateTime().toString(part.text);
            break;
        }
    }
    return out;
}
