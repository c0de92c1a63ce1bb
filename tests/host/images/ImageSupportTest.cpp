// Pictures from hostile bytes: formats by content, the tga and pcx decoders,
// size limits, the tif helper process, the decode cache, the regression corpus.
#include "host/core/ZWRemote.h"
#include "host/images/ZWImageFormat.h"
#include "host/images/ZWImageSupport.h"
#include "template/ZWCardImage.h"
#include "template/ZWTemplate.h"
#include "template/ZWTextStyle.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/template/TemplateTestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QImageWriter>
#include <QtEndian>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Status = ZWImageSupport::Status;

QByteArray TgaHeader(int type, int width, int height, int depth, int descriptor, int mapType = 0, int mapLength = 0,
    int mapBits = 0, int idLength = 0)
{
    QByteArray h(18, '\0');
    h[0] = char(idLength);
    h[1] = char(mapType);
    h[2] = char(type);
    qToLittleEndian<quint16>(quint16(mapLength), h.data() + 5);
    h[7] = char(mapBits);
    qToLittleEndian<quint16>(quint16(width), h.data() + 12);
    qToLittleEndian<quint16>(quint16(height), h.data() + 14);
    h[16] = char(depth);
    h[17] = char(descriptor);
    return h + QByteArray(idLength, 'i');
}

QByteArray PcxHeader(int bits, int planes, int width, int height, int bytesPerLine, bool encoded = true)
{
    QByteArray h(128, '\0');
    h[0] = 0x0A;
    h[1] = 5;
    h[2] = encoded ? 1 : 0;
    h[3] = char(bits);
    qToLittleEndian<quint16>(quint16(width - 1), h.data() + 8);
    qToLittleEndian<quint16>(quint16(height - 1), h.data() + 10);
    h[65] = char(planes);
    qToLittleEndian<quint16>(quint16(bytesPerLine), h.data() + 66);
    return h;
}

quint32 Crc32(const QByteArray& data)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char c : data) {
        crc ^= quint8(c);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

// A PNG whose header claims width × height pixels (with a correct checksum).
QByteArray PngClaiming(quint32 width, quint32 height)
{
    QByteArray png = zwtest::SolidPng(2, 2, Qt::red);
    qToBigEndian<quint32>(width, png.data() + 16);
    qToBigEndian<quint32>(height, png.data() + 20);
    qToBigEndian<quint32>(Crc32(png.mid(12, 17)), png.data() + 29);
    return png;
}

QByteArray Encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    EXPECT_TRUE(writer.write(image)) << format << writer.errorString().toStdString();
    return bytes;
}

class ImageSupport : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qunsetenv("ZWINFORMES_IMAGE_DECODER");
        ZWImageSupport::SetDecoderPath(QStringLiteral(ZW_IMAGE_DECODER));
        ZWImageSupport::SetDecoderLimits(5000, 1024LL * 1024 * 1024);
        ZWImageSupport::ClearCache();
    }
    void TearDown() override { ZWImageSupport::SetDecoderPath(QString()); }
};

TEST_F(ImageSupport, FormatsAreRecognisedByContent)
{
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::green);
    const std::pair<QByteArray, ZWImageFormat::Type> cases[] = {
        {Encoded(image, "png"), ZWImageFormat::Png}, {Encoded(image, "jpeg"), ZWImageFormat::Jpeg},
        {Encoded(image, "bmp"), ZWImageFormat::Bmp}, {Encoded(image, "tiff"), ZWImageFormat::Tiff},
        {TgaHeader(2, 1, 1, 24, 0) + QByteArray(3, 'x'), ZWImageFormat::Tga},
        {PcxHeader(8, 1, 2, 1, 2) + QByteArray(2, '\x01'), ZWImageFormat::Pcx},
        {QByteArray("GIF89a\x02\x00\x02\x00\x80\x00\x00", 13), ZWImageFormat::Unknown},
        {QByteArray("BMW is not a bitmap, it is a car manufacturer"), ZWImageFormat::Unknown},
        {QByteArray("<design/>"), ZWImageFormat::Unknown}, {QByteArray(), ZWImageFormat::Unknown},
        {TgaHeader(2, 100, 100, 24, 0) + QByteArray(30, 'x'), ZWImageFormat::Unknown}, // data too short
        {TgaHeader(2, 1, 1, 23, 0) + QByteArray(3, 'x'), ZWImageFormat::Unknown},      // no such depth
        {TgaHeader(2, 1, 1, 24, 0xC0) + QByteArray(3, 'x'), ZWImageFormat::Unknown},   // interleaved
    };
    for (const auto& [bytes, type] : cases)
        EXPECT_EQ(ZWImageFormat::Detect(bytes), type) << bytes.left(16).toHex().toStdString();
}

