// Three-layer grading: blending, regrades through the memo, the guards.
#include "GradingTestSupport.h"
#include "LayerGrading.h"
#include "LutApply.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

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

// The picture in the given type: 16 bits as every level times 257, grey for
// one or two channels, alpha for two or four from a real transparent picture
// (the logo's alpha, resized).
cv::Mat photoAs(int type)
{
    cv::Mat picture = photo();
    if (CV_MAT_DEPTH(type) == CV_16U)
        picture.convertTo(picture, CV_16U, 257.0);
    if (CV_MAT_CN(type) <= 2)
        cv::cvtColor(picture, picture, cv::COLOR_BGR2GRAY);
    if (CV_MAT_CN(type) % 2 == 0) {
        const cv::Mat logo = cv::imread(MELO_SAMPLES_DIR "/logo.png", cv::IMREAD_UNCHANGED);
        cv::Mat alpha;
        cv::extractChannel(logo, alpha, 3);
        cv::resize(alpha, alpha, picture.size(), 0, 0, cv::INTER_NEAREST);
        alpha.convertTo(alpha, picture.depth(), picture.depth() == CV_16U ? 257.0 : 1.0);
        cv::merge(std::vector<cv::Mat>{picture, alpha}, picture);
    }
    return picture;
}

cv::Mat plane(const cv::Mat& image, int channel)
{
    cv::Mat one;
    cv::extractChannel(image, one, channel);
    return one;
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
        QTest::newRow("region of a wider picture, 100") << QRect(7, 0, 440, 300) << 100;
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

    // The blend rule at the ends of the range, at 8 and 16 bits: the constant
    // adds one level and saturates; alpha is the base's. Large pictures take
    // the striped path, small ones a single call.
    void blendRuleAtTheExtremes_data()
    {
        QTest::addColumn<int>("depth");
        QTest::addColumn<int>("strength");
        QTest::addColumn<int>("base");
        QTest::addColumn<int>("lut");
        QTest::addColumn<int>("blended");
        QTest::newRow("16-bit, 0, white") << CV_16U << 0 << 65535 << 0 << 65535;
        QTest::newRow("16-bit, 0, black") << CV_16U << 0 << 0 << 65535 << 1;
        QTest::newRow("16-bit, 100, white") << CV_16U << 100 << 0 << 65535 << 65535;
        QTest::newRow("16-bit, 100, black") << CV_16U << 100 << 65535 << 0 << 1;
        QTest::newRow("16-bit, 50") << CV_16U << 50 << 0 << 65534 << 32768;
        QTest::newRow("8-bit, 100, black") << CV_8U << 100 << 255 << 0 << 1;
        QTest::newRow("8-bit, 0, white") << CV_8U << 0 << 255 << 0 << 255;
    }
    void blendRuleAtTheExtremes()
    {
        QFETCH(int, depth);
        QFETCH(int, strength);
        QFETCH(int, base);
        QFETCH(int, lut);
        QFETCH(int, blended);
        for (const cv::Size size : {cv::Size(401, 400), cv::Size(7, 5)}) {
            for (int channels : {3, 4}) {
                const int type = CV_MAKETYPE(depth, channels);
                cv::Mat below(size, type, cv::Scalar::all(base)), over(size, type, cv::Scalar::all(lut));
                cv::Mat alpha(size, depth);
                cv::randu(alpha, 0, depth == CV_16U ? 65536 : 256);
                if (channels == 4) {
                    cv::insertChannel(alpha, below, 3);
                    cv::insertChannel(255 - alpha, over, 3);
                }
                const cv::Mat out = blendLayer(below, over, strength);
                QCOMPARE(out.type(), type);
                for (int c = 0; c < 3; ++c)
                    QCOMPARE(cv::countNonZero(plane(out, c) != blended), 0);
                QVERIFY(channels == 3 || sameImage(plane(out, 3), alpha));
            }
        }
    }

    // Grading keeps the base's depth and its alpha; the colour of a BGRA
    // picture is graded as the BGR picture would be, and 16-bit grading comes
    // within a few levels of the 8-bit grading of the same picture (which
    // truncates each LUT output and adds a whole 8-bit level per blend: about
    // two levels apart on average, at most five for these presets).
    void gradingKeepsDepthAndAlpha_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("gradedType");
        QTest::newRow("8-bit BGR") << CV_8UC3 << CV_8UC3;
        QTest::newRow("8-bit BGRA") << CV_8UC4 << CV_8UC4;
        QTest::newRow("16-bit BGR") << CV_16UC3 << CV_16UC3;
        QTest::newRow("16-bit BGRA") << CV_16UC4 << CV_16UC4;
        QTest::newRow("8-bit grey") << CV_8UC1 << CV_8UC3;
        QTest::newRow("16-bit grey with alpha") << CV_16UC2 << CV_16UC4;
    }
    void gradingKeepsDepthAndAlpha()
    {
        QFETCH(int, type);
        const cv::Mat base = photoAs(type);
        const LayerSelection selection{{2, 1, 5}, {100, 45, 70}};
        const cv::Mat untouched = base.clone();
        const LayerGradeResult result = gradeLayers(base, 1, selection, kLibrary);
        QVERIFY(result.graded);
        QTEST(result.image.type(), "gradedType");
        // Grading a few rows at a time without LUT outputs (a save) gives the
        // same picture and never writes into the photograph; a batch's photo,
        // given up, is graded in its own memory when that is gradable as is.
        QVERIFY(sameImage(gradeLayers(base, 1, selection, kLibrary, nullptr, GradeOutputs::ImageOnly).image,
                          result.image));
        QVERIFY(sameImage(base, untouched));
        cv::Mat givenUp = base.clone();
        const cv::Mat overBase = gradeLayers(givenUp, 1, selection, kLibrary, nullptr, GradeOutputs::OverBase).image;
        QVERIFY(sameImage(overBase, result.image));
        QCOMPARE(overBase.data == givenUp.data, base.type() == result.image.type());
        if (base.channels() % 2 == 0)
            QVERIFY(sameImage(plane(result.image, 3), plane(base, base.channels() - 1)));
        if (base.channels() == 4) {
            cv::Mat colour;
            cv::cvtColor(base, colour, cv::COLOR_BGRA2BGR);
            cv::Mat graded;
            cv::cvtColor(result.image, graded, cv::COLOR_BGRA2BGR);
            QVERIFY(sameImage(graded, gradeLayers(colour, 1, selection, kLibrary).image));
        }
        const cv::Mat at8 = gradeLayers(toBgr8(base), 1, selection, kLibrary).image;
        QVERIFY(cv::norm(toBgr8(result.image), at8, cv::NORM_INF) <= 6);
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
};

QTEST_APPLESS_MAIN(TestLayerGrading)
#include "tst_layergrading.moc"
