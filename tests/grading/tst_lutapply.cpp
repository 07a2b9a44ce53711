// Applying LUT files: the fast paths give the plain arithmetic's values for
// every 8-bit colour and for 16-bit and four-channel pictures, and
// applyLutFile's dispatch and guards.
#include "GradingTestSupport.h"
#include "LutApply.h"
#include "LutCache.h"
#include "LutKernel.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <QTemporaryDir>
#include <QTest>

#include <cmath>

Q_DECLARE_METATYPE(LutPath)

namespace {

const int kGraded = -1, kUnchanged = -2;

// Outputs well outside 0 to 1 in both directions, varying fast across cells.
LutRgb wild(float r, float g, float b)
{
    return {1.6f * std::sin(9 * r + 2 * b) - 0.2f, 1.4f * g * g - 0.3f + 0.2f * std::cos(20 * r),
            1.2f - 1.5f * b + 0.4f * std::sin(13 * g)};
}

// Runs `apply` with the given implementation (the chosen one if the
// processor lacks it), then restores the one before.
template <typename Apply>
cv::Mat withPath(LutPath path, Apply apply)
{
    const LutPath before = lutPath();
    setLutPath(path);
    cv::Mat out = apply();
    setLutPath(before);
    return out;
}

cv::Mat applyWithPath(LutPath path, const cv::Mat& image, const QByteArray& file)
{
    return withPath(path, [&] { return applyLutFile(image, file.constData()); });
}

// 16-bit colours from every pairing of levels per channel: equal, rising and
// falling fractions in every order (every tetrahedron and its ties), grid
// points, both ends of the range and their neighbours.
cv::Mat levelCombinations16()
{
    const int levels[] = {0,     1,     2,     255,   256,   2047,  2048,  2049,  4095,  12345, 20000, 30001,
                          32767, 32768, 40000, 47000, 51234, 63487, 63488, 65280, 65533, 65534, 65535};
    const int n = int(sizeof levels / sizeof levels[0]);
    cv::Mat image(n * n, n, CV_16UC3);
    for (int r = 0; r < n; ++r)
        for (int g = 0; g < n; ++g)
            for (int b = 0; b < n; ++b)
                image.at<cv::Vec3w>(r * n + g, b) = cv::Vec3w(levels[b], levels[g], levels[r]);
    return image;
}

// A sample photograph at 16 bits: every level times 257 with the low bits
// filled in, so neighbouring values differ below one 8-bit step too.
cv::Mat photograph16(const char* name)
{
    const cv::Mat photo = cv::imread(std::string(MELO_SAMPLES_DIR "/") + name, cv::IMREAD_UNCHANGED);
    cv::Mat wide, fine(photo.size(), CV_16UC(photo.channels()));
    photo.convertTo(wide, CV_16U, 257.0);
    cv::randu(fine, 0, 257);
    return wide + fine;  // saturates at 65535
}

cv::Mat withAlpha(const cv::Mat& bgr)
{
    cv::Mat alpha(bgr.size(), bgr.depth()), bgra;
    cv::randu(alpha, 0, bgr.depth() == CV_16U ? 65536 : 256);
    cv::merge(std::vector<cv::Mat>{bgr, alpha}, bgra);
    return bgra;
}

}  // namespace

