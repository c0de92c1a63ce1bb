#include "host/core/ZWLoadString.h"

#include <QDir>
#include <QFile>
#include <QHash>

namespace {

QHash<int, QString> LoadTable()
{
    QHash<int, QString> table;
    const QDir dir(QStringLiteral(":/zwinformes/strings"));
    for (const QString& name : dir.entryList({QStringLiteral("*.tsv")}, QDir::Files, QDir::Name)) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        for (const QString& line : lines) {
            if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
                continue;
            // id, name (for the generated header), text.
            const qsizetype tab = line.indexOf(QLatin1Char('\t'));
            const qsizetype nameEnd = tab > 0 ? line.indexOf(QLatin1Char('\t'), tab + 1) : -1;
            if (nameEnd < 0)
                continue;
            bool ok = false;
            const int id = line.left(tab).trimmed().toInt(&ok);
            if (!ok)
                continue;
            QString text = line.mid(nameEnd + 1);
            if (text.endsWith(QLatin1Char('\r')))
                text.chop(1);
            text.replace(QLatin1String("\\n"), QLatin1String("\n"));
            table.insert(id, text);
        }
    }
    return table;
}

const QHash<int, QString>& Table()
{
    static const QHash<int, QString> table = LoadTable();
    return table;
}

} // namespace

bool ZWLoadString(int id, QString& text)
{
    const auto it = Table().constFind(id);
    if (it == Table().constEnd()) {
        text = QStringLiteral("[text %1]").arg(id);
        return false;
    }
    text = *it;
    return true;
}

QString ZWLoadString(int id)
{
    QString text;
    ZWLoadString(id, text);
    return text;
}

QList<int> ZWStringIds()
{
    return Table().keys();
}
