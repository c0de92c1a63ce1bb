// The commands tokens, eval, check-loops and message of the zwinformes program.
#include "formula/ZWEvaluator.h"
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Result = zwtest::ProgramResult;

Result Zw(const QString& commandLine)
{
    return zwtest::RunProgram(zwtest::Args(commandLine));
}

QString Message(int code)
{
    QString text;
    ZWEvaluator::ErrorMsg(code, text);
    return text;
}

TEST(TokensCommand, JsonListsEveryTokenUpToTheEndOrTheFirstUnreadableOne)
{
    Result r = Zw(u"tokens --json 12+[m.e]"_s);
    EXPECT_EQ(r.status, 0) << r;
    // Members in the documented order.
    EXPECT_TRUE(r.raw.startsWith(R"([{"type":1,"text":"","number":12,"position":0,"valueType":0},)")) << r;
    QJsonArray tokens = r.Json().toArray();
    ASSERT_EQ(tokens.size(), 4);
    EXPECT_EQ(tokens[1].toObject(),
        QJsonObject({{u"type"_s, 3}, {u"text"_s, u"+"_s}, {u"number"_s, QJsonValue()}, {u"position"_s, 2},
            {u"valueType"_s, -1}}));
    EXPECT_EQ(tokens[2].toObject()[u"text"_s].toString(), u"m.e"_s);
    EXPECT_EQ(tokens[2].toObject()[u"position"_s].toInt(), 4);
    EXPECT_EQ(tokens[3].toObject()[u"type"_s].toInt(), 0);

    r = Zw(u"tokens --json \"1 & 2 + 3\""_s);
    EXPECT_EQ(r.status, 0) << r;
    tokens = r.Json().toArray();
    ASSERT_EQ(tokens.size(), 2);
    EXPECT_EQ(tokens[1].toObject()[u"type"_s].toInt(), -2);
    EXPECT_EQ(tokens[1].toObject()[u"position"_s].toInt(), 2);
    // A formula that starts with "-" needs no "--".
    r = Zw(u"tokens -2 --json"_s);
    EXPECT_EQ(r.status, 0) << r;
    EXPECT_EQ(r.Json().toArray()[0].toObject()[u"type"_s].toInt(), 4);
}

TEST(EvalCommand, ValueAndStatus)
{
    struct Case
    {
        const char* args; // after "eval --json"; none: an empty formula
        int status;
        int analyze;
        QJsonValue code, value, valueType;
        QStringList undefined;
    };
    const QJsonValue none;
    const Case cases[] = {
        {R"("1 < 2")", 0, 1, 0, 1, 1, {}},
        {"1/0", 1, 0, 10, none, -1, {}},
        {"2+-3", 1, -1, none, none, none, {}},
        {"", 1, -1, none, none, none, {}},
        {R"("Total * 2")", 1, 0, 40, none, 0, {u"Total"_s}},
        {"--set m.e=2.5 --set m.f=-1 [m.e]*[m.f]", 0, 0, 0, -2.5, 0, {}},
        {"--set=m.none= [m.none]", 1, 0, 62, none, 0, {u"m.none"_s}},
        {"[m.e]", 1, 0, 1, none, -1, {}},
        {"--set m.e=4 [m.e:max]", 0, 0, 0, 4, 0, {}},
        {"--no-discriminators --set m.e=4 [m.e:max]", 1, 0, 1, none, -1, {}},
        // No finite number: the text eval prints for it.
        {"10^400", 0, 0, 0, u"inf"_s, 0, {}},
        {"-(10^400)", 0, 0, 0, u"-inf"_s, 0, {}},
        {R"("10^400 - 10^400")", 0, 0, 0, u"nan"_s, 0, {}},
        // Numbers keep full precision.
        {R"("0.1 + 0.2")", 0, 0, 0, 0.1 + 0.2, 0, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        QStringList args = zwtest::Args(u"eval --json "_s + QString::fromUtf8(c.args));
        if (args.size() == 2)
            args << QString();
        const Result r = zwtest::RunProgram(args);
        EXPECT_EQ(r.status, c.status) << r;
        const QJsonObject o = r.Json().toObject();
        EXPECT_EQ(o.keys().size(), 6);
        EXPECT_EQ(o[u"analyze"_s].toInt(), c.analyze);
        EXPECT_EQ(o[u"code"_s], c.code);
        EXPECT_EQ(o[u"value"_s], c.value);
        EXPECT_EQ(o[u"valueType"_s], c.valueType);
        QStringList undefined;
        for (const QJsonValue& v : o[u"undefined"_s].toArray())
            undefined << v.toString();
        EXPECT_EQ(undefined, c.undefined);
        EXPECT_EQ(o[u"message"_s], c.analyze == -1 ? none : QJsonValue(Message(c.code.toInt())));
    }
}

class WithLibrary : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        const QByteArray formules = "<formules><formule><name>Cost</name><text>[m.e] * 0.2</text></formule>"
                                    "<formule><name>Total</name><text>Cost + Fee</text></formule>"
                                    "<formule><name>Fee</name><text>3</text></formule></formules>";
        ASSERT_TRUE(zwtest::WriteFile(m_library, formules));
        ASSERT_TRUE(zwtest::WriteFile(m_report, "<design><id>1</id><name>Monthly</name>" + formules + "</design>"));
        ASSERT_TRUE(zwtest::WriteFile(m_loop,
            "<formules><formule><name>A</name><text>1</text></formule><formule><name>B</name><text>C + 1</text>"
            "</formule><formule><name>C</name><text>B * 2</text></formule></formules>"));
    }
    QTemporaryDir m_dir;
    const QString m_library = m_dir.filePath(u"library.xml"_s);
    const QString m_report = m_dir.filePath(u"Monthly.XRPT"_s);
    const QString m_loop = m_dir.filePath(u"loop.xml"_s);
};

