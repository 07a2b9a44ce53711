#include "FitRule.h"

#include <QTest>

#include <opencv2/imgcodecs.hpp>

class TestFitRule : public QObject
{
    Q_OBJECT
private slots:
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
        QCOMPARE(matToQImage(cv::Mat(1, 1, CV_32FC1, cv::Scalar(0.5))).pixel(0, 0), qRgb(128, 128, 128));
        const cv::Mat camera = cv::imread(MELO_SAMPLES_DIR "/camera.png", cv::IMREAD_UNCHANGED);
        const QImage grey = matToQImage(camera);
        QCOMPARE(grey.size(), QSize(camera.cols, camera.rows));
        for (const QPoint p : {QPoint(0, 0), QPoint(100, 200), QPoint(511, 511)}) {
            const int v = camera.at<uchar>(p.y(), p.x());
            QCOMPARE(grey.pixel(p), qRgb(v, v, v));
        }
        const cv::Mat board = cv::imread(MELO_SAMPLES_DIR "/chessboard_GRAY_U16.tif", cv::IMREAD_UNCHANGED);
        const QImage deep = matToQImage(board);
        QVERIFY(board.depth() == CV_16U && deep.pixel(0, 0) != deep.pixel(board.cols - 1, 0));
        QCOMPARE(qGray(deep.pixel(0, 0)), qRound(board.at<ushort>(0, 0) / 257.0));
        // Nothing to show: null results, no crash.
        QVERIFY(matToQImage(cv::Mat()).isNull() && fittedPixmap(cv::Mat(), QSize(100, 100)).isNull());
        QVERIFY(!isShowableMat(cv::Mat(0, 5, CV_8UC3)));
    }

    // A region of a larger matrix (as a crop leaves it) keeps its row step,
    // and the image keeps the pixels alive after the matrix is gone.
    void greyRegionOutlivesMatrix()
    {
        QImage image;
        {
            cv::Mat whole(10, 10, CV_8UC1);
            for (int i = 0; i < 100; ++i)
                whole.data[i] = uchar(i);
            image = matToQImage(whole(cv::Rect(2, 3, 5, 4)));
        }
        QCOMPARE(image.size(), QSize(5, 4));
        QCOMPARE(image.pixel(0, 0), qRgb(32, 32, 32));
        QCOMPARE(image.pixel(4, 3), qRgb(66, 66, 66));
    }
};

QTEST_MAIN(TestFitRule)
#include "tst_fitrule.moc"
