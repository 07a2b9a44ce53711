// HEIC/HEIF, AVIF and camera RAW photographs made from a real photo: each
// decodes upright, at its size, close to the photo's colours, with its
// profile, alpha, depth and camera details; the reader picks the decoder by
// content whatever the name; cut-off and oversized files give nothing.
#include "FileBytes.h"
#include "FormatSamples.h"
#include "HeifDecoder.h"
#include "JpegSegments.h"
#include "PhotoReader.h"
#include "PhotoWriter.h"
#include "RawDecoder.h"
#include "TiffStructure.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace {

// What the editor and melo-grade read from a file: the pixels of readPhoto.
cv::Mat readPixels(const QString& file)
{
    const PhotoReadResult read = readPhoto(file);
    return read ? read.photo->pixels : cv::Mat();
}

cv::Mat samplePhoto(const char* name, int flags = cv::IMREAD_COLOR)
{
    return cv::imread(std::string(MELO_SAMPLES_DIR "/") + name, flags);
}

CameraExif cameraDetails()
{
    CameraExif exif;
    exif.make = "Melo Optics";
    exif.model = "Test Body 24";
    exif.lens = "35mm F1.8 Prime";
    exif.taken = QDateTime(QDate(2026, 5, 17), QTime(14, 30, 5));
    exif.exposureSeconds = 1.0 / 125;
    exif.fNumber = 5.6;
    exif.iso = 400;
    exif.focalLengthMm = 35;
    return exif;
}

const QString kAdobeRgb = QStringLiteral("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc");

} // namespace

