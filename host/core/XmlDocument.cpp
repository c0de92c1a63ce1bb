#include "host/core/XmlDocument.h"

#include "host/core/ZWRegularFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>
#include <QXmlStreamReader>
#include <cstring>
#include <string_view>

namespace {

struct Segment
{
    QString name;
    QString keyName;
    QString keyValue;
    bool hasKey = false;
};

// "formule?name=%s?" -> name "formule", key child "name", value `key`.
Segment ParseSegment(const QString& text, const QString& key)
{
    Segment seg;
    const qsizetype q = text.indexOf(QLatin1Char('?'));
    if (q < 0) {
        seg.name = text;
        return seg;
    }
    seg.name = text.left(q);
    QString filter = text.mid(q + 1);
    if (filter.endsWith(QLatin1Char('?')))
        filter.chop(1);
    const qsizetype eq = filter.indexOf(QLatin1Char('='));
    if (eq < 0)
        return seg;
    seg.hasKey = true;
    seg.keyName = filter.left(eq);
    const QString value = filter.mid(eq + 1);
    seg.keyValue = value == QLatin1String("%s") ? key : value;
    return seg;
}

bool Matches(const QDomElement& element, const Segment& seg)
{
    if (!seg.hasKey)
        return true;
    const QDomElement keyElement = element.firstChildElement(seg.keyName);
    return !keyElement.isNull() && keyElement.text() == seg.keyValue;
}

QDomElement Find(const QDomElement& from, const QString& path, const QString& key)
{
    QDomElement current = from;
    const auto parts = QStringView(path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QStringView part : parts) {
        if (current.isNull())
            break;
        const Segment seg = ParseSegment(part.toString(), key);
        QDomElement child = current.firstChildElement(seg.name);
        while (!child.isNull() && !Matches(child, seg))
            child = child.nextSiblingElement(seg.name);
        current = child;
    }
    return current;
}

bool IsXmlChar(char32_t c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD)
        || (c >= 0x10000 && c <= 0x10FFFF);
}

} // namespace

XmlDocument::XmlNode XmlDocument::XmlNode::Node(const QString& path, const QString& key) const
{
    if (m_element.isNull())
        return XmlNode();
    return XmlNode(Find(m_element, path, key));
}

std::vector<XmlDocument::XmlNode> XmlDocument::XmlNode::Nodes(const QString& name) const
{
    std::vector<XmlNode> out;
    for (QDomElement e = m_element.firstChildElement(name); !e.isNull(); e = e.nextSiblingElement(name))
        out.emplace_back(e);
    return out;
}

