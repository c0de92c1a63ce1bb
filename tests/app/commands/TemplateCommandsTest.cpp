// The commands format-number, format-date, resave, render-template and the
// hidden picture decoder of the zwinformes program.
#include "template/ZWReportLimits.h"
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

using Result = zwtest::ProgramResult;

Result Zwinformes(const QStringList& args, const QByteArray& input = QByteArray())
{
    zwtest::RunOptions options;
    options.environment = {{u"ZWINFORMES_LOCALE"_s, u"C"_s}, {u"QT_QPA_PLATFORM"_s, u"offscreen"_s}};
    options.input = input;
    return zwtest::RunProgram(args, options);
}

// The program run with its address space limited to `megabytes`, as the
// bounds of the input promise it can be. Not under AddressSanitizer, whose
// shadow memory needs more address space than any such limit.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCanLimitMemory = false;
#else
constexpr bool kCanLimitMemory = true;
#endif

Result ZwinformesWithin(int megabytes, const QStringList& args)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZWINFORMES_LOCALE"), QStringLiteral("C"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    const rlim_t bytes = rlim_t(megabytes) * 1024 * 1024;
    process.setChildProcessModifier([bytes] {
        const struct rlimit limit
        {
            bytes, bytes
        };
        ::setrlimit(RLIMIT_AS, &limit);
    });
    process.start(QStringLiteral(ZW_PROGRAM), args);
    EXPECT_TRUE(process.waitForFinished(120000)) << args.join(u' ').toStdString();
    Result r;
    r.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    r.out = QString::fromUtf8(process.readAllStandardOutput());
    r.err = QString::fromUtf8(process.readAllStandardError());
    return r;
}

TEST(TemplateCommands, OversizedReportsAreRefusedWithinAFewHundredMegabytes)
{
    if (!kCanLimitMemory)
        GTEST_SKIP() << "address space limits do not apply under AddressSanitizer";
    QTemporaryDir dir;
    const QByteArray label = "<label><x>1.00</x><y>2.00</y><width>10.00</width><height>10.00</height>"
                             "<font>Arial</font><size>10.00</size><value>L</value></label>";
    struct Case
    {
        const char* name;
        QByteArray xml;
        const char* message;
    } cases[] = {
        // 150,000 labels (47 MB): over a GB of memory when they were read.
        {"Labels.XRPT", "<design><page>" + label.repeated(150000) + "</page></design>", "more than 300000 elements"},
        // One label of 50 MB: over 3 GB and most of a minute to draw.
        {"Text.XRPT",
            "<design><page><label><value>" + QByteArray(50 * 1024 * 1024, 'x') + "</value></label></page></design>",
            "page 1, card 1 (label): its \"value\" holds 52428800 characters"},
    };
    for (const Case& c : cases) {
        const QString in = dir.filePath(QString::fromLatin1(c.name));
        ASSERT_TRUE(zwtest::WriteFile(in, c.xml));
        const Result r = ZwinformesWithin(1024, {u"render-template"_s, in, u"--png"_s, dir.filePath(u"out"_s)});
        EXPECT_EQ(r.status, 1) << c.name << "\n" << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(QString::fromLatin1(c.message))) << r.err.toStdString();
    }
    // A report at the limits is drawn within the same memory.
    QByteArray full = "<design>";
    for (int page = 0; page < 4; ++page)
        full += "<page>" + label.repeated(ZWReportLimits::MaxCardsPerPage) + "</page>";
    const QString in = dir.filePath(u"Full.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(in, full + "</design>"));
    const Result r = ZwinformesWithin(1024, {u"render-template"_s, in, u"--png"_s, dir.filePath(u"out"_s)});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
}