TEST_F(ImageSupport, EveryFormatDecodesToItsPixelsAndTifOnlyThroughItsHelper)
{
    QImage image(7, 5, QImage::Format_RGB32);
    image.fill(qRgb(200, 100, 50));
    image.setPixel(6, 4, qRgb(1, 2, 3));
    for (const char* format : {"png", "bmp", "tiff"}) {
        Status status = Status::Corrupt;
        const QImage decoded = ZWImageSupport::Decode(Encoded(image, format), &status);
        EXPECT_EQ(status, Status::Ok) << format;
        EXPECT_EQ(std::tuple(decoded.size(), decoded.format(), decoded.pixel(0, 0), decoded.pixel(6, 4)),
            std::tuple(QSize(7, 5), QImage::Format_RGB32, qRgb(200, 100, 50), qRgb(1, 2, 3)))
            << format;
    }
    QImage alpha(2, 2, QImage::Format_ARGB32);
    alpha.fill(qRgba(255, 0, 0, 0));
    EXPECT_EQ(ZWImageSupport::Decode(Encoded(alpha, "png")).format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(ZWImageSupport::Decode(Encoded(image, "jpeg")).size(), QSize(7, 5));

    const QByteArray tif = Encoded(image, "tiff");
    Status status = Status::Ok;
    // A helper that never answers.
    QTemporaryDir dir;
    const QString script = dir.filePath(u"slow-decoder"_s);
    ASSERT_TRUE(zwtest::WriteFile(script, "#!/bin/sh\nexec sleep 30\n"));
    ASSERT_TRUE(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    ZWImageSupport::SetDecoderLimits(300, 256LL * 1024 * 1024);
    const std::pair<QString, Status> helpers[] = {{script, Status::TimedOut}, {QString(), Status::NoDecoder},
        {u"/nonexistent/zw_image_decoder"_s, Status::NoDecoder}};
    for (const auto& [path, expected] : helpers) {
        ZWImageSupport::SetDecoderPath(path);
        ZWImageSupport::ClearCache();
        EXPECT_TRUE(ZWImageSupport::Decode(tif, &status).isNull()) << path.toStdString();
        EXPECT_EQ(status, expected) << path.toStdString();
    }
    // Formats decoded in this process do not need it.
    EXPECT_FALSE(ZWImageSupport::Decode(Encoded(image, "png")).isNull());
}

// The pixels of a small picture row by row: "RRGGBB", or "AARRGGBB" when
// not opaque, rows apart by " / ".
QString Pixels(const QImage& picture)
{
    const QImage image = picture.convertToFormat(QImage::Format_ARGB32);
    QStringList rows;
    for (int y = 0; y < image.height(); ++y) {
        QStringList row;
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            const bool opaque = qAlpha(p) == 255;
            row << QString::number(opaque ? p & 0xFFFFFF : p, 16).rightJustified(opaque ? 6 : 8, u'0');
        }
        rows << row.join(u' ');
    }
    return rows.join(u" / "_s);
}

TEST_F(ImageSupport, TgaAndPcxVariantsDecodePixelForPixel)
{
    QByteArray palette(769, '\0'); // after its mark: colour 1 red, colour 2 blue
    palette[0] = 0x0C;
    palette[1 + 3] = char(255);
    palette[1 + 6 + 2] = char(255);
    const std::tuple<const char*, QByteArray, const char*> cases[] = {
        // Bottom-up: the first pixel in the file (blue, green, red) is bottom left.
        {"tga true colour",
            TgaHeader(2, 2, 2, 24, 0) + QByteArray("\x00\x00\xFF\x00\xFF\x00\xFF\x00\x00\xFF\xFF\xFF", 12),
            "0000ff ffffff / ff0000 00ff00"},
        // Top-down, run-length encoded, with alpha: a run of two red, one raw half-transparent blue.
        {"tga run-length 32 bits",
            TgaHeader(10, 3, 1, 32, 0x28) + QByteArray("\x81\x00\x00\xFF\xFF\x00\xFF\x00\x00\x80", 10),
            "ff0000 ff0000 800000ff"},
        {"tga colour-mapped", TgaHeader(1, 2, 1, 8, 0x20, 1, 2, 24) + QByteArray("\x00\x00\xFF\x00\xFF\x00\x01\x00", 8),
            "00ff00 ff0000"},
        // A run that would go past the end of the picture.
        {"tga grey", TgaHeader(11, 2, 1, 8, 0x20) + QByteArray("\xFF\x40", 2), "404040 404040"},
        // Rows of 1 1 1 2 and 0 0 0 0, the last byte of each beyond the width.
        {"pcx 256 colours", PcxHeader(8, 1, 3, 2, 4) + QByteArray("\xC3\x01\x02\xC4\x00", 5) + palette,
            "ff0000 ff0000 ff0000 / 000000 000000 000000"},
        {"pcx three planes", PcxHeader(8, 3, 2, 1, 2, false) + QByteArray("\x10\x20\x30\x40\x50\x60", 6),
            "103050 204060"},
        // A bit set is white: 10100101.
        {"pcx monochrome", PcxHeader(1, 1, 8, 1, 2) + QByteArray("\xC2\xA5", 2),
            "ffffff 000000 ffffff 000000 000000 ffffff 000000 ffffff"},
    };
    for (const auto& [what, bytes, pixels] : cases)
        EXPECT_EQ(Pixels(ZWImageSupport::Decode(bytes)), QString::fromLatin1(pixels)) << what;
    // Truncated data: the picture keeps black where nothing came.
    const QImage cut = ZWImageSupport::Decode(PcxHeader(8, 3, 4, 4, 4) + QByteArray("\xC8\x7F", 2));
    ASSERT_EQ(cut.size(), QSize(4, 4));
    EXPECT_EQ(cut.pixel(3, 3), qRgb(0, 0, 0));
}

TEST_F(ImageSupport, PicturesClaimingHugeSizesAreRefusedBeforeDecoding)
{
    const auto bmp = [](qint32 width, qint32 height) {
        QImage small(2, 2, QImage::Format_RGB32);
        small.fill(Qt::red);
        QByteArray bytes = Encoded(small, "bmp");
        qToLittleEndian<qint32>(width, bytes.data() + 18);
        qToLittleEndian<qint32>(height, bytes.data() + 22);
        return bytes;
    };
    // Headers whose data could fill 60 and 400 million pixels.
    const QByteArray pcx = PcxHeader(8, 1, 10000, 6000, 10000) + QByteArray(2'000'000, '\xFF');
    const QByteArray tga = TgaHeader(11, 20000, 20000, 8, 0) + QByteArray(7'000'000, '\xFF');
    // Headers whose data is far too short for what they claim.
    const QByteArray pcxShort = PcxHeader(8, 1, 30000, 30000, 30000) + QByteArray(4096, '\xFF');
    const QByteArray tgaShort = TgaHeader(11, 20000, 20000, 8, 0) + QByteArray(4096, '\xFF');
    const std::tuple<const char*, QByteArray, Status> cases[] = {
        {"png 100000 x 100000", PngClaiming(100000, 100000), Status::TooLarge},
        {"png 40000 x 10", PngClaiming(40000, 10), Status::TooLarge},
        {"bmp 100000 x 100000", bmp(100000, 100000), Status::Corrupt}, // Qt's header reader refuses it
        {"bmp 40000 x 10", bmp(40000, 10), Status::TooLarge},
        {"pcx 10000 x 6000", pcx, Status::TooLarge},
        {"tga 20000 x 20000", tga, Status::TooLarge},
        {"pcx 30000 x 30000 in 4 KiB", pcxShort, Status::NotAPicture},
        {"tga 20000 x 20000 in 4 KiB", tgaShort, Status::NotAPicture},
        {"too many bytes", QByteArray(ZWImageSupport::MaxFileBytes + 1, 'x'), Status::TooLarge},
    };
    for (const auto& [name, bytes, expected] : cases) {
        Status status = Status::Ok;
        EXPECT_TRUE(ZWImageSupport::Decode(bytes, &status).isNull()) << name;
        EXPECT_EQ(status, expected) << name;
    }
}

TEST_F(ImageSupport, EachDistinctPictureIsDecodedOnce)
{
    const QByteArray png = zwtest::SolidPng(9, 9, Qt::yellow);
    const QByteArray junk("definitely not a picture");
    const quint64 before = ZWImageSupport::DecodeCount();
    for (int i = 0; i < 4; ++i) {
        ZWCardImage card;
        EXPECT_TRUE(card.SetPictureBytes(png));
        // Taking the bytes decodes nothing; drawing (or asking) does, once.
        EXPECT_EQ(ZWImageSupport::DecodeCount() - before, i == 0 ? 0u : 1u);
        EXPECT_TRUE(card.HasPicture());
        ZWCardImage bad;
        EXPECT_FALSE(bad.SetPictureBytes(junk));
        EXPECT_FALSE(bad.HasPicture());
        EXPECT_EQ(bad.bytes, junk); // kept, so that it is written back
    }
    // The junk is refused by its header, never decoded.
    EXPECT_EQ(ZWImageSupport::DecodeCount() - before, 1u);
}

// Every input that once broke Qt's parsers, embedded as a picture, as a page
// background, and read as XML, as a template and as a style file.
TEST_F(ImageSupport, RegressionCorpus)
{
    QDirIterator it(zwtest::SourcePath(u"tests/data/qt-fuzz-regressions"_s), QDir::Files, QDirIterator::Subdirectories);
    int files = 0;
    while (it.hasNext()) {
        const QString path = it.next();
        if (path.endsWith(u"README.md"_s))
            continue;
        const QByteArray bytes = zwtest::ReadFile(path);
        ++files;
        SCOPED_TRACE(path.toStdString());

        XmlDocument document;
        ASSERT_TRUE(document.Parse(u"<image><value>%1</value></image>"_s.arg(EncodeBase64(bytes))));
        ZWCardImage card;
        card.GetFromXml(document.Root());
        EXPECT_EQ(card.bytes, bytes);
        const QString folder = QFileInfo(path).dir().dirName();
        if (folder == u"tga"_s || folder == u"tiff"_s || folder == u"gif"_s || folder == u"ico"_s || folder == u"icns"_s
            || folder == u"xml"_s) {
            EXPECT_FALSE(card.HasPicture());
        }
        if (card.HasPicture()) {
            EXPECT_LE(qint64(card.PictureSize().width()) * card.PictureSize().height(), ZWImageSupport::MaxPixels);
        }

        ZWGlobalProperties page;
        page.InitializeBackground(EncodeBase64(bytes));
        EXPECT_EQ(page.background->bytes, bytes);

        // Whatever loads as XML can be written and read again.
        XmlDocument xml;
        if (xml.Load(path)) {
            XmlDocument again;
            EXPECT_TRUE(again.Parse(xml.ToXml()));
        }
        ZWTemplate report;
        report.Load(path);
        ZWTextStyle style;
        style.Load(path);
    }
    EXPECT_EQ(files, 18);
}

} // namespace
