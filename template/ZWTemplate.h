#pragma once

#include "host/core/XmlDocument.h"
#include "template/ZWTemplatePage.h"

#include <QString>
#include <vector>

// A report template (".XRPT"): its identity, its name, its pages and its own
// formula library. Reading never fails (what a file lacks keeps its
// default); saving is atomic and keeps the previous file as a backup.
class ZWTemplate
{
public:
    // A new template: a new GUID, no name, no pages, no formula library.
    ZWTemplate();
    // Copies are deep: pages, cards and formula library.
    ZWTemplate(const ZWTemplate& other);
    ZWTemplate& operator=(const ZWTemplate& other);
    ZWTemplate(ZWTemplate&&) noexcept = default;
    ZWTemplate& operator=(ZWTemplate&&) noexcept = default;

    // Loads a file. When it cannot be read as XML the template becomes a new
    // empty one and false is returned (with the reason in `error`).
    bool Load(const QString& path, QString* error = nullptr);
    // Takes everything from a "design" document.
    void Read(const XmlDocument& document);
    // The "design" document of this template.
    void Write(XmlDocument& document) const;
    QByteArray ToXml() const;
    // Saves to `path` atomically: a failed save leaves the previous file as
    // it was. The previous file is first kept as BackupPath(path).
    bool Save(const QString& path, QString* error = nullptr) const;
    // "NAME.XRPT.bak": beside the report, not matched by "*.XRPT".
    static QString BackupPath(const QString& path);

    bool HasFormules() const { return !formules.IsEmpty(); }
    // Replaces the formula library by a copy of a "formules" element (a null
    // node removes it).
    void SetFormules(const XmlDocument::XmlNode& formulesElement);
    ZWTemplatePage& AddPage();
    int CountCards() const;

    QString id;
    QString name;
    std::vector<ZWTemplatePage> pages;
    // A document whose root is the "formules" element, or empty.
    XmlDocument formules;
};
