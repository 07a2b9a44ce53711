// The compiled-in pictures against resources/artwork.list, the list they are
// rendered from: every one present at its size in its real format and drawn,
// nothing unlisted, and the frames see-through in the middle.
#include "FileBytes.h"

#include <QDirIterator>
#include <QIcon>
#include <QImageReader>
#include <QPixmap>
#include <QSet>
#include <QTest>

namespace {

const QString kApp = QStringLiteral(":/BrisaQT/Resources/");
const QString kAppIcon = kApp + "MELO_128.ico";

// Resource path -> size, from the lines "<prefix> <name> <W>x<H> ...".
QMap<QString, QSize> listedPictures()
{
    QMap<QString, QSize> pictures;
    for (const QByteArray& line : fileBytes(MELO_SOURCE_DIR "/resources/artwork.list").split('\n')) {
        const QStringList f = QString::fromUtf8(line).split(' ', Qt::SkipEmptyParts);
        if (f.size() >= 3 && f[0].startsWith('/') && f[1] != "MELO_128.ico")
            pictures[':' + f[0] + '/' + f[1]] = QSize(f[2].section('x', 0, 0).toInt(), f[2].section('x', 1).toInt());
    }
    return pictures;
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
        const QMap<QString, QSize> pictures = listedPictures();
        for (auto it = pictures.begin(); it != pictures.end(); ++it)
            QTest::newRow(qPrintable(it.key())) << it.key() << it.value();
    }
    // Loads through the file's real format, so a JPEG named .png would fail.
    void picture()
    {
        QFETCH(QString, path);
        QImageReader reader(path);
        reader.setDecideFormatFromContent(true);
        QCOMPARE(QString::fromLatin1(reader.format()), path.section('.', -1).replace("jpg", "jpeg"));
        const QImage image = reader.read().convertToFormat(QImage::Format_ARGB32);
        QTEST(image.size(), "size");
        bool drawn = false;  // nothing blank slipped through
        for (int i = 0; i < image.width() * image.height() && !drawn; ++i)
            drawn = qAlpha(image.pixel(i % image.width(), i / image.width())) > 128;
        QVERIFY(drawn);
    }

    // A renamed or forgotten picture shows up here, not as a blank button.
    void nothingMissingNothingStray()
    {
        QSet<QString> found;
        for (const QString& prefix : {kApp, QStringLiteral(":/messagebox/")})
            for (QDirIterator it(prefix, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
                found.insert(it.next());
        const QMap<QString, QSize> listed = listedPictures();
        QSet<QString> expected{kAppIcon};
        for (const QString& path : listed.keys())
            expected.insert(path);
        QCOMPARE(QStringList((found - expected).values()), QStringList());
        QCOMPARE(QStringList((expected - found).values()), QStringList());
        // Sizes the layouts are built around.
        QCOMPARE(listed.value(kApp + "cropBj.png"), QSize(640, 490));
        QCOMPARE(listed.value(kApp + "lutCheck.png"), QSize(82, 82));
        QCOMPARE(listed.value(":/messagebox/Resources/messgaebox/closeChoose.png"), QSize(540, 187));
    }

    void applicationIcon()
    {
        const QIcon icon(kAppIcon);
        for (int side : {16, 32, 48, 64, 128, 256})
            QVERIFY2(icon.availableSizes().contains(QSize(side, side)), qPrintable(QString::number(side)));
        QCOMPARE(qAlpha(icon.pixmap(16, 16).toImage().pixel(8, 8)), 255);  // drawn, not an empty canvas
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