TEST_F(WithLibrary, EvalAndCheckLoopsReadALibraryOrAReport)
{
    for (const QString& file : {m_library, m_report}) {
        const Result r = Zw(u"eval --formules %1 --set m.e=10 --json \"Total * 2\""_s.arg(file));
        EXPECT_EQ(r.status, 0) << r;
        EXPECT_EQ(r.Json().toObject()[u"value"_s].toDouble(), 10.0);
    }
    const Result loop = Zw(u"eval --formules %1 --json B"_s.arg(m_loop));
    EXPECT_EQ(loop.status, 1);
    EXPECT_EQ(loop.Json().toObject()[u"code"_s].toInt(), 40);

    const std::pair<QString, int> checks[]
        = {{m_library, 0}, {m_report, 0}, {m_loop, 1}, {m_loop + u" --count 1"_s, 0}};
    for (const auto& [file, result] : checks) {
        const Result r = Zw(u"check-loops --json --formules "_s + file);
        EXPECT_EQ(r.status, result) << r;
        EXPECT_EQ(r.raw.trimmed(), u"{\"result\":%1}"_s.arg(result).toUtf8());
    }
}

TEST_F(WithLibrary, UnreadableFilesFailAndTheFormulasWindowRefusesWhatIsNoLibraryBeforeOpening)
{
    const QString bad = m_dir.filePath(u"bad.xml"_s), other = m_dir.filePath(u"other.xml"_s),
                  garbage = m_dir.filePath(u"garbage.xml"_s), styles = m_dir.filePath(u"style.XSTY"_s);
    ASSERT_TRUE(zwtest::WriteFile(bad, "<formules><formule>"));
    ASSERT_TRUE(zwtest::WriteFile(other, "<style/>"));
    ASSERT_TRUE(zwtest::WriteFile(garbage, "not < xml"));
    ASSERT_TRUE(zwtest::WriteFile(styles, "<style><name>x</name></style>"));
    for (const QString& file : {bad, other, m_dir.filePath(u"missing.xml"_s)}) {
        EXPECT_EQ(Zw(u"eval --formules %1 1"_s.arg(file)).status, 1);
        const Result r = Zw(u"check-loops --formules "_s + file);
        EXPECT_EQ(r.status, 1);
        EXPECT_FALSE(r.err.isEmpty());
    }
    const std::tuple<QStringList, int, const char*> cases[] = {
        {{u"formulas"_s}, 2, "expected one FILE"},
        {{u"formulas"_s, garbage, styles}, 2, "expected one FILE"},
        {{u"formulas"_s, garbage}, 1, "cannot read"},
        {{u"formulas"_s, styles}, 1, "neither a formula library"},
    };
    for (const auto& [args, status, says] : cases) {
        const Result r = zwtest::RunProgram(args);
        EXPECT_EQ(r.status, status) << r;
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(says))) << r;
    }
    EXPECT_EQ(zwtest::ReadFile(styles), QByteArray("<style><name>x</name></style>"));
    EXPECT_FALSE(QFileInfo::exists(styles + u".bak"_s));
}

TEST(FormulaCommands, MessageUsageErrorsHelpAndHumanReadableForms)
{
    for (const int code : {10, 99}) {
        const Result r = Zw(u"message "_s + QString::number(code));
        EXPECT_EQ(r.status, 0) << r;
        EXPECT_EQ(r.out.trimmed(), Message(code)) << code;
    }
    for (const char* line :
        {"eval", "eval 1 2", "eval --bogus 1", "eval --set novalue 1", "eval --set m.e=abc 1", "eval --formules",
            "tokens", "check-loops --json", "check-loops --formules x.xml --count many", "message", "message ten"}) {
        const Result r = Zw(QString::fromLatin1(line));
        EXPECT_EQ(r.status, 2) << line;
        EXPECT_TRUE(r.raw.isEmpty()) << line;
        EXPECT_FALSE(r.err.isEmpty()) << line;
    }
    for (const char* command : {"eval", "tokens", "check-loops", "message"}) {
        const Result r = Zw(QString::fromLatin1(command) + u" --help"_s);
        EXPECT_EQ(r.status, 0);
        EXPECT_TRUE(r.raw.contains("Usage")) << command;
    }

    // The forms for people.
    Result r = Zw(u"eval 2+-3"_s);
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.raw.contains("invalid formula")) << r;
    r = Zw(u"eval \"Total + [m.x]\" --set m.x="_s);
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.raw.contains("error 62")) << r;
    EXPECT_TRUE(r.raw.contains("Total, [m.x]")) << r;
    EXPECT_EQ(Zw(u"eval \"1 < 2\""_s).raw.trimmed(), QByteArray("1 (true)"));
    EXPECT_EQ(Zw(u"eval 2^0.5"_s).raw.trimmed(), QByteArray("1.4142135623730951"));
    EXPECT_TRUE(Zw(u"tokens \"a <= 2\""_s).raw.contains("less or equal"));
}

} // namespace
