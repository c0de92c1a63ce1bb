// The commands format-number, format-date, resave, render-template and the
// hidden picture decoder: arguments, exit codes, files written, memory bounds.
#include "template/ZWReportLimits.h"
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

using Result = zwtest::ProgramResult;

// The program, optionally with its address space limited to `megabytes` as
// the bounds of the input promise it can be.
Result Zwinformes(const QStringList& args, const QByteArray& input = QByteArray(), int megabytes = 0)
{
    zwtest::RunOptions options = zwtest::Offscreen();
    options.input = input;
    options.addressSpaceMb = megabytes;
    return zwtest::RunProgram(args, options);
}

Result Zwinformes(const QString& commandLine, int megabytes = 0)
{
    return Zwinformes(zwtest::Args(commandLine), QByteArray(), megabytes);
}

// AddressSanitizer's shadow memory needs more address space than any such
// limit: the memory bounds are checked in the release build only.
#if defined(__SANITIZE_ADDRESS__)
constexpr int kLimitMb = 0;
#else
constexpr int kLimitMb = 1024;
#endif

TEST(TemplateCommands, OversizedReportsAreRefusedWithinAFewHundredMegabytes)
{
    QTemporaryDir dir;
    const QByteArray label = "<label><x>1.00</x><y>2.00</y><width>10.00</width><height>10.00</height>"
                             "<font>Arial</font><size>10.00</size><value>L</value></label>";
    // file, contents, message (none: drawn)
    const std::tuple<const char*, QByteArray, const char*> cases[] = {
        // 150,000 labels (47 MB): over a GB of memory when they were read.
        {"Labels.XRPT", "<design><page>" + label.repeated(150000) + "</page></design>", "more than 300000 elements"},
        // One label of 50 MB: over 3 GB and most of a minute to draw.
        {"Text.XRPT",
            "<design><page><label><value>" + QByteArray(50 * 1024 * 1024, 'x') + "</value></label></page></design>",
            "page 1, card 1 (label): its \"value\" holds 52428800 characters"},
        // A report at the limits is drawn within the same memory.
        {"Full.XRPT",
            "<design>" + ("<page>" + label.repeated(ZWReportLimits::MaxCardsPerPage) + "</page>").repeated(4)
                + "</design>",
            nullptr},
    };
    for (const auto& [name, xml, message] : cases) {
        const QString in = dir.filePath(QString::fromLatin1(name));
        ASSERT_TRUE(zwtest::WriteFile(in, xml));
        const Result r = Zwinformes(u"render-template %1 --png %2"_s.arg(in, dir.filePath(u"out"_s)), kLimitMb);
        EXPECT_EQ(r.status, message ? 1 : 0) << name << "\n" << r;
        EXPECT_TRUE(r.err.contains(QString::fromLatin1(message ? message : ""))) << r;
    }
}

