// The avatar a page hands over: raster photos only, the size judged from the
// header before decoding, so a small file claiming a huge picture leaves the
// process's peak memory where it was.
#include "AvatarPicture.h"
#include "PeakMemory.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray svg(int side)
{
    return QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%1\">"
                          "<rect width=\"100%\" height=\"100%\" fill=\"red\"/></svg>")
        .arg(side)
        .toLatin1();
}

}  // namespace

class TestAvatarPicture : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    QString path(const char* name) const { return m_dir.filePath(QLatin1String(name)); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QString samples = QStringLiteral(MELO_SAMPLES_DIR);
        QVERIFY(QFile::copy(samples + "/rocket.jpg", path("photo.jpg")));
        // A PNG photo under a ".jpg" name, as the download always names it.
        QVERIFY(QFile::copy(samples + "/coffee.png", path("png-named.jpg")));
        QVERIFY(QImage(QImage(samples + "/camera.png").scaled(kMaxAvatarSide, 8)).save(path("at-cap.png")));
        QVERIFY(QImage(QImage(samples + "/camera.png").scaled(8, kMaxAvatarSide + 1)).save(path("over-cap.png")));
        QVERIFY(writeFileBytes(path("huge.svg"), svg(20000)));
        QVERIFY(writeFileBytes(path("error.jpg"), "<html><body>404 Not Found</body></html>"));
        // 20000 x 20000 grey pixels, 400 MB decoded, under a megabyte as PNG.
        QVERIFY(cv::imwrite(path("bomb.png").toStdString(), cv::Mat::zeros(20000, 20000, CV_8UC1)));
        QVERIFY(QFile(path("bomb.png")).size() < 1 << 20);
    }

    void read_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QSize>("size");  // 0 x 0: refused
        QTest::newRow("JPEG photo") << "photo.jpg" << QImage(QStringLiteral(MELO_SAMPLES_DIR "/rocket.jpg")).size();
        QTest::newRow("PNG named .jpg") << "png-named.jpg" << QSize(600, 400);
        QTest::newRow("at the cap") << "at-cap.png" << QSize(kMaxAvatarSide, 8);
        QTest::newRow("over the cap") << "over-cap.png" << QSize(0, 0);
        QTest::newRow("SVG claiming 20000 x 20000") << "huge.svg" << QSize(0, 0);
        QTest::newRow("PNG of 20000 x 20000") << "bomb.png" << QSize(0, 0);
        QTest::newRow("error page") << "error.jpg" << QSize(0, 0);
        QTest::newRow("missing") << "missing.jpg" << QSize(0, 0);
    }
    void read()
    {
        QFETCH(QString, name);
        QFETCH(QSize, size);
        QVERIFY(resetPeakResident());
        const qint64 before = peakResidentKiB() / 1024;
        QString why;
        const QImage picture = readAvatarPicture(m_dir.filePath(name), &why);
        QCOMPARE(picture.size(), size);
        QCOMPARE(why.isEmpty(), !size.isEmpty());
        const qint64 growth = peakResidentKiB() / 1024 - before;
        QVERIFY2(before > 0 && growth < 64, qPrintable(QStringLiteral("peak grew by %1 MiB").arg(growth)));
    }
};

QTEST_MAIN(TestAvatarPicture)
#include "tst_avatarpicture.moc"
