#include "formula/ZWEvaluator.h"
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Result = zwtest::ProgramResult;

Result RunProgram(const QStringList& args)
{
    return zwtest::RunProgram(args);
}

QString Message(int code)
{
    QString text;
    ZWEvaluator::ErrorMsg(code, text);
    return text;
}

TEST(TokensCommand, JsonListsEveryTokenUpToTheEnd)
{
    const Result r = RunProgram({QStringLiteral("tokens"), QStringLiteral("--json"), QStringLiteral("12+[m.e]")});
    EXPECT_EQ(r.status, 0);
    // Members in the documented order.
    EXPECT_TRUE(r.raw.startsWith(R"([{"type":1,"text":"","number":12,"position":0,"valueType":0},)"))
        << r.raw.toStdString();
    const QJsonArray tokens = r.Json().toArray();
    ASSERT_EQ(tokens.size(), 4);
    EXPECT_EQ(tokens[1].toObject()[QStringLiteral("type")].toInt(), 3);
    EXPECT_EQ(tokens[1].toObject()[QStringLiteral("text")].toString(), QStringLiteral("+"));
    EXPECT_TRUE(tokens[1].toObject()[QStringLiteral("number")].isNull());
    EXPECT_EQ(tokens[1].toObject()[QStringLiteral("valueType")].toInt(), -1);
    EXPECT_EQ(tokens[2].toObject()[QStringLiteral("text")].toString(), QStringLiteral("m.e"));
    EXPECT_EQ(tokens[2].toObject()[QStringLiteral("position")].toInt(), 4);
    EXPECT_EQ(tokens[3].toObject()[QStringLiteral("type")].toInt(), 0);
}

TEST(TokensCommand, StopsAtTheFirstUnreadableToken)
{
    const Result r = RunProgram({QStringLiteral("tokens"), QStringLiteral("--json"), QStringLiteral("1 & 2 + 3")});
    EXPECT_EQ(r.status, 0);
    const QJsonArray tokens = r.Json().toArray();
    ASSERT_EQ(tokens.size(), 2);
    EXPECT_EQ(tokens[1].toObject()[QStringLiteral("type")].toInt(), -2);
    EXPECT_EQ(tokens[1].toObject()[QStringLiteral("position")].toInt(), 2);
    // A formula that starts with "-" needs no "--".
    const Result minus = RunProgram({QStringLiteral("tokens"), QStringLiteral("-2"), QStringLiteral("--json")});
    EXPECT_EQ(minus.status, 0);
    EXPECT_EQ(minus.Json().toArray()[0].toObject()[QStringLiteral("type")].toInt(), 4);
}

TEST(EvalCommand, ValueAndStatus)
{
    struct Case
    {
        QStringList args;
        int status;
        int analyze;
        QJsonValue code;
        QJsonValue value;
        QJsonValue valueType;
        QStringList undefined;
    };
    const QString json = QStringLiteral("--json");
    const std::vector<Case> cases = {
        {{json, QStringLiteral("2^3^2")}, 0, 0, 0, 64, 0, {}},
        {{json, QStringLiteral("-2^2")}, 0, 0, 0, 4, 0, {}},
        {{json, QStringLiteral("1 < 2")}, 0, 1, 0, 1, 1, {}},
        {{json, QStringLiteral("1/0")}, 1, 0, 10, QJsonValue(), -1, {}},
        {{json, QStringLiteral("2+-3")}, 1, -1, QJsonValue(), QJsonValue(), QJsonValue(), {}},
        {{json, QStringLiteral("")}, 1, -1, QJsonValue(), QJsonValue(), QJsonValue(), {}},
        {{json, QStringLiteral("Total * 2")}, 1, 0, 40, QJsonValue(), 0, {QStringLiteral("Total")}},
        {{json, QStringLiteral("--set"), QStringLiteral("m.e=2.5"), QStringLiteral("--set"), QStringLiteral("m.f=-1"),
             QStringLiteral("[m.e]*[m.f]")},
            0, 0, 0, -2.5, 0, {}},
        {{json, QStringLiteral("--set"), QStringLiteral("m.e=2.5"), QStringLiteral("--set"), QStringLiteral("m.none="),
             QStringLiteral("[m.none] + [m.e]")},
            1, 0, 40, QJsonValue(), 0, {QStringLiteral("m.none")}},
        {{json, QStringLiteral("--set=m.none="), QStringLiteral("[m.none]")}, 1, 0, 62, QJsonValue(), 0,
            {QStringLiteral("m.none")}},
        {{json, QStringLiteral("[m.e]")}, 1, 0, 1, QJsonValue(), -1, {}},
        {{json, QStringLiteral("--set"), QStringLiteral("m.e=4"), QStringLiteral("[m.e:max]")}, 0, 0, 0, 4, 0, {}},
        {{json, QStringLiteral("--no-discriminators"), QStringLiteral("--set"), QStringLiteral("m.e=4"),
             QStringLiteral("[m.e:max]")},
            1, 0, 1, QJsonValue(), -1, {}},
        // No finite number: the text eval prints for it.
        {{json, QStringLiteral("10^400")}, 0, 0, 0, QStringLiteral("inf"), 0, {}},
        {{json, QStringLiteral("-(10^400)")}, 0, 0, 0, QStringLiteral("-inf"), 0, {}},
        {{json, QStringLiteral("10^400 - 10^400")}, 0, 0, 0, QStringLiteral("nan"), 0, {}},
    };
    for (const Case& c : cases) {
        const Result r = RunProgram(QStringList{QStringLiteral("eval")} + c.args);
        const QString what = c.args.join(QLatin1Char(' '));
        EXPECT_EQ(r.status, c.status) << what.toStdString() << "\n" << r.err.toStdString();
        const QJsonObject o = r.Json().toObject();
        EXPECT_EQ(o.keys().size(), 6) << what.toStdString();
        EXPECT_EQ(o[QStringLiteral("analyze")].toInt(), c.analyze) << what.toStdString();
        EXPECT_EQ(o[QStringLiteral("code")], c.code) << what.toStdString();
        EXPECT_EQ(o[QStringLiteral("value")], c.value) << what.toStdString();
        EXPECT_EQ(o[QStringLiteral("valueType")], c.valueType) << what.toStdString();
        QStringList undefined;
        for (const QJsonValue& v : o[QStringLiteral("undefined")].toArray())
            undefined << v.toString();
        EXPECT_EQ(undefined, c.undefined) << what.toStdString();
        if (c.analyze == -1)
            EXPECT_TRUE(o[QStringLiteral("message")].isNull());
        else
            EXPECT_EQ(o[QStringLiteral("message")].toString(), Message(c.code.toInt())) << what.toStdString();
    }
}

