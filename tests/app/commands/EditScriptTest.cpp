// zwinformes edit-script: each kind of step reaches the page windows, the
// errors that stop a script, and what is written.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Page 1: 200 × 100 mm without grid, label "a" at (10, 20, 30, 40) and
// image "b" at (50, 20, 10, 10). In a 1000 × 600 window at 4 pixels per mm
// and zoom 1 it covers pixels 100..899 × 100..499, "a" is (140, 180)–(260,
// 340). Page 2: A4 portrait with label "c".
const char* kReport = R"(<design><id>{5}</id><name>Script</name>
<page><width>200.00</width><height>100.00</height><xgrid>0.00</xgrid><ygrid>0.00</ygrid>
<label><x>10.00</x><y>20.00</y><width>30.00</width><height>40.00</height><color>000000</color><id>a</id></label>
<image><x>50.00</x><y>20.00</y><width>10.00</width><height>10.00</height><color>000000</color><id>b</id></image>
</page>
<page><width>210.00</width><height>297.00</height>
<label><x>10.00</x><y>10.00</y><width>80.00</width><height>10.00</height><color>000000</color><id>c</id></label>
</page></design>)";

const char* kWindow = R"({"op":"window","width":1000,"height":600,"pixelsPerMm":4},)";

struct ScriptCase
{
    const char* name;
    // The steps after the window step, without the brackets.
    const char* steps;
    // "id kind x y width height" in mm; the id "*": any (a card the script
    // made).
    QStringList page1;
    // "last": the last card of the page.
    QStringList selection;
    bool canUndo;
    bool canRedo;
};

struct ScriptRun
{
    QTemporaryDir dir;
    QString report = dir.filePath(u"in.XRPT"_s);
    QString script = dir.filePath(u"script.json"_s);

    zwtest::ProgramResult Script(const QByteArray& json, const QStringList& extra = {})
    {
        zwtest::WriteFile(report, kReport);
        zwtest::WriteFile(script, json);
        return zwtest::RunProgram(
            QStringList{u"edit-script"_s, report, u"--script"_s, script} + extra, zwtest::Offscreen());
    }
};

class EditScriptTest : public ::testing::TestWithParam<ScriptCase>
{};

TEST_P(EditScriptTest, PrintsTheCardsWhereTheStepsLeftThem)
{
    const ScriptCase& c = GetParam();
    ScriptRun run;
    const zwtest::ProgramResult r = run.Script(QByteArray("[") + kWindow + c.steps + "]", {u"--json"_s});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QJsonObject out = r.Json().toObject();
    EXPECT_EQ(out[u"page"_s].toInt(), 0);
    EXPECT_EQ(out[u"zoom"_s].toDouble(), 1.0);
    EXPECT_EQ(out[u"canUndo"_s].toBool(), c.canUndo);
    EXPECT_EQ(out[u"canRedo"_s].toBool(), c.canRedo);
    const QJsonArray pages = out[u"pages"_s].toArray();
    ASSERT_EQ(pages.size(), 2);
    EXPECT_EQ(pages[0][u"width"_s].toDouble(), 200.0);
    const QJsonArray cards = pages[0][u"cards"_s].toArray();
    QStringList page1, selection, expected = c.selection;
    for (qsizetype i = 0; i < cards.size(); ++i) {
        const QJsonObject card = cards[i].toObject();
        const bool any = i < c.page1.size() && c.page1[i].startsWith(u'*');
        page1 << u"%1 %2 %3 %4 %5 %6"_s.arg(any ? u"*"_s : card[u"id"_s].toString(), card[u"kind"_s].toString())
                     .arg(card[u"x"_s].toDouble())
                     .arg(card[u"y"_s].toDouble())
                     .arg(card[u"width"_s].toDouble())
                     .arg(card[u"height"_s].toDouble());
    }
    EXPECT_EQ(page1, c.page1);
    for (const QJsonValue& id : out[u"selection"_s].toArray())
        selection << id.toString();
    if (!cards.isEmpty())
        expected.replaceInStrings(u"last"_s, cards.last()[u"id"_s].toString());
    EXPECT_EQ(selection, expected);
}

const QString A = u"a label 10 20 30 40"_s;
const QString B = u"b image 50 20 10 10"_s;

