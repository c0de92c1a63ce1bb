#include "formula/ZWFormulaLibrary.h"

#include "host/core/XmlDocument.h"
#include "host/core/ZWSimpleXml.h"

bool ZWFormulaLibrary::Build(
    const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, XmlDocument& doc)
{
    ZWSimpleXml xml;
    xml.Open(QStringLiteral("formules"));
    const size_t n = std::min(names.size(), texts.size());
    for (size_t i = 0; i < n; ++i) {
        xml.Open(QStringLiteral("formule"));
        xml.Add(QStringLiteral("name"), names[i]);
        xml.Add(QStringLiteral("text"), texts[i]);
        xml.Close(QStringLiteral("formule"));
    }
    xml.Close(QStringLiteral("formules"));
    return doc.Parse(xml.GetXml());
}

void ZWFormulaLibrary::Read(
    const XmlDocument& doc, std::vector<ZWBasicString>& names, std::vector<ZWBasicString>& texts)
{
    names.clear();
    texts.clear();
    for (const XmlDocument::XmlNode& formule : doc.Root().Nodes(QStringLiteral("formule"))) {
        names.push_back(formule.Value(QStringLiteral("/name")));
        texts.push_back(formule.Value(QStringLiteral("/text")));
    }
}

bool ZWFormulaLibrary::Load(const ZWBasicString& path, XmlDocument& doc, ZWBasicString& error)
{
    XmlDocument file;
    if (!file.Load(path)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, file.ErrorString());
        return false;
    }
    const QString root = file.Root().Name();
    if (root == QLatin1String("formules")) {
        doc = file;
        return true;
    }
    if (root == QLatin1String("design")) {
        const XmlDocument::XmlNode formules = file.Node(QStringLiteral("/formules"));
        if (formules.IsNull())
            return doc.Create(QStringLiteral("formules"));
        return doc.Parse(formules.ToXml());
    }
    error = QStringLiteral("%1 is neither a formula library (\"formules\") nor a report (\"design\")").arg(path);
    return false;
}
