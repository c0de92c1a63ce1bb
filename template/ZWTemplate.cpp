#include "template/ZWTemplate.h"

#include "host/core/ZWGuid.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "template/ZWReportLimits.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

ZWTemplate::ZWTemplate() : id(guidtow(NewGUID()))
{}

ZWTemplate::ZWTemplate(const ZWTemplate& other) : id(other.id), name(other.name), pages(other.pages)
{
    // The document is shared by reference when copied: copy its content.
    if (other.HasFormules())
        SetFormules(other.formules.Root());
}

ZWTemplate& ZWTemplate::operator=(const ZWTemplate& other)
{
    if (this != &other) {
        ZWTemplate copy(other);
        *this = std::move(copy);
    }
    return *this;
}

bool ZWTemplate::Load(const QString& path, QString* error)
{
    XmlDocument document;
    if (!document.Load(path)) {
        if (error)
            *error = ZWLoadString(ZWTextId::ReportCannotRead).arg(path, document.ErrorString());
        *this = ZWTemplate();
        return false;
    }
    // Other XML (a style file, a value document) would read as a blank report.
    QString problem;
    if (document.Root().Name() != QLatin1String("design"))
        problem = ZWLoadString(ZWTextId::ReportRootNotDesign).arg(document.Root().Name());
    else
        problem = ZWReportLimits::Problem(document);
    if (!problem.isEmpty()) {
        if (error)
            *error = ZWLoadString(ZWTextId::ReportCannotRead).arg(path, problem);
        *this = ZWTemplate();
        return false;
    }
    Read(document);
    return true;
}

void ZWTemplate::Read(const XmlDocument& document)
{
    *this = ZWTemplate();
    const XmlDocument::XmlNode root = document.Root();
    const XmlDocument::XmlNode idNode = root.Node(QStringLiteral("id"));
    if (!idNode.IsNull())
        id = idNode.Text();
    name = root.Value(QStringLiteral("name"));
    for (const XmlDocument::XmlNode& child : root.Children()) {
        if (child.Name() == QLatin1String("page"))
            AddPage().SetTemplate(child);
        else if (child.Name() == QLatin1String("formules"))
            SetFormules(child);
    }
}

void ZWTemplate::Write(XmlDocument& document) const
{
    document.Create(QStringLiteral("design"));
    XmlDocument::XmlNode root = document.Root();
    root.NewChild(QStringLiteral("id"), id);
    root.NewChild(QStringLiteral("name"), name);
    for (const ZWTemplatePage& page : pages)
        page.SaveTemplate(root);
    if (HasFormules())
        root.AppendCopy(formules.Root());
}

QByteArray ZWTemplate::ToXml() const
{
    XmlDocument document;
    Write(document);
    return document.ToXml();
}

QString ZWTemplate::BackupPath(const QString& path)
{
    return path + QStringLiteral(".bak");
}

bool ZWTemplate::Save(const QString& path, QString* error) const
{
    XmlDocument document;
    Write(document);

    if (QFileInfo(path).isFile()) {
        // The backup is written atomically too, so a failed backup never
        // replaces an older good one with half a file.
        QFile previous(path);
        QSaveFile backup(BackupPath(path));
        QByteArray old;
        if (!previous.open(QIODevice::ReadOnly) || (old = previous.readAll(), previous.error() != QFile::NoError)
            || !backup.open(QIODevice::WriteOnly) || backup.write(old) != old.size() || !backup.commit()) {
            if (error)
                *error = ZWLoadString(ZWTextId::ReportBackupFailed).arg(BackupPath(path));
            return false;
        }
    }
    if (!document.SaveAs(path)) {
        if (error)
            *error = ZWLoadString(ZWTextId::ReportCannotSave).arg(path);
        return false;
    }
    return true;
}

void ZWTemplate::SetFormules(const XmlDocument::XmlNode& formulesElement)
{
    formules.Reset();
    if (formulesElement.IsNull())
        return;
    formules.Create(QStringLiteral("formules"));
    XmlDocument::XmlNode root = formules.Root();
    for (const XmlDocument::XmlNode& child : formulesElement.Children())
        root.AppendCopy(child);
}

ZWTemplatePage& ZWTemplate::AddPage()
{
    pages.emplace_back();
    return pages.back();
}

int ZWTemplate::CountCards() const
{
    int count = 0;
    for (const ZWTemplatePage& page : pages)
        count += int(page.cards.size());
    return count;
}
