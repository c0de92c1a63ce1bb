#include "template/ZWStyleChange.h"

#include "host/core/ZWTextId.h"

#include <QFile>
#include <QFileInfo>

ZWStyleChange::ZWStyleChange(std::optional<ZWTextStyle> opened, bool mayOverwrite)
    : m_opened(std::move(opened)), m_mayOverwrite(mayOverwrite)
{}

ZWStyleChange::Verdict ZWStyleChange::Judge(const ZWTextStyle& edited) const
{
    if (edited.name.isEmpty())
        return Verdict::NameMissing;
    // The name is the file's name: no folder parts, nothing a file system
    // refuses.
    static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
    for (QChar c : edited.name)
        if (forbidden.contains(c) || c.unicode() < 0x20)
            return Verdict::NameNotAFileName;
    if (edited.name == u"." || edited.name == u"..")
        return Verdict::NameNotAFileName;
    if (!(edited.size > 0.0))
        return Verdict::SizeNotPositive;

    const bool exists = QFileInfo::exists(ZWTextStyle::PathFor(edited.name));
    const QString openedName = m_opened ? m_opened->name : QString();
    if (edited.name != openedName && exists)
        return m_mayOverwrite ? Verdict::AskReplace : Verdict::NameTaken;
    if (!m_opened && m_mayOverwrite && exists)
        return Verdict::AskReplace;

    if (m_opened && edited.name == m_opened->name && edited.color == m_opened->color && edited.font == m_opened->font
        && edited.orientation == m_opened->orientation && edited.size == m_opened->size
        && edited.style == m_opened->style)
        return Verdict::Unchanged;
    return Verdict::Write;
}

bool ZWStyleChange::Commit(const ZWTextStyle& edited) const
{
    if (m_opened && !m_opened->name.isEmpty() && m_opened->name != edited.name) {
        const QString oldPath = ZWTextStyle::PathFor(m_opened->name);
        const QString newPath = ZWTextStyle::PathFor(edited.name);
        if (!QFile::rename(oldPath, newPath))
            QFile::remove(oldPath);
    }
    return edited.SaveByName();
}

int ZWStyleChange::MessageId(Verdict verdict)
{
    switch (verdict) {
    case Verdict::NameMissing:
        return ZWTextId::StyleNameMissing;
    case Verdict::NameNotAFileName:
        return ZWTextId::StyleNameNotAFileName;
    case Verdict::SizeNotPositive:
        return ZWTextId::StyleSizeNotPositive;
    case Verdict::NameTaken:
        return ZWTextId::StyleNameTaken;
    case Verdict::AskReplace:
        return ZWTextId::StyleReplaceQuestion;
    case Verdict::Unchanged:
    case Verdict::Write:
        return 0;
    }
    return 0;
}
