#include "host/store/ZWLoggerUrl.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QRegularExpression>
#include <QUrl>
#include <QUrlQuery>

bool ZWLoggerUrl::Parse(const QString& input, QString* error)
{
    *this = ZWLoggerUrl();
    const QString text = input.trimmed();
    const auto fail = [&](const QString& why) {
        if (error)
            *error = ZWLoadString(ZWTextId::StoreInvalidAddress).arg(text, why);
        m_backend = Backend::None;
        return false;
    };
    if (text.isEmpty())
        return fail(ZWLoadString(ZWTextId::StoreNoDatabaseNamed));

    if (text.startsWith(QLatin1String("postgresql://"), Qt::CaseInsensitive)
        || text.startsWith(QLatin1String("postgres://"), Qt::CaseInsensitive)) {
        const QUrl url(text, QUrl::StrictMode);
        if (!url.isValid())
            return fail(url.errorString());
        m_backend = Backend::PostgreSQL;
        m_host = url.host(QUrl::FullyDecoded);
        m_port = url.port(5432);
        if (m_port <= 0 || m_port > 65535)
            return fail(ZWLoadString(ZWTextId::StoreBadPort));
        m_user = url.userName(QUrl::FullyDecoded);
        m_password = url.password(QUrl::FullyDecoded);
        m_database = url.path(QUrl::FullyDecoded);
        if (m_database.startsWith(QLatin1Char('/')))
            m_database.remove(0, 1);
        if (m_database.isEmpty())
            return fail(ZWLoadString(ZWTextId::StoreUrlWithoutDatabase));
        // Values go into libpq's "key=value" connection text: keep them to
        // plain words so that none can add options of its own.
        static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_.-]+$"));
        const QUrlQuery query(url);
        for (const auto& [key, value] : query.queryItems(QUrl::FullyDecoded)) {
            if (!plain.match(value).hasMatch())
                return fail(ZWLoadString(ZWTextId::StoreBadOptionValue).arg(key));
            if (key == QLatin1String("connect_timeout")) {
                bool ok = false;
                m_connectTimeout = value.toInt(&ok);
                if (!ok || m_connectTimeout < 1 || m_connectTimeout > 3600)
                    return fail(ZWLoadString(ZWTextId::StoreBadOptionValue).arg(key));
            } else if (key == QLatin1String("statement_timeout")) {
                bool ok = false;
                m_statementTimeout = value.toInt(&ok);
                if (!ok || m_statementTimeout < 1 || m_statementTimeout > 86400)
                    return fail(ZWLoadString(ZWTextId::StoreBadOptionValue).arg(key));
            } else if (key == QLatin1String("sslmode") || key == QLatin1String("application_name")) {
                m_options.append({key, value});
            } else {
                return fail(ZWLoadString(ZWTextId::StoreUnknownOption).arg(key));
            }
        }
        return true;
    }

    QString path = text;
    if (path.startsWith(QLatin1String("sqlite:"), Qt::CaseInsensitive)) {
        path = path.mid(7);
        if (path.startsWith(QLatin1String("//")))
            path = path.mid(2);
    } else if (path.contains(QLatin1String("://"))) {
        return fail(ZWLoadString(ZWTextId::StoreUnknownKind));
    }
    if (path.isEmpty())
        return fail(ZWLoadString(ZWTextId::StoreSqliteWithoutPath));
    m_backend = Backend::SQLite;
    m_path = path;
    return true;
}

QString ZWLoggerUrl::Display() const
{
    switch (m_backend) {
    case Backend::SQLite:
        return QStringLiteral("sqlite:") + m_path;
    case Backend::PostgreSQL: {
        QString s = QStringLiteral("postgresql://");
        if (!m_user.isEmpty())
            s += m_user + QLatin1Char('@');
        s += m_host.isEmpty() ? QStringLiteral("localhost") : m_host;
        s += QStringLiteral(":%1/").arg(m_port) + m_database;
        return s;
    }
    case Backend::None:
        break;
    }
    return QString();
}
