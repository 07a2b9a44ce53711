// The direct libjpeg-turbo codec gives exactly what OpenCV's codec gives, for
// the kinds of JPEG photographs come as (subsampled or not, progressive, with
// restart markers, grey), at every decode scale; bytes, not just pixels, for
// the encoder. What it does not handle (CMYK, broken data) comes back empty for
// the general decoder, which the reader then uses.
#include "FileBytes.h"
#include "ImageCompare.h"
#include "JpegCodec.h"
#include "JpegSegments.h"
#include "PhotoReader.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace {

cv::Mat openCvDecode(const QByteArray& bytes, int flags)
{
    return cv::imdecode(cv::Mat(1, bytes.size(), CV_8U, const_cast<char*>(bytes.constData())), flags);
}

} // namespace

class TestJpegCodec : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void decodesAsOpenCvDoes_data()
    {
        QTest::addColumn<QString>("sample");
        QTest::addColumn<QStringList>("convertOptions");  // how ImageMagick writes the JPEG
        QTest::addColumn<int>("channels");
        QTest::newRow("4:2:0") << "astronaut.png" << QStringList{"-quality", "92"} << 3;
        QTest::newRow("4:4:4") << "coffee.png" << QStringList{"-sampling-factor", "1x1", "-quality", "97"} << 3;
        QTest::newRow("4:2:2, odd size") << "chelsea.png"
                                          << QStringList{"-crop", "449x299+1+1", "-sampling-factor", "2x1"} << 3;
        QTest::newRow("progressive") << "rocket.jpg" << QStringList{"-interlace", "Plane"} << 3;
        QTest::newRow("restart markers") << "motorcycle_left.png" << QStringList{"-define", "jpeg:restart-interval=3"}
                                         << 3;
        QTest::newRow("grey") << "camera.png" << QStringList{"-colorspace", "Gray"} << 1;
    }
    void decodesAsOpenCvDoes()
    {
        QFETCH(QString, sample);
        QFETCH(QStringList, convertOptions);
        QFETCH(int, channels);
        const QString path = m_dir.filePath(QString(QTest::currentDataTag()).replace(' ', '_') + ".jpg");
        QCOMPARE(QProcess::execute("convert", QStringList{MELO_SAMPLES_DIR "/" + sample} + convertOptions + QStringList{path}),
                 0);
        const QByteArray bytes = fileBytes(path);
        const cv::Mat full = decodeJpeg(bytes, 1, false, kMaxPhotoPixels);
        QCOMPARE(full.channels(), channels);
        QVERIFY(sameImage(full, openCvDecode(bytes, cv::IMREAD_UNCHANGED)));
        const int reduced[] = {cv::IMREAD_REDUCED_COLOR_2, cv::IMREAD_REDUCED_COLOR_4, cv::IMREAD_REDUCED_COLOR_8};
        for (int i = 0; i < 3; ++i) {
            const cv::Mat ours = decodeJpeg(bytes, 2 << i, true, kMaxPhotoPixels);
            QVERIFY2(sameImage(ours, openCvDecode(bytes, reduced[i] | cv::IMREAD_IGNORE_ORIENTATION)),
                     qPrintable(QStringLiteral("1/%1").arg(2 << i)));
        }
        // The pixel cap counts the decoded size.
        QVERIFY(decodeJpeg(bytes, 1, false, qint64(full.total()) - 1).empty());
        QVERIFY(!decodeJpeg(bytes, 2, false, qint64(full.total()) / 2).empty());
    }

    void encodesAsOpenCvDoes_data()
    {
        QTest::addColumn<int>("conversion");  // from the BGR sample, -1 for none
        QTest::addColumn<int>("quality");
        QTest::newRow("BGR, 100") << -1 << 100;
        QTest::newRow("BGR, 75") << -1 << 75;
        QTest::newRow("grey") << int(cv::COLOR_BGR2GRAY) << 100;
        QTest::newRow("BGRA: alpha dropped") << int(cv::COLOR_BGR2BGRA) << 100;
    }
    void encodesAsOpenCvDoes()
    {
        QFETCH(int, conversion);
        QFETCH(int, quality);
        cv::Mat pixels = cv::imread(MELO_SAMPLES_DIR "/coffee.png", cv::IMREAD_COLOR);
        QVERIFY(!pixels.empty());
        if (conversion >= 0)
            cv::cvtColor(pixels, pixels, conversion);
        if (pixels.channels() == 4)  // an alpha that must not leak into the colours
            cv::randu(pixels.reshape(1).colRange(0, 1), 0, 256);
        std::vector<uchar> expected;
        QVERIFY(cv::imencode(".jpg", pixels, expected, {cv::IMWRITE_JPEG_QUALITY, quality}));
        const QByteArray ours = encodeJpeg(pixels, quality);
        QCOMPARE(ours.size(), int(expected.size()));
        QVERIFY(ours == QByteArray(reinterpret_cast<const char*>(expected.data()), int(expected.size())));
        // Segments go where the writer always put them: after the JFIF header.
        QFile profile(QStringLiteral("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc"));
        QVERIFY(profile.open(QIODevice::ReadOnly));
        const QByteArray segments = QByteArray("\xFF\xE1\x00\x08" "Exif\x00\x00", 10) + iccSegments(profile.readAll());
        QVERIFY(encodeJpeg(pixels, quality, segments) == insertSegment(ours, segments));
        QVERIFY(encodeJpeg(pixels, quality, QByteArray("\xFF\xE1\x00\x40", 4)).isEmpty());  // cut short
        // A view into a larger picture (rows not contiguous) encodes the same.
        cv::Mat wider;
        cv::copyMakeBorder(pixels, wider, 0, 0, 0, 7, cv::BORDER_REPLICATE);
        QVERIFY(encodeJpeg(wider.colRange(0, pixels.cols), quality) == ours);
    }

    // CMYK and broken data are left to the general decoder; the reader still
    // opens the CMYK photograph as it always did and refuses the broken one.
    void leavesTheRestToOpenCv()
    {
        const QString cmyk = m_dir.filePath("cmyk.jpg");
        QCOMPARE(QProcess::execute("convert", {MELO_SAMPLES_DIR "/coffee.png", "-colorspace", "CMYK", cmyk}), 0);
        const QByteArray bytes = fileBytes(cmyk);
        QVERIFY(decodeJpeg(bytes, 1, false, kMaxPhotoPixels).empty());
        const PhotoReadResult read = decodePhoto(bytes);
        QVERIFY(read);
        QVERIFY(sameImage(read.photo->pixels, openCvDecode(bytes, cv::IMREAD_UNCHANGED)));

        QByteArray broken = fileBytes(m_dir.filePath("grey.jpg"));
        QVERIFY(!broken.isEmpty());
        const int frame = broken.indexOf(QByteArray("\xFF\xC0", 2));
        QVERIFY(frame > 0);
        broken[frame + 1] = char(0xC3);  // a coding process libjpeg refuses
        QVERIFY(decodeJpeg(broken, 1, false, kMaxPhotoPixels).empty());
        QVERIFY(!decodePhoto(broken));
        QVERIFY(decodeJpeg("not a jpeg", 1, false, kMaxPhotoPixels).empty());
        QVERIFY(encodeJpeg(cv::Mat(), 100).isEmpty());
        QVERIFY(encodeJpeg(cv::Mat(4, 4, CV_16UC3, cv::Scalar::all(9)), 100).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestJpegCodec)
#include "tst_jpegcodec.moc"