TEST(EvalCommand, NumbersKeepFullPrecision)
{
    const Result r = RunProgram({QStringLiteral("eval"), QStringLiteral("--json"), QStringLiteral("0.1 + 0.2")});
    EXPECT_TRUE(r.raw.contains("\"value\":0.30000000000000004")) << r.raw.toStdString();
    const Result third = RunProgram({QStringLiteral("eval"), QStringLiteral("--json"), QStringLiteral("1/3")});
    EXPECT_EQ(third.Json().toObject()[QStringLiteral("value")].toDouble(), 1.0 / 3.0);
    const Result plain = RunProgram({QStringLiteral("eval"), QStringLiteral("2^0.5")});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.raw.trimmed(), QByteArray("1.4142135623730951"));
}

class WithLibrary : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        const QByteArray formules = "<formules>"
                                    "<formule><name>Cost</name><text>[m.e] * 0.2</text></formule>"
                                    "<formule><name>Total</name><text>Cost + Fee</text></formule>"
                                    "<formule><name>Fee</name><text>3</text></formule>"
                                    "</formules>";
        m_library = m_dir.filePath(QStringLiteral("library.xml"));
        ASSERT_TRUE(zwtest::WriteFile(m_library, formules));
        m_report = m_dir.filePath(QStringLiteral("Monthly.XRPT"));
        ASSERT_TRUE(zwtest::WriteFile(m_report, "<design><id>1</id><name>Monthly</name>" + formules + "</design>"));
        m_loop = m_dir.filePath(QStringLiteral("loop.xml"));
        ASSERT_TRUE(zwtest::WriteFile(m_loop,
            "<formules><formule><name>A</name><text>1</text></formule>"
            "<formule><name>B</name><text>C + 1</text></formule>"
            "<formule><name>C</name><text>B * 2</text></formule></formules>"));
    }
    QTemporaryDir m_dir;
    QString m_library, m_report, m_loop;
};

TEST_F(WithLibrary, EvalUsesALibraryOrAReport)
{
    for (const QString& file : {m_library, m_report}) {
        const Result r = RunProgram({QStringLiteral("eval"), QStringLiteral("--formules"), file,
            QStringLiteral("--set"), QStringLiteral("m.e=10"), QStringLiteral("--json"), QStringLiteral("Total * 2")});
        EXPECT_EQ(r.status, 0) << r.err.toStdString();
        EXPECT_EQ(r.Json().toObject()[QStringLiteral("value")].toDouble(), 10.0);
    }
    const Result loop = RunProgram(
        {QStringLiteral("eval"), QStringLiteral("--formules"), m_loop, QStringLiteral("--json"), QStringLiteral("B")});
    EXPECT_EQ(loop.status, 1);
    EXPECT_EQ(loop.Json().toObject()[QStringLiteral("code")].toInt(), 40);
}

