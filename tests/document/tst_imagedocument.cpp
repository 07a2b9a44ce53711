#include "FileBytes.h"
#include "GlobalConstants.h"
#include "ImageDocument.h"
#include "ImagePreview.h"
#include "ImageSaver.h"
#include "JpegSegments.h"
#include "SettingsStore.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <opencv2/imgcodecs.hpp>

#include <climits>
#include <csignal>
#include <sys/resource.h>

static QString sample(const QString& name) { return QStringLiteral(MELO_SAMPLES_DIR "/") + name; }
static QSize sizeOf(const cv::Mat& m) { return QSize(m.cols, m.rows); }
static cv::Mat readBack(const QString& path) { return cv::imread(path.toStdString(), cv::IMREAD_UNCHANGED); }

// Same members, the images as the very same headers.
static bool sameDocument(const ImageDocument& a, const ImageDocument& b)
{
    auto same = [](const cv::Mat& x, const cv::Mat& y) { return x.data == y.data && x.size == y.size; };
    return a.m_filePath == b.m_filePath && a.m_tempFilePath == b.m_tempFilePath && a.m_sceneIndex == b.m_sceneIndex
           && a.m_cropRects == b.m_cropRects && same(a.m_srcMat, b.m_srcMat) && same(a.m_orgMat, b.m_orgMat)
           && same(a.m_showMat, b.m_showMat) && same(a.m_dstMat, b.m_dstMat) && same(a.m_thumbMat, b.m_thumbMat);
}

static setting record(const QString& folder, const char* name, const QString& format)
{
    setting st;
    st.savePath = folder.toLocal8Bit().toStdString();
    st.saveName = name;
    st.saveFormat = format.toStdString();
    st.quality = 7;
    return st;
}

