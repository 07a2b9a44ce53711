// The one reader and the one writer of photographs, on real photographs made
// into each case with Debian's tools (exiftool, ImageMagick): upright in all
// eight orientations, colour profiles carried through every format and shown
// converted to sRGB, 16 bits and alpha kept, special and lying files refused
// at once, and failed writes that leave an existing file alone.
#include "DisplayProfile.h"
#include "FileBytes.h"
#include "ImageCompare.h"
#include "ImageDocument.h"
#include "LutApply.h"
#include "PhotoReader.h"
#include "PhotoWriter.h"
#include "MyThread.h"  // the cv::Mat meta-type
#include "SaveJob.h"
#include "SmallDisk.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <zlib.h>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>

namespace {

const QString kSamples = QStringLiteral(MELO_SAMPLES_DIR "/");
const QString kAdobeRgb = QStringLiteral("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc");
const QString kSrgb = QStringLiteral("/usr/share/color/icc/sRGB.icc");

bool run(const QString& program, const QStringList& arguments, QByteArray* out = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000))
        return false;
    if (out)
        *out = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool exiftool(const QStringList& arguments, QByteArray* out = nullptr)
{
    return run("exiftool", QStringList{"-q", "-overwrite_original"} + arguments, out);
}

cv::Mat imread(const QString& path, int flags = cv::IMREAD_UNCHANGED)
{
    return cv::imread(QFile::encodeName(path).toStdString(), flags);
}

double meanDifference(const cv::Mat& a, const cv::Mat& b)
{
    return cv::norm(a, b, cv::NORM_L1) / double(a.total() * a.channels());
}

// A real photograph, not square, with coloured marks in three corners:
// red top left, green top right, blue bottom left (BGR).
cv::Mat markedPhoto()
{
    cv::Mat photo;
    cv::resize(imread(kSamples + "chelsea.png", cv::IMREAD_COLOR), photo, cv::Size(150, 100), 0, 0, cv::INTER_AREA);
    photo(cv::Rect(0, 0, 24, 24)).setTo(cv::Scalar(0, 0, 255));
    photo(cv::Rect(126, 0, 24, 24)).setTo(cv::Scalar(0, 255, 0));
    photo(cv::Rect(0, 76, 24, 24)).setTo(cv::Scalar(255, 0, 0));
    return photo;
}

// Whether the red mark sits in the given corner (0 top left, then clockwise).
bool redIn(const cv::Mat& m, int corner)
{
    const int x = corner == 1 || corner == 2 ? m.cols - 12 : 12;
    const int y = corner >= 2 ? m.rows - 12 : 12;
    const cv::Vec3b p = m.at<cv::Vec3b>(y, x);
    return p[0] < 40 && p[1] < 40 && p[2] > 215;
}

// A 16-bit picture whose values are not multiples of 257, from a real photo.
cv::Mat deepPhoto()
{
    cv::Mat deep;
    imread(kSamples + "astronaut.png", cv::IMREAD_COLOR).convertTo(deep, CV_16U, 251.3, 97);
    return deep;
}

cv::Mat withAlphaRamp(const cv::Mat& colour)
{
    cv::Mat alpha(colour.size(), colour.depth());
    for (int y = 0; y < alpha.rows; ++y)
        alpha.row(y).setTo(cv::Scalar(y * (colour.depth() == CV_16U ? 65535 : 255) / (alpha.rows - 1)));
    cv::Mat out;
    cv::merge(std::vector<cv::Mat>{colour, alpha}, out);
    return out;
}

} // namespace

