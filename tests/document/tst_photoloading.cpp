// The quick first preview of a JPEG (decoded at a fraction of its size) or
// a camera RAW (developed at half size): it has the size of the preview of
// the full decode, the same orientation, and nearly its pixels; it is not
// made where it cannot help or cannot be trusted (a small JPEG, another
// format, a cut-off file).
#include "FormatSamples.h"
#include "PhotoLoading.h"

#include <QProcess>
#include <QSize>
#include <QTemporaryDir>
#include <QTest>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

class TestPhotoLoading : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void quickPreview_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("orientation");
        QTest::addColumn<bool>("quick");
        QTest::newRow("landscape, 1/4") << "jpg" << QSize(4800, 3200) << 1 << true;
        QTest::newRow("turned by EXIF 6") << "jpg" << QSize(2400, 1600) << 6 << true;
        QTest::newRow("upside down, EXIF 3") << "jpg" << QSize(2400, 1800) << 3 << true;
        QTest::newRow("1/2 only, odd size") << "jpg" << QSize(2401, 1601) << 1 << true;
        QTest::newRow("small: nothing to gain") << "jpg" << QSize(1000, 700) << 1 << false;
        QTest::newRow("PNG") << "png" << QSize(2400, 1600) << 1 << false;
        QTest::newRow("cut-off JPEG") << "cut" << QSize(2400, 1600) << 1 << false;
        QTest::newRow("DNG") << "dng" << QSize(2400, 1600) << 1 << true;
        QTest::newRow("DNG held upright (6)") << "dng" << QSize(1600, 2400) << 6 << true;
        QTest::newRow("cut-off DNG") << "cut dng" << QSize(2400, 1600) << 1 << false;
    }
    void quickPreview()
    {
        QFETCH(QString, format);
        QFETCH(QSize, size);
        QFETCH(int, orientation);
        QFETCH(bool, quick);
        const cv::Mat sample = cv::imread(MELO_SAMPLES_DIR "/chelsea.png", cv::IMREAD_COLOR);
        QVERIFY(!sample.empty());
        cv::Mat big;
        cv::resize(sample, big, cv::Size(size.width(), size.height()), 0, 0, cv::INTER_CUBIC);
        const QString path = m_dir.filePath(QStringLiteral("p.") + (format == "png" ? "png" : "jpg"));
        QVERIFY(cv::imwrite(path.toStdString(), big));
        if (orientation != 1)
            QCOMPARE(QProcess::execute("exiftool", {"-q", "-overwrite_original", "-n",
                                                    QStringLiteral("-Orientation=%1").arg(orientation), path}),
                     0);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        CameraExif camera;
        camera.make = "Melo Optics";
        camera.model = "Test Body 24";
        QByteArray bytes = format.contains("dng") ? makeDng(big, orientation, camera) : file.readAll();
        if (format.startsWith("cut"))
            bytes.chop(bytes.size() / 3);

        cv::Mat preview = ::quickPreview(bytes).pixels;
        QCOMPARE(!preview.empty(), quick);
        if (!quick)
            return;
        if (format == "dng")  // shown at 8 bits, as the full preview is
            preview.convertTo(preview, CV_8U, 1.0 / 257.0);
        const LoadedPhoto full = loadPhotoBytes(bytes);
        QVERIFY(full.ok());
        QCOMPARE(preview.size(), full.preview.size());
        QCOMPARE(preview.type(), full.preview.type());
        // A grey-level or two from the full preview: the same picture, the
        // same way up.
        const double mean = cv::norm(preview, full.preview, cv::NORM_L1) / double(preview.total() * 3);
        QVERIFY2(mean < 2.0, qPrintable(QString::number(mean)));
    }
};

QTEST_GUILESS_MAIN(TestPhotoLoading)
#include "tst_photoloading.moc"