class TestImageDocument : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void previewAndThumbnail_data()
    {
        QTest::addColumn<QSize>("source");
        QTest::addColumn<QSize>("preview");
        QTest::addColumn<QSize>("thumbnail");
        QTest::newRow("landscape") << QSize(4000, 3000) << QSize(1200, 900) << QSize(82, 62);
        // 990 / 4000 in single precision makes 3000 * s = 742.500007 -> 743.
        QTest::newRow("portrait") << QSize(3000, 4000) << QSize(743, 990) << QSize(82, 109);
        QTest::newRow("square") << QSize(2000, 2000) << QSize(1200, 1200) << QSize(82, 82);
        QTest::newRow("small is enlarged") << QSize(800, 600) << QSize(1200, 900) << QSize(82, 62);
        QTest::newRow("too thin: refused") << QSize(1, 6000) << QSize(0, 0) << QSize(0, 0);
    }
    void previewAndThumbnail()
    {
        QFETCH(QSize, source);
        const cv::Mat preview = makePreview(cv::Mat(source.height(), source.width(), CV_8UC3, cv::Scalar::all(9)));
        QTEST(sizeOf(preview), "preview");
        QTEST(sizeOf(makeThumbnail(preview)), "thumbnail");
    }

    void sceneAndTempName_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("scene");  // -7: the current value is kept
        QTest::addColumn<QString>("temp");
        QTest::newRow("portrait folder") << "D:/photos/人像/a.jpg" << 2 << "C//Cache//a_temp.jpg";
        QTest::newRow("word at 0 does not count") << "人像/a.b.c.jpg" << -7 << "C//Cache//a.b.c_temp.jpg";
        QTest::newRow("only the first occurrence") << "人像/人像/abc" << -7 << "C//Cache//abc_temp.jpg";
        QTest::newRow("table order beats path order") << "D:/人像/人文/a.jpg" << 1 << "C//Cache//a_temp.jpg";
    }
    void sceneAndTempName()
    {
        QFETCH(QString, path);
        QTEST(recogniseScene(path, -7), "scene");
        QTEST(tempFilePathFor("C//Cache//", path), "temp");
    }

    void openFile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("keep");   // bytes kept of the sample, -1 all
        QTest::addColumn<QSize>("size"); // invalid: refused
        QTest::addColumn<int>("type");
        QTest::newRow("grey png") << "camera.png" << -1 << QSize(512, 512) << CV_8UC1;
        QTest::newRow("palette png") << "palette_color.png" << -1 << QSize(10, 10) << CV_8UC3;
        QTest::newRow("16-bit tiff: 8-bit preview") << "chessboard_GRAY_U16.tif" << -1 << QSize(200, 200) << CV_8UC1;
        QTest::newRow("truncated sample") << "truncated.jpg" << -1 << QSize() << 0;
        QTest::newRow("jpeg cut in its image data") << "hubble_deep_field.jpg" << 300000 << QSize() << 0;
        QTest::newRow("empty file") << "camera.png" << 0 << QSize() << 0;
    }
    void openFile()
    {
        QFETCH(QString, file);
        QFETCH(int, keep);
        QFETCH(QSize, size);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath("风光") && QDir(dir.path()).mkpath("人像"));
        writeSettingValue(kProductKey, kInstallLocation, dir.path());
        ImageDocument doc;
        QVERIFY(QFile::copy(sample("rocket.jpg"), dir.filePath("风光/r.jpg")));
        QVERIFY(doc.openAdjustment(dir.filePath("风光/r.jpg")) && doc.acceptCrop(QRect(0, 0, 600, 400)));
        const ImageDocument before = doc;

        const QString candidate = dir.filePath("人像/" + file);
        QVERIFY(writeFileBytes(candidate, fileBytes(sample(file)).left(keep < 0 ? INT_MAX : keep)));
        if (keep > 0)  // the decoder alone would accept a cut JPEG, grey where data is missing
            QVERIFY(!readBack(candidate).empty());
        QCOMPARE(doc.openAdjustment(candidate), size.isValid());
        if (!size.isValid()) {
            QVERIFY(sameDocument(doc, before));
            return;
        }
        QCOMPARE(doc.m_filePath, candidate);
        QCOMPARE(doc.m_tempFilePath, dir.path() + "//Cache//" + cutAtLastDot(file) + "_temp.jpg");
        QVERIFY(doc.m_sceneIndex == 2 && doc.m_cropRects.isEmpty());
        QCOMPARE(sizeOf(doc.m_srcMat), size);
        QTEST(doc.m_showMat.type(), "type");  // the file's own channels, 8 bits
        QCOMPARE(doc.m_srcMat.channels(), doc.m_showMat.channels());
        QVERIFY(doc.m_orgMat.data == doc.m_srcMat.data && doc.m_dstMat.data == doc.m_showMat.data);
        QCOMPARE(doc.m_thumbMat.cols, 82);
    }

    // The user's save starts from the source with the crops accepted so far;
    // the silent one writes the display image as it is. A refused thin cut
    // (its thumbnail would be empty) is not recorded, so it is not replayed.
    void saveJobSnapshot()
    {
        ImageDocument doc;
        QVERIFY(doc.openAdjustment(sample("astronaut.png")));  // preview 1200 x 1200
        QVERIFY(!doc.acceptCrop(QRect(0, 100, 1200, 5)));
        QVERIFY(doc.m_cropRects.isEmpty() && doc.m_showMat.cols == 1200);
        QVERIFY(doc.acceptCrop(QRect(100, 50, 600, 400)));
        QVERIFY(doc.acceptCrop(QRect(10, 20, 300, 200)));
        QCOMPARE(doc.m_cropRects.size(), 2);
        setting st;
        st.interactive = 1;
        const SaveJob job = doc.saveJob(st, true, 3, LayerSelection());
        QVERIFY(job.source.pixels.data == doc.m_srcMat.data && job.scene == 3);
        // 300 x 200 times 1 / (1200 / 512), in single precision.
        QCOMPARE(sizeOf(savedPixels(job)), QSize(128, 85));
        QVERIFY(doc.saveJob(st, false, 3, LayerSelection()).crops.isEmpty());
        st.interactive = 0;
        const SaveJob silent = doc.saveJob(st, true, 3, LayerSelection());
        QVERIFY(silent.source.pixels.data == doc.m_dstMat.data && silent.scene == -1 && silent.crops.isEmpty());
    }

    void cropsReplayWithOneFactor_data()
    {
        QTest::addColumn<QSize>("full");
        QTest::addColumn<QVector<QRect>>("crops");
        QTest::addColumn<QRect>("expected");
        // k = 1 / 0.3f = 3.3333333f: (100,50,600,400) -> (333,166,2000,1333),
        // then (10,20,300,200) -> (33,66,1000,666) inside the first cut.
        QTest::newRow("two crops in order") << QSize(4000, 3000)
            << QVector<QRect>{QRect(100, 50, 600, 400), QRect(10, 20, 300, 200)} << QRect(366, 232, 1000, 666);
        // 990 * 4.0404038f = 3999.9998: single precision loses the last row.
        QTest::newRow("portrait, whole preview") << QSize(3000, 4000) << QVector<QRect>{QRect(0, 0, 743, 990)}
                                                 << QRect(0, 0, 3000, 3999);
        QTest::newRow("overhang clipped") << QSize(4000, 3000) << QVector<QRect>{QRect(1199, 899, 5, 5)}
                                          << QRect(3996, 2996, 4, 4);
        QTest::newRow("outside skipped") << QSize(4000, 3000)
            << QVector<QRect>{QRect(1300, 0, 10, 10), QRect(3, 3, 30, 30)} << QRect(10, 10, 100, 100);
    }
    void cropsReplayWithOneFactor()
    {
        QFETCH(QSize, full);
        QFETCH(QVector<QRect>, crops);
        const cv::Mat out = replayCrops(cv::Mat(full.height(), full.width(), CV_8UC1, cv::Scalar(0)), crops);
        cv::Size whole;
        cv::Point offset;
        out.locateROI(whole, offset);
        QTEST(QRect(offset.x, offset.y, out.cols, out.rows), "expected");
    }

    void formatsWriteAndReadBack_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("file");  // empty: nothing is written
        QTest::addColumn<int>("quality");   // the record came with 7
        QTest::newRow("png, lossless") << "PNG" << "out.png" << 9;
        QTest::newRow("tiff, lossless") << "TIFF" << "out.tiff" << 7;
        QTest::newRow("jpeg") << "JPG" << "out.jpg" << 100;
        QTest::newRow("search order, not text order") << "TIFF or PNG" << "out.png" << 9;
        QTest::newRow("case-sensitive") << "jpg" << "" << 7;
    }
    void formatsWriteAndReadBack()
    {
        QFETCH(QString, format);
        QFETCH(QString, file);
        QTemporaryDir dir;
        const cv::Mat image = readBack(sample("astronaut.png"));
        // The stored folder ends in a separator: two of them before the name.
        const setting st = record(dir.path() + "/", "out", format);
        QTEST(saveTargetFor(st).record.quality, "quality");
        const SaveResult r = writeSettingFile(st, Photo{image, {}, {}});
        QCOMPARE(r.status, file.isEmpty() ? SaveStatus::NoFormat : SaveStatus::Written);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), file.isEmpty() ? QStringList() : QStringList{file});
        if (file.isEmpty())
            return;
        QCOMPARE(r.filePath, dir.path() + "//" + file);
        const cv::Mat back = readBack(r.filePath);
        // Lossless formats exactly; JPEG: PSNR 40.3 at quality 100 on this picture, 39.7 at 98.
        QVERIFY(back.size() == image.size()
                && (file.endsWith(".jpg") ? cv::PSNR(back, image) > 40.0 : cv::norm(back, image, cv::NORM_INF) == 0));
    }

    void failedWriteLosesNothing()
    {
        QTemporaryDir dir;
        const cv::Mat image = readBack(sample("astronaut.png"));
        const SaveResult gone = writeSettingFile(record(dir.filePath("gone"), "a", "PNG"), Photo{image, {}, {}});
        QCOMPARE(gone.status, SaveStatus::WriteFailed);
        QVERIFY(saveFailureNotice(gone).startsWith(QStringLiteral("保存文件失败！保存的文件夹不存在")));
        QCOMPARE(writeSettingFile(record(dir.path(), "a", "JPG"), Photo()).status, SaveStatus::WriteFailed);
        QVERIFY(QDir(dir.path()).isEmpty());

        // A full disk, made real by a file size limit: the earlier file stays whole.
        QVERIFY(writeFileBytes(dir.filePath("a.png"), "earlier"));
        rlimit old{};
        QVERIFY(getrlimit(RLIMIT_FSIZE, &old) == 0);
        const rlimit small{4096, old.rlim_max};
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        QVERIFY(setrlimit(RLIMIT_FSIZE, &small) == 0);
        const SaveResult r = writeSettingFile(record(dir.path(), "a", "PNG"), Photo{image, {}, {}});
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
        QVERIFY(r.status == SaveStatus::WriteFailed && !r.error.isEmpty());
        QCOMPARE(fileBytes(dir.filePath("a.png")), QByteArray("earlier"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a.png"});
    }

};

QTEST_GUILESS_MAIN(TestImageDocument)
#include "tst_imagedocument.moc"