class TestPhotoIo : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(cv::imwrite(path("marked.jpg").toStdString(), markedPhoto(), {cv::IMWRITE_JPEG_QUALITY, 95}));
        QVERIFY(cv::imwrite(path("marked.tif").toStdString(), markedPhoto()));
    }

    // The stored picture is the marked one as it is; the file says how to
    // turn it. ImageMagick's -auto-orient is the independent answer.
    void orientationsOpenUpright_data()
    {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<int>("redCorner");  // where the stored top left ends up
        QTest::addColumn<QString>("type");
        const int corners[] = {0, 1, 2, 3, 0, 1, 2, 3};
        for (int o = 1; o <= 8; ++o)
            QTest::addRow("orientation %d", o) << o << corners[o - 1] << "jpg";
        QTest::newRow("tiff, orientation 7") << 7 << 2 << "tif";
    }
    void orientationsOpenUpright()
    {
        QFETCH(int, orientation);
        QFETCH(QString, type);
        const QString stored = path(QString("o%1.%2").arg(orientation).arg(type));
        QVERIFY(QFile::copy(path("marked." + type), stored));
        QVERIFY(exiftool({QString("-Orientation#=%1").arg(orientation), "-Make=MeloCam", stored}));
        const QString expected = path(QString("o%1-im.png").arg(orientation));
        QVERIFY(run("convert", {stored, "-auto-orient", expected}));

        const PhotoReadResult read = readPhoto(stored);
        QVERIFY(read);
        const cv::Mat reference = imread(expected, cv::IMREAD_COLOR);
        QCOMPARE(read.photo->pixels.size(), orientation >= 5 ? cv::Size(100, 150) : cv::Size(150, 100));
        QFETCH(int, redCorner);
        QVERIFY(redIn(read.photo->pixels, redCorner));
        QCOMPARE(read.photo->pixels.size(), reference.size());
        QVERIFY2(meanDifference(read.photo->pixels, reference) < 1.5, qPrintable(QString::number(orientation)));

        // Saved as JPEG: upright pixels that no viewer turns again, camera kept.
        const QString saved = path(QString("o%1-saved.jpg").arg(orientation));
        QVERIFY(writePhoto(saved, *read.photo, PhotoFormat::Jpeg));
        QByteArray tags;
        QVERIFY(exiftool({"-n", "-s3", "-Orientation", "-Make", saved}, &tags));
        // A TIFF's camera tags are not carried into a JPEG.
        QCOMPARE(tags, type == "jpg" ? QByteArray("1\nMeloCam\n") : QByteArray());
        QVERIFY(run("convert", {saved, "-auto-orient", path("back.png")}));
        QVERIFY(meanDifference(imread(path("back.png"), cv::IMREAD_COLOR), reference) < 3.0);  // one more JPEG generation
    }

    // The profile's bytes come out exactly as they went in, whatever format
    // the photograph is saved in.
    void profileRoundTrip_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<int>("format");
        QTest::newRow("jpeg to jpeg") << "p.jpg" << int(PhotoFormat::Jpeg);
        QTest::newRow("png to png") << "p.png" << int(PhotoFormat::Png);
        QTest::newRow("tiff to tiff") << "p.tif" << int(PhotoFormat::Tiff);
    }
    void profileRoundTrip()
    {
        QFETCH(QString, source);
        QFETCH(int, format);
        const QString in = path(source);
        if (!QFile::exists(in)) {
            QVERIFY(run("convert", {kSamples + "coffee.png", in}));
            QVERIFY(exiftool({"-icc_profile<=" + kAdobeRgb, in}));
        }
        const PhotoReadResult read = readPhoto(in);
        QVERIFY(read);
        QCOMPARE(read.photo->iccProfile, fileBytes(kAdobeRgb));
        const QString out = path("profile-out." + QString::number(format));
        QVERIFY(writePhoto(out, *read.photo, PhotoFormat(format)));
        QByteArray profile;
        QVERIFY(exiftool({"-b", "-icc_profile", out}, &profile));
        QCOMPARE(profile, fileBytes(kAdobeRgb));
        QVERIFY(readPhoto(out));
    }

    // An Adobe RGB photograph is shown as ImageMagick's LittleCMS conversion to
    // sRGB shows it, visibly unlike its raw values; an sRGB one costs nothing.
    void displayConversion()
    {
        const PhotoReadResult rocket = readPhoto(kSamples + "rocket.jpg");
        QVERIFY(rocket && !rocket.photo->iccProfile.isEmpty());
        const auto display = DisplayProfile::forProfile(rocket.photo->iccProfile);
        QVERIFY(display);
        const cv::Mat shown = display->toSrgb(rocket.photo->pixels);
        QVERIFY(run("convert", {kSamples + "rocket.jpg", "-profile", kSrgb, path("rocket-srgb.png")}));
        const cv::Mat reference = imread(path("rocket-srgb.png"), cv::IMREAD_COLOR);
        QVERIFY2(cv::norm(shown, reference, cv::NORM_INF) <= 3, qPrintable(QString::number(cv::norm(shown, reference, cv::NORM_INF))));
        QVERIFY(meanDifference(shown, rocket.photo->pixels) > 3.0);

        // With alpha: the colours converted alike, the alpha untouched.
        QVERIFY(sameImage(display->toSrgb(withAlphaRamp(rocket.photo->pixels)), withAlphaRamp(shown)));

        QVERIFY(!DisplayProfile::forProfile(fileBytes(kSrgb)));
        QVERIFY(!DisplayProfile::forProfile(QByteArray()));
        QVERIFY(!DisplayProfile::forProfile(QByteArray("not a profile")));
        const cv::Mat plain = imread(kSamples + "coffee.png");
        QVERIFY(displayPixels(plain, nullptr).data == plain.data);
    }

    // PNG keeps 16 bits and alpha exactly (TIFF: tiffReadBackEverywhere);
    // JPEG holds 8 bits rounded to nearest, alpha dropped.
    void depthAndAlphaKept_data()
    {
        QTest::addColumn<cv::Mat>("pixels");
        QTest::addColumn<int>("format");
        const cv::Mat deep = deepPhoto();
        const cv::Mat rgba = withAlphaRamp(imread(kSamples + "coffee.png", cv::IMREAD_COLOR));
        QTest::newRow("16-bit png") << deep << int(PhotoFormat::Png);
        QTest::newRow("rgba png") << rgba << int(PhotoFormat::Png);
        QTest::newRow("16-bit jpeg") << deep << int(PhotoFormat::Jpeg);
        QTest::newRow("rgba jpeg") << rgba << int(PhotoFormat::Jpeg);
    }
    void depthAndAlphaKept()
    {
        QFETCH(cv::Mat, pixels);
        QFETCH(int, format);
        const QString out = path("deep." + QString::number(format));
        QVERIFY(writePhoto(out, Photo{pixels, fileBytes(kAdobeRgb), {}}, PhotoFormat(format)));
        const PhotoReadResult back = readPhoto(out);
        QVERIFY(back);
        if (PhotoFormat(format) != PhotoFormat::Jpeg) {
            QVERIFY(sameImage(back.photo->pixels, pixels));
            return;
        }
        cv::Mat colour = pixels, expected;
        if (colour.channels() == 4)
            cv::cvtColor(colour, colour, cv::COLOR_BGRA2BGR);
        colour.convertTo(expected, CV_8U, colour.depth() == CV_16U ? 1.0 / 257.0 : 1.0);
        QCOMPARE(back.photo->pixels.type(), CV_8UC3);
        QVERIFY2(cv::PSNR(back.photo->pixels, expected) > 36.0, qPrintable(QString::number(cv::PSNR(back.photo->pixels, expected))));
        // Rounded, not truncated: 257 * 200 + 128 is 200.498, 257 * 200 + 129 is 201.
        QCOMPARE(jpegPixels(cv::Mat(1, 2, CV_16UC1, cv::Scalar(257 * 200 + 128))).at<uchar>(0), uchar(200));
        QCOMPARE(jpegPixels(cv::Mat(1, 2, CV_16UC1, cv::Scalar(257 * 200 + 129))).at<uchar>(0), uchar(201));
    }

    // A TIFF is written by libtiff straight into the file: every layout
    // reads back exactly, through our reader and through ImageMagick (which
    // takes the extra sample for alpha and is given a PNG to hand the pixels
    // back), with its profile, and the bytes kept in memory are the file's.
    void tiffReadBackEverywhere_data()
    {
        QTest::addColumn<cv::Mat>("pixels");
        QTest::addColumn<QString>("identified");  // width height depth channels
        const cv::Mat deep = deepPhoto();
        cv::Mat colour = imread(kSamples + "coffee.png", cv::IMREAD_COLOR), grey;
        cv::cvtColor(colour, grey, cv::COLOR_BGR2GRAY);
        QTest::newRow("grey") << grey << "600 400 8 gray";
        QTest::newRow("bgr") << colour << "600 400 8 srgb";
        QTest::newRow("16-bit bgr") << deep << "512 512 16 srgb";
        QTest::newRow("bgra") << withAlphaRamp(colour) << "600 400 8 srgba";
        // A crop: rows that do not follow each other in memory.
        QTest::newRow("16-bit bgr, cropped") << deep(cv::Rect(3, 101, 333, 277)) << "333 277 16 srgb";
    }
    void tiffReadBackEverywhere()
    {
        QFETCH(cv::Mat, pixels);
        const QString out = path("layout.tif");
        const Photo photo{pixels, fileBytes(kAdobeRgb), {}};
        QVERIFY(writePhoto(out, photo, PhotoFormat::Tiff));
        QCOMPARE(encodePhoto(photo, PhotoFormat::Tiff), fileBytes(out));

        const PhotoReadResult back = readPhoto(out);
        QVERIFY(back);
        QVERIFY(sameImage(back.photo->pixels, pixels));
        QCOMPARE(back.photo->iccProfile, fileBytes(kAdobeRgb));

        QByteArray identified;
        QVERIFY(run("identify", {"-format", "%w %h %z %[channels]", out}, &identified));
        QTEST(QString::fromLatin1(identified), "identified");
        QVERIFY(run("convert", {out, path("layout-im.png")}));
        QVERIFY(sameImage(imread(path("layout-im.png")), pixels));
    }

    // Refused at once, with the reason, before a pixel is decoded.
    void refusedAtOnce_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("error");
        QTest::newRow("fifo") << "fifo.jpg" << int(PhotoReadError::NotRegularFile);
        QTest::newRow("link to /dev/zero") << "zero.jpg" << int(PhotoReadError::NotRegularFile);
        QTest::newRow("directory") << "folder.jpg" << int(PhotoReadError::NotRegularFile);
        QTest::newRow("png header claims 20000 x 20000") << "bomb.png" << int(PhotoReadError::TooLarge);
        QTest::newRow("jpeg frame claims 65000 x 65000") << "bomb.jpg" << int(PhotoReadError::TooLarge);
        QTest::newRow("cut-off jpeg") << "cut.jpg" << int(PhotoReadError::Truncated);
        QTest::newRow("text named .jpg") << "text.jpg" << int(PhotoReadError::Undecodable);
        QTest::newRow("missing") << "missing.jpg" << int(PhotoReadError::Unreadable);
    }
    void refusedAtOnce()
    {
        QFETCH(QString, file);
        const QString p = path(file);
        if (file == "fifo.jpg")
            QVERIFY(mkfifo(QFile::encodeName(p).constData(), 0600) == 0);
        else if (file == "zero.jpg")
            QVERIFY(QFile::link("/dev/zero", p));
        else if (file == "folder.jpg")
            QVERIFY(QDir().mkpath(p));
        else if (file == "bomb.png") {
            QByteArray png = fileBytes(kSamples + "coffee.png");
            QVERIFY(png.size() > 33);
            const auto bigEndian = [](quint32 value) {
                const quint32 stored = qToBigEndian(value);
                return QByteArray(reinterpret_cast<const char*>(&stored), 4);
            };
            // IHDR claims 20000 x 20000; its CRC is made to match.
            png.replace(16, 4, bigEndian(20000)).replace(20, 4, bigEndian(20000));
            png.replace(29, 4, bigEndian(quint32(crc32(0, reinterpret_cast<const Bytef*>(png.constData() + 12), 17))));
            QVERIFY(writeFileBytes(p, png));
        } else if (file == "bomb.jpg") {
            QByteArray jpeg = fileBytes(kSamples + "rocket.jpg");
            const int sof = jpeg.indexOf("\xFF\xC0");
            QVERIFY(sof > 0);
            jpeg.replace(sof + 5, 4, QByteArray("\xFD\xE8\xFD\xE8", 4));
            QVERIFY(writeFileBytes(p, jpeg));
        } else if (file == "cut.jpg") {
            QVERIFY(writeFileBytes(p, fileBytes(kSamples + "rocket.jpg").left(20000)));
        } else if (file == "text.jpg") {
            QVERIFY(writeFileBytes(p, "just some text, no picture\n"));
        }
        QElapsedTimer clock;
        clock.start();
        const PhotoReadResult read = readPhoto(p);
        QVERIFY(clock.elapsed() < 1000);
        QVERIFY(!read && !read.reason.isEmpty());
        QTEST(int(read.error), "error");
        // The editor gives the same answer and keeps its photograph.
        ImageDocument doc;
        QVERIFY(doc.openAdjustment(kSamples + "coffee.png"));
        QString reason;
        QVERIFY(!doc.openAdjustment(p, &reason));
        QCOMPARE(reason, read.reason);
        QCOMPARE(doc.m_filePath, kSamples + "coffee.png");
    }

    // A write that cannot complete leaves the earlier file byte for byte and
    // nothing else behind, and says why: a TIFF written strip by strip into
    // the file gives the same reason as a PNG written in one piece.
    void failedWriteLeavesTheFile_data()
    {
        QTest::addColumn<QString>("where");
        QTest::newRow("full disk") << "full";
        QTest::newRow("read-only disk") << "readonly";
        QTest::newRow("missing folder") << "missing";
    }
    void failedWriteLeavesTheFile()
    {
        QFETCH(QString, where);
        SmallDisk disk("size=64k");
        if (where != "missing" && !disk.mounted())
            QSKIP("mounting a tmpfs is not permitted here");
        const QString folder = where == "missing" ? path("gone") : disk.path();
        const QString target = folder + "/out.img";
        if (where != "missing")
            QVERIFY(writeFileBytes(target, "earlier"));
        if (where == "readonly")
            QVERIFY(disk.makeReadOnly());
        QStringList errors;
        for (const PhotoFormat format : {PhotoFormat::Png, PhotoFormat::Tiff}) {
            QString error;
            QVERIFY(!writePhoto(target, Photo{deepPhoto(), {}, {}}, format, &error));
            QCOMPARE(fileBytes(target), where == "missing" ? QByteArray() : QByteArray("earlier"));
            errors << error;
        }
        QVERIFY(!errors[0].isEmpty());
        QCOMPARE(errors[1], errors[0]);
        if (where == "full")  // the system's word, not the cancelled write's
            QCOMPARE(errors[0], QString::fromLocal8Bit(std::strerror(ENOSPC)));
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), where == "missing" ? 0 : 1);
    }

    // The save of a 16-bit photograph is graded at 16 bits: each layer's
    // table by the tetrahedral rule with the input scaled by
    // (size - 1) * (1/65535 as a float) and the output clip(trunc(c * 65535)),
    // laid over the result so far by addWeighted with 1 added. Colours on
    // every tetrahedron, on ties between them, and clipped at both ends.
    void sixteenBitSaveFollowsTheRule()
    {
        const QString root = path("presets");
        QByteArray cube = "LUT_3D_SIZE 3\n";
        for (int b = 0; b < 3; ++b)
            for (int g = 0; g < 3; ++g)
                for (int r = 0; r < 3; ++r)
                    cube += QByteArray::number(1.3 * r / 2 - 0.15) + ' ' + QByteArray::number(g * g / 4.0) + ' '
                            + QByteArray::number(0.5 + 0.7 * (b - r) / 2) + '\n';
        QVERIFY(writeFileBytes(presetFilePath(root, 0, 0), cube) && writeFileBytes(presetFilePath(root, 0, 4), cube));

        cv::Mat source(64, 64, CV_16UC3);
        cv::theRNG().state = 11;
        cv::randu(source, 0, 65536);
        const ushort fixed[][3] = {{0, 0, 0}, {65535, 65535, 65535}, {30000, 30000, 30000}, {1000, 40000, 40000},
                                   {50000, 50000, 100}, {65535, 0, 32767}, {32768, 32768, 1}, {7, 65534, 7}};
        for (int i = 0; i < 8; ++i)
            source.at<cv::Vec3w>(0, i) = cv::Vec3w(fixed[i][0], fixed[i][1], fixed[i][2]);

        SaveJob job;
        job.source = Photo{source, {}, {}};
        job.scene = 0;
        job.layers.ids[0] = 0;
        job.layers.ids[1] = 0;
        job.layers.strengths[1] = 70;
        job.presetRoot = root;
        const cv::Mat saved = savedPixels(job);
        QCOMPARE(saved.depth(), CV_16U);

        const std::unique_ptr<Lut3D, void (*)(void*)> lut(readLutFile(presetFilePath(root, 0, 0).toLocal8Bit().constData()), free);
        QVERIFY(lut);
        const float scale = float(lut->lutSize - 1) * (1.0f / 65535.0f);
        auto table = [&](const cv::Mat& in) {
            cv::Mat out(in.size(), in.type());
            for (int y = 0; y < in.rows; ++y)
                for (int x = 0; x < in.cols; ++x) {
                    const cv::Vec3w v = in.at<cv::Vec3w>(y, x);
                    const float rgb[3] = {v[2] * scale, v[1] * scale, v[0] * scale};
                    const LutRgb c = interpTetrahedral(lut.get(), rgb);
                    auto level = [](float f) {
                        const float scaled = f * 65535.0f;
                        return ushort(scaled <= 0.0f ? 0 : scaled >= 65535.0f ? 65535 : int(scaled));
                    };
                    out.at<cv::Vec3w>(y, x) = cv::Vec3w(level(c.b), level(c.g), level(c.r));
                }
            return out;
        };
        cv::Mat top, expected;
        cv::addWeighted(source, 0.0, table(source), 1.0, 1.0, top);
        cv::addWeighted(top, 1.0 - double(0.7f), table(top), double(0.7f), 1.0, expected);
        QVERIFY(sameImage(saved, expected));
    }

    // A 1-pixel-wide crop keeps a thumbnail a preset button can show.
    void thinCropThumbnail()
    {
        ImageDocument doc;
        QVERIFY(doc.openAdjustment(kSamples + "astronaut.png"));
        QVERIFY(doc.acceptCrop(QRect(600, 0, 1, 1200)));
        QCOMPARE(doc.m_thumbMat.cols, 82);
        QCOMPARE(doc.m_thumbMat.rows, 246);
    }
};

QTEST_GUILESS_MAIN(TestPhotoIo)
#include "tst_photoio.moc"
