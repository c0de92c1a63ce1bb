// The commands format-number, format-date, resave, render-template and the
// hidden picture decoder of the zwinformes program.
#include "tests/support/ZWTestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Result
{
    int status = -1;
    QString out;
    QString err;
    QByteArray rawOut;
};

Result Zwinformes(const QStringList& args, const QByteArray& input = QByteArray())
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZWINFORMES_LOCALE"), QStringLiteral("C"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(ZW_PROGRAM), args);
    if (!input.isNull()) {
        process.write(input);
        process.closeWriteChannel();
    }
    EXPECT_TRUE(process.waitForFinished(60000)) << args.join(' ').toStdString();
    Result r;
    r.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    r.rawOut = process.readAllStandardOutput();
    r.out = QString::fromUtf8(r.rawOut);
    r.err = QString::fromUtf8(process.readAllStandardError());
    return r;
}

TEST(TemplateCommands, FormatNumber)
{
    struct Case
    {
        QStringList args;
        int status;
        const char* out;
    };
    const Case cases[] = {
        {{"--format", "03.02", "-12.5"}, 0, "-012.50\n"},
        {{"--format", "03.02", "--", "-12.5"}, 0, "-012.50\n"},
        {{"--format", ".", "--thousands", "1234567"}, 0, "1,234,567\n"},
        {{"--locale", "es_ES", "--format", ".02", "--thousands", "1234567.891"}, 0, "1.234.567,89\n"},
        {{"--format", "3.2", "1234.5"}, 0, "***.**\n"},
        {{"2.5"}, 0, "2.5\n"}, // ".3" by default, trailing zeros stripped
        {{"--format", ":.0", "7"}, 0, "7\n"},
        {{"abc"}, 2, ""},
        {{}, 2, ""},
        {{"1", "2"}, 2, ""},
        {{"--bogus", "1"}, 2, ""},
    };
    for (const Case& c : cases) {
        QStringList args = c.args;
        args.prepend(QStringLiteral("format-number"));
        const Result r = Zwinformes(args);
        EXPECT_EQ(r.status, c.status) << args.join(' ').toStdString() << " " << r.err.toStdString();
        if (c.status == 0) {
            EXPECT_EQ(r.out, QString::fromLatin1(c.out)) << args.join(' ').toStdString();
        }
    }
}

TEST(TemplateCommands, FormatDate)
{
    struct Case
    {
        QStringList args;
        int status;
        const char* out;
    };
    const Case cases[] = {
        {{"--pattern", "dd/MM/yyyy hh:mm:ss", "2024-03-05T09:05:07"}, 0, "05/03/2024 09:05:07\n"},
        {{"--pattern", "d/M/yy", "2024-03-05T09:05:07"}, 0, "5/3/2024\n"},
        {{"--pattern", "\"week of\" d MMM", "2024-12-31T23:59:59"}, 0, "week of 31 012\n"},
        {{"2024-03-05T09:05:07"}, 0, "05/03/2024 09:05:07\n"},
        {{"--pattern", "yyyy", "2024-02-30T00:00:00"}, 2, ""},
        {{"--pattern", "yyyy", "yesterday"}, 2, ""},
    };
    for (const Case& c : cases) {
        QStringList args = c.args;
        args.prepend(QStringLiteral("format-date"));
        const Result r = Zwinformes(args);
        EXPECT_EQ(r.status, c.status) << args.join(' ').toStdString() << " " << r.err.toStdString();
        if (c.status == 0) {
            EXPECT_EQ(r.out, QString::fromUtf8(c.out)) << args.join(' ').toStdString();
        }
    }
}

TEST(TemplateCommands, ResaveIsByteStable)
{
    QTemporaryDir dir;
    for (const char* name : {"MonthlyEnergy", "LandscapeSummary"}) {
        const QString in = zwtest::SourcePath(QStringLiteral("examples/reports/%1.XRPT").arg(QLatin1String(name)));
        const QString once = dir.filePath(QStringLiteral("%1-1.XRPT").arg(QLatin1String(name)));
        const QString twice = dir.filePath(QStringLiteral("%1-2.XRPT").arg(QLatin1String(name)));
        Result r = Zwinformes({"resave", in, once});
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains(QLatin1String("card(s)")));
        ASSERT_EQ(Zwinformes({"resave", once, twice}).status, 0);
        EXPECT_EQ(zwtest::ReadFile(once), zwtest::ReadFile(twice)) << name;
        EXPECT_EQ(zwtest::ReadFile(once), zwtest::ReadFile(in)) << name;
        // Saving over a report keeps the old one beside it.
        ASSERT_EQ(Zwinformes({"resave", in, once}).status, 0);
        EXPECT_TRUE(QFile::exists(once + QStringLiteral(".bak")));
    }
}

TEST(TemplateCommands, ResaveRefusesWhatIsNoReport)
{
    QTemporaryDir dir;
    const QString bad = dir.filePath("bad.XRPT");
    ASSERT_TRUE(zwtest::WriteFile(bad, "<design><page>"));
    const QString out = dir.filePath("out.XRPT");
    const Result r = Zwinformes({"resave", bad, out});
    EXPECT_EQ(r.status, 1);
    EXPECT_FALSE(r.err.isEmpty());
    EXPECT_FALSE(QFile::exists(out));
    EXPECT_EQ(Zwinformes({"resave", bad}).status, 2);
}

TEST(TemplateCommands, RenderTemplateWritesOnePicturePerPage)
{
    QTemporaryDir dir;
    const QString in = zwtest::SourcePath("examples/reports/MonthlyEnergy.XRPT");
    Result r = Zwinformes({"render-template", in, "--png", dir.filePath("low"), "--dpi", "50"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QStringList files = QDir(dir.filePath("low")).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(files, QStringList({"MonthlyEnergy-1.png", "MonthlyEnergy-2.png"}));
    const QImage page(dir.filePath("low/MonthlyEnergy-1.png"));
    EXPECT_EQ(page.size(), QSize(413, 585)); // 210 × 297 mm at 1969 dots per metre
    EXPECT_EQ(page.dotsPerMeterX(), 1969);

    r = Zwinformes({"render-template", zwtest::SourcePath("examples/reports/LandscapeSummary.XRPT"), "--png",
        dir.filePath("default")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(QImage(dir.filePath("default/LandscapeSummary-1.png")).size(), QSize(1754, 1240));

    EXPECT_EQ(Zwinformes({"render-template", in}).status, 2);
    EXPECT_EQ(Zwinformes({"render-template", in, "--png", dir.path(), "--dpi", "0"}).status, 2);
    EXPECT_EQ(Zwinformes({"render-template", dir.filePath("missing.XRPT"), "--png", dir.path()}).status, 1);
}

TEST(TemplateCommands, PictureDecoderIsHiddenAndSpeaksItsProtocol)
{
    EXPECT_FALSE(Zwinformes({"--help"}).out.contains(QLatin1String("decode-image")));
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(qRgb(1, 2, 3));
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
    }
    Result r = Zwinformes({"decode-image"}, png);
    EXPECT_EQ(r.status, 0);
    ASSERT_EQ(r.rawOut.size(), 18 + 3 * 2 * 4);
    EXPECT_TRUE(r.rawOut.startsWith("ZWRAW1"));
    EXPECT_EQ(quint8(r.rawOut[6]), 3);
    r = Zwinformes({"decode-image"}, QByteArray("no picture"));
    EXPECT_NE(r.status, 0);
    EXPECT_TRUE(r.rawOut.isEmpty());
}

} // namespace