// A PNG of w × h pixels of one colour, made without drawing it: an indexed
// picture whose pixels are all index 0, so that pictures of any size are
// small and quick to make, and each colour gives other bytes.
QByteArray SolidIndexedPng(int w, int h, QRgb colour)
{
    const auto crc = [](const QByteArray& data) {
        quint32 c = 0xFFFFFFFFu;
        for (const char byte : data) {
            c ^= quint8(byte);
            for (int k = 0; k < 8; ++k)
                c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
        }
        return ~c;
    };
    const auto be32 = [](quint32 v) {
        QByteArray out(4, '\0');
        for (int i = 0; i < 4; ++i)
            out[i] = char(v >> (24 - 8 * i));
        return out;
    };
    const auto chunk = [&](const char* type, const QByteArray& data) {
        const QByteArray body = QByteArray(type) + data;
        return be32(quint32(data.size())) + body + be32(crc(body));
    };
    // Every row: filter 0 and w zeros; compressed once per size.
    static QHash<QPair<int, int>, QByteArray> compressed;
    QByteArray& idat = compressed[qMakePair(w, h)];
    if (idat.isEmpty())
        idat = qCompress(QByteArray(qsizetype(w + 1) * h, '\0'), 9).mid(4);
    const QByteArray header = be32(quint32(w)) + be32(quint32(h)) + QByteArray("\x08\x03\x00\x00\x00", 5);
    const QByteArray palette = QByteArray(1, char(qRed(colour))) + char(qGreen(colour)) + char(qBlue(colour));
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", header) + chunk("PLTE", palette) + chunk("IDAT", idat)
        + chunk("IEND", QByteArray());
}

// A page of image cards, one per picture, embedded.
QByteArray PicturesReport(const QList<QByteArray>& pictures)
{
    QByteArray xml = "<design><page><width>210</width><height>297</height>";
    for (int i = 0; i < pictures.size(); ++i)
        xml += "<image><x>" + QByteArray::number(10 + (i % 5) * 40) + "</x><y>" + QByteArray::number(10 + (i / 5) * 40)
            + "</y><width>30</width><height>30</height><id>P" + QByteArray::number(i) + "</id><value>"
            + pictures[i].toBase64() + "</value></image>";
    return xml + "</page></design>";
}

