#include "CropGeometry.h"
#include "FitRule.h"

#include <QTest>

#include <opencv2/imgcodecs.hpp>

namespace {
const QSize kMax = crop::viewSize(true);
const QRect kNone(-999, -999, -999, -999);   // table marker for "nothing"
QRect orNone(const std::optional<QRect>& r) { return r ? *r : kNone; }
} // namespace

// How pictures are laid out in the views: crop rectangles and fitting. The
// pointer handling is exercised on a real view in the widget tests.
class TestViewGeometry : public QObject
{
    Q_OBJECT
private slots:
    void defaults_data()
    {
        QTest::addColumn<bool>("maximized");
        QTest::addColumn<QSize>("image");
        QTest::addColumn<int>("ratio");
        QTest::addColumn<QRect>("imageRect");
        QTest::addColumn<QRect>("crop");
        const QRect wide(172, 45, 1200, 900);
        const QRect tall(401, 0, 743, 990);
        QTest::newRow("free") << true << QSize(1200, 900) << 0 << wide << wide;
        QTest::newRow("16:9 full width") << true << QSize(1200, 900) << 5 << wide << QRect(172, 157, 1200, 675);
        QTest::newRow("square of portrait") << true << QSize(743, 990) << 1 << tall << QRect(401, 123, 743, 743);
        // 990 / 16 * 9 = 556.875 and (1545 - 556.875) / 2 = 494.06, both truncated.
        QTest::newRow("9:16 portrait") << true << QSize(743, 990) << 9 << tall << QRect(494, 0, 556, 990);
        // Normal window: a preview larger than the view gets offsets of 0.
        const QRect clamped(0, 0, 1200, 900);
        QTest::newRow("normal 16:9") << false << QSize(1200, 900) << 5 << clamped << QRect(0, 21, 1200, 675);
        QTest::newRow("index 10 ignored") << true << QSize(1200, 900) << 10 << wide << kNone;
    }
    void defaults()
    {
        QFETCH(bool, maximized);
        QFETCH(QSize, image);
        QFETCH(int, ratio);
        const QSize view = crop::viewSize(maximized);
        QTEST(crop::imageRect(view, image), "imageRect");
        QTEST(orNone(crop::defaultCropRect(ratio, view, image)), "crop");
    }

    void mapToPreview_data()
    {
        QTest::addColumn<QSize>("view");
        QTest::addColumn<QRect>("rect");
        QTest::addColumn<QRect>("expected");
        // 1200 x 900 display image: offsets 172, 45 maximised, -67, -91 normal.
        QTest::newRow("whole image") << kMax << QRect(172, 45, 1200, 900) << QRect(0, 0, 1200, 900);
        QTest::newRow("wholly left") << kMax << QRect(0, 100, 100, 100) << kNone;
        QTest::newRow("wholly below") << kMax << QRect(300, 960, 100, 20) << kNone;
        QTest::newRow("both sides") << kMax << QRect(100, 100, 1400, 100) << kNone;
        QTest::newRow("partly left") << kMax << QRect(122, 100, 200, 100) << QRect(0, 55, 150, 100);
        QTest::newRow("x 1 snaps, y 1 stays") << kMax << QRect(173, 46, 100, 100) << QRect(0, 1, 100, 100);
        QTest::newRow("y 1 snaps") << kMax << QRect(200, 46, 100, 100) << QRect(28, 0, 100, 100);
        QTest::newRow("empty") << kMax << QRect(300, 300, 0, 100) << kNone;
        QTest::newRow("normal window") << crop::viewSize(false) << QRect(0, 0, 300, 200) << QRect(67, 91, 300, 200);
    }
    void mapToPreview()
    {
        QFETCH(QSize, view);
        QFETCH(QRect, rect);
        QTEST(orNone(crop::mapToPreview(rect, view, QSize(1200, 900))), "expected");
    }

    void fit_data()
    {
        QTest::addColumn<QSize>("image");
        QTest::addColumn<QSize>("available");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("fits, not enlarged") << QSize(1200, 900) << QSize(1545, 990) << QSize(1200, 900);
        QTest::newRow("too wide") << QSize(1200, 900) << QSize(600, 1000) << QSize(600, 450);
        QTest::newRow("too tall") << QSize(1200, 900) << QSize(2000, 300) << QSize(400, 300);
        QTest::newRow("portrait too tall") << QSize(743, 990) << QSize(1065, 718) << QSize(539, 718);
        // Width first (1065 x 799), then the still too tall result to the height.
        QTest::newRow("both steps") << QSize(1200, 900) << QSize(1065, 718) << QSize(958, 718);
    }
    void fit()
    {
        QFETCH(QSize, image);
        QFETCH(QSize, available);
        const cv::Mat mat(image.height(), image.width(), CV_8UC3, cv::Scalar(10, 20, 30));
        QTEST(fittedPixmap(mat, available).size(), "expected");
    }

    // Colour swaps BGR to RGB; grey and deep images show their levels as grey.
    void pixelsShowTheirLevels()
    {
        QCOMPARE(matToQImage(cv::Mat(2, 3, CV_8UC3, cv::Scalar(10, 20, 30))).pixel(2, 1), qRgb(30, 20, 10));
        QCOMPARE(matToQImage(cv::Mat(1, 1, CV_16UC3, cv::Scalar(0, 25700, 65535))).pixel(0, 0), qRgb(255, 100, 0));
        const cv::Mat camera = cv::imread(MELO_SAMPLES_DIR "/camera.png", cv::IMREAD_UNCHANGED);
        const int v = camera.at<uchar>(200, 100);
        QCOMPARE(matToQImage(camera).pixel(100, 200), qRgb(v, v, v));
        const cv::Mat board = cv::imread(MELO_SAMPLES_DIR "/chessboard_GRAY_U16.tif", cv::IMREAD_UNCHANGED);
        const QImage deep = matToQImage(board);
        QVERIFY(board.depth() == CV_16U && deep.pixel(0, 0) != deep.pixel(board.cols - 1, 0));
        QCOMPARE(qGray(deep.pixel(0, 0)), qRound(board.at<ushort>(0, 0) / 257.0));
        // A region of a larger matrix, as a crop leaves it: its row step is
        // kept, and the image keeps the pixels after the matrix has gone.
        QImage region;
        {
            cv::Mat whole(10, 10, CV_8UC1);
            for (int i = 0; i < 100; ++i)
                whole.data[i] = uchar(i);
            region = matToQImage(whole(cv::Rect(2, 3, 5, 4)));
        }
        QVERIFY(region.size() == QSize(5, 4) && region.pixel(0, 0) == qRgb(32, 32, 32));
        QCOMPARE(region.pixel(4, 3), qRgb(66, 66, 66));
        // Nothing to show: null results, no crash.
        QVERIFY(matToQImage(cv::Mat()).isNull() && fittedPixmap(cv::Mat(), QSize(100, 100)).isNull());
        QVERIFY(!isShowableMat(cv::Mat(0, 5, CV_8UC3)));
    }

};

QTEST_MAIN(TestViewGeometry)
#include "tst_viewgeometry.moc"