TEST_F(WithLibrary, CheckLoops)
{
    struct Case
    {
        QString file;
        QStringList extra;
        int result;
    };
    const std::vector<Case> cases = {{m_library, {}, 0}, {m_report, {}, 0}, {m_loop, {}, 1},
        {m_loop, {QStringLiteral("--count"), QStringLiteral("1")}, 0},
        {m_loop, {QStringLiteral("--count"), QStringLiteral("2")}, 1}};
    for (const Case& c : cases) {
        const Result r = RunProgram(
            QStringList{QStringLiteral("check-loops"), QStringLiteral("--formules"), c.file, QStringLiteral("--json")}
            + c.extra);
        EXPECT_EQ(r.status, c.result == 0 ? 0 : 1);
        EXPECT_EQ(r.raw.trimmed(), QStringLiteral("{\"result\":%1}").arg(c.result).toUtf8());
    }
}

TEST_F(WithLibrary, UnreadableFilesFail)
{
    const QString bad = m_dir.filePath(QStringLiteral("bad.xml"));
    ASSERT_TRUE(zwtest::WriteFile(bad, "<formules><formule>"));
    const QString other = m_dir.filePath(QStringLiteral("other.xml"));
    ASSERT_TRUE(zwtest::WriteFile(other, "<style/>"));
    for (const QString& file : {bad, other, m_dir.filePath(QStringLiteral("missing.xml"))}) {
        EXPECT_EQ(
            RunProgram({QStringLiteral("eval"), QStringLiteral("--formules"), file, QStringLiteral("1")}).status, 1);
        const Result r = RunProgram({QStringLiteral("check-loops"), QStringLiteral("--formules"), file});
        EXPECT_EQ(r.status, 1);
        EXPECT_FALSE(r.err.isEmpty());
    }
}

TEST(MessageCommand, PrintsTheTextOfACode)
{
    for (const int code : {10, 62, 0, -1, 99}) {
        const Result r = RunProgram({QStringLiteral("message"), QString::number(code)});
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.out.trimmed(), Message(code)) << code;
    }
}

TEST(FormulaCommands, UsageErrors)
{
    const std::vector<QStringList> cases = {
        {QStringLiteral("eval")},
        {QStringLiteral("eval"), QStringLiteral("1"), QStringLiteral("2")},
        {QStringLiteral("eval"), QStringLiteral("--bogus"), QStringLiteral("1")},
        {QStringLiteral("eval"), QStringLiteral("--set"), QStringLiteral("novalue"), QStringLiteral("1")},
        {QStringLiteral("eval"), QStringLiteral("--set"), QStringLiteral("m.e=abc"), QStringLiteral("1")},
        {QStringLiteral("eval"), QStringLiteral("--formules")},
        {QStringLiteral("tokens")},
        {QStringLiteral("check-loops"), QStringLiteral("--json")},
        {QStringLiteral("check-loops"), QStringLiteral("--formules"), QStringLiteral("x.xml"),
            QStringLiteral("--count"), QStringLiteral("many")},
        {QStringLiteral("message")},
        {QStringLiteral("message"), QStringLiteral("ten")},
    };
    for (const QStringList& args : cases) {
        const Result r = RunProgram(args);
        EXPECT_EQ(r.status, 2) << args.join(QLatin1Char(' ')).toStdString();
        EXPECT_TRUE(r.raw.isEmpty()) << args.join(QLatin1Char(' ')).toStdString();
        EXPECT_FALSE(r.err.isEmpty()) << args.join(QLatin1Char(' ')).toStdString();
    }
    for (const QString& command :
        {QStringLiteral("eval"), QStringLiteral("tokens"), QStringLiteral("check-loops"), QStringLiteral("message")}) {
        const Result r = RunProgram({command, QStringLiteral("--help")});
        EXPECT_EQ(r.status, 0);
        EXPECT_TRUE(r.raw.contains("Usage")) << command.toStdString();
    }
}

TEST(FormulaCommands, HumanReadableForms)
{
    Result r = RunProgram({QStringLiteral("eval"), QStringLiteral("2+-3")});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.raw.contains("invalid formula")) << r.raw.toStdString();
    r = RunProgram(
        {QStringLiteral("eval"), QStringLiteral("Total + [m.x]"), QStringLiteral("--set"), QStringLiteral("m.x=")});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.raw.contains("error 62")) << r.raw.toStdString();
    EXPECT_TRUE(r.raw.contains("Total, [m.x]")) << r.raw.toStdString();
    r = RunProgram({QStringLiteral("eval"), QStringLiteral("1 < 2")});
    EXPECT_EQ(r.raw.trimmed(), QByteArray("1 (true)"));
    r = RunProgram({QStringLiteral("tokens"), QStringLiteral("a <= 2")});
    EXPECT_TRUE(r.raw.contains("less or equal")) << r.raw.toStdString();
}

} // namespace