TEST(TemplateCommands, ManyLargePicturesShareOneBoundedCache)
{
    if (!kCanLimitMemory)
        GTEST_SKIP() << "address space limits do not apply under AddressSanitizer";
    // Twenty distinct 4096 × 4096 pictures: 64 MiB each once decoded, 1.25
    // GiB together, in a template of 100 KB.
    QList<QByteArray> pictures;
    for (int i = 0; i < 20; ++i)
        pictures << SolidIndexedPng(4096, 4096, qRgb(10 * i, 255 - 10 * i, 128));
    QTemporaryDir dir;
    const QString in = dir.filePath(u"Pictures.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(in, PicturesReport(pictures)));

    const Result drawn
        = ZwinformesWithin(1024, {u"render-template"_s, in, u"--png"_s, dir.path(), u"--dpi"_s, u"50"_s});
    ASSERT_EQ(drawn.status, 0) << drawn.err.toStdString();
    EXPECT_TRUE(drawn.err.isEmpty()) << drawn.err.toStdString();
    // Every picture drawn, each in its own colour.
    const QImage page(dir.filePath(u"Pictures-1.png"_s));
    ASSERT_FALSE(page.isNull());
    const double pxPerMm = 50 / 25.4;
    for (int i = 0; i < 20; ++i) {
        const QPoint centre(int((25 + (i % 5) * 40) * pxPerMm), int((25 + (i / 5) * 40) * pxPerMm));
        EXPECT_EQ(page.pixel(centre), qRgb(10 * i, 255 - 10 * i, 128)) << "picture " << i;
    }

    // resave keeps the bytes, and decodes nothing to do so.
    const QString out = dir.filePath(u"Resaved.XRPT"_s);
    const Result resaved = ZwinformesWithin(1024, {u"resave"_s, in, out});
    ASSERT_EQ(resaved.status, 0) << resaved.err.toStdString();
    EXPECT_TRUE(zwtest::ReadFile(out).contains(pictures[19].toBase64()));
}

TEST(TemplateCommands, APictureBeyondTheLimitsIsNamed)
{
    QTemporaryDir dir;
    // Over 32 Mi pixels (Qt's own limit refused 6000 × 6000 silently); a
    // picture just within the limits is drawn.
    const QList<QByteArray> pictures{SolidIndexedPng(6000, 6000, qRgb(255, 0, 0)),
        SolidIndexedPng(5792, 5792, qRgb(0, 0, 255)), QByteArray("not a picture at all")};
    const QString in = dir.filePath(u"Limits.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(in, PicturesReport(pictures)));
    const Result r = Zwinformes({u"render-template"_s, in, u"--png"_s, dir.path(), u"--dpi"_s, u"50"_s});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(u"page 1, card P0: the picture is not drawn: 6000 × 6000 pixels: more than 32767 per "
                               u"side or 33554432 in all"_s))
        << r.err.toStdString();
    EXPECT_FALSE(r.err.contains(u"card P1"_s)) << r.err.toStdString();
    EXPECT_TRUE(
        r.err.contains(u"page 1, card P2: the picture is not drawn: no bmp, jpg, pcx, png, tga or tif picture"_s))
        << r.err.toStdString();
    const QImage page(dir.filePath(u"Limits-1.png"_s));
    ASSERT_FALSE(page.isNull());
    const double pxPerMm = 50 / 25.4;
    EXPECT_EQ(page.pixel(int(65 * pxPerMm), int(25 * pxPerMm)), qRgb(0, 0, 255));
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
        {{u"--format"_s, u"03.02"_s, u"-12.5"_s}, 0, "-012.50\n"},
        {{u"--format"_s, u"03.02"_s, u"--"_s, u"-12.5"_s}, 0, "-012.50\n"},
        {{u"--format"_s, u"."_s, u"--thousands"_s, u"1234567"_s}, 0, "1,234,567\n"},
        {{u"--locale"_s, u"es_ES"_s, u"--format"_s, u".02"_s, u"--thousands"_s, u"1234567.891"_s}, 0, "1.234.567,89\n"},
        {{u"--format"_s, u"3.2"_s, u"1234.5"_s}, 0, "***.**\n"},
        {{u"2.5"_s}, 0, "2.5\n"}, // ".3" by default, trailing zeros stripped
        {{u"--format"_s, u":.0"_s, u"7"_s}, 0, "7\n"},
        // What is no finite number shows as eval prints it, under any format.
        {{u"--format"_s, u"2.2"_s, u"inf"_s}, 0, "inf\n"},
        {{u"--format"_s, u"03.02"_s, u"--thousands"_s, u"--"_s, u"-inf"_s}, 0, "-inf\n"},
        {{u"--format"_s, u"05.03"_s, u"nan"_s}, 0, "nan\n"},
        {{u"abc"_s}, 2, ""},
        {{}, 2, ""},
        {{u"1"_s, u"2"_s}, 2, ""},
        {{u"--bogus"_s, u"1"_s}, 2, ""},
    };
    for (const Case& c : cases) {
        QStringList args = c.args;
        args.prepend(QStringLiteral("format-number"));
        const Result r = Zwinformes(args);
        EXPECT_EQ(r.status, c.status) << args.join(u' ').toStdString() << " " << r.err.toStdString();
        if (c.status == 0) {
            EXPECT_EQ(r.out, QString::fromLatin1(c.out)) << args.join(u' ').toStdString();
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
        {{u"--pattern"_s, u"dd/MM/yyyy hh:mm:ss"_s, u"2024-03-05T09:05:07"_s}, 0, "05/03/2024 09:05:07\n"},
        {{u"--pattern"_s, u"d/M/yy"_s, u"2024-03-05T09:05:07"_s}, 0, "5/3/2024\n"},
        {{u"--pattern"_s, u"\"week of\" d MMM"_s, u"2024-12-31T23:59:59"_s}, 0, "week of 31 012\n"},
        {{u"2024-03-05T09:05:07"_s}, 0, "05/03/2024 09:05:07\n"},
        {{u"--pattern"_s, u"yyyy"_s, u"2024-02-30T00:00:00"_s}, 2, ""},
        {{u"--pattern"_s, u"yyyy"_s, u"yesterday"_s}, 2, ""},
    };
    for (const Case& c : cases) {
        QStringList args = c.args;
        args.prepend(QStringLiteral("format-date"));
        const Result r = Zwinformes(args);
        EXPECT_EQ(r.status, c.status) << args.join(u' ').toStdString() << " " << r.err.toStdString();
        if (c.status == 0) {
            EXPECT_EQ(r.out, QString::fromUtf8(c.out)) << args.join(u' ').toStdString();
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
        Result r = Zwinformes({u"resave"_s, in, once});
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains(QLatin1String("card(s)")));
        ASSERT_EQ(Zwinformes({u"resave"_s, once, twice}).status, 0);
        EXPECT_EQ(zwtest::ReadFile(once), zwtest::ReadFile(twice)) << name;
        EXPECT_EQ(zwtest::ReadFile(once), zwtest::ReadFile(in)) << name;
        // Saving over a report keeps the old one beside it.
        ASSERT_EQ(Zwinformes({u"resave"_s, in, once}).status, 0);
        EXPECT_TRUE(QFile::exists(once + QStringLiteral(".bak")));
    }
}

TEST(TemplateCommands, ResaveRefusesWhatIsNoReport)
{
    QTemporaryDir dir;
    const QString bad = dir.filePath(u"bad.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(bad, "<design><page>"));
    const QString out = dir.filePath(u"out.XRPT"_s);
    const Result r = Zwinformes({u"resave"_s, bad, out});
    EXPECT_EQ(r.status, 1);
    EXPECT_FALSE(r.err.isEmpty());
    EXPECT_FALSE(QFile::exists(out));
    EXPECT_EQ(Zwinformes({u"resave"_s, bad}).status, 2);
}

TEST(TemplateCommands, RenderTemplateWritesOnePicturePerPage)
{
    QTemporaryDir dir;
    const QString in = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);
    Result r = Zwinformes({u"render-template"_s, in, u"--png"_s, dir.filePath(u"low"_s), u"--dpi"_s, u"50"_s});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QStringList files = QDir(dir.filePath(u"low"_s)).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(files, QStringList({u"MonthlyEnergy-1.png"_s, u"MonthlyEnergy-2.png"_s}));
    const QImage page(dir.filePath(u"low/MonthlyEnergy-1.png"_s));
    EXPECT_EQ(page.size(), QSize(413, 585)); // 210 × 297 mm at 1969 dots per metre
    EXPECT_EQ(page.dotsPerMeterX(), 1969);

    r = Zwinformes({u"render-template"_s, zwtest::SourcePath(u"examples/reports/LandscapeSummary.XRPT"_s), u"--png"_s,
        dir.filePath(u"default"_s)});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(QImage(dir.filePath(u"default/LandscapeSummary-1.png"_s)).size(), QSize(1754, 1240));

    EXPECT_EQ(Zwinformes({u"render-template"_s, in}).status, 2);
    EXPECT_EQ(Zwinformes({u"render-template"_s, in, u"--png"_s, dir.path(), u"--dpi"_s, u"0"_s}).status, 2);
    EXPECT_EQ(Zwinformes({u"render-template"_s, dir.filePath(u"missing.XRPT"_s), u"--png"_s, dir.path()}).status, 1);
}

TEST(TemplateCommands, PageSizesThatCannotBeDrawnAreNamedAsSuch)
{
    QTemporaryDir dir;
    struct Case
    {
        const char* width;
        const char* height;
        const char* dpi;
        const char* message;
    } cases[] = {
        {"0", "297", "150", "page 1 cannot be drawn: its width is 0 mm"},
        {"210", "-5", "150", "page 1 cannot be drawn: its height is negative (-5.00 mm)"},
        // What is no number reads as 0.
        {"nan", "297", "150", "page 1 cannot be drawn: its width is 0 mm"},
        {"5000", "5000", "1200", "it is too large at 1200 dpi (236220 × 236220 pixels; at most 200 million)"},
        {"0.5", "297", "10", "it is smaller than a pixel at 10 dpi"},
    };
    for (const Case& c : cases) {
        const QString in = dir.filePath(u"Page.XRPT"_s);
        ASSERT_TRUE(zwtest::WriteFile(in,
            QStringLiteral("<design><page><width>%1</width><height>%2</height></page></design>")
                .arg(QLatin1String(c.width), QLatin1String(c.height))
                .toUtf8()));
        const Result r
            = Zwinformes({u"render-template"_s, in, u"--png"_s, dir.path(), u"--dpi"_s, QString::fromLatin1(c.dpi)});
        EXPECT_EQ(r.status, 1) << c.width << "x" << c.height;
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(c.message))) << r.err.toStdString();
    }
    // A resolution that is no number is a usage error, as one out of range.
    const QString in = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);
    for (const char* dpi : {"nan", "inf", "-inf", "5000"}) {
        const Result r
            = Zwinformes({u"render-template"_s, in, u"--png"_s, dir.path(), u"--dpi"_s, QString::fromLatin1(dpi)});
        EXPECT_EQ(r.status, 2) << dpi;
        EXPECT_TRUE(r.err.contains(u"--dpi must be a number"_s)) << r.err.toStdString();
        EXPECT_EQ(Zwinformes({u"render"_s, in, u"--png"_s, dir.path(), u"--dpi"_s, QString::fromLatin1(dpi)}).status, 2)
            << dpi;
    }
}

