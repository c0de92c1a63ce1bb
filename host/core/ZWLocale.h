#pragma once

#include <QLocale>
#include <QString>

// The locale information the module formats with: decimal and thousands
// separators and the first day of the week. Taken from the system locale
// unless overridden (the "Locale" setting, the ZWINFORMES_LOCALE environment
// variable or the command line's --locale), so that output is reproducible.
struct ZWLocaleInfo
{
    QString decimalSeparator;
    QString thousandSeparator;
    // Qt::Monday (1) .. Qt::Sunday (7), the numbering of ZWDateTime::DayOfWeek.
    int firstDayOfWeek = Qt::Monday;
    QLocale locale;
};

ZWLocaleInfo LocaleInformationWide();
// "en_US", "es_ES", "C"...; an empty name returns to the system locale.
// Returns false (and changes nothing) for a name Qt does not know.
bool ZWSetLocaleOverride(const QString& name);