std::vector<XmlDocument::XmlNode> XmlDocument::XmlNode::Children() const
{
    std::vector<XmlNode> out;
    for (QDomElement e = m_element.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        out.emplace_back(e);
    return out;
}

QString XmlDocument::XmlNode::Value(const QString& path, const QString& defaultValue) const
{
    const XmlNode node = Node(path);
    return node.IsNull() ? defaultValue : node.Text();
}

XmlDocument::XmlNode XmlDocument::XmlNode::NewChild(const QString& name)
{
    if (m_element.isNull())
        return XmlNode();
    QDomElement child = m_element.ownerDocument().createElement(name);
    m_element.appendChild(child);
    return XmlNode(child);
}

XmlDocument::XmlNode XmlDocument::XmlNode::NewChild(const QString& name, const QString& text)
{
    XmlNode child = NewChild(name);
    child.SetValue(text);
    return child;
}

void XmlDocument::XmlNode::SetValue(const QString& text)
{
    if (m_element.isNull())
        return;
    for (QDomNode n = m_element.firstChild(); !n.isNull();) {
        const QDomNode next = n.nextSibling();
        if (n.isText() || n.isCDATASection())
            m_element.removeChild(n);
        n = next;
    }
    const QString clean = CleanText(text);
    if (!clean.isEmpty())
        m_element.appendChild(m_element.ownerDocument().createTextNode(clean));
}

XmlDocument::XmlNode XmlDocument::XmlNode::AppendCopy(const XmlNode& other)
{
    if (m_element.isNull() || other.IsNull())
        return XmlNode();
    QDomNode copy = m_element.ownerDocument().importNode(other.m_element, true);
    m_element.appendChild(copy);
    return XmlNode(copy.toElement());
}

void XmlDocument::XmlNode::RemoveChild(const XmlNode& child)
{
    if (!m_element.isNull() && !child.IsNull())
        m_element.removeChild(child.m_element);
}

QByteArray XmlDocument::XmlNode::ToXml() const
{
    if (m_element.isNull())
        return QByteArray();
    QString text;
    QTextStream stream(&text);
    m_element.save(stream, 1);
    return text.toUtf8();
}

bool XmlDocument::Fail(Error error, const QString& message, qint64 line, qint64 column)
{
    m_doc.clear();
    m_error = error;
    // Where the error lies, so that a hand-edited file can be mended.
    m_errorString = line > 0 ? QStringLiteral("line %1, column %2: %3").arg(line).arg(column).arg(message) : message;
    m_errorLine = static_cast<int>(line);
    m_errorColumn = static_cast<int>(column);
    return false;
}

bool XmlDocument::Load(const QString& path)
{
    Reset();
    QByteArray data;
    QString why;
    switch (ZWRegularFile::Read(path, MaxBytes, data, &why)) {
    case ZWRegularFile::Result::Ok:
        return Parse(data);
    case ZWRegularFile::Result::TooLarge:
        return Fail(Error::TooLarge, why);
    default:
        return Fail(Error::File, why);
    }
}

bool XmlDocument::Parse(const char* utf8)
{
    return Parse(QByteArray(utf8 ? utf8 : ""));
}

bool XmlDocument::Parse(const QString& text)
{
    return Parse(text.toUtf8());
}

// One streaming pass that both guards against hostile input and builds the
// tree, so no DOM parser ever sees a refused document. Whitespace-only text
// is kept in leaf elements (a label may be a single blank) and dropped
// between child elements (indentation).
bool XmlDocument::Parse(const QByteArray& utf8)
{
    Reset();
    if (utf8.size() > MaxBytes)
        return Fail(Error::TooLarge, QStringLiteral("document larger than %1 bytes").arg(MaxBytes));

    if (utf8.trimmed().isEmpty())
        return Fail(Error::Empty, QStringLiteral("the document is empty"));
    if (!CheckStartTags(utf8))
        return false;

    QXmlStreamReader reader(utf8);
    struct Open
    {
        QDomElement element;
        QString pendingBlank;
        bool hasChildElements = false;
    };
    std::vector<Open> stack;
    QDomDocument doc;
    bool rootSeen = false;

    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::DTD:
            return Fail(Error::Doctype, QStringLiteral("document type declarations are not accepted"),
                reader.lineNumber(), reader.columnNumber());
        case QXmlStreamReader::EntityReference:
            return Fail(Error::Entity, QStringLiteral("entity references are not accepted"), reader.lineNumber(),
                reader.columnNumber());
        case QXmlStreamReader::StartElement: {
            if (static_cast<int>(stack.size()) >= MaxDepth)
                return Fail(Error::TooDeep, QStringLiteral("elements nested deeper than %1 levels").arg(MaxDepth),
                    reader.lineNumber(), reader.columnNumber());
            QDomElement element = doc.createElement(reader.qualifiedName().toString());
            for (const QXmlStreamAttribute& attribute : reader.attributes())
                element.setAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
            if (stack.empty()) {
                if (rootSeen)
                    return Fail(Error::Syntax, QStringLiteral("more than one root element"), reader.lineNumber(),
                        reader.columnNumber());
                rootSeen = true;
                doc.appendChild(element);
            } else {
                Open& parent = stack.back();
                parent.hasChildElements = true;
                parent.pendingBlank.clear();
                parent.element.appendChild(element);
            }
            stack.push_back(Open{element, QString(), false});
            break;
        }
        case QXmlStreamReader::EndElement: {
            if (stack.empty())
                break;
            Open& top = stack.back();
            if (!top.hasChildElements && !top.pendingBlank.isEmpty())
                top.element.appendChild(doc.createTextNode(top.pendingBlank));
            stack.pop_back();
            break;
        }
        case QXmlStreamReader::Characters: {
            if (stack.empty())
                break;
            Open& top = stack.back();
            if (reader.isWhitespace() && !reader.isCDATA()) {
                if (!top.hasChildElements)
                    top.pendingBlank += reader.text();
            } else {
                top.element.appendChild(doc.createTextNode(top.pendingBlank + reader.text().toString()));
                top.pendingBlank.clear();
            }
            break;
        }
        default:
            break;
        }
    }
    if (reader.hasError())
        return Fail(Error::Syntax, reader.errorString(), reader.lineNumber(), reader.columnNumber());
    if (!rootSeen)
        return Fail(Error::Empty, QStringLiteral("no root element"));
    m_doc = doc;
    return true;
}

