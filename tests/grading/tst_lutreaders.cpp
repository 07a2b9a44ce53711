// The four LUT readers, run under a locale with a decimal comma: sizes,
// orders, scaling, every failure and its exact diagnostic.
#include "GradingTestSupport.h"
#include "LutCache.h"
#include "LutReader.h"
#include "LutScan.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <locale.h>
#include <memory>
#include <random>
#include <sys/stat.h>

struct Probe {
    int r, g, b;
    float value[3];
};
Q_DECLARE_METATYPE(QVector<Probe>)

namespace {

// count data lines, line i reading "i 0.5 -0.25".
QByteArray numbered(int count)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += QByteArray::number(i) + " 0.5 -0.25\n";
    return text;
}

// Probe of a numbered table: the entry at (r, g, b) came from line i.
Probe line(int r, int g, int b, int i, float scale = 1.0f)
{
    return {r, g, b, {float(i) * scale, 0.5f * scale, -0.25f * scale}};
}

Lut3D* readAs(const QString& extension, const QByteArray& path)
{
    if (extension == "cube")
        return parseCube(path.constData());
    if (extension == "3dl")
        return parse3dl(path.constData());
    if (extension == "dat")
        return parseDat(path.constData());
    return parseM3d(path.constData());
}

const QByteArray kTooLarge = "Too large or invalid 3D LUT size\n";
const QByteArray kEof = "Unexpected EOF\n";

}  // namespace