TEST(TemplateCommands, AStyleOrPictureThatIsAFifoDoesNotBlock)
{
    QTemporaryDir dir;
    for (const char* name : {"Title.XSTY", "logo.png"})
        ASSERT_EQ(::mkfifo(QFile::encodeName(dir.filePath(QString::fromLatin1(name))).constData(), 0600), 0);
    const QString in = dir.filePath(u"Fifo.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(in,
        "<design><page><width>50</width><height>30</height>"
        "<label><x>1</x><y>1</y><width>40</width><height>8</height><value>Hello</value><styleFile>Title</styleFile>"
        "</label><image><x>1</x><y>10</y><width>20</width><height>10</height><valueFile>logo.png</valueFile></image>"
        "</page></design>"));
    const Result r = Zwinformes({u"render-template"_s, in, u"--data-dir"_s, dir.path(), u"--png"_s,
        dir.filePath(u"out"_s), u"--dpi"_s, u"50"_s});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(QFile::exists(dir.filePath(u"out/Fifo-1.png"_s)));
}

TEST(TemplateCommands, PictureDecoderIsHiddenAndSpeaksItsProtocol)
{
    EXPECT_FALSE(Zwinformes({u"--help"_s}).out.contains(QLatin1String("decode-image")));
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(qRgb(1, 2, 3));
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
    }
    Result r = Zwinformes({u"decode-image"_s}, png);
    EXPECT_EQ(r.status, 0);
    ASSERT_EQ(r.raw.size(), 18 + 3 * 2 * 4);
    EXPECT_TRUE(r.raw.startsWith("ZWRAW1"));
    EXPECT_EQ(quint8(r.raw[6]), 3);
    r = Zwinformes({u"decode-image"_s}, QByteArray("no picture"));
    EXPECT_NE(r.status, 0);
    EXPECT_TRUE(r.raw.isEmpty());
}

} // namespace