const ScriptCase scriptCases[] = {
    {"the drawing tools draw their cards where the mouse went",
        R"({"op":"tool","tool":"label"},{"op":"press","x":700,"y":300},{"op":"move","x":780,"y":340},
           {"op":"release","x":780,"y":340},{"op":"tool","tool":"chart"},{"op":"press","x":500,"y":300},
           {"op":"move","x":580,"y":340},{"op":"release","x":580,"y":340},{"op":"tool","tool":"table"},
           {"op":"press","x":500,"y":400},{"op":"move","x":580,"y":440},{"op":"release","x":580,"y":440})",
        {A, B, u"* label 150 50 20 10"_s, u"* chart 100 50 20 10"_s, u"* table 100 75 20 10"_s}, {u"last"_s}, true,
        false},
    // Left on the last selected (b), its width, then the pair centred across.
    {"align same size and justify act on the selection",
        R"({"op":"selectId","id":"a"},{"op":"press","x":310,"y":200,"shift":true},
           {"op":"release","x":310,"y":200,"shift":true},{"op":"align","mode":1},
           {"op":"sameSize","width":true,"height":false},{"op":"justify","mode":0,"group":true})",
        {u"a label 95 20 10 40"_s, u"b image 95 20 10 10"_s}, {u"a"_s, u"b"_s}, true, false},
    {"three arrow presses are three pixels and one undo step",
        R"({"op":"selectId","id":"a"},{"op":"key","key":"Right"},{"op":"key","key":"Right"},
           {"op":"key","key":"Down","shift":true},{"op":"key","key":"Right"},{"op":"undo"},{"op":"redo"})",
        {u"a label 10.75 22.5 30 40"_s, B}, {u"a"_s}, true, false},
    {"copy paste and the delete key",
        R"({"op":"selectId","id":"a"},{"op":"key","key":"C","ctrl":true},{"op":"paste"},{"op":"paste"},
           {"op":"key","key":"Delete"})",
        {A, B, u"* label 17.5 27.5 30 40"_s}, {}, true, false},
    {"delete undo and redo by key then cut and undo",
        R"({"op":"selectId","id":"b"},{"op":"delete"},{"op":"key","key":"Z","ctrl":true},
           {"op":"key","key":"Z","ctrl":true,"shift":true},{"op":"selectId","id":"a"},{"op":"cut"},{"op":"undo"})",
        {A}, {u"a"_s}, true, true},
    {"a new card goes where the right click was",
        R"({"op":"rightClick","x":600,"y":300},{"op":"new","kind":"formule"})", {A, B, u"* formule 125 50 7.5 7.5"_s},
        {u"last"_s}, true, false},
};

INSTANTIATE_TEST_SUITE_P(Script, EditScriptTest, ::testing::ValuesIn(scriptCases),
    [](const auto& info) { return zwtest::CaseName(info.param.name); });

TEST(EditScriptPages, PageZoomAndOrientationApplyToTheChosenPage)
{
    // steps, the page shown, its zoom, the second page's width and height
    const std::tuple<const char*, int, double, double, double> cases[] = {
        // Fit mode is stored negative: 600 pixels for 297 mm at 4 pixels per mm.
        {R"({"op":"page","index":1},{"op":"zoom","mode":0})", 1, -600.0 / 4.0 / 297.0, 210, 297},
        // The undo showed the page it changed.
        {R"({"op":"page","index":1},{"op":"zoom","mode":0},{"op":"orientation","value":0},
            {"op":"selectId","id":"c"},{"op":"page","index":0},{"op":"selectId","id":"a"},
            {"op":"key","key":"Left"},{"op":"page","index":1},{"op":"undo"})",
            0, 1.0, 297, 210},
    };
    for (const auto& [steps, page, zoom, width, height] : cases) {
        ScriptRun run;
        const zwtest::ProgramResult r = run.Script(QByteArray("[") + kWindow + steps + "]", {u"--json"_s});
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
        const QJsonObject out = r.Json().toObject();
        EXPECT_EQ(out[u"page"_s].toInt(), page);
        EXPECT_DOUBLE_EQ(out[u"zoom"_s].toDouble(), zoom);
        const QJsonObject second = out[u"pages"_s][1].toObject();
        EXPECT_EQ(std::pair(second[u"width"_s].toDouble(), second[u"height"_s].toDouble()), std::pair(width, height));
        EXPECT_EQ(out[u"pages"_s][0][u"cards"_s][0][u"x"_s].toDouble(), 10.0);
    }
}

