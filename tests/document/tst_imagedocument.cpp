#include "GlobalConstants.h"
#include "ImageDocument.h"
#include "ImagePreview.h"
#include "SettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <opencv2/imgcodecs.hpp>

namespace {

QString sample(const char* name) { return QStringLiteral(MELO_SAMPLES_DIR "/") + QString::fromUtf8(name); }

bool sameHeader(const cv::Mat& a, const cv::Mat& b)
{
    return a.data == b.data && a.size() == b.size() && a.type() == b.type();
}

void copyCut(const QString& from, const QString& to, int keep)
{
    QFile in(from);
    QVERIFY(in.open(QIODevice::ReadOnly));
    QFile out(to);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(keep < 0 ? in.readAll() : in.read(keep));
}

} // namespace

class TestImageDocument : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void previewAndThumbnailSizes_data()
    {
        QTest::addColumn<QSize>("source");
        QTest::addColumn<QSize>("preview");
        QTest::addColumn<QSize>("thumbnail");
        QTest::newRow("landscape") << QSize(4000, 3000) << QSize(1200, 900) << QSize(82, 62);
        // 990 / 4000 in single precision makes 3000 * s = 742.500007 -> 743.
        QTest::newRow("portrait") << QSize(3000, 4000) << QSize(743, 990) << QSize(82, 109);
        QTest::newRow("square takes landscape rule") << QSize(2000, 2000) << QSize(1200, 1200) << QSize(82, 82);
        QTest::newRow("small is enlarged") << QSize(800, 600) << QSize(1200, 900) << QSize(82, 62);
        QTest::newRow("too thin for a preview") << QSize(1, 6000) << QSize() << QSize();
    }
    void previewAndThumbnailSizes()
    {
        QFETCH(QSize, source);
        QFETCH(QSize, preview);
        QFETCH(QSize, thumbnail);
        const cv::Mat full(source.height(), source.width(), CV_8UC3, cv::Scalar(10, 20, 30));
        const cv::Mat p = makePreview(full);
        QCOMPARE(QSize(p.cols, p.rows), preview.isValid() ? preview : QSize(0, 0));
        const cv::Mat t = makeThumbnail(p);
        QCOMPARE(QSize(t.cols, t.rows), thumbnail.isValid() ? thumbnail : QSize(0, 0));
    }

    void sceneRecognition_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("expected");
        QTest::newRow("portrait folder") << "D:/photos/人像/a.jpg" << 2;
        QTest::newRow("word at position 0 does not count") << "人像/a.jpg" << -7;
        QTest::newRow("only the first occurrence is looked at") << "人像/人像/a.jpg" << -7;
        QTest::newRow("table order beats path order") << "D:/人像/人文/a.jpg" << 1;
        QTest::newRow("word inside a longer name") << "D:/写真人像/a.jpg" << 2;
        QTest::newRow("first table word") << "D:/自然景观风光.jpg" << 0;
        QTest::newRow("no word") << "D:/photos/a.jpg" << -7;
    }
    void sceneRecognition()
    {
        QFETCH(QString, path);
        QFETCH(int, expected);
        // -7 stands for "unchanged": the current value comes back.
        QCOMPARE(recogniseScene(path, -7), expected);
    }

    void tempFileName_data()
    {
        QTest::addColumn<QString>("cacheDir");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("expected");
        QTest::newRow("cut at the last dot") << "/opt/MELO//Cache//" << "D:/img/a.b.c.jpg"
                                             << "/opt/MELO//Cache//a.b.c_temp.jpg";
        QTest::newRow("no dot") << "/c//Cache//" << "/img/abc" << "/c//Cache//abc_temp.jpg";
        QTest::newRow("no cache dir: bare name") << "" << "/img/a.jpg" << "a_temp.jpg";
    }
    void tempFileName()
    {
        QFETCH(QString, cacheDir);
        QFETCH(QString, path);
        QFETCH(QString, expected);
        QCOMPARE(tempFilePathFor(cacheDir, path), expected);
    }

    void cacheDirectoryFollowsInstallLocation()
    {
        removeSettingValue(kProductKey, kProductName);
        writeSettingValue(kProductKey, kInstallLocation, "/opt/melo");
        QCOMPARE(cacheDirectory(), QStringLiteral("/opt/melo//Cache//"));
        QCOMPARE(readSettingValue(kProductKey, kProductName), QString());

        removeSettingValue(kProductKey, kInstallLocation);
        QCOMPARE(cacheDirectory(), QString());
        QCOMPARE(readSettingValue(kProductKey, kProductName), QCoreApplication::applicationDirPath());
    }

    void openFile_data()
    {
        QTest::addColumn<QString>("file");   // name in the samples folder, or a prepared file
        QTest::addColumn<int>("cut");        // bytes kept, -1 for the whole file
        QTest::addColumn<bool>("opens");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("type");
        QTest::newRow("grey png") << "camera.png" << -1 << true << QSize(512, 512) << CV_8UC1;
        QTest::newRow("palette png becomes colour") << "palette_color.png" << -1 << true << QSize(10, 10) << CV_8UC3;
        QTest::newRow("indexed png with alpha") << "foo3x5x4indexed.png" << -1 << true << QSize(5, 3) << CV_8UC4;
        QTest::newRow("16-bit tiff keeps its depth") << "chessboard_GRAY_U16.tif" << -1 << true << QSize(200, 200) << CV_16UC1;
        QTest::newRow("jpeg with exif") << "hubble_deep_field.jpg" << -1 << true << QSize(1000, 872) << CV_8UC3;
        QTest::newRow("truncated sample") << "truncated.jpg" << -1 << false << QSize() << 0;
        QTest::newRow("jpeg cut in its image data") << "hubble_deep_field.jpg" << 300000 << false << QSize() << 0;
        QTest::newRow("jpeg cut before its end marker") << "hubble_deep_field.jpg" << 527938 << false << QSize() << 0;
        QTest::newRow("empty file") << "camera.png" << 0 << false << QSize() << 0;
        QTest::newRow("missing file") << "" << -1 << false << QSize() << 0;
    }
    void openFile()
    {
        QFETCH(QString, file);
        QFETCH(int, cut);
        QFETCH(bool, opens);
        QFETCH(QSize, size);
        QFETCH(int, type);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("风光")) && QDir(dir.path()).mkpath(QStringLiteral("人像")));
        writeSettingValue(kProductKey, kInstallLocation, dir.path());

        // A photograph is open before the candidate.
        ImageDocument doc;
        const QString first = dir.path() + QStringLiteral("/风光/rocket.jpg");
        QVERIFY(QFile::copy(sample("rocket.jpg"), first));
        QVERIFY(doc.openAdjustment(first));
        QVERIFY(doc.acceptCrop(QRect(0, 0, 600, 400)));
        const ImageDocument before = doc;

        const QString candidate = dir.path() + QStringLiteral("/人像/") + (file.isEmpty() ? "none.jpg" : file);
        if (!file.isEmpty())
            copyCut(sample(file.toUtf8().constData()), candidate, cut);
        QCOMPARE(doc.openAdjustment(candidate), opens);

        if (!opens) {
            QCOMPARE(doc.m_filePath, before.m_filePath);
            QCOMPARE(doc.m_tempFilePath, before.m_tempFilePath);
            QCOMPARE(doc.m_sceneIndex, 4);
            QCOMPARE(doc.m_cropRects, before.m_cropRects);
            QVERIFY(sameHeader(doc.m_srcMat, before.m_srcMat) && sameHeader(doc.m_orgMat, before.m_orgMat));
            QVERIFY(sameHeader(doc.m_showMat, before.m_showMat) && sameHeader(doc.m_dstMat, before.m_dstMat));
            QVERIFY(sameHeader(doc.m_thumbMat, before.m_thumbMat));
            return;
        }
        QCOMPARE(doc.m_filePath, candidate);
        QCOMPARE(doc.m_tempFilePath, dir.path() + "//Cache//" + cutAtLastDot(file) + "_temp.jpg");
        QCOMPARE(doc.m_sceneIndex, 2);
        QVERIFY(doc.m_cropRects.isEmpty());
        QCOMPARE(QSize(doc.m_srcMat.cols, doc.m_srcMat.rows), size);
        QCOMPARE(doc.m_srcMat.type(), type);
        // Working copy and display image share pixels with their sources.
        QVERIFY(sameHeader(doc.m_orgMat, doc.m_srcMat));
        QVERIFY(sameHeader(doc.m_dstMat, doc.m_showMat));
        QCOMPARE(doc.m_showMat.type(), type);
        QCOMPARE(doc.m_thumbMat.cols, 82);
    }

    void cutJpegWouldDecode()
    {
        // The refusal above is ours: the decoder alone fills the cut-off part
        // with grey and accepts the file.
        QTemporaryDir dir;
        const QString cutFile = dir.filePath("cut.jpg");
        copyCut(sample("hubble_deep_field.jpg"), cutFile, 300000);
        QVERIFY(!cv::imread(cutFile.toStdString(), cv::IMREAD_UNCHANGED).empty());
        // Bytes after the end marker are harmless.
        const QString tail = dir.filePath("tail.jpg");
        copyCut(sample("rocket.jpg"), tail, -1);
        QFile f(tail);
        QVERIFY(f.open(QIODevice::Append));
        f.write("trailing bytes");
        f.close();
        ImageDocument doc;
        QVERIFY(doc.openAdjustment(tail));
    }

    void loadImageFileForms()
    {
        ImageDocument doc;
        QVERIFY(!doc.loadImageFile(nullptr, true));
        QVERIFY(doc.loadImageFile(sample("rocket.jpg").toLocal8Bit().constData(), true));
        const ImageDocument before = doc;
        // Without `full` only the display image is replaced.
        QVERIFY(doc.loadImageFile(sample("camera.png").toLocal8Bit().constData(), false));
        QCOMPARE(doc.m_dstMat.cols, 512);
        QVERIFY(sameHeader(doc.m_srcMat, before.m_srcMat) && sameHeader(doc.m_showMat, before.m_showMat));
    }

    void cropsAccumulateAndReset()
    {
        ImageDocument doc;
        QVERIFY(!doc.resetCrop());
        QVERIFY(doc.openAdjustment(sample("astronaut.png")));  // preview 1200 x 1200
        const cv::Mat preview = doc.m_showMat;

        QVERIFY(doc.acceptCrop(QRect(100, 50, 600, 400)));
        QVERIFY(doc.acceptCrop(QRect(10, 20, 300, 200)));
        QCOMPARE(doc.m_cropRects, (QVector<QRect>{QRect(100, 50, 600, 400), QRect(10, 20, 300, 200)}));
        QCOMPARE(doc.m_acceptedRect, QRect(10, 20, 300, 200));
        // Views into the original preview, no copies.
        QCOMPARE(QSize(doc.m_showMat.cols, doc.m_showMat.rows), QSize(300, 200));
        QVERIFY(doc.m_showMat.data == preview.ptr(70, 110));
        QVERIFY(sameHeader(doc.m_dstMat, doc.m_showMat));
        QCOMPARE(QSize(doc.m_thumbMat.cols, doc.m_thumbMat.rows), QSize(82, 55));

        // Empty, inverted or overhanging rectangles are refused without change.
        for (const QRect& bad : {QRect(), QRect(10, 10, -5, 20), QRect(250, 0, 60, 10), QRect(-1, 0, 10, 10)}) {
            QVERIFY2(!doc.acceptCrop(bad), qPrintable(QStringLiteral("%1,%2 %3x%4").arg(bad.x()).arg(bad.y()).arg(bad.width()).arg(bad.height())));
            QCOMPARE(doc.m_cropRects.size(), 2);
            QCOMPARE(doc.m_acceptedRect, QRect(10, 20, 300, 200));
        }

        QVERIFY(doc.resetCrop());
        QVERIFY(doc.m_cropRects.isEmpty());
        QCOMPARE(QSize(doc.m_showMat.cols, doc.m_showMat.rows), QSize(1200, 1200));
        QVERIFY(sameHeader(doc.m_orgMat, doc.m_srcMat));
        QVERIFY(sameHeader(doc.m_dstMat, doc.m_showMat));
        QCOMPARE(doc.m_thumbMat.rows, 82);
    }

    void imageForSave_data()
    {
        QTest::addColumn<bool>("interactive");
        QTest::addColumn<bool>("cropApplied");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("silent save: display image") << false << true << QSize(300, 200);
        QTest::newRow("user save, crop undo enabled") << true << true << QSize(128, 85);
        QTest::newRow("user save, crop undo disabled") << true << false << QSize(512, 512);
    }
    void imageForSave()
    {
        QFETCH(bool, interactive);
        QFETCH(bool, cropApplied);
        QFETCH(QSize, expected);
        ImageDocument doc;
        QVERIFY(doc.openAdjustment(sample("astronaut.png")));
        QVERIFY(doc.acceptCrop(QRect(0, 0, 300, 200)));
        doc.m_orgMat = cv::Mat();  // stale working result from earlier grading
        int gradeCalls = 0;
        setting st;
        st.interactive = interactive;
        const cv::Mat image = doc.imageForSave(st, cropApplied, [&] {
            // Grading restarts from the source and leaves its result in m_orgMat.
            QVERIFY(sameHeader(doc.m_orgMat, doc.m_srcMat));
            // A new matrix: assigning an expression to m_orgMat would write
            // into the source pixels it still shares.
            const cv::Mat graded = doc.m_srcMat + cv::Scalar::all(1);
            doc.m_orgMat = graded;
            ++gradeCalls;
        });
        QCOMPARE(QSize(image.cols, image.rows), expected);
        QCOMPARE(gradeCalls, interactive ? 1 : 0);
        if (interactive)
            QVERIFY(sameHeader(image, doc.m_orgMat) && image.data != doc.m_srcMat.data);
    }
};

QTEST_GUILESS_MAIN(TestImageDocument)
#include "tst_imagedocument.moc"
