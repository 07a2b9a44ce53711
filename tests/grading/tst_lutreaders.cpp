// The four LUT readers, run under a locale with a decimal comma: sizes,
// orders, scaling, every failure and its exact diagnostic.
#include "GradingTestSupport.h"
#include "LutReader.h"
#include "LutScan.h"

#include <QTemporaryDir>
#include <QTest>

#include <clocale>
#include <cstdlib>
#include <locale.h>
#include <memory>
#include <random>

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
const QByteArray kInOut = "in and out must be defined\n";

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
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("size");  // 0: the read fails
        QTest::addColumn<QByteArray>("printed");
        QTest::addColumn<QVector<Probe>>("probes");

        const QVector<Probe> none;
        const QByteArray size2 = "LUT_3D_SIZE 2\n";
        // ".cube": red fastest, then green, blue slowest.
        QTest::newRow("cube red fastest") << "cube" << size2 + numbered(8) << 2 << QByteArray()
                                          << QVector<Probe>{line(0, 0, 0, 0), line(1, 0, 0, 1), line(0, 1, 0, 2),
                                                            line(0, 0, 1, 4), line(1, 1, 1, 7)};
        QTest::newRow("cube hex size") << "cube" << "LUT_3D_SIZE 0x21\n" + numbered(35937) << 33 << QByteArray()
                                       << QVector<Probe>{line(1, 0, 0, 1), line(0, 0, 1, 1089), line(32, 32, 32, 35936)};
        QTest::newRow("cube octal size") << "cube" << "LUT_3D_SIZE 041\n" + numbered(35937) << 33 << QByteArray()
                                         << QVector<Probe>{line(0, 1, 0, 33)};
        QTest::newRow("cube size 65") << "cube" << "LUT_3D_SIZE 65\n" + numbered(8) << 0 << kTooLarge << none;
        QTest::newRow("cube size 1") << "cube" << "LUT_3D_SIZE 1\n" + numbered(8) << 0 << kTooLarge << none;
        QTest::newRow("cube tab after keyword") << "cube" << "LUT_3D_SIZE\t2\n" + numbered(8) << 0 << QByteArray()
                                                << none;
        QTest::newRow("cube no size line") << "cube" << numbered(8) << 0 << QByteArray() << none;
        QTest::newRow("cube title before size")
            << "cube" << "TITLE \"look\"\n# made by hand\n" + size2 + numbered(8) << 2 << QByteArray()
            << QVector<Probe>{line(1, 1, 1, 7)};
        QTest::newRow("cube title after size")
            << "cube" << size2 + "TITLE \"look\"\n" + numbered(8) << 0 << QByteArray() << none;
        QTest::newRow("cube domain max doubles")
            << "cube" << size2 + "DOMAIN_MAX 2 2 2\n" + numbered(8) << 2 << QByteArray()
            << QVector<Probe>{line(1, 0, 0, 1, 2.0f)};
        QTest::newRow("cube domain min halves")
            << "cube" << size2 + "DOMAIN_MIN 0.5 0.5 0.5\n" + numbered(8) << 2 << QByteArray()
            << QVector<Probe>{line(1, 0, 0, 1, 0.5f)};
        QTest::newRow("cube domain mid-data scales later entries")
            << "cube" << size2 + numbered(4) + "DOMAIN_MAX 2 2 2\n" + numbered(8).mid(numbered(4).size()) << 2
            << QByteArray() << QVector<Probe>{line(1, 1, 0, 3), line(0, 0, 1, 4, 2.0f)};
        QTest::newRow("cube indented domain line") << "cube" << size2 + " DOMAIN_MAX 2 2 2\n" + numbered(8) << 0
                                                   << QByteArray() << none;
        QTest::newRow("cube unknown domain line") << "cube" << size2 + "DOMAIN_SIZE 2\n" + numbered(8) << 0
                                                  << QByteArray() << none;
        QTest::newRow("cube comments and blanks in data")
            << "cube" << size2 + "# a\n\n \t\r\n" + numbered(8) << 2 << QByteArray()
            << QVector<Probe>{line(0, 0, 0, 0), line(1, 1, 1, 7)};
        QTest::newRow("cube truncated") << "cube" << size2 + numbered(7) << 0 << kEof << none;
        QTest::newRow("cube two numbers") << "cube" << size2 + "0.5 0.5\n" + numbered(8) << 0 << QByteArray()
                                          << none;
        // Lines are read in 512-byte pieces: the rest of a long comment is
        // read as a line of its own, which is not three numbers.
        QTest::newRow("cube long comment in data")
            << "cube" << size2 + "#" + QByteArray(600, 'x') + "\n" + numbered(8) << 0 << QByteArray() << none;
        QTest::newRow("cube exponents and hex floats")
            << "cube" << size2 + QByteArray("5e-1 2.5E-1 0x1p-2\n").repeated(8) << 2 << QByteArray()
            << QVector<Probe>{{1, 1, 1, {0.5f, 0.25f, 0.25f}}};

        // ".3dl": 17 points, blue fastest, integers over 4096.
        QByteArray data3dl = "# levels\n\n0 64 128 192 256 320 384 448 512 576 640 704 768 832 896 960 1023\n";
        for (int i = 0; i < 17 * 17 * 17; ++i)
            data3dl += QByteArray::number(i) + " 4095 8192\n";
        const float q = 1.0f / 4096.0f, g3dl = 4095 * q;
        QTest::newRow("3dl values and order")
            << "3dl" << data3dl << 17 << QByteArray()
            << QVector<Probe>{{0, 0, 0, {0, g3dl, 2}}, {0, 0, 1, {q, g3dl, 2}}, {0, 1, 0, {17 * q, g3dl, 2}},
                              {1, 0, 0, {289 * q, g3dl, 2}}};
        QTest::newRow("3dl truncated") << "3dl" << data3dl.left(data3dl.lastIndexOf('\n', 600) + 1) << 0 << kEof << none;
        QTest::newRow("3dl empty") << "3dl" << QByteArray("\n# nothing\n") << 0 << kEof << none;

        // ".dat": optional size header, blue fastest.
        QTest::newRow("dat without header") << "dat" << numbered(35937) << 33 << QByteArray()
                                            << QVector<Probe>{line(0, 0, 1, 1), line(1, 0, 0, 1089)};
        QTest::newRow("dat with header") << "dat" << "# c\n3DLUTSIZE 2\n\n" + numbered(8) << 2 << QByteArray()
                                         << QVector<Probe>{line(0, 0, 1, 1), line(0, 1, 0, 2), line(1, 0, 0, 4)};
        QTest::newRow("dat size 65") << "dat" << "3DLUTSIZE 65\n" + numbered(8) << 0 << kTooLarge << none;
        QTest::newRow("dat empty") << "dat" << QByteArray() << 0 << kEof << none;

        // ".m3d": in/out header, channel order, one line per entry.
        QByteArray m3d17 = "in 4913\nout 4096\nvalues r g b\n";
        for (int i = 0; i < 4913; ++i)
            m3d17 += QByteArray::number(i) + " 0 4095\n";
        const float s4095 = 1.0f / 4095.0f;
        QTest::newRow("m3d in 4913") << "m3d" << m3d17 << 17 << QByteArray()
                                     << QVector<Probe>{{0, 0, 1, {s4095, 0, 1}}, {1, 0, 0, {s4095 * 289, 0, 1}}};
        const QByteArray head18 = "in 4914\nout 2\nvalues r g b\n";
        QTest::newRow("m3d in 4914 short") << "m3d" << head18 + numbered(4914) << 0 << kEof << none;
        QTest::newRow("m3d in 4914") << "m3d" << head18 + numbered(18 * 18 * 18) << 18 << QByteArray()
                                     << QVector<Probe>{line(17, 17, 17, 5831)};
        QTest::newRow("m3d values b g r")
            << "m3d" << "# order\nin 8\nout 2\nvalues b g r\n" + numbered(8) << 2 << QByteArray()
            << QVector<Probe>{{0, 0, 1, {-0.25f, 0.5f, 1.0f}}};
        QTest::newRow("m3d no header") << "m3d" << numbered(8) << 0 << kInOut << none;
        QTest::newRow("m3d in too small") << "m3d" << "in 1\nout 2\n" + numbered(8) << 0
                                          << QByteArray("invalid in (1) or out (2)\n") << none;
        QTest::newRow("m3d blank line in data") << "m3d" << "in 8\nout 2\nvalues r g b\n\n" + numbered(8) << 0
                                                << QByteArray() << none;
    }

    void read()
    {
        QFETCH(QString, extension);
        QFETCH(QByteArray, content);
        QFETCH(int, size);
        QFETCH(QByteArray, printed);
        QFETCH(QVector<Probe>, probes);

        QTemporaryDir dir;
        const QByteArray path = (dir.path() + "/table." + extension).toLocal8Bit();
        QVERIFY(writeFileBytes(path, content));
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

    void missingFileIsSilent()
    {
        for (const QString extension : {"cube", "3dl", "dat", "m3d"}) {
            Lut3D* lut = reinterpret_cast<Lut3D*>(1);
            const QByteArray path = "/nonexistent/a." + extension.toLatin1();
            QCOMPARE(captureStdout([&] { lut = readAs(extension, path); }), QByteArray());
            QVERIFY(!lut);
        }
    }

    // The fast decimal path must round exactly as the C library does.
    void decimalsMatchTheCLibrary()
    {
        const locale_t c = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
        std::mt19937 random(7);
        std::uniform_real_distribution<double> value(-3.0, 3.0);
        std::uniform_int_distribution<int> digits(0, 12);
        char text[160];
        for (int i = 0; i < 200000; ++i) {
            const double v[3] = {value(random), value(random) * 1e-3, value(random) * 1e3};
            snprintf(text, sizeof text, "%.*f\t%.*f  %.*f", digits(random), v[0], digits(random), v[1],
                     digits(random), v[2]);
            for (char* p = text; *p; ++p)
                if (*p == ',')
                    *p = '.';  // snprintf wrote the locale's comma
            float got[3];
            QCOMPARE(scanThreeFloats(text, got), 3);
            char* end = text;
            for (int k = 0; k < 3; ++k) {
                const float expected = strtof_l(end, &end, c);
                QVERIFY2(got[k] == expected, text);
            }
        }
        freelocale(c);
    }
};

QTEST_APPLESS_MAIN(TestLutReaders)
#include "tst_lutreaders.moc"