class TestPhotoFormats : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    cv::Mat m_photo;  // 600 x 400 landscape
    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        m_photo = samplePhoto("coffee.png");
        QVERIFY(!m_photo.empty() && m_dir.isValid());
    }

    void heif_data()
    {
        QTest::addColumn<bool>("avif");
        QTest::addColumn<int>("orientation");
        QTest::addColumn<bool>("withProfile");
        QTest::addColumn<bool>("alpha");
        QTest::addColumn<int>("bitDepth");
        QTest::newRow("HEIC rotated 90, Adobe RGB profile") << false << 6 << true << false << 8;
        QTest::newRow("AVIF rotated 270, profile, alpha") << true << 8 << true << true << 8;
        QTest::newRow("HEIC 10-bit, rotated 180") << false << 3 << false << false << 10;
        QTest::newRow("AVIF transposed") << true << 5 << false << false << 8;
        // libheif mirrors only 8-bit pictures itself.
        for (const int orientation : {2, 4, 5, 7})
            QTest::addRow("HEIC 10-bit, orientation %d", orientation) << false << orientation << false << false << 10;
        QTest::newRow("HEIC 12-bit, rotated 90") << false << 6 << false << false << 12;
    }
    void heif()
    {
        QFETCH(bool, avif);
        QFETCH(int, orientation);
        QFETCH(bool, withProfile);
        QFETCH(bool, alpha);
        QFETCH(int, bitDepth);
        cv::Mat upright = m_photo;
        if (alpha) {
            // A real mask: the photo's own brightness.
            cv::Mat grey;
            cv::cvtColor(m_photo, grey, cv::COLOR_BGR2GRAY);
            std::vector<cv::Mat> channels;
            cv::split(m_photo, channels);
            channels.push_back(grey);
            cv::merge(channels, upright);
        }
        if (bitDepth > 8)
            upright.convertTo(upright, CV_16U, 257.0);
        HeifSample sample;
        sample.avif = avif;
        sample.orientation = orientation;
        sample.bitDepth = bitDepth;
        if (withProfile) {
            sample.iccProfile = fileBytes(kAdobeRgb);
            // A phone's EXIF names the turn too; the pixels come upright,
            // so the block carried over must say 1.
            sample.exifSegment = buildExifSegment(cameraDetails());
            QVERIFY(setExifOrientation(sample.exifSegment, quint16(orientation)));
        }
        // The name says JPEG: the content decides.
        const QString file = path(QStringLiteral("heif-%1-%2.jpg").arg(avif).arg(orientation));
        QVERIFY(writeHeif(file, upright, sample));
        const QByteArray bytes = fileBytes(file);
        QVERIFY(looksLikeHeif(bytes.left(64)) && !looksLikeRaw(bytes.left(64)));

        DecodeError error;
        const std::optional<Photo> photo = decodeHeif(bytes, kMaxPhotoPixels, &error);
        QVERIFY2(photo, qPrintable(error.reason));
        const cv::Mat& pixels = photo->pixels;
        QCOMPARE(pixels.cols, 600);
        QCOMPARE(pixels.rows, 400);
        QCOMPARE(pixels.channels(), alpha ? 4 : 3);
        const bool deep = bitDepth > 8;
        QCOMPARE(pixels.depth(), deep ? CV_16U : CV_8U);
        if (deep) {
            // 10- or 12-bit white reaches the top of the 16-bit range.
            double top = 0;
            cv::minMaxLoc(pixels.reshape(1), nullptr, &top);
            QVERIFY2(top > 64000, qPrintable(QString::number(top)));
        }
        const double difference = meanColourDifference(pixels, upright);
        QVERIFY2(difference < 1.5, qPrintable(QString::number(difference)));
        QCOMPARE(photo->iccProfile, sample.iccProfile);
        if (!sample.exifSegment.isEmpty()) {
            QCOMPARE(exifOrientation(photo->exifSegment), 1);
            QVERIFY(photo->exifSegment.contains("Test Body 24"));
        }
        QVERIFY(readPixels(file).size == pixels.size);

        QVERIFY(!decodeHeif(bytes, 600 * 400 - 1, &error));
        QCOMPARE(error.kind, DecodeError::TooLarge);
    }

    void raw_data()
    {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<int>("cols");
        QTest::addColumn<int>("rows");
        QTest::newRow("as shot") << 1 << 600 << 400;
        QTest::newRow("camera held upright (6)") << 6 << 400 << 600;
        QTest::newRow("upside down (3)") << 3 << 600 << 400;
    }
    void raw()
    {
        QFETCH(int, orientation);
        QFETCH(int, cols);
        QFETCH(int, rows);
        cv::Mat upright = m_photo;
        if (cols < rows)
            cv::rotate(m_photo, upright, cv::ROTATE_90_CLOCKWISE);
        const QByteArray dng = makeDng(upright, orientation, cameraDetails());
        QVERIFY(looksLikeRaw(dng.left(4096)) && !looksLikeHeif(dng.left(4096)));

        DecodeError error;
        const std::optional<Photo> photo = decodeRaw(dng, kMaxPhotoPixels, &error);
        QVERIFY2(photo, qPrintable(error.reason));
        QCOMPARE(photo->pixels.type(), CV_16UC3);
        QCOMPARE(photo->pixels.cols, cols);
        QCOMPARE(photo->pixels.rows, rows);
        const double difference = meanColourDifference(photo->pixels, upright);
        QVERIFY2(difference < 2.5, qPrintable(QString::number(difference)));
        QCOMPARE(exifOrientation(photo->exifSegment), 1);

        const QString file = path(QStringLiteral("camera%1.tif").arg(orientation));
        QVERIFY(writeFileBytes(file, dng));
        QVERIFY(readPixels(file).size == photo->pixels.size);
        QVERIFY(!decodeRaw(dng, qint64(cols) * rows - 1, &error));
        QCOMPARE(error.kind, DecodeError::TooLarge);
    }

    // The EXIF block of a developed RAW, read back by exiftool from the JPEG
    // the saver writes.
    void rawCameraDetails()
    {
        const std::optional<Photo> photo = decodeRaw(makeDng(m_photo, 1, cameraDetails()), kMaxPhotoPixels, nullptr);
        QVERIFY(photo);
        const QString file = path(QStringLiteral("developed.jpg"));
        QVERIFY(writePhoto(file, *photo, PhotoFormat::Jpeg));
        QProcess exiftool;
        exiftool.start(QStringLiteral("exiftool"), {"-j", "-n", "-Make", "-Model", "-LensModel", "-DateTimeOriginal",
                                                    "-ExposureTime", "-FNumber", "-ISO", "-FocalLength",
                                                    "-Orientation", file});
        QVERIFY(exiftool.waitForFinished(30000));
        QJsonObject tags = QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array().at(0).toObject();
        tags.remove("SourceFile");
        const QJsonObject expected{{"Make", "Melo Optics"}, {"Model", "Test Body 24"}, {"LensModel", "35mm F1.8 Prime"},
                                   {"DateTimeOriginal", "2026:05:17 14:30:05"}, {"ExposureTime", 0.008},
                                   {"FNumber", 5.6}, {"ISO", 400}, {"FocalLength", 35}, {"Orientation", 1}};
        QCOMPARE(QJsonDocument(tags).toJson(QJsonDocument::Compact), QJsonDocument(expected).toJson(QJsonDocument::Compact));
    }

    // Cut-off and foreign files: nothing decoded, a reason given, and the
    // ordinary formats never claimed by the RAW or HEIF decoders.
    void unreadable_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("raw");
        HeifSample sample;
        QVERIFY(writeHeif(path("whole.heic"), m_photo, sample));
        const QByteArray heic = fileBytes(path("whole.heic"));
        const QByteArray dng = makeDng(m_photo, 1, cameraDetails());
        QTest::newRow("HEIC cut in half") << heic.left(heic.size() / 2) << false;
        QTest::newRow("HEIC header only") << heic.left(40) << false;
        QTest::newRow("DNG cut in its sensor data") << dng.left(dng.size() * 2 / 3) << true;
        QTest::newRow("DNG header only") << dng.left(300) << true;
        QTest::newRow("text") << QByteArray("not a photograph at all\n") << true;
    }
    void unreadable()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, raw);
        DecodeError error;
        const bool decoded = raw ? bool(decodeRaw(bytes, kMaxPhotoPixels, &error))
                                 : bool(decodeHeif(bytes, kMaxPhotoPixels, &error));
        QVERIFY(!decoded);
        QVERIFY(!error.reason.isEmpty());
        const QString file = path(QStringLiteral("broken.jpg"));
        QVERIFY(writeFileBytes(file, bytes));
        QVERIFY(readPixels(file).empty());
    }

    void ordinaryFormatsNotClaimed()
    {
        for (const char* extension : {".tif", ".png", ".jpg", ".webp"}) {
            std::vector<uchar> encoded;
            QVERIFY(cv::imencode(extension, m_photo, encoded));
            const QByteArray head(reinterpret_cast<const char*>(encoded.data()), int(qMin<size_t>(encoded.size(), 4096)));
            QVERIFY2(!looksLikeRaw(head) && !looksLikeHeif(head), extension);
        }
        // A camera's CR3 is an ISO media file too, but no HEIF.
        const QByteArray cr3("\0\0\0\x18" "ftypcrx \0\0\0\x01" "crx isom", 24);
        QVERIFY(looksLikeRaw(cr3) && !looksLikeHeif(cr3));
    }

    // A TIFF with a make and sub-images looks like a camera's RAW file; one
    // that LibRaw does not know (a scanner's, say) is read as the TIFF it is.
    void tiffLookingLikeRaw()
    {
        cv::Mat rgb;
        cv::cvtColor(m_photo, rgb, cv::COLOR_BGR2RGB);
        const QByteArray strip(reinterpret_cast<const char*>(rgb.data), int(rgb.total() * rgb.elemSize()));
        TiffDirectory thumbnail;
        thumbnail.longs(256, {1});
        TiffDirectory ifd;
        ifd.longs(256, {quint32(rgb.cols)});
        ifd.longs(257, {quint32(rgb.rows)});
        ifd.shorts(258, {8, 8, 8});
        ifd.shorts(259, {1});
        ifd.shorts(262, {2});  // RGB
        ifd.ascii(271, "Melo Scanners");
        ifd.dataOffset(273, strip);
        ifd.shorts(277, {3});
        ifd.longs(278, {quint32(rgb.rows)});
        ifd.longs(279, {quint32(strip.size())});
        ifd.shorts(284, {1});
        ifd.subDirectory(330, thumbnail);
        const QByteArray tiff = tiffFile(ifd);
        QVERIFY(looksLikeRaw(tiff));

        const PhotoReadResult read = decodePhoto(tiff);
        QVERIFY2(read, qPrintable(read.reason));
        QCOMPARE(cv::norm(read.photo->pixels, m_photo, cv::NORM_INF), 0.0);
        // Cut off, it is no photograph either way.
        QVERIFY(!decodePhoto(tiff.left(tiff.size() / 2)));
    }
};

QTEST_GUILESS_MAIN(TestPhotoFormats)
#include "tst_photoformats.moc"
