#pragma once

#include <QString>
#include <QStringList>
#include <QTextStream>
#include <functional>
#include <vector>

// One subcommand of the zwinformes program. Each lives in its own source
// file and registers itself with a static ZWCommandRegistration.
struct ZWCommand
{
    // Core: no GUI at all; Gui: drawing without windows (offscreen unless a
    // platform is set); Widgets: windows on the display; HeadlessWidgets:
    // real windows that never reach a display (offscreen unless a platform
    // is set).
    enum class Needs { Core, Gui, Widgets, HeadlessWidgets };

    QString name;
    QString summary;
    Needs needs = Needs::Core;
    // Receives the arguments after the subcommand's name; returns the exit
    // status: 0 success, 1 failure of the work itself, 2 usage error.
    std::function<int(const QStringList& args)> run;
    // Left out of the usage text: commands the program runs on itself (the
    // picture decoder) or that maintain the project (the example reports).
    bool hidden = false;
};

class ZWCommandRegistry
{
public:
    static std::vector<ZWCommand>& Commands();
    static const ZWCommand* Find(const QString& name);
};

struct ZWCommandRegistration
{
    explicit ZWCommandRegistration(ZWCommand command) { ZWCommandRegistry::Commands().push_back(std::move(command)); }
};

// Output helpers: UTF-8 standard output and error.
QTextStream& Out();
QTextStream& Err();

enum ZWExit { ExitOk = 0, ExitFailed = 1, ExitUsage = 2 };
