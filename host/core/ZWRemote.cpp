#include "host/core/ZWRemote.h"

QString EncodeBase64(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toBase64());
}

qsizetype DecodedBase64Size(const QString& text)
{
    qsizetype significant = 0;
    for (const QChar c : text)
        if (!c.isSpace())
            ++significant;
    return (significant + 3) / 4 * 3;
}

bool DecodeBase64(const QString& text, QByteArray& out)
{
    out.clear();
    QByteArray compact;
    compact.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u == u' ' || u == u'\t' || u == u'\r' || u == u'\n')
            continue;
        if (u > 0x7F)
            return false;
        compact.append(char(u));
    }
    // One character left over after the groups of four carries fewer than
    // eight bits: no encoder writes it.
    if (compact.size() % 4 == 1)
        return false;
    QByteArray::FromBase64Result result
        = QByteArray::fromBase64Encoding(std::move(compact), QByteArray::AbortOnBase64DecodingErrors);
    if (!result)
        return false;
    out = std::move(result.decoded);
    return true;
}
