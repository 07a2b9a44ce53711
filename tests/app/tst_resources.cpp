#include <QColor>
#include <QDirIterator>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QPixmap>
#include <QSet>
#include <QTest>

namespace {

const QString kApp = QStringLiteral(":/BrisaQT/Resources/");
const QString kBox = QStringLiteral(":/messagebox/Resources/messgaebox/");

struct Picture
{
    QString path;
    QSize size;
};

// Every picture the application names, at the size its widget expects.
const QList<Picture> &pictures()
{
    static const QList<Picture> list = {
        {kApp + "melo_icon.png", {115, 42}},
        {kApp + "hot.png", {18, 16}},
        {kApp + "cloud.png", {18, 16}},
        {kApp + "setting.png", {14, 16}},
        {kApp + "download_icon.png", {14, 16}},
        {kApp + "qq.png", {14, 16}},
        {kApp + "save.png", {16, 14}},
        {kApp + "normal.png", {19, 19}},
        {kApp + "max.png", {19, 19}},
        {kApp + "close.png", {19, 19}},
        {kApp + "min.png", {19, 19}},
        {kApp + "normal_hover.png", {19, 19}},
        {kApp + "max_hover.png", {19, 19}},
        {kApp + "close_hover.png", {19, 19}},
        {kApp + "min_hover.png", {19, 19}},
        {kApp + "user_normal.png", {50, 50}},
        {kApp + "userDlg_show.png", {17, 15}},
        {kApp + "userDlg_upshow.png", {17, 15}},
        {kApp + "userIcon.png", {20, 13}},
        {kApp + "userQuit_normal.png", {52, 21}},
        {kApp + "userQuit_hover.png", {52, 21}},
        {kApp + "userRecharge.png", {130, 25}},
        {kApp + "userRecharge_hover.png", {130, 25}},
        {kApp + "lutCheck.png", {82, 82}},
        {kApp + "right_top_resetBtn.png", {12, 12}},
        {kApp + "rand.png", {156, 34}},
        {kApp + "cropBj.png", {640, 490}},
        {kApp + "cropBj_ratio.png", {640, 490}},
        {kApp + "return_shape.png", {16, 16}},
        {kApp + "no_shape.png", {16, 16}},
        {kApp + "yes_shape.png", {16, 16}},
        {kApp + "contrast_eye_hover.png", {32, 32}},
        {kApp + "contrast_eye_normal.png", {32, 32}},
        {kApp + "contrast_eye_normal_yellow.png", {32, 32}},
        {kApp + "qqShow.jpg", {246, 246}},
        {kApp + "crop.png", {20, 20}},
        {kApp + "return_cloud.png", {16, 16}},
        {kApp + "add_image.png", {32, 32}},
        {kBox + "close_normal.png", {20, 20}},
        {kBox + "close_hover.png", {20, 20}},
        {kBox + "close_pressed.png", {20, 20}},
        {kBox + "check_box_normal.png", {15, 15}},
        {kBox + "check_box_normal_hot.png", {15, 15}},
        {kBox + "check_point_normal.png", {12, 12}},
        {kBox + "check_point_normal_check.png", {12, 12}},
        {kBox + "open_file.png", {20, 20}},
        {kBox + "normal.png", {540, 188}},
        {kBox + "setting.png", {540, 188}},
        {kBox + "download_true.png", {540, 188}},
        {kBox + "upload_true.png", {540, 188}},
        {kBox + "delete.png", {540, 188}},
        {kBox + "closeChoose.png", {540, 187}},
        {kBox + "order.png", {540, 188}},
        {kBox + "space_dis.png", {540, 188}},
    };
    return list;
}

const QString kAppIcon = kApp + "MELO_128.ico";

QSet<QString> resourceFiles(const QString &prefix)
{
    QSet<QString> found;
    QDirIterator it(prefix, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        found.insert(it.next());
    return found;
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT
private slots:
    void picture_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QSize>("size");
        for (const Picture &p : pictures())
            QTest::newRow(qPrintable(p.path)) << p.path << p.size;
    }
    // Loads through the file's real format, so a JPEG named .png would fail.
    void picture()
    {
        QFETCH(QString, path);
        QFETCH(QSize, size);
        QImageReader reader(path);
        reader.setDecideFormatFromContent(true);
        QCOMPARE(QString::fromLatin1(reader.format()), path.section('.', -1).replace("jpg", "jpeg"));
        const QPixmap pixmap(path);
        QVERIFY2(!pixmap.isNull(), qPrintable(path));
        QCOMPARE(pixmap.size(), size);
        // Nothing blank slipped through: some pixel is visibly drawn.
        const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
        bool drawn = false;
        for (int y = 0; y < image.height() && !drawn; ++y)
            for (int x = 0; x < image.width() && !drawn; ++x)
                drawn = qAlpha(image.pixel(x, y)) > 128;
        QVERIFY2(drawn, qPrintable(path));
    }

    // The two prefixes hold exactly the listed pictures and the icon: a
    // renamed or forgotten entry shows up here rather than as a blank button.
    void nothingMissingNothingStray()
    {
        QSet<QString> expected{kAppIcon};
        for (const Picture &p : pictures())
            expected.insert(p.path);
        const QSet<QString> found = resourceFiles(kApp) + resourceFiles(kBox);
        QCOMPARE(QStringList((found - expected).values()), QStringList());
        QCOMPARE(QStringList((expected - found).values()), QStringList());
    }

    void applicationIcon()
    {
        const QIcon icon(kAppIcon);
        QVERIFY(!icon.isNull());
        const QList<QSize> sizes = icon.availableSizes();
        for (int side : {16, 32, 48, 64, 128, 256})
            QVERIFY2(sizes.contains(QSize(side, side)), qPrintable(QString::number(side)));
        // The small sizes are drawn, not empty canvases.
        const QImage small = icon.pixmap(16, 16).toImage();
        QCOMPARE(small.size(), QSize(16, 16));
        QVERIFY(qAlpha(small.pixel(8, 8)) == 255);
    }

    // Border images and the check mark must leave their middle clear (the
    // photo shows through) and draw their edge.
    void clearMiddleDrawnEdge_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("free crop frame") << kApp + "cropBj.png";
        QTest::newRow("locked crop frame") << kApp + "cropBj_ratio.png";
        QTest::newRow("preset check mark") << kApp + "lutCheck.png";
    }
    void clearMiddleDrawnEdge()
    {
        QFETCH(QString, path);
        const QImage image(path);
        const int w = image.width(), h = image.height();
        QCOMPARE(qAlpha(image.pixel(w / 2 + 3, h / 2 + 3)), 0);
        QCOMPARE(qAlpha(image.pixel(0, h / 2)), 255);
        QCOMPARE(qAlpha(image.pixel(w / 2, h - 1)), 255);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 255);
    }

    // The contact code: black modules on white with its quiet zone, and the
    // three finder squares where a scanner looks for them.
    void contactCode()
    {
        const QImage code = QImage(kApp + "qqShow.jpg").convertToFormat(QImage::Format_RGB32);
        constexpr int module = 6, quiet = 24, modules = 33;
        auto dark = [&](int mx, int my) {
            return qGray(code.pixel(quiet + mx * module + module / 2,
                                    quiet + my * module + module / 2)) < 128;
        };
        int muddy = 0;
        for (int y = 0; y < code.height(); ++y)
            for (int x = 0; x < code.width(); ++x) {
                const int g = qGray(code.pixel(x, y));
                const bool inQuietZone = x < quiet || y < quiet || x >= code.width() - quiet
                                         || y >= code.height() - quiet;
                if (inQuietZone)
                    QVERIFY2(g > 235, qPrintable(QString("quiet zone at %1,%2").arg(x).arg(y)));
                const bool underMark = qAbs(x - code.width() / 2) < 28 && qAbs(y - code.height() / 2) < 28;
                if (!underMark && g > 70 && g < 185)
                    ++muddy;
            }
        QVERIFY2(muddy < code.width(), qPrintable(QString::number(muddy)));
        for (QPoint origin : {QPoint(0, 0), QPoint(modules - 7, 0), QPoint(0, modules - 7)}) {
            for (int j = 0; j < 7; ++j)
                for (int i = 0; i < 7; ++i) {
                    const bool ring = i == 0 || i == 6 || j == 0 || j == 6;
                    const bool core = i >= 2 && i <= 4 && j >= 2 && j <= 4;
                    QCOMPARE(dark(origin.x() + i, origin.y() + j), ring || core);
                }
            // The separator around each finder is light.
            QVERIFY(!dark(origin.x() == 0 ? 7 : origin.x() - 1, origin.y() + 3));
        }
    }
};

QTEST_MAIN(TestResources)
#include "tst_resources.moc"
