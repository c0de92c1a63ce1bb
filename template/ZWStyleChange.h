#pragma once

#include "template/ZWTextStyle.h"

#include <optional>

// What the style editor does on OK, without its window: judges the edited
// style against the one it was opened with and the files of the data
// folder, then writes it (renaming the old file when the name changed).
class ZWStyleChange
{
public:
    enum class Verdict {
        NameMissing,
        NameNotAFileName,
        SizeNotPositive,
        // Another style has the name and the editor may not replace it.
        NameTaken,
        // Another style has the name: ask whether to replace it.
        AskReplace,
        // Nothing changed in an existing style: close as cancelled.
        Unchanged,
        Write,
    };

    // `opened` is the style being modified, none for a new one;
    // `mayOverwrite` lets the editor replace another style's file after
    // asking.
    ZWStyleChange(std::optional<ZWTextStyle> opened, bool mayOverwrite);

    Verdict Judge(const ZWTextStyle& edited) const;
    // Writes the style; false when the file cannot be written (the old file
    // of a renamed style is then already moved or deleted).
    bool Commit(const ZWTextStyle& edited) const;
    // The message shown for a verdict (a text id), 0 for none.
    static int MessageId(Verdict verdict);

private:
    std::optional<ZWTextStyle> m_opened;
    bool m_mayOverwrite;
};
