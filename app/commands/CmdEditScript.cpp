#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWEditScript.h"
#include "viewer/ZWReportFiles.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("edit-script"),
        QStringLiteral(
            "Loads REPORT into the designer's page windows (real windows, never shown) and replays the\n"
            "steps of SCRIPT, a JSON array of objects with an \"op\":\n"
            "  {\"op\":\"window\",\"width\":W,\"height\":H,\"pixelsPerMm\":P}  client size and resolution\n"
            "      (default 800 x 600 and the screen's resolution)\n"
            "  {\"op\":\"zoom\",\"factor\":F} (negative: fit mode) or {\"op\":\"zoom\",\"mode\":M} (0 fits)\n"
            "  {\"op\":\"orientation\",\"value\":O} (0 landscape)   {\"op\":\"page\",\"index\":I} (from 0)\n"
            "  {\"op\":\"tool\",\"tool\":\"select|label|image|date|formule|conditioned|chart|table\"}\n"
            "  {\"op\":\"press|move|release\",\"x\":X,\"y\":Y,\"ctrl\":false,\"shift\":false}  left button,\n"
            "      client pixels;  {\"op\":\"rightClick\",\"x\":X,\"y\":Y}\n"
            "  {\"op\":\"key\",\"key\":\"Delete|Left|Right|Up|Down|C|V|X|Z|Y\",\"ctrl\":false,\"shift\":false}\n"
            "  {\"op\":\"selectId\",\"id\":\"...\"}  {\"op\":\"align\",\"mode\":1|2|4|8}\n"
            "  {\"op\":\"distribute\",\"mode\":0|1}  {\"op\":\"justify\",\"mode\":0|1,\"group\":true}\n"
            "  {\"op\":\"sameSize\",\"width\":true,\"height\":false}\n"
            "  {\"op\":\"copy|cut|paste|delete|undo|redo\"}\n"
            "  {\"op\":\"new\",\"kind\":\"label|image|date|formule|conditioned|chart|table\"} at the last mouse "
            "position\n"
            "The page windows start at zoom 1 (real size). With --json prints {\"page\",\"zoom\",\n"
            "\"selection\",\"canUndo\",\"canRedo\",\"pages\":[{\"width\",\"height\",\"cards\":[{\"id\",\"kind\",\n"
            "\"x\",\"y\",\"width\",\"height\"}]}]} (millimetres); with -o writes the report as the designer\n"
            "saves it, an existing OUT kept as OUT.bak. A step that is unknown, lacks an argument, has\n"
            "one of the wrong type or cannot apply stops the script with exit status 2 and\n"
            "\"SCRIPT: step N: reason\"; nothing is written then."),
        QStringLiteral("REPORT"));
    cl.AddOption(QCommandLineOption(
        QStringLiteral("script"), QStringLiteral("the steps, a JSON array"), QStringLiteral("SCRIPT.json")));
    cl.AddOption(QCommandLineOption({QStringLiteral("o"), QStringLiteral("output")},
        QStringLiteral("write the edited report here"), QStringLiteral("OUT.XRPT")));
    cl.AddOption(QCommandLineOption(QStringLiteral("json"), QStringLiteral("print the pages and the state as JSON")));
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one REPORT"));
    if (!cl.Parser().isSet(QStringLiteral("script")))
        return cl.UsageError(QStringLiteral("--script SCRIPT.json is required"));
    const QString scriptPath = cl.Parser().value(QStringLiteral("script"));

    QFile file(scriptPath);
    if (!file.open(QIODevice::ReadOnly)) {
        Err() << scriptPath << ": " << file.errorString() << "\n";
        return ExitUsage;
    }
    QJsonParseError parseError;
    const QJsonDocument script = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        Err() << scriptPath << ": not JSON: " << parseError.errorString() << " at offset " << parseError.offset << "\n";
        return ExitUsage;
    }
    if (!script.isArray()) {
        Err() << scriptPath << ": a script is a JSON array of steps\n";
        return ExitUsage;
    }

    ZWTemplate report;
    QString error;
    if (!report.Load(ZWReportFiles::ReportPath(positional[0]), &error)) {
        Err() << "zwinformes edit-script: " << error << "\n";
        return ExitFailed;
    }
    ZWEditScript editor(report);
    int step = 0;
    QString reason;
    if (!editor.Run(script.array(), step, reason)) {
        Err() << scriptPath << ": step " << step << ": " << reason << "\n";
        return ExitUsage;
    }
    if (cl.Parser().isSet(QStringLiteral("output"))) {
        if (!editor.Report().Save(cl.Parser().value(QStringLiteral("output")), &error)) {
            Err() << "zwinformes edit-script: " << error << "\n";
            return ExitFailed;
        }
    }
    if (cl.Parser().isSet(QStringLiteral("json")))
        Out() << QString::fromUtf8(editor.Json()) << "\n";
    return ExitOk;
}

const ZWCommandRegistration registration(
    {QStringLiteral("edit-script"), QStringLiteral("replay designer steps on a report (mouse, keys, commands)"),
        ZWCommand::Needs::HeadlessWidgets, Run});

} // namespace