struct ErrorCase
{
    const char* name;
    const char* script;
    const char* message;
};

class EditScriptErrorTest : public ::testing::TestWithParam<ErrorCase>
{};

TEST_P(EditScriptErrorTest, StopsWithTheStepAndWritesNothing)
{
    const ErrorCase& c = GetParam();
    ScriptRun run;
    const QString out = run.dir.filePath(u"out.XRPT"_s);
    zwtest::WriteFile(out, "before");
    const zwtest::ProgramResult r = run.Script(c.script, {u"-o"_s, out, u"--json"_s});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err.trimmed(), run.script + u": "_s + QString::fromUtf8(c.message));
    EXPECT_TRUE(r.out.isEmpty());
    EXPECT_EQ(zwtest::ReadFile(out), QByteArray("before"));
    EXPECT_FALSE(QFile::exists(out + u".bak"_s));
}

const ErrorCase errorCases[] = {
    {"an unknown op", R"([{"op":"selectId","id":"a"},{"op":"fly"}])", R"(step 2: unknown op "fly")"},
    {"a step without op", R"([{"x":1}])", R"(step 1: "op" is missing)"},
    {"a missing coordinate", R"([{"op":"press","x":10}])", R"(step 1: "y" is missing)"},
    {"a coordinate that is text", R"([{"op":"move","x":"10","y":5}])", R"(step 1: "x" must be a number)"},
    {"a fractional coordinate", R"([{"op":"release","x":1.5,"y":5}])", R"(step 1: "x" must be a whole number)"},
    {"a modifier that is no flag", R"([{"op":"press","x":1,"y":5,"ctrl":"yes"}])",
        R"(step 1: "ctrl" must be true or false)"},
    {"a page out of range", R"([{"op":"copy"},{"op":"page","index":2}])",
        "step 2: page 2 does not exist: the report has 2 page(s), numbered from 0"},
    {"an unknown tool", R"([{"op":"tool","tool":"pen"}])",
        R"(step 1: "tool" must be one of "chart", "conditioned", "date", "formule", "image", "label", "select", "table", not "pen")"},
    {"an unknown key", R"([{"op":"key","key":"Q"}])",
        R"(step 1: "key" must be one of "C", "Delete", "Down", "Left", "Right", "Up", "V", "X", "Y", "Z", not "Q")"},
    {"a zoom without factor or mode", R"([{"op":"zoom"}])", R"(step 1: "zoom" needs a "factor" or a "mode")"},
    {"a zoom of nothing", R"([{"op":"zoom","factor":0}])",
        "step 1: a zoom factor lies between 0.01 and 100 (negative for fit mode)"},
    {"a window without area", R"([{"op":"window","width":0,"height":5,"pixelsPerMm":4}])",
        "step 1: the window needs a width and a height of at least 1 pixel"},
    {"a step that is no object", R"([{"op":"copy"},3])", R"(step 2: a step is a JSON object with an "op")"},
    {"no array", R"({"op":"copy"})", "a script is a JSON array of steps"},
};

INSTANTIATE_TEST_SUITE_P(Script, EditScriptErrorTest, ::testing::ValuesIn(errorCases),
    [](const auto& info) { return zwtest::CaseName(info.param.name); });

TEST(EditScriptOutput, WritesTheReportAsTheDesignerSavesItAndKeepsTheOldOne)
{
    ScriptRun run;
    const QString out = run.dir.filePath(u"out.XRPT"_s);
    zwtest::WriteFile(out, "old");
    const zwtest::ProgramResult r = run.Script(QByteArray("[") + kWindow
            + R"({"op":"tool","tool":"select"},{"op":"press","x":200,"y":260},{"op":"move","x":240,"y":300},
                 {"op":"release","x":240,"y":300}])",
        {u"-o"_s, out});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty());
    EXPECT_EQ(zwtest::ReadFile(out + u".bak"_s), QByteArray("old"));
    const QByteArray written = zwtest::ReadFile(out);
    EXPECT_TRUE(written.contains("<x>20.00</x>")) << written.toStdString();
    EXPECT_TRUE(written.contains("<id>{5}</id>"));
    EXPECT_EQ(written.count("<page>"), 2);
    // The report it read is left as it was.
    EXPECT_EQ(zwtest::ReadFile(run.report), QByteArray(kReport));
}

} // namespace
