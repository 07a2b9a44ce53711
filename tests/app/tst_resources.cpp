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

// Every picture the application names, grouped by the size its widget expects.
struct Group {
    QSize size;
    QString prefix;
    const char* names;
};
const Group kPictures[] = {
    {{115, 42}, kApp, "melo_icon.png"},
    {{18, 16}, kApp, "hot.png cloud.png"},
    {{14, 16}, kApp, "setting.png download_icon.png qq.png"},
    {{16, 14}, kApp, "save.png"},
    {{19, 19}, kApp, "normal.png max.png close.png min.png normal_hover.png max_hover.png close_hover.png min_hover.png"},
    {{50, 50}, kApp, "user_normal.png"},
    {{17, 15}, kApp, "userDlg_show.png userDlg_upshow.png"},
    {{20, 13}, kApp, "userIcon.png"},
    {{52, 21}, kApp, "userQuit_normal.png userQuit_hover.png"},
    {{130, 25}, kApp, "userRecharge.png userRecharge_hover.png"},
    {{82, 82}, kApp, "lutCheck.png"},
    {{12, 12}, kApp, "right_top_resetBtn.png"},
    {{156, 34}, kApp, "rand.png"},
    {{640, 490}, kApp, "cropBj.png cropBj_ratio.png"},
    {{16, 16}, kApp, "return_shape.png no_shape.png yes_shape.png return_cloud.png"},
    {{32, 32}, kApp, "contrast_eye_hover.png contrast_eye_normal.png contrast_eye_normal_yellow.png add_image.png"},
    {{246, 246}, kApp, "qqShow.jpg"},
    {{20, 20}, kApp, "crop.png"},
    {{20, 20}, kBox, "close_normal.png close_hover.png close_pressed.png open_file.png"},
    {{15, 15}, kBox, "check_box_normal.png check_box_normal_hot.png"},
    {{12, 12}, kBox, "check_point_normal.png check_point_normal_check.png"},
    {{540, 188}, kBox, "normal.png setting.png download_true.png upload_true.png delete.png order.png space_dis.png"},
    {{540, 187}, kBox, "closeChoose.png"},
};

QStringList paths(const Group& group)
{
    QStringList list = QString::fromLatin1(group.names).split(' ');
    for (QString& name : list)
        name.prepend(group.prefix);
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
        for (const Group& group : kPictures)
            for (const QString& path : paths(group))
                QTest::newRow(qPrintable(path)) << path << group.size;
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
        for (const Group& group : kPictures)
            for (const QString& path : paths(group))
                expected.insert(path);
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
        QCOMPARE(qAlpha(icon.pixmap(16, 16).toImage().pixel(8, 8)), 255);
    }

    // Border images and the check mark leave their middle clear (the photo
    // shows through) and draw their edge.
    void clearMiddleDrawnEdge()
    {
        for (const char* name : {"cropBj.png", "cropBj_ratio.png", "lutCheck.png"}) {
            const QImage image(kApp + name);
            const int w = image.width(), h = image.height();
            QVERIFY2(qAlpha(image.pixel(w / 2 + 3, h / 2 + 3)) == 0, name);
            for (const QPoint edge : {QPoint(0, h / 2), QPoint(w / 2, h - 1), QPoint(0, 0)})
                QVERIFY2(qAlpha(image.pixel(edge)) == 255, name);
        }
    }
};

QTEST_MAIN(TestResources)
#include "tst_resources.moc"
