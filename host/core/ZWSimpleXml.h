#pragma once

#include <QByteArray>
#include <QString>
#include <QXmlStreamWriter>
#include <vector>

// Sequential XML writer: Open("fields"), Add("id", "7"), Close("fields").
// Text is cleaned of characters XML cannot carry, so what is written can
// always be parsed back.
class ZWSimpleXml
{
public:
    ZWSimpleXml();
    ZWSimpleXml(const ZWSimpleXml&) = delete;
    ZWSimpleXml& operator=(const ZWSimpleXml&) = delete;

    void Open(const QString& name);
    void Add(const QString& name, const QString& text);
    // Closes the innermost open element; `name` documents which one.
    void Close(const QString& name);
    // The text written so far, with every element still open closed.
    QByteArray GetXml();
    int Depth() const { return static_cast<int>(m_open.size()); }

private:
    QByteArray m_buffer;
    QXmlStreamWriter m_writer;
    std::vector<QString> m_open;
};
