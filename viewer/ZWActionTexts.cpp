#include "viewer/ZWActionTexts.h"

#include <QAction>
#include <QSet>
#include <optional>

namespace {

bool Usable(QChar c)
{
    return c.isLetterOrNumber();
}

// The position of the character to mark in `text`, or none.
std::optional<qsizetype> Choose(const QString& text, const QSet<QChar>& taken)
{
    const auto isFree = [&](qsizetype i) { return Usable(text[i]) && !taken.contains(text[i].toLower()); };
    for (qsizetype i = 0; i < text.size(); ++i)
        if ((i == 0 || !Usable(text[i - 1])) && isFree(i))
            return i;
    for (qsizetype i = 0; i < text.size(); ++i)
        if (isFree(i))
            return i;
    return std::nullopt;
}

QString Escaped(const QString& text)
{
    QString out = text;
    out.replace(QLatin1Char('&'), QStringLiteral("&&"));
    return out;
}

// The character a text already marks, if any.
std::optional<QChar> Marked(const QString& text)
{
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != QLatin1Char('&'))
            continue;
        if (text[i + 1] != QLatin1Char('&'))
            return text[i + 1].toLower();
        ++i;
    }
    return std::nullopt;
}

} // namespace

QStringList ZWActionTexts::Assign(const QStringList& texts)
{
    QSet<QChar> taken;
    QStringList out;
    out.reserve(texts.size());
    for (const QString& text : texts) {
        QString marked = Escaped(text);
        if (const std::optional<qsizetype> at = Choose(text, taken)) {
            taken.insert(text[*at].toLower());
            // Each "&" before the chosen character was doubled.
            const qsizetype before = text.left(*at).count(QLatin1Char('&'));
            marked.insert(*at + before, QLatin1Char('&'));
        }
        out << marked;
    }
    return out;
}

QString ZWActionTexts::Plain(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('&') && i + 1 < text.size())
            ++i;
        out += text[i];
    }
    return out;
}

void ZWActionTexts::Apply(const QList<QAction*>& actions)
{
    QSet<QChar> taken;
    QList<QAction*> unmarked;
    QStringList texts;
    for (QAction* action : actions) {
        if (action->isSeparator() || action->text().isEmpty())
            continue;
        if (const std::optional<QChar> c = Marked(action->text()))
            taken.insert(*c);
        else
            unmarked << action;
    }
    // Letters of entries that are marked already are not given twice: they
    // go first, as placeholders that are dropped after.
    QStringList all;
    for (const QChar c : std::as_const(taken))
        all << QString(c);
    for (QAction* action : std::as_const(unmarked))
        all << action->text();
    const QStringList marked = Assign(all);
    for (qsizetype i = 0; i < unmarked.size(); ++i)
        unmarked[i]->setText(marked[taken.size() + i]);
}

void ZWActionTexts::ShowShortcutInToolTip(QAction& action)
{
    // iconText: the text without mnemonic marker and "..."; a tool tip
    // needs no "…" either.
    QString text = action.iconText();
    if (text.endsWith(QChar(0x2026)))
        text.chop(1);
    const QKeySequence key = action.shortcut();
    action.setToolTip(
        key.isEmpty() ? text : QStringLiteral("%1 (%2)").arg(text, key.toString(QKeySequence::NativeText)));
}
