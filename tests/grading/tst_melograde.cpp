// The melo-grade executable, run as a user would run it: its preset grade is
// the library's, its exit codes tell what went wrong.
#include "GradingTestSupport.h"
#include "LayerGrading.h"
#include "SmallDisk.h"

#include <opencv2/imgcodecs.hpp>

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

struct Run {
    int exitCode = -1;
    QByteArray out, err;
};

Run meloGrade(const QStringList& arguments)
{
    QProcess process;
    process.start(MELO_GRADE_PROGRAM, arguments);
    Run run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

const QString kSamples = QStringLiteral(MELO_SAMPLES_DIR);
const QString kLibrary = QStringLiteral(MELO_PRESET_DIR "/MELO");

}  // namespace

class TestMeloGrade : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QVERIFY(mkfifo(QFile::encodeName(m_dir.filePath("fifo.jpg")).constData(), 0600) == 0);
        QVERIFY(QFile::link("/dev/zero", m_dir.filePath("zero.jpg")));
        QVERIFY(writeFileBytes(m_dir.filePath("cut.jpg"), fileBytes(kSamples + "/rocket.jpg").left(20000)));
    }

    void presetMatchesTheLibrary_data()
    {
        QTest::addColumn<QString>("presets");
        QTest::newRow("archive") << QStringLiteral(MELO_PRESET_ARCHIVE);
        QTest::newRow("folder") << QStringLiteral(MELO_PRESET_DIR);
    }
    void presetMatchesTheLibrary()
    {
        QFETCH(QString, presets);
        QTemporaryDir out;
        const QStringList inputs = {kSamples + "/chelsea.png", kSamples + "/rocket.jpg", kSamples + "/camera.png"};
        const Run run = meloGrade(QStringList{"preset", "--scene", "1", "--top", "2", "--down", "5", "--strength",
                                             "70", "--presets", presets, "--out-dir", out.path()} +
                                 inputs);
        QCOMPARE(run.exitCode, 0);
        const LayerSelection selection{{2, -1, 5}, {70, 70, 70}};
        for (const QString& input : inputs) {
            const cv::Mat photo = cv::imread(input.toStdString(), cv::IMREAD_UNCHANGED);
            const QString expected = out.path() + "/expected.jpg";
            cv::imwrite(expected.toStdString(), gradeLayers(photo, 1, selection, kLibrary).image,
                        {cv::IMWRITE_JPEG_QUALITY, 100});
            const QString written = out.path() + "/" + QFileInfo(input).completeBaseName() + ".jpg";
            QVERIFY2(fileBytes(written) == fileBytes(expected), qPrintable(written));
        }
    }

    // 2: bad arguments (nothing written), 1: no such preset, 3: an image failed.
    void exitCodes_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("said");  // in standard error
        const QString coffee = kSamples + "/coffee.png";
        QTest::newRow("nothing") << QStringList() << 2 << QByteArray("usage:");
        QTest::newRow("strength too high")
            << QStringList{"apply", "--lut", "x.cube", "--strength", "101", "a", "b.png"} << 2 << QByteArray("melo-grade: ");
        QTest::newRow("no preset") << QStringList{"preset", "--scene", "0", "--top", "0", "--presets", m_dir.path(),
                                                  "--out-dir", m_dir.path(), coffee} << 1 << QByteArray("no such preset");
        QTest::newRow("unwritable") << QStringList{"apply", coffee, "/proc/melo/out.png"} << 3
                                    << QByteArray("cannot write");
        // Refused at once and as the editor refuses them.
        QTest::newRow("fifo") << QStringList{"apply", m_dir.filePath("fifo.jpg"), m_dir.filePath("o.png")} << 3
                              << QByteArray("not a regular file");
        QTest::newRow("link to /dev/zero") << QStringList{"apply", m_dir.filePath("zero.jpg"), m_dir.filePath("o.png")}
                                           << 3 << QByteArray("not a regular file");
        QTest::newRow("cut-off jpeg") << QStringList{"apply", m_dir.filePath("cut.jpg"), m_dir.filePath("o.png")} << 3
                                      << QByteArray("cut off");
    }
    void exitCodes()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, said);
        const Run run = meloGrade(arguments);
        QTEST(run.exitCode, "exitCode");
        QVERIFY2(run.err.contains(said), run.err.constData());
        QVERIFY(run.exitCode != 2 || run.out.isEmpty());
        QVERIFY(!QFile::exists(m_dir.filePath("o.png")));
    }

    // A full disk: the earlier output survives byte for byte, nothing else is
    // left, and the answer says so.
    void fullDiskKeepsTheOutput()
    {
        SmallDisk disk("size=64k");
        if (!disk.mounted())
            QSKIP("mounting a tmpfs is not permitted here");
        const QString out = disk.path() + "/out.tif";
        QVERIFY(writeFileBytes(out, "earlier"));
        const Run run = meloGrade({"apply", kSamples + "/astronaut.png", out});
        QCOMPARE(run.exitCode, 3);
        QVERIFY2(run.err.contains("cannot write"), run.err.constData());
        QCOMPARE(fileBytes(out), QByteArray("earlier"));
        QCOMPARE(QDir(disk.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"out.tif"});
    }
};

QTEST_GUILESS_MAIN(TestMeloGrade)
#include "tst_melograde.moc"
