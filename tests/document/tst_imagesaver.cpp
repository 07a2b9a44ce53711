#include "GlobalConstants.h"
#include "ImageDocument.h"
#include "ImageSaver.h"
#include "JpegSegments.h"
#include "SettingsStore.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <opencv2/imgcodecs.hpp>

#include <csignal>
#include <sys/resource.h>

namespace {

QString sample(const char* name) { return QStringLiteral(MELO_SAMPLES_DIR "/") + QString::fromUtf8(name); }

setting record(const QString& folder, const char* name, const char* format)
{
    setting st;
    st.savePath = folder.toLocal8Bit().toStdString();
    st.saveName = name;
    st.saveFormat = format;
    st.interactive = 1;
    return st;
}

cv::Mat readBack(const QString& path) { return cv::imread(path.toStdString(), cv::IMREAD_UNCHANGED); }

bool equalImages(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
}

QByteArray fileBytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The APP1 segment that directly follows SOI and the JFIF segment, read by
// hand from the written file.
QByteArray app1AfterJfif(const QByteArray& jpeg)
{
    if (jpeg.size() < 6 || uchar(jpeg[3]) != 0xE0)
        return QByteArray();
    const int at = 4 + ((uchar(jpeg[4]) << 8) | uchar(jpeg[5]));
    if (uchar(jpeg[at]) != 0xFF || uchar(jpeg[at + 1]) != 0xE1)
        return QByteArray();
    return jpeg.mid(at, 2 + ((uchar(jpeg[at + 2]) << 8) | uchar(jpeg[at + 3])));
}

// Offset of the orientation value in the sample file: it is the
// first entry of the first directory (little-endian TIFF at offset 10).
constexpr int kHubbleOrientationAt = 2 + 10 + 8 + 2 + 8;

} // namespace

