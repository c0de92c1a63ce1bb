#include "host/core/ZWSimpleXml.h"

#include "host/core/XmlDocument.h"

ZWSimpleXml::ZWSimpleXml() : m_writer(&m_buffer)
{}

void ZWSimpleXml::Open(const QString& name)
{
    m_writer.writeStartElement(name);
    m_open.push_back(name);
}

void ZWSimpleXml::Add(const QString& name, const QString& text)
{
    m_writer.writeTextElement(name, XmlDocument::CleanText(text));
}

void ZWSimpleXml::Close(const QString& name)
{
    Q_UNUSED(name);
    if (m_open.empty())
        return;
    m_writer.writeEndElement();
    m_open.pop_back();
}

QByteArray ZWSimpleXml::GetXml()
{
    while (!m_open.empty())
        Close(m_open.back());
    return m_buffer;
}