class TestLutReaders : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY2(setlocale(LC_ALL, "de_DE.UTF-8"), "de_DE.UTF-8 is not generated (scripts/install-deps.sh)");
        QCOMPARE(localeconv()->decimal_point, ",");
        // The C library's own scanning now misreads a decimal point.
        float value = -1;
        QCOMPARE(sscanf("0.5", "%f", &value), 1);
        QCOMPARE(value, 0.0f);
    }

    void read_data()
    {
        QTest::addColumn<QByteArray>("content");  // null: no file at all
        QTest::addColumn<int>("size");            // 0: the read fails
        QTest::addColumn<QByteArray>("printed");
        QTest::addColumn<QVector<Probe>>("probes");
        const auto reads = [](const char* name, const QByteArray& content, int size, const QVector<Probe>& probes) {
            QTest::newRow(name) << content << size << QByteArray() << probes;
        };
        const auto refused = [](const char* name, const QByteArray& content, const QByteArray& printed = {}) {
            QTest::newRow(name) << content << 0 << printed << QVector<Probe>();
        };

        // ".cube": red fastest, then green, blue slowest.
        const QByteArray size2 = "LUT_3D_SIZE 2\n", eight = numbered(8);
        reads("cube red fastest", size2 + eight, 2,
              {line(0, 0, 0, 0), line(1, 0, 0, 1), line(0, 1, 0, 2), line(0, 0, 1, 4), line(1, 1, 1, 7)});
        reads("cube hex size", "LUT_3D_SIZE 0x21\n" + numbered(35937), 33,
              {line(1, 0, 0, 1), line(0, 0, 1, 1089), line(32, 32, 32, 35936)});
        reads("cube octal size", "LUT_3D_SIZE 041\n" + numbered(35937), 33, {line(0, 1, 0, 33)});
        refused("cube missing file", QByteArray());
        refused("cube size 65", "LUT_3D_SIZE 65\n" + eight, kTooLarge);
        refused("cube size 1", "LUT_3D_SIZE 1\n" + eight, kTooLarge);
        refused("cube tab after keyword", "LUT_3D_SIZE\t2\n" + eight);
        reads("cube title before size", "TITLE \"look\"\n# made by hand\n" + size2 + eight, 2, {line(1, 1, 1, 7)});
        refused("cube title after size", size2 + "TITLE \"look\"\n" + eight);
        reads("cube domain max doubles", size2 + "DOMAIN_MAX 2 2 2\n" + eight, 2, {line(1, 0, 0, 1, 2.0f)});
        reads("cube domain mid-data scales later entries",
              size2 + numbered(4) + "DOMAIN_MAX 2 2 2\n" + eight.mid(numbered(4).size()), 2,
              {line(1, 1, 0, 3), line(0, 0, 1, 4, 2.0f)});
        refused("cube indented domain line", size2 + " DOMAIN_MAX 2 2 2\n" + eight);
        refused("cube truncated", size2 + numbered(7), kEof);
        // Lines are read in 512-byte pieces: the rest of a long comment is
        // read as a line of its own, which is not three numbers.
        refused("cube long comment in data", size2 + "#" + QByteArray(600, 'x') + "\n" + eight);
        reads("cube exponents and hex floats", size2 + QByteArray("5e-1 2.5E-1 0x1p-2\n").repeated(8), 2,
              {{1, 1, 1, {0.5f, 0.25f, 0.25f}}});

        // ".3dl": 17 points, blue fastest, integers over 4096.
        QByteArray data3dl = "# levels\n\n0 64 128 192 256 320 384 448 512 576 640 704 768 832 896 960 1023\n";
        for (int i = 0; i < 17 * 17 * 17; ++i)
            data3dl += QByteArray::number(i) + " 4095 8192\n";
        const float q = 1.0f / 4096.0f, g3dl = 4095 * q;
        reads("3dl values and order", data3dl, 17,
              {{0, 0, 0, {0, g3dl, 2}}, {0, 0, 1, {q, g3dl, 2}}, {0, 1, 0, {17 * q, g3dl, 2}},
               {1, 0, 0, {289 * q, g3dl, 2}}});
        refused("3dl truncated", data3dl.left(data3dl.lastIndexOf('\n', 600) + 1), kEof);

        // ".dat": optional size header, blue fastest.
        reads("dat without header", numbered(35937), 33, {line(0, 0, 1, 1), line(1, 0, 0, 1089)});
        reads("dat with header", "# c\n3DLUTSIZE 2\n\n" + eight, 2,
              {line(0, 0, 1, 1), line(0, 1, 0, 2), line(1, 0, 0, 4)});
        refused("dat empty", QByteArray(""), kEof);

        // ".m3d": in/out header, channel order, one line per entry.
        QByteArray m3d17 = "in 4913\nout 4096\nvalues r g b\n";
        for (int i = 0; i < 4913; ++i)
            m3d17 += QByteArray::number(i) + " 0 4095\n";
        const float s4095 = 1.0f / 4095.0f;
        reads("m3d in 4913", m3d17, 17, {{0, 0, 1, {s4095, 0, 1}}, {1, 0, 0, {s4095 * 289, 0, 1}}});
        const QByteArray head18 = "in 4914\nout 2\nvalues r g b\n";
        refused("m3d in 4914 short", head18 + numbered(4914), kEof);
        reads("m3d in 4914", head18 + numbered(18 * 18 * 18), 18, {line(17, 17, 17, 5831)});
        reads("m3d values b g r", "# order\nin 8\nout 2\nvalues b g r\n" + eight, 2, {{0, 0, 1, {-0.25f, 0.5f, 1.0f}}});
        refused("m3d no header", eight, "in and out must be defined\n");
        refused("m3d in too small", "in 1\nout 2\n" + eight, "invalid in (1) or out (2)\n");
        refused("m3d missing file", QByteArray());
    }

    void read()
    {
        const QString extension = QString::fromLatin1(QTest::currentDataTag()).section(' ', 0, 0);
        QFETCH(QByteArray, content);
        QFETCH(int, size);
        QFETCH(QByteArray, printed);
        QFETCH(QVector<Probe>, probes);

        QTemporaryDir dir;
        const QByteArray path = (dir.path() + "/table." + extension).toLocal8Bit();
        QVERIFY(content.isNull() || writeFileBytes(path, content));
        Lut3D* read = nullptr;
        QCOMPARE(captureStdout([&] { read = readAs(extension, path); }), printed);
        const std::unique_ptr<Lut3D, void (*)(void*)> lut(read, free);
        QCOMPARE(lut ? lut->lutSize : 0, size);
        for (const Probe& p : probes)
            for (int c = 0; c < 3; ++c)
                QVERIFY2(lut->lut[p.r][p.g][p.b][c] == p.value[c],
                         qPrintable(QString("entry %1 %2 %3 channel %4: %5").arg(p.r).arg(p.g).arg(p.b).arg(c)
                                        .arg(double(lut->lut[p.r][p.g][p.b][c]), 0, 'g', 9)));
    }

    // Only regular files up to the size limit are read, whatever the reader;
    // anything else is refused before a byte is read (a FIFO without a writer
    // would block the reading for good, /dev/zero never ends).
    void onlyRegularFilesAreRead_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("printed");
        const QByteArray notRegular = "Not a regular file\n";
        QTest::newRow("fifo") << "fifo" << notRegular;
        QTest::newRow("link to /dev/zero") << "zero" << notRegular;
        QTest::newRow("directory") << "directory" << notRegular;
        QTest::newRow("one byte over the limit") << "over" << QByteArray("LUT file too large\n");
        // Read to its end: zeros hold no size line.
        QTest::newRow("at the limit") << "limit" << QByteArray();
    }
    void onlyRegularFilesAreRead()
    {
        QFETCH(QString, kind);
        QTemporaryDir dir;
        for (const char* extension : {"cube", "3dl", "dat", "m3d"}) {
            const QString path = dir.filePath(QStringLiteral("table.") + QLatin1String(extension));
            const QByteArray local = path.toLocal8Bit();
            if (kind == "fifo")
                QCOMPARE(mkfifo(local.constData(), 0600), 0);
            else if (kind == "zero")
                QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path));
            else if (kind == "directory")
                QVERIFY(QDir().mkdir(path));
            else {
                QFile file(path);  // sparse: no disk space taken
                QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(kMaxLutFileBytes + (kind == "over")));
            }
            Lut3D* lut = nullptr;
            const QByteArray printed = captureStdout([&] { lut = readLutFile(local.constData()); });
            QVERIFY2(!lut, extension);
            if (kind != "limit" || qstrcmp(extension, "cube") == 0)
                QTEST(printed, "printed");
        }
    }

    // A table that failed to read is not read again while its file keeps its
    // size and time: the same bytes made valid behind the cache's back still
    // count as failed, a new modification time has them read.
    void failedReadIsRemembered()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("broken.cube"));
        const std::string local = path.toLocal8Bit().toStdString();
        const QByteArray entry = "0.5 0.5 0.5\n";
        const QByteArray valid = "LUT_3D_SIZE 2\n" + entry.repeated(8);
        // The last entry made a comment of the same length: the table ends early.
        const QByteArray broken = "LUT_3D_SIZE 2\n" + entry.repeated(7) + QByteArray(entry.size() - 1, '#') + "\n";
        QVERIFY(writeFileBytes(path, broken));
        const auto stamp = std::filesystem::last_write_time(local);

        clearLutCache();
        QCOMPARE(captureStdout([&] { QVERIFY(!loadLutCached(local)); }), kEof);
        QVERIFY(writeFileBytes(path, valid));
        std::filesystem::last_write_time(local, stamp);
        QCOMPARE(captureStdout([&] { QVERIFY(!loadLutCached(local)); }), QByteArray());

        std::filesystem::last_write_time(local, stamp + std::chrono::seconds(1));
        QVERIFY(loadLutCached(local));
        clearLutCache();
    }

    // The fast decimal path must round exactly as the C library does.
    void decimalsMatchTheCLibrary()
    {
        const locale_t c = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
        const locale_t german = uselocale(locale_t(nullptr));
        std::mt19937 random(7);
        std::uniform_real_distribution<double> value(-3.0, 3.0);
        char text[160];
        for (int i = 0; i < 20000; ++i) {
            const int digits[3] = {int(random() % 13), int(random() % 13), int(random() % 13)};
            uselocale(c);
            snprintf(text, sizeof text, "%.*f\t%.*f  %.*f", digits[0], value(random), digits[1], value(random) * 1e-3,
                     digits[2], value(random) * 1e3);
            uselocale(german);
            float got[3];
            QCOMPARE(scanThreeFloats(text, got), 3);
            char* end = text;
            for (int k = 0; k < 3; ++k)
                QVERIFY2(got[k] == strtof_l(end, &end, c), text);
        }
        freelocale(c);
    }
};

QTEST_APPLESS_MAIN(TestLutReaders)
#include "tst_lutreaders.moc"
