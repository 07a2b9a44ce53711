// The compiled-in pictures against resources/artwork.list, the list they are
// rendered from: every one loads at its listed size; the icon has its sizes.
#include "FileBytes.h"

#include <QIcon>
#include <QImage>
#include <QTest>

class TestResources : public QObject
{
    Q_OBJECT
private slots:
    // Lines "<prefix> <name> <W>x<H> ..."; "-" marks files that are only installed.
    void picture_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QSize>("size");
        int rows = 0;
        for (const QByteArray& line : fileBytes(MELO_SOURCE_DIR "/resources/artwork.list").split('\n')) {
            const QStringList f = QString::fromUtf8(line).split(' ', Qt::SkipEmptyParts);
            if (f.size() < 3 || !f[0].startsWith('/') || f[1].endsWith(".ico"))
                continue;
            const QString path = ':' + f[0] + '/' + f[1];
            QTest::newRow(qPrintable(path)) << path << QSize(f[2].section('x', 0, 0).toInt(), f[2].section('x', 1).toInt());
            ++rows;
        }
        QVERIFY(rows > 40);
    }
    void picture()
    {
        QFETCH(QString, path);
        QTEST(QImage(path).size(), "size");
    }

    void applicationIcon()
    {
        const QIcon icon(QStringLiteral(":/BrisaQT/Resources/MELO_128.ico"));
        for (int side : {16, 32, 48, 64, 128, 256})
            QVERIFY2(icon.availableSizes().contains(QSize(side, side)), qPrintable(QString::number(side)));
    }
};

QTEST_MAIN(TestResources)
#include "tst_resources.moc"
