#include "tests/support/ZWTestSupport.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <utility>

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace zwtest {

QString SourcePath(const QString& relative)
{
    return QStringLiteral(ZW_SOURCE_DIR_VALUE) + QLatin1Char('/') + relative;
}

QByteArray ReadFile(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return QByteArray();
    return f.readAll();
}

bool WriteFile(const QString& path, const QByteArray& data)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return f.write(data) == data.size();
}

std::string CaseName(const char* description)
{
    std::string name;
    bool upper = true;
    for (const char* c = description; *c; ++c) {
        const unsigned char ch = static_cast<unsigned char>(*c);
        if (std::isalnum(ch)) {
            name += upper ? char(std::toupper(ch)) : char(ch);
            upper = false;
        } else {
            upper = true;
        }
    }
    return name.empty() ? std::string("Unnamed") : name;
}

std::string SpelledName(const QString& text)
{
    static const std::pair<char16_t, const char*> words[] = {{u' ', "_"}, {u'+', "Plus"}, {u'-', "Minus"},
        {u'*', "Times"}, {u'/', "Over"}, {u'^', "Pow"}, {u'(', "Open"}, {u')', "Close"}, {u'<', "Lt"}, {u'>', "Gt"},
        {u'=', "Eq"}, {u'!', "Not"}, {u'&', "And"}, {u'|', "Or"}, {u',', "Comma"}, {u'.', "Dot"}, {u'[', "Dev"},
        {u']', "End"}, {u':', "Colon"}, {u'_', "Underscore"}, {u'\t', "Tab"}, {u'\n', "Newline"}};
    std::string name;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u < 128 && std::isalnum(int(u))) {
            name += char(u);
            continue;
        }
        const auto it = std::find_if(std::begin(words), std::end(words), [u](const auto& w) { return w.first == u; });
        name += it != std::end(words) ? std::string(it->second) : "U" + std::to_string(int(u));
    }
    return name.empty() ? std::string("Empty") : name;
}

} // namespace zwtest