class TestLutApply : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    cv::Mat m_everyColour;

    QByteArray table(const QString& name, const QByteArray& text)
    {
        const QString path = m_dir.path() + "/" + name;
        if (!writeFileBytes(path, text))
            qFatal("cannot write %s", qPrintable(path));
        return path.toLocal8Bit();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_everyColour = everyColourImage();
    }

    void everyColourMatchesThePlainArithmetic_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<LutPath>("path");
        const QByteArray tables[] = {
            QByteArray(MELO_PRESET_DIR "/MELO/1/10.CUBE"),
            table("wild64.cube", cubeText(64, wild)),
            // A corner whose weight is zero still counts when it is infinite
            // (0 x inf is NaN), so the tetrahedron must be the plain one.
            table("infinite2.cube", cubeText(2, [](float r, float g, float b) {
                      return r > g ? LutRgb{INFINITY, -INFINITY, b} : LutRgb{r, g, b};
                  })),
        };
        const char* names[] = {"33-point look", "64 points beyond 0 and 1", "infinite corners"};
        const LutPath before = lutPath();
        for (int t = 0; t < 3; ++t) {
            QTest::newRow(QByteArray(names[t]) + ", portable") << tables[t] << LutPath::Portable;
            if (setLutPath(LutPath::Avx2))
                QTest::newRow(QByteArray(names[t]) + ", AVX2") << tables[t] << LutPath::Avx2;
            if (setLutPath(LutPath::Avx512))
                QTest::newRow(QByteArray(names[t]) + ", AVX-512") << tables[t] << LutPath::Avx512;
        }
        setLutPath(before);
    }

    void everyColourMatchesThePlainArithmetic()
    {
        QFETCH(QByteArray, file);
        QFETCH(LutPath, path);
        const cv::Mat expected = applyLutFileReference(m_everyColour, file.constData());
        QVERIFY(sameImage(applyWithPath(path, m_everyColour, file), expected));
        // A region: rows not contiguous, widths not whole batches of pixels.
        const cv::Rect region(3, 5, 1021, 77);
        QVERIFY(sameImage(applyWithPath(path, m_everyColour(region), file), expected(region)));
    }

    // 16 bits and alpha: every path gives the values of the plain arithmetic
    // (applyLut16, applyLut8 with four channels), keeps the type and copies
    // the alpha channel, also in place and on a region whose rows are not
    // contiguous and not whole batches of pixels.
    void otherFormatsMatchThePlainArithmetic_data() { everyColourMatchesThePlainArithmetic_data(); }
    void otherFormatsMatchThePlainArithmetic()
    {
        QFETCH(QByteArray, file);
        QFETCH(LutPath, path);
        Lut3D* lut = readLutFile(file.constData());
        const auto kernel = loadLutCached(file.toStdString());
        QVERIFY(lut && kernel);
        const cv::Mat logo = cv::imread(MELO_SAMPLES_DIR "/logo.png", cv::IMREAD_UNCHANGED);
        const cv::Mat images[] = {levelCombinations16(), withAlpha(levelCombinations16()),
                                  photograph16("chelsea.png"), photograph16("logo.png"), logo};
        for (const cv::Mat& image : images) {
            const cv::Mat expected = applyLutReference(image, *lut);
            const auto kernelWithPath = [&](const cv::Mat& in) {
                return withPath(path, [&] { return applyLut(in, *kernel); });
            };
            const cv::Mat out = kernelWithPath(image);
            QCOMPARE(out.type(), image.type());
            QVERIFY(sameImage(out, expected));
            const cv::Rect region(3, 1, image.cols - 10, image.rows - 2);
            QVERIFY(sameImage(kernelWithPath(image(region)), expected(region)));
            if (image.channels() == 4) {
                cv::Mat inPlace = image.clone(), alpha, alphaAfter;
                withPath(path, [&] { applyLutInto(inPlace, *kernel, inPlace); return inPlace; });
                QVERIFY(sameImage(inPlace, expected));
                cv::extractChannel(image, alpha, 3);
                cv::extractChannel(out, alphaAfter, 3);
                QVERIFY(sameImage(alphaAfter, alpha));
            }
        }
        free(lut);
    }

    // An identity table gives every 16-bit level back, or one level less
    // where the product truncates; both ends exactly.
    void identityAt16Bits()
    {
        QTemporaryDir dir;
        const QByteArray file = (dir.path() + "/identity.cube").toLocal8Bit();
        QVERIFY(writeFileBytes(file, cubeText(2, [](float r, float g, float b) { return LutRgb{r, g, b}; })));
        cv::Mat levels(256, 256, CV_16UC1), image;
        for (int v = 0; v < 65536; ++v)
            levels.at<uint16_t>(v / 256, v % 256) = uint16_t(v);
        cv::cvtColor(levels, image, cv::COLOR_GRAY2BGR);
        cv::Mat difference;
        cv::subtract(image, applyLut(image, *loadLutCached(file.toStdString())), difference, cv::noArray(), CV_32S);
        double low = 0, high = 0;
        cv::minMaxLoc(difference.reshape(1), &low, &high);
        QVERIFY(low == 0 && high == 1 && cv::countNonZero(difference.reshape(1)) < 3 * 65536);
        const cv::Mat ends = (cv::Mat_<cv::Vec3w>(1, 2) << cv::Vec3w(0, 0, 0), cv::Vec3w(65535, 65535, 65535));
        QVERIFY(sameImage(applyLut(ends, *loadLutCached(file.toStdString())), ends));
    }

    // What applying a file gives on every path and in the plain arithmetic
    // alike; the input stays untouched and the result is an image of its own.
    void files_data()
    {
        QTest::addColumn<QString>("name");  // empty: no such file
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("result");  // kGraded, kUnchanged or the level of every channel
        QTest::addColumn<QByteArray>("printed");
        const QByteArray invert = cubeText(2, [](float r, float g, float b) { return LutRgb{1 - r, 1 - g, 1 - b}; });
        const auto flat = [](const char* entry) { return "LUT_3D_SIZE 2\n" + (QByteArray(entry) + "\n").repeated(8); };
        QTest::newRow("mixed case") << "a.Cube" << invert << kGraded << QByteArray();
        QTest::newRow("backup name") << "a.cube.bak" << invert << kUnchanged
                                     << QByteArray("Unrecognized '.bak' file type\n");
        QTest::newRow("no extension") << "cube" << invert << kUnchanged
                                      << QByteArray("Unable to guess the format from the extension\n");
        QTest::newRow("reader fails") << "a.cube" << QByteArray("LUT_3D_SIZE 65\n") << kUnchanged
                                      << QByteArray("Too large or invalid 3D LUT size\n");
        QTest::newRow("missing file") << "" << QByteArray() << kUnchanged << QByteArray();
        QTest::newRow("above 1") << "a.cube" << flat("1.5 7 1e30") << 255 << QByteArray();
        QTest::newRow("below 0") << "a.cube" << flat("-0.5 -7 -1e30") << 0 << QByteArray();
        QTest::newRow("not a number") << "a.cube" << flat("nan nan nan") << 0 << QByteArray();
    }
    void files()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(int, result);
        QTemporaryDir dir;
        const QByteArray file = (dir.path() + "/" + (name.isEmpty() ? "absent.cube" : name)).toLocal8Bit();
        QVERIFY(name.isEmpty() || writeFileBytes(file, content));
        cv::Mat image(2, 37, CV_8UC3);
        cv::randu(image, 0, 256);
        const cv::Mat before = image.clone();
        for (int path = 0; path < 4; ++path) {
            clearLutCache();  // a failed read is remembered; each path reads afresh
            cv::Mat out;
            QTEST(captureStdout([&] {
                      out = path < 3 ? applyWithPath(LutPath(path), image, file)
                                     : applyLutFileReference(image, file.constData());
                  }),
                  "printed");
            QVERIFY(sameImage(image, before) && out.data != image.data);
            if (result >= 0)
                QCOMPARE(cv::countNonZero(out.reshape(1) != result), 0);
            else
                QCOMPARE(sameImage(out, image), result == kUnchanged);
        }
    }

    void emptyImage()
    {
        cv::Mat out(2, 2, CV_8UC3);
        QCOMPARE(captureStdout([&] { out = applyLutFile(cv::Mat(), MELO_PRESET_DIR "/MELO/0/0.CUBE"); }),
                 QByteArray("load: wenjian fail!\n"));
        QVERIFY(out.empty());
    }

    // Grey, alpha and 16-bit images are graded as their 8-bit BGR version.
    void otherImageTypesAreConvertedFirst()
    {
        const char* file = MELO_PRESET_DIR "/MELO/2/9.CUBE";
        for (int type : {CV_8UC1, CV_8UC4, CV_16UC3}) {
            cv::Mat image(31, 29, type), bgr;
            cv::randu(image, 0, type == CV_16UC3 ? 65536 : 256);
            if (type == CV_16UC3)
                image.convertTo(bgr, CV_8U, 1.0 / 257.0);
            else
                cv::cvtColor(image, bgr, type == CV_8UC1 ? cv::COLOR_GRAY2BGR : cv::COLOR_BGRA2BGR);
            const cv::Mat out = applyLutFile(image, file);
            QVERIFY(out.type() == CV_8UC3 && sameImage(out, applyLutFile(bgr, file)));
            QVERIFY(sameImage(out, applyLutFileReference(image, file)));
        }
    }
};

QTEST_APPLESS_MAIN(TestLutApply)
#include "tst_lutapply.moc"