bool XmlDocument::CheckStartTags(const QByteArray& utf8)
{
    const char* const begin = utf8.constData();
    const char* const end = begin + utf8.size();
    const auto skipPast = [end](const char* from, const char* marker, size_t length) {
        const std::string_view rest(from, size_t(end - from));
        const size_t at = rest.find(std::string_view(marker, length));
        return at == std::string_view::npos ? end : from + at + length;
    };
    const auto place = [begin](const char* at, qint64& line, qint64& column) {
        line = 1;
        const char* lineStart = begin;
        for (const char* c = begin; c < at; ++c)
            if (*c == '\n') {
                ++line;
                lineStart = c + 1;
            }
        column = qint64(at - lineStart) + 1;
    };
    const char* p = begin;
    qint64 elements = 0;
    while (p < end) {
        p = static_cast<const char*>(std::memchr(p, '<', size_t(end - p)));
        if (!p)
            break;
        const std::string_view rest(p, size_t(end - p));
        if (rest.starts_with("<!--")) {
            p = skipPast(p + 4, "-->", 3);
        } else if (rest.starts_with("<![CDATA[")) {
            p = skipPast(p + 9, "]]>", 3);
        } else if (rest.starts_with("<?")) {
            p = skipPast(p + 2, "?>", 2);
        } else if (rest.starts_with("<!") || rest.starts_with("</")) {
            p += 2;
        } else {
            // A start tag: up to its ">" outside quoted attribute values.
            const char* tag = p;
            if (++elements > MaxElements) {
                qint64 line = 0, column = 0;
                place(tag, line, column);
                return Fail(
                    Error::TooManyElements, QStringLiteral("more than %1 elements").arg(MaxElements), line, column);
            }
            char quote = 0;
            int attributes = 0;
            for (++p; p < end; ++p) {
                const char c = *p;
                if (quote) {
                    if (c == quote)
                        quote = 0;
                } else if (c == '"' || c == '\'') {
                    quote = c;
                } else if (c == '=') {
                    ++attributes;
                } else if (c == '>') {
                    break;
                }
                if (p - tag > MaxTagBytes || attributes > MaxAttributes)
                    break;
            }
            qint64 line = 0, column = 0;
            if (p - tag > MaxTagBytes) {
                place(tag, line, column);
                return Fail(Error::TagTooLarge, QStringLiteral("a start tag longer than %1 bytes").arg(MaxTagBytes),
                    line, column);
            }
            if (attributes > MaxAttributes) {
                place(tag, line, column);
                return Fail(Error::TagTooLarge,
                    QStringLiteral("an element with more than %1 attributes").arg(MaxAttributes), line, column);
            }
        }
    }
    return true;
}

bool XmlDocument::Create(const QString& rootName)
{
    Reset();
    m_doc.appendChild(m_doc.createElement(rootName));
    return true;
}

void XmlDocument::Reset()
{
    m_doc = QDomDocument();
    m_error = Error::None;
    m_errorString.clear();
    m_errorLine = 0;
    m_errorColumn = 0;
}

XmlDocument::XmlNode XmlDocument::Node(const QString& path, const QString& key) const
{
    return Root().Node(path, key);
}

QString XmlDocument::Value(const QString& path, const QString& defaultValue) const
{
    return Root().Value(path, defaultValue);
}

QByteArray XmlDocument::ToXml() const
{
    return m_doc.toByteArray(1);
}

void XmlDocument::CreateXmlCode(QByteArray& out) const
{
    out = ToXml();
}

bool XmlDocument::SaveAs(const QString& path) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray head("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    if (file.write(head) != head.size())
        return false;
    const QByteArray body = ToXml();
    if (file.write(body) != body.size())
        return false;
    return file.commit();
}

QString XmlDocument::CleanText(const QString& text)
{
    // UTF-16 walk: plain characters pass, surrogates only as a pair.
    const auto valid = [&text](qsizetype i, qsizetype& width) {
        const char16_t u = text.at(i).unicode();
        width = 1;
        if (QChar::isHighSurrogate(u)) {
            if (i + 1 < text.size() && QChar::isLowSurrogate(text.at(i + 1).unicode())) {
                width = 2;
                return true;
            }
            return false;
        }
        if (QChar::isLowSurrogate(u))
            return false;
        return IsXmlChar(u);
    };
    qsizetype i = 0;
    qsizetype width = 1;
    while (i < text.size() && valid(i, width))
        i += width;
    if (i == text.size())
        return text;
    QString out = text.left(i);
    while (i < text.size()) {
        if (valid(i, width))
            out.append(text.mid(i, width));
        i += width;
    }
    return out;
}