// A PNG of w × h pixels of one colour, made without drawing it: an indexed
// picture whose pixels are all index 0, so that pictures of any size are
// small and quick to make, and each colour gives other bytes.
QByteArray SolidIndexedPng(int w, int h, QRgb colour)
{
    const auto be32 = [](quint32 v) {
        QByteArray out(4, '\0');
        qToBigEndian(v, out.data());
        return out;
    };
    const auto chunk = [&](const char* type, const QByteArray& data) {
        const QByteArray body = QByteArray(type) + data;
        quint32 crc = 0xFFFFFFFFu;
        for (const char byte : body) {
            crc ^= quint8(byte);
            for (int k = 0; k < 8; ++k)
                crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
        }
        return be32(quint32(data.size())) + body + be32(~crc);
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

// A page of image cards, one per picture, embedded, five in a row 40 mm
// apart, each 30 mm wide with its centre at (25 + 40 i, 25 + 40 j) mm.
QByteArray PicturesReport(const QList<QByteArray>& pictures)
{
    QByteArray xml = "<design><page><width>210</width><height>297</height>";
    for (int i = 0; i < pictures.size(); ++i)
        xml += "<image><x>" + QByteArray::number(10 + (i % 5) * 40) + "</x><y>" + QByteArray::number(10 + (i / 5) * 40)
            + "</y><width>30</width><height>30</height><id>P" + QByteArray::number(i) + "</id><value>"
            + pictures[i].toBase64() + "</value></image>";
    return xml + "</page></design>";
}

// The colour at the centre of picture `i` of such a page drawn at 50 dpi.
QRgb CentreOf(const QImage& page, int i)
{
    const double pxPerMm = 50 / 25.4;
    return page.pixel(int((25 + (i % 5) * 40) * pxPerMm), int((25 + (i / 5) * 40) * pxPerMm));
}

TEST(TemplateCommands, ManyLargePicturesShareOneBoundedCacheAndOnesBeyondTheLimitsAreNamed)
{
    // Twenty distinct 4096 × 4096 pictures: 64 MiB each once decoded, 1.25
    // GiB together, in a template of 100 KB. Then one over 32 Mi pixels (Qt's
    // own limit refused 6000 × 6000 silently), one just within, and no picture.
    QList<QByteArray> pictures;
    for (int i = 0; i < 20; ++i)
        pictures << SolidIndexedPng(4096, 4096, qRgb(10 * i, 255 - 10 * i, 128));
    pictures << SolidIndexedPng(6000, 6000, qRgb(255, 0, 0)) << SolidIndexedPng(5792, 5792, qRgb(0, 0, 255))
             << QByteArray("not a picture at all");
    QTemporaryDir dir;
    const QString in = dir.filePath(u"Pictures.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(in, PicturesReport(pictures)));

    const Result drawn = Zwinformes(u"render-template %1 --png %2 --dpi 50"_s.arg(in, dir.path()), kLimitMb);
    ASSERT_EQ(drawn.status, 0) << drawn;
    EXPECT_EQ(drawn.err.trimmed(),
        u"zwinformes render-template: page 1, card P20: the picture is not drawn: 6000 × 6000 pixels: more than "
        u"32767 per side or 33554432 in all\nzwinformes render-template: page 1, card P22: the picture is not drawn: "
        u"no bmp, jpg, pcx, png, tga or tif picture"_s)
        << drawn;
    // Every picture drawn, each in its own colour.
    const QImage page(dir.filePath(u"Pictures-1.png"_s));
    ASSERT_FALSE(page.isNull());
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(CentreOf(page, i), qRgb(10 * i, 255 - 10 * i, 128)) << "picture " << i;
    EXPECT_EQ(CentreOf(page, 21), qRgb(0, 0, 255));

    // resave keeps the bytes, and decodes nothing to do so.
    const QString out = dir.filePath(u"Resaved.XRPT"_s);
    const Result resaved = Zwinformes(u"resave %1 %2"_s.arg(in, out), kLimitMb);
    ASSERT_EQ(resaved.status, 0) << resaved;
    EXPECT_TRUE(zwtest::ReadFile(out).contains(pictures[19].toBase64()));
}

TEST(TemplateCommands, FormatNumberAndFormatDate)
{
    const std::pair<const char*, const char*> cases[] = {
        {"format-number --format 03.02 -12.5", "-012.50\n"},
        {"format-number --format 03.02 -- -12.5", "-012.50\n"},
        {"format-number --format . --thousands 1234567", "1,234,567\n"},
        {"format-number --locale es_ES --format .02 --thousands 1234567.891", "1.234.567,89\n"},
        {"format-number 2.5", "2.5\n"}, // ".3" by default, trailing zeros stripped
        // What is no finite number shows as eval prints it, under any format.
        {"format-number --format 2.2 inf", "inf\n"},
        {"format-number --format 03.02 --thousands -- -inf", "-inf\n"},
        {"format-number --format 05.03 nan", "nan\n"},
        {R"(format-date --pattern "dd/MM/yyyy hh:mm:ss" 2024-03-05T09:05:07)", "05/03/2024 09:05:07\n"},
        {"format-date 2024-03-05T09:05:07", "05/03/2024 09:05:07\n"},
    };
    for (const auto& [line, out] : cases) {
        const Result r = Zwinformes(QString::fromLatin1(line));
        EXPECT_EQ(r.status, 0) << line << "\n" << r;
        EXPECT_EQ(r.out, QString::fromLatin1(out)) << line;
    }
    for (const char* line : {"format-number abc", "format-number", "format-number 1 2", "format-number --bogus 1",
             "format-date --pattern yyyy 2024-02-30T00:00:00", "format-date --pattern yyyy yesterday"})
        EXPECT_EQ(Zwinformes(QString::fromLatin1(line)).status, 2) << line;
}

TEST(TemplateCommands, ResaveIsByteStableAndKeepsABackup)
{
    QTemporaryDir dir;
    for (const char* name : {"MonthlyEnergy", "LandscapeSummary"}) {
        const QString in = zwtest::SourcePath(u"examples/reports/%1.XRPT"_s.arg(QLatin1String(name)));
        const QString once = dir.filePath(u"%1.XRPT"_s.arg(QLatin1String(name)));
        const Result r = Zwinformes(u"resave %1 %2"_s.arg(in, once));
        ASSERT_EQ(r.status, 0) << r;
        EXPECT_TRUE(r.out.contains(QLatin1String("card(s)")));
        EXPECT_EQ(zwtest::ReadFile(once), zwtest::ReadFile(in)) << name;
        // Saving over a report keeps the old one beside it.
        ASSERT_EQ(Zwinformes(u"resave %1 %2"_s.arg(in, once)).status, 0);
        EXPECT_TRUE(QFile::exists(once + u".bak"_s));
    }
    // resave needs both files.
    EXPECT_EQ(Zwinformes(u"resave "_s + dir.filePath(u"MonthlyEnergy.XRPT"_s)).status, 2);
}

TEST(TemplateCommands, RenderTemplateWritesOnePicturePerPage)
{
    QTemporaryDir dir;
    const QString in = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);
    Result r = Zwinformes(u"render-template %1 --png %2 --dpi 50"_s.arg(in, dir.filePath(u"low"_s)));
    ASSERT_EQ(r.status, 0) << r;
    EXPECT_EQ(QDir(dir.filePath(u"low"_s)).entryList(QDir::Files, QDir::Name),
        QStringList(
            {u"MonthlyEnergy-1.png"_s, u"MonthlyEnergy-2.png"_s, u"MonthlyEnergy-3.png"_s, u"MonthlyEnergy-4.png"_s}));
    const QImage page(dir.filePath(u"low/MonthlyEnergy-1.png"_s));
    EXPECT_EQ(page.size(), QSize(413, 585)); // 210 × 297 mm at 1969 dots per metre
    EXPECT_EQ(page.dotsPerMeterX(), 1969);

    r = Zwinformes(u"render-template %1 --png %2"_s.arg(
        zwtest::SourcePath(u"examples/reports/LandscapeSummary.XRPT"_s), dir.filePath(u"default"_s)));
    ASSERT_EQ(r.status, 0) << r;
    EXPECT_EQ(QImage(dir.filePath(u"default/LandscapeSummary-1.png"_s)).size(), QSize(1754, 1240));

    EXPECT_EQ(Zwinformes(u"render-template "_s + in).status, 2);
    EXPECT_EQ(Zwinformes(u"render-template %1 --png %2"_s.arg(dir.filePath(u"missing.XRPT"_s), dir.path())).status, 1);
}

TEST(TemplateCommands, PageSizesThatCannotBeDrawnAreNamedAsSuch)
{
    QTemporaryDir dir;
    // width, height, dpi, message
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"0", "297", "150", "page 1 cannot be drawn: its width is 0 mm"},
        {"210", "-5", "150", "page 1 cannot be drawn: its height is negative (-5.00 mm)"},
        // What is no number reads as 0.
        {"nan", "297", "150", "page 1 cannot be drawn: its width is 0 mm"},
        {"5000", "5000", "1200", "it is too large at 1200 dpi (236220 × 236220 pixels; at most 200 million)"},
        {"0.5", "297", "10", "it is smaller than a pixel at 10 dpi"},
    };
    const QString in = dir.filePath(u"Page.XRPT"_s);
    for (const auto& [width, height, dpi, message] : cases) {
        ASSERT_TRUE(zwtest::WriteFile(in,
            "<design><page><width>" + QByteArray(width) + "</width><height>" + height + "</height></page></design>"));
        const Result r = Zwinformes(u"render-template %1 --png %2 --dpi %3"_s.arg(in, dir.path(), QLatin1String(dpi)));
        EXPECT_EQ(r.status, 1) << width << "x" << height;
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(message))) << r;
    }
    // A resolution that is no number is a usage error, as one out of range.
    const QString example = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);
    for (const char* dpi : {"0", "nan", "inf", "-inf", "5000"}) {
        for (const char* command : {"render-template", "render"}) {
            const Result r = Zwinformes(
                u"%1 %2 --png %3 --dpi %4"_s.arg(QLatin1String(command), example, dir.path(), QLatin1String(dpi)));
            EXPECT_EQ(r.status, 2) << command << " " << dpi;
            if (QLatin1String(command) == QLatin1String("render-template")) {
                EXPECT_TRUE(r.err.contains(u"--dpi must be a number"_s)) << r;
            }
        }
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
    const Result r = Zwinformes(
        u"render-template %1 --data-dir %2 --png %3 --dpi 50"_s.arg(in, dir.path(), dir.filePath(u"out"_s)));
    EXPECT_EQ(r.status, 0) << r;
    EXPECT_TRUE(QFile::exists(dir.filePath(u"out/Fifo-1.png"_s)));
}

TEST(TemplateCommands, PictureDecoderIsHiddenAndSpeaksItsProtocol)
{
    EXPECT_FALSE(Zwinformes(u"--help"_s).out.contains(QLatin1String("decode-image")));
    Result r = Zwinformes({u"decode-image"_s}, SolidIndexedPng(3, 2, qRgb(1, 2, 3)));
    EXPECT_EQ(r.status, 0);
    ASSERT_EQ(r.raw.size(), 18 + 3 * 2 * 4);
    EXPECT_TRUE(r.raw.startsWith("ZWRAW1"));
    EXPECT_EQ(quint8(r.raw[6]), 3);
    r = Zwinformes({u"decode-image"_s}, QByteArray("no picture"));
    EXPECT_NE(r.status, 0);
    EXPECT_TRUE(r.raw.isEmpty());
}

} // namespace
