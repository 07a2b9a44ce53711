// Three-layer grading: blending, regrades through the memo, the guards.
#include "GradingTestSupport.h"
#include "LayerGrading.h"
#include "LutApply.h"

#include <opencv2/imgcodecs.hpp>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

const QString kLibrary = QStringLiteral(MELO_PRESET_DIR "/MELO");

cv::Mat photo()
{
    return cv::imread(MELO_SAMPLES_DIR "/chelsea.png", cv::IMREAD_COLOR);
}

cv::Mat applyPreset(const cv::Mat& image, int scene, int file)
{
    return applyLutFile(image, presetFilePath(kLibrary, scene, file).toLocal8Bit().constData());
}

}  // namespace

class TestLayerGrading : public QObject
{
    Q_OBJECT
private slots:
    // Regrades through a memo give the fresh results, reusing what did not
    // change: moving a strength re-blends without applying the LUT again.
    void memoRegradesOnlyWhatChanged()
    {
        const cv::Mat base = photo();
        LayerSelection selection{{2, -1, 5}};
        LayerGradeMemo memo;
        const cv::Mat lastLut = gradeLayers(base, 1, selection, kLibrary, &memo).lastLutOutput;
        int differing = 0;
        auto regrade = [&] {
            const LayerGradeResult viaMemo = gradeLayers(base, 1, selection, kLibrary, &memo);
            differing += !sameImage(viaMemo.image, gradeLayers(base, 1, selection, kLibrary).image);
            return viaMemo.lastLutOutput;
        };
        selection.strengths[2] = 30;
        QCOMPARE(regrade().data, lastLut.data);
        selection.strengths[0] = 45;  // changes what the down layer is applied to
        QVERIFY(regrade().data != lastLut.data);
        selection.ids[0] = 3;
        regrade();
        selection.ids[2] = -1;
        regrade();
        selection.ids[1] = 0;
        regrade();
        QCOMPARE(differing, 0);
    }

    // Large pictures are blended in stripes of rows on both cores: the bytes
    // must be those of one cv::addWeighted over the whole picture.
    void blendIsOneAddWeighted_data()
    {
        QTest::addColumn<QRect>("region");
        QTest::addColumn<int>("strength");
        QTest::newRow("whole, 37") << QRect(0, 0, 451, 300) << 37;
        QTest::newRow("whole, 0") << QRect(0, 0, 451, 300) << 0;
        QTest::newRow("region of a wider picture, 100") << QRect(7, 0, 440, 300) << 100;
        QTest::newRow("small, 63") << QRect(10, 10, 40, 30) << 63;
    }
    void blendIsOneAddWeighted()
    {
        QFETCH(QRect, region);
        QFETCH(int, strength);
        const cv::Rect cut(region.x(), region.y(), region.width(), region.height());
        const cv::Mat base = photo()(cut);
        const cv::Mat lut = applyPreset(photo(), 2, 7)(cut);
        cv::Mat expected;
        const double a = double(float(strength) / 100.0f);
        cv::addWeighted(base, 1.0 - a, lut, a, 1.0, expected);
        QVERIFY(sameImage(blendLayer(base, lut, strength), expected));
    }

    void brokenLayersAreSkipped_data()
    {
        QTest::addColumn<int>("scene");
        QTest::addColumn<QByteArray>("topFile");  // content of file 1; empty: missing; <fifo>, <zero>
        QTest::addColumn<QByteArray>("printed");
        QTest::addColumn<bool>("graded");
        const QByteArray missing("grading: top layer skipped, missing preset");
        const QByteArray good = cubeText(2, [](float r, float g, float b) { return LutRgb{b, g, r}; });
        QTest::newRow("missing preset") << 0 << QByteArray() << missing << true;
        // Skipped at once: neither waits for a writer nor reads /dev/zero.
        QTest::newRow("FIFO preset") << 0 << QByteArray("<fifo>") << missing << true;
        QTest::newRow("preset linked to /dev/zero") << 0 << QByteArray("<zero>") << missing << true;
        QTest::newRow("unreadable preset") << 0 << QByteArray("LUT_3D_SIZE 99\n")
                                           << QByteArray("Too large or invalid 3D LUT size\n"
                                                         "grading: top layer skipped, unreadable preset")
                                           << true;
        QTest::newRow("no scene") << -1 << good
                                  << QByteArray("grading: top layer skipped, no such scene -1\n"
                                                "grading: down layer skipped, no such scene -1\n")
                                  << false;
    }
    void brokenLayersAreSkipped()
    {
        QFETCH(int, scene);
        QFETCH(QByteArray, topFile);
        QFETCH(QByteArray, printed);
        QFETCH(bool, graded);
        QTemporaryDir dir;
        const QString root = dir.path() + "/MELO";
        QVERIFY(QDir().mkpath(root + "/0") && QFile::copy(presetFilePath(kLibrary, 0, 9), presetFilePath(root, 0, 9)));
        const QString top = presetFilePath(root, 0, 1);
        if (topFile == "<fifo>")
            QCOMPARE(mkfifo(QFile::encodeName(top).constData(), 0600), 0);
        else if (topFile == "<zero>")
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), top));
        else if (!topFile.isEmpty())
            QVERIFY(writeFileBytes(top, topFile));

        const cv::Mat base = photo();
        LayerGradeResult result;
        const QByteArray out = captureStdout([&] { result = gradeLayers(base, scene, {{1, -1, 1}}, root); });
        QVERIFY2(out.startsWith(printed), out.constData());
        QCOMPARE(out.count('\n'), printed.count('\n') + (printed.endsWith('\n') ? 0 : 1));
        QCOMPARE(result.graded, graded);
        if (graded)  // the down layer still applies, over the base
            QVERIFY(sameImage(result.image, blendLayer(base, applyPreset(base, 0, 9), 100)));

        // The next click skips the same way without reading the file again:
        // the reader has nothing more to say.
        const QByteArray again = captureStdout([&] { gradeLayers(base, scene, {{1, -1, 1}}, root); });
        QVERIFY2(!again.contains("Too large"), again.constData());
        QCOMPARE(again.count('\n'), out.count('\n') - (printed.startsWith("Too large") ? 1 : 0));
    }

    void greyPhotographIsGradedInColour()
    {
        const cv::Mat grey = cv::imread(MELO_SAMPLES_DIR "/camera.png", cv::IMREAD_UNCHANGED);
        const LayerGradeResult result = gradeLayers(grey, 0, {{-1, -1, 2}}, kLibrary);  // down 2: cool
        QVERIFY(grey.channels() == 1 && result.graded && result.image.type() == CV_8UC3
                && result.image.size() == grey.size());
    }
};

QTEST_APPLESS_MAIN(TestLayerGrading)
#include "tst_layergrading.moc"
