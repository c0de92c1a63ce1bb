#pragma once

#include <QDomDocument>
#include <QDomElement>
#include <QString>
#include <vector>

// XML documents of the module: templates, style files, the formula library
// and the value document.
//
// Nodes are found by slash paths of element names relative to a node
// ("/name", "/page/width"). A path segment may carry a key filter,
// "formule?name=%s?": the first "formule" child whose "name" child has the
// text given as the key argument. The key is compared as text; it is never
// spliced into the path, so a name holding quotes, slashes or question marks
// is simply found or not found.
//
// Documents come from users and other machines, so loading refuses, in a
// streaming pass before any tree is built, a document type declaration or
// entity reference, nesting deeper than MaxDepth and input larger than
// MaxBytes; before that pass, a scan of the bytes refuses more than
// MaxElements elements and a start tag longer than MaxTagBytes or with more
// than MaxAttributes attributes (Qt's reader takes time in the square of an
// element's attributes). A refused document is a document that failed to
// load.
class XmlDocument
{
public:
    static constexpr int MaxDepth = 256;
    static constexpr qint64 MaxBytes = 256LL * 1024 * 1024;
    static constexpr qsizetype MaxTagBytes = 64 * 1024;
    static constexpr int MaxAttributes = 256;
    // Elements of one document, counted before any tree is built: a tree of
    // this many stays within a few hundred MB (a report of 20 pages of 100
    // cards has about 30,000 elements).
    static constexpr qint64 MaxElements = 300000;

    class XmlNode
    {
    public:
        XmlNode() = default;
        explicit XmlNode(const QDomElement& element) : m_element(element) {}

        bool IsNull() const { return m_element.isNull(); }
        explicit operator bool() const { return !IsNull(); }
        QString Name() const { return m_element.tagName(); }
        // The text content of this element.
        QString Text() const { return m_element.text(); }

        // First node matching `path` below this one ("/" is this node).
        XmlNode Node(const QString& path, const QString& key = QString()) const;
        // Every child of this element named `name`, in document order.
        std::vector<XmlNode> Nodes(const QString& name) const;
        // Every element child, in document order.
        std::vector<XmlNode> Children() const;
        bool HasNode(const QString& path) const { return !Node(path).IsNull(); }
        // Text of the node at `path`, or `defaultValue` when it is missing.
        QString Value(const QString& path, const QString& defaultValue = QString()) const;

        XmlNode NewChild(const QString& name);
        XmlNode NewChild(const QString& name, const QString& text);
        // Replaces the text content (child elements are kept).
        void SetValue(const QString& text);
        // Appends a deep copy of `other` (possibly of another document).
        XmlNode AppendCopy(const XmlNode& other);
        void RemoveChild(const XmlNode& child);

        // This element serialised as UTF-8 XML text (no declaration).
        QByteArray ToXml() const;

        const QDomElement& Element() const { return m_element; }
        bool operator==(const XmlNode& other) const { return m_element == other.m_element; }

    private:
        QDomElement m_element;
    };

    enum class Error { None, File, TooLarge, Doctype, Entity, TooDeep, Syntax, Empty, TagTooLarge, TooManyElements };

    XmlDocument() = default;

    bool Load(const QString& path);
    bool Parse(const QByteArray& utf8);
    bool Parse(const char* utf8);
    bool Parse(const QString& text);
    // A new document with only a root element.
    bool Create(const QString& rootName);
    void Reset();

    bool IsEmpty() const { return m_doc.documentElement().isNull(); }
    XmlNode Root() const { return XmlNode(m_doc.documentElement()); }
    // Paths relative to the root element: "/" is the root itself.
    XmlNode Node(const QString& path, const QString& key = QString()) const;
    QString Value(const QString& path, const QString& defaultValue = QString()) const;

    // Writes the document with an XML declaration, atomically: the previous
    // file stays intact if writing fails.
    bool SaveAs(const QString& path) const;
    void CreateXmlCode(QByteArray& out) const;
    QByteArray ToXml() const;

    Error LastError() const { return m_error; }
    // The reason, with "line L, column C: " in front when it has a place.
    QString ErrorString() const { return m_errorString; }
    int ErrorLine() const { return m_errorLine; }
    int ErrorColumn() const { return m_errorColumn; }

    // Removes characters that XML 1.0 cannot carry, so that any text written
    // can be read back.
    static QString CleanText(const QString& text);

private:
    bool Fail(Error error, const QString& message, qint64 line = 0, qint64 column = 0);
    // The start tags of `utf8`, scanned as bytes: false (and the failure
    // set) for one beyond MaxTagBytes or MaxAttributes.
    bool CheckStartTags(const QByteArray& utf8);

    QDomDocument m_doc;
    Error m_error = Error::None;
    QString m_errorString;
    int m_errorLine = 0;
    int m_errorColumn = 0;
};
