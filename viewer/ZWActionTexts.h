#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QAction;

// The texts of commands as menus and tool tips show them. Keyboard mnemonics
// (the underlined letter of a menu entry, reached with Alt or inside an open
// menu) are given to texts that come from the text table without one, so
// that every menu can be worked from the keyboard; tool tips name the keys.
class ZWActionTexts
{
public:
    // Marks one letter or digit of each text, no two texts the same one
    // (letter case aside): the first letter of a word if one is free, else
    // any free letter or digit in order; a text without a free character
    // stays unmarked. An "&" of the text itself is kept as a literal one.
    static QStringList Assign(const QStringList& texts);
    // The text without its mnemonic marker.
    static QString Plain(const QString& text);
    // Assigns mnemonics to the entries of one menu level (separators and
    // texts that already hold a marker are left as they stand).
    static void Apply(const QList<QAction*>& actions);
    // Sets the action's tool tip to its text followed by its first shortcut
    // in brackets, "Zoom in (Ctrl++)"; the plain text without a shortcut.
    static void ShowShortcutInToolTip(QAction& action);
};
