#pragma once

#include <QString>

// User-visible texts by numeric id. The English table is compiled in as
// resources (":/zwinformes/strings/*.tsv", one "id<TAB>name<TAB>text" per
// line, "\n" for a line break); the names become ZWTextId constants at build
// time. An unknown id gives false and a text naming the id, so a
// missing text shows up instead of an empty message.
bool ZWLoadString(int id, QString& text);
QString ZWLoadString(int id);
// Every id that has a text (for checks that nothing the module shows is missing).
QList<int> ZWStringIds();
