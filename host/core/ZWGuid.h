#pragma once

#include <QString>
#include <QUuid>

// Identities of templates, cards and style files.
inline QUuid NewGUID()
{
    return QUuid::createUuid();
}

// Text form "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", upper case as the
// host writes it.
inline QString guidtow(const QUuid& guid)
{
    return guid.toString(QUuid::WithBraces).toUpper();
}