class TestImageSaver : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void target_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("path");  // empty: nothing is written
        QTest::addColumn<int>("quality");   // 7 is the value the record came with
        QTest::newRow("jpeg") << "/p" << "JPG" << "/p/n.jpg" << 100;
        QTest::newRow("png") << "/p" << "PNG" << "/p/n.png" << 9;
        QTest::newRow("tiff keeps quality") << "/p" << "TIFF" << "/p/n.tiff" << 7;
        QTest::newRow("search order, not text order") << "/p" << "TIFF or PNG" << "/p/n.png" << 9;
        QTest::newRow("case-sensitive") << "/p" << "jpg" << "" << 7;
        QTest::newRow("folder ending in a separator") << "/p/" << "JPG" << "/p//n.jpg" << 100;
        QTest::newRow("no folder") << "" << "JPG" << "/n.jpg" << 100;
    }
    void target()
    {
        QFETCH(QString, folder);
        QFETCH(QString, format);
        QFETCH(QString, path);
        QFETCH(int, quality);
        setting st = record(folder, "n", format.toLocal8Bit().constData());
        st.quality = 7;
        const SaveTarget t = saveTargetFor(st);
        QCOMPARE(t.valid, !path.isEmpty());
        QCOMPARE(t.filePath, path);
        QCOMPARE(t.record.quality, quality);
        QCOMPARE(st.quality, 7);  // the writer works on a copy
    }

    void writeAndReadBack_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("lossless");
        QTest::newRow("png") << "PNG" << "out.png" << true;
        QTest::newRow("tiff") << "TIFF" << "out.tiff" << true;
        QTest::newRow("jpeg") << "JPG" << "out.jpg" << false;
        QTest::newRow("unknown format writes nothing") << "BMP" << "" << false;
    }
    void writeAndReadBack()
    {
        QFETCH(QString, format);
        QFETCH(QString, file);
        QFETCH(bool, lossless);
        QTemporaryDir dir;
        const cv::Mat image = readBack(sample("astronaut.png"));
        // The folder value ends in a separator, as the settings dialog stores it.
        const SaveResult r = writeSettingFile(record(dir.path() + "/", "out", format.toLatin1().constData()), image);
        if (file.isEmpty()) {
            QCOMPARE(r.status, SaveStatus::NoFormat);
            QVERIFY(QDir(dir.path()).isEmpty());
            return;
        }
        QCOMPARE(r.status, SaveStatus::Written);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{file});
        const cv::Mat back = readBack(dir.filePath(file));
        if (lossless)
            QVERIFY(equalImages(back, image));
        else  // quality 100 (PSNR 40.3 on this picture; 98 gives 39.7)
            QVERIFY(back.size() == image.size() && cv::PSNR(back, image) > 40.0);
    }

    void cropsReplayWithOneFactor_data()
    {
        QTest::addColumn<QSize>("full");
        QTest::addColumn<QVector<QRect>>("crops");
        QTest::addColumn<QRect>("expected");  // in full-resolution pixels
        // k = 1 / 0.3f = 3.3333333f: (100,50,600,400) -> (333,166,2000,1333),
        // then (10,20,300,200) -> (33,66,1000,666) inside the first cut.
        QTest::newRow("two crops in order") << QSize(4000, 3000)
                                            << QVector<QRect>{QRect(100, 50, 600, 400), QRect(10, 20, 300, 200)}
                                            << QRect(366, 232, 1000, 666);
        // 990 * 4.0404038f = 3999.9998: single precision loses the last row.
        QTest::newRow("portrait, whole preview") << QSize(3000, 4000) << QVector<QRect>{QRect(0, 0, 743, 990)}
                                                 << QRect(0, 0, 3000, 3999);
        QTest::newRow("overhang clipped") << QSize(4000, 3000) << QVector<QRect>{QRect(1199, 899, 5, 5)}
                                          << QRect(3996, 2996, 4, 4);
        QTest::newRow("outside skipped") << QSize(4000, 3000)
                                         << QVector<QRect>{QRect(1300, 0, 10, 10), QRect(3, 3, 30, 30)}
                                         << QRect(10, 10, 100, 100);
    }
    void cropsReplayWithOneFactor()
    {
        QFETCH(QSize, full);
        QFETCH(QVector<QRect>, crops);
        QFETCH(QRect, expected);
        const cv::Mat image(full.height(), full.width(), CV_8UC1, cv::Scalar(0));
        const cv::Mat out = replayCrops(image, crops);
        cv::Size whole;
        cv::Point offset;
        out.locateROI(whole, offset);
        QCOMPARE(QRect(offset.x, offset.y, out.cols, out.rows), expected);
    }

    void failedWriteLeavesNoFile()
    {
        QTemporaryDir dir;
        const cv::Mat image = readBack(sample("astronaut.png"));
        // Missing folder.
        const SaveResult missing = writeSettingFile(record(dir.filePath("gone"), "a", "PNG"), image);
        QCOMPARE(missing.status, SaveStatus::WriteFailed);
        QVERIFY(!missing.error.isEmpty());
        QVERIFY(QDir(dir.path()).isEmpty());
        // Nothing to encode.
        QCOMPARE(writeSettingFile(record(dir.path(), "a", "JPG"), cv::Mat()).status, SaveStatus::WriteFailed);
        QVERIFY(QDir(dir.path()).isEmpty());

        // A full disk, made real by a file size limit: the earlier file stays whole.
        const QString target = dir.filePath("a.png");
        { QFile f(target); QVERIFY(f.open(QIODevice::WriteOnly)); f.write("earlier content"); }
        rlimit old{};
        QVERIFY(getrlimit(RLIMIT_FSIZE, &old) == 0);
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit small = old;
        small.rlim_cur = 4096;
        QVERIFY(setrlimit(RLIMIT_FSIZE, &small) == 0);
        const SaveResult full = writeSettingFile(record(dir.path(), "a", "PNG"), image);
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
        QCOMPARE(full.status, SaveStatus::WriteFailed);
        QCOMPARE(fileBytes(target), QByteArray("earlier content"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a.png"});
    }

    void exifCarriedOver_data()
    {
        QTest::addColumn<int>("orientation");
        QTest::newRow("upright source") << 1;
        QTest::newRow("rotated source") << 6;
    }
    void exifCarriedOver()
    {
        QFETCH(int, orientation);
        QTemporaryDir dir;
        // The source photograph is in the save folder and gets overwritten.
        const QString source = dir.filePath("hubble.jpg");
        QByteArray bytes = fileBytes(sample("hubble_deep_field.jpg"));
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        const QByteArray originalExif = exifSegmentOf(buffer);
        QVERIFY(!originalExif.isEmpty());
        QCOMPARE(uchar(bytes[kHubbleOrientationAt]), uchar(1));
        bytes[kHubbleOrientationAt] = char(orientation);
        { QFile f(source); QVERIFY(f.open(QIODevice::WriteOnly)); f.write(bytes); }

        const cv::Mat image = readBack(source);
        const SaveResult r = writeSettingFile(record(dir.path(), "hubble", "JPG"), image, source);
        QCOMPARE(r.status, SaveStatus::Written);
        const QByteArray written = fileBytes(source);
        // The segment is copied byte for byte, except the orientation, now 1.
        QCOMPARE(app1AfterJfif(written), originalExif);
        // The pixels are those of a plain encode.
        std::vector<uchar> plain;
        cv::imencode(".jpg", image, plain, {cv::IMWRITE_JPEG_QUALITY, 100});
        QVERIFY(equalImages(readBack(source), cv::imdecode(plain, cv::IMREAD_UNCHANGED)));
        QVERIFY(jpegDataComplete(written));

        // PNG carries no metadata; a source without EXIF adds nothing.
        QCOMPARE(writeSettingFile(record(dir.path(), "p", "PNG"), image, source).status, SaveStatus::Written);
        QVERIFY(!fileBytes(dir.filePath("p.png")).contains("Exif"));
        QCOMPARE(writeSettingFile(record(dir.path(), "r", "JPG"), image, sample("rocket.jpg")).status, SaveStatus::Written);
        QCOMPARE(fileBytes(dir.filePath("r.jpg")), QByteArray(reinterpret_cast<const char*>(plain.data()), int(plain.size())));
    }

    void tempSaveIntoCache()
    {
        QTemporaryDir dir;
        writeSettingValue(kProductKey, kInstallLocation, dir.path());
        ImageDocument doc;
        QVERIFY(doc.openAdjustment(sample("rocket.jpg")));
        QVERIFY(!doc.saveTempFile(QString()));
        QVERIFY(!doc.saveTempFile("D:/x/photo.name.jpg"));  // no cache folder yet
        QVERIFY(QDir(dir.path()).mkdir("Cache"));
        QVERIFY(doc.saveTempFile("D:/x/photo.name.jpg"));
        const cv::Mat back = readBack(dir.filePath("Cache/photo.name.jpg"));
        QCOMPARE(QSize(back.cols, back.rows), QSize(doc.m_dstMat.cols, doc.m_dstMat.rows));
    }

    void downloadFolder()
    {
        QTemporaryDir dir;
        removeSettingValue(kProductKey, kDownLoadPath);
        QCOMPARE(downloadFolderState(), DownloadFolderState::NotSet);
        writeSettingValue(kProductKey, kDownLoadPath, dir.filePath("gone/"));
        QCOMPARE(downloadFolderState(), DownloadFolderState::Vanished);
        writeSettingValue(kProductKey, kDownLoadPath, dir.path() + "/");
        QString folder;
        QCOMPARE(downloadFolderState(&folder), DownloadFolderState::Usable);
        QCOMPARE(folder, dir.path() + "/");
    }
};

QTEST_GUILESS_MAIN(TestImageSaver)
#include "tst_imagesaver.moc"
