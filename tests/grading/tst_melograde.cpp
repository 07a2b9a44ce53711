// The melo-grade executable, run as a user would run it: its preset grade is
// the library's, its exit codes tell what went wrong.
#include "FormatSamples.h"
#include "GradingTestSupport.h"
#include "LayerGrading.h"
#include "PhotoReader.h"
#include "PhotoWriter.h"
#include "SmallDisk.h"

#include <opencv2/imgcodecs.hpp>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

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

// The same with standard error (and input and output) on a terminal.
Run meloGradeOnTerminal(const QStringList& arguments)
{
    std::vector<QByteArray> words{QByteArray(MELO_GRADE_PROGRAM)};
    for (const QString& argument : arguments)
        words.push_back(argument.toLocal8Bit());
    std::vector<char*> argv;
    for (QByteArray& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        execv(argv[0], argv.data());
        _exit(127);
    }
    Run run;
    if (child < 0)
        return run;
    char buffer[4096];
    for (ssize_t n; (n = read(terminal, buffer, sizeof buffer)) > 0 || (n < 0 && errno == EINTR);)
        run.err.append(buffer, int(std::max<ssize_t>(n, 0)));
    close(terminal);
    int status = 0;
    if (waitpid(child, &status, 0) == child && WIFEXITED(status))
        run.exitCode = WEXITSTATUS(status);
    return run;
}

const QString kSamples = QStringLiteral(MELO_SAMPLES_DIR);
const QString kLibrary = QStringLiteral(MELO_PRESET_DIR "/MELO");

}  // namespace

class TestMeloGrade : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    QString fifo() const { return m_dir.filePath(QStringLiteral("fifo.cube")); }
    QString zero() const { return m_dir.filePath(QStringLiteral("zero.cube")); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QCOMPARE(mkfifo(QFile::encodeName(fifo()).constData(), 0600), 0);
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), zero()));
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
            // The library's grade of the photo as the editor reads it, encoded
            // as the editor writes it (profile and EXIF carried over).
            PhotoReadResult read = readPhoto(input);
            QVERIFY(read);
            Photo graded = *read.photo;
            graded.pixels = gradeLayers(graded.pixels, 1, selection, kLibrary).image;
            const QByteArray expected = encodePhoto(graded, PhotoFormat::Jpeg);
            const QString written = out.path() + "/" + QFileInfo(input).completeBaseName() + ".jpg";
            QVERIFY2(!expected.isEmpty() && fileBytes(written) == expected, qPrintable(written));
        }
    }

    // HEIC, AVIF, WebP and DNG in, each upright (stored turned by
    // orientation 6 where the format has one) and close to the photo graded;
    // a cut-off HEIC or DNG is an image that failed.
    void applyReadsEveryFormat_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<bool>("cut");
        for (const char* format : {"heic", "avif", "webp", "dng"})
            QTest::newRow(format) << QString::fromLatin1(format) << false;
        QTest::newRow("cut-off heic") << QStringLiteral("heic") << true;
        QTest::newRow("cut-off dng") << QStringLiteral("dng") << true;
    }
    void applyReadsEveryFormat()
    {
        QFETCH(QString, format);
        QFETCH(bool, cut);
        const cv::Mat photo = cv::imread((kSamples + "/coffee.png").toStdString(), cv::IMREAD_COLOR);
        const QString input = m_dir.filePath("coffee." + format);
        QVERIFY(writeFormatSample(input, photo, 6));
        if (cut)
            QVERIFY(QFile::resize(input, QFileInfo(input).size() / 2));
        // The same grade of the photo read from its PNG is the reference.
        const QString cube = kLibrary + "/1/0.CUBE";
        const QString reference = m_dir.filePath("graded-reference.png");
        QCOMPARE(meloGrade({"apply", "--lut", cube, "--strength", "60", kSamples + "/coffee.png", reference}).exitCode, 0);
        const QString output = m_dir.filePath("graded-" + format + ".png");
        const Run run = meloGrade({"apply", "--lut", cube, "--strength", "60", input, output});
        if (cut) {
            QCOMPARE(run.exitCode, 3);
            QVERIFY2(run.err.contains("cannot read"), run.err.constData());
            return;
        }
        QVERIFY2(run.exitCode == 0, run.err.constData());
        const cv::Mat graded = cv::imread(output.toStdString(), cv::IMREAD_UNCHANGED);
        const double difference =
            meanColourDifference(graded, cv::imread(reference.toStdString(), cv::IMREAD_UNCHANGED));
        QVERIFY2(difference < 3.0, qPrintable(QString::number(difference)));
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
        // Refused at once: neither blocks on the FIFO nor reads /dev/zero.
        QTest::newRow("lut fifo") << QStringList{"lut", fifo()} << 1 << QByteArray("cannot read the LUT");
        QTest::newRow("lut /dev/zero link") << QStringList{"lut", zero()} << 1 << QByteArray("cannot read the LUT");
        QTest::newRow("apply fifo lut") << QStringList{"apply", "--lut", fifo(), coffee, m_dir.filePath("out.png")}
                                        << 1 << QByteArray("cannot read the LUT");
        QTest::newRow("unwritable") << QStringList{"apply", coffee, "/proc/melo/out.png"} << 3
                                    << QByteArray("cannot write");
        QTest::newRow("no jobs") << QStringList{"preset", "--scene", "0", "--jobs", "0", "--out-dir", m_dir.path(),
                                                coffee} << 2 << QByteArray("--jobs needs a number");
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

    // Photos graded side by side come out as they do one at a time, and are
    // reported one line each in input order when nobody watches a terminal.
    void jobsGiveTheSameFiles()
    {
        const QStringList names = {"chelsea.png", "rocket.jpg", "coffee.png", "chessboard_GRAY_U16.tif",
                                   "astronaut.png", "camera.png"};
        QStringList inputs;
        for (const QString& name : names)
            inputs << kSamples + "/" + name;
        QByteArray lines[2];
        QTemporaryDir out[2];
        for (int run = 0; run < 2; ++run) {
            const Run result = meloGrade(presetArguments(out[run].path(), run + 1) + inputs);
            QCOMPARE(result.exitCode, 0);
            for (const QByteArray& line : result.err.split('\n'))
                if (line.startsWith("melo-grade: "))  // not a decoder's warning
                    lines[run] += line + '\n';
        }
        QByteArray expectedLines;
        for (int i = 0; i < inputs.size(); ++i) {
            const QString output = QFileInfo(inputs[i]).completeBaseName() + ".jpg";
            const QByteArray one = fileBytes(out[0].path() + "/" + output);
            QVERIFY2(!one.isEmpty() && one == fileBytes(out[1].path() + "/" + output), qPrintable(output));
            expectedLines += QStringLiteral("melo-grade: %1 of %2 %3 -> %4/%5\n")
                                 .arg(i + 1).arg(inputs.size()).arg(inputs[i], "%4", output).toLocal8Bit();
        }
        QCOMPARE(lines[0], QByteArray(expectedLines).replace("%4", out[0].path().toLocal8Bit()));
        QCOMPARE(lines[1], QByteArray(expectedLines).replace("%4", out[1].path().toLocal8Bit()));
    }

    // A photo that cannot be graded is reported and the others still come
    // out as they would alone.
    void badPhotoAmongOthers_data()
    {
        QTest::addColumn<QString>("bad");
        QTest::addColumn<QByteArray>("said");
        QFile::copy(kSamples + "/coffee.png", m_dir.path() + "/rocket.png");
        QTest::newRow("truncated") << kSamples + "/truncated.jpg" << QByteArray("truncated.jpg: cannot read the image");
        QTest::newRow("missing") << m_dir.path() + "/none.jpg" << QByteArray("none.jpg: cannot read the image");
        QTest::newRow("same name as another") << m_dir.path() + "/rocket.png"
                                              << QByteArray("rocket.png: skipped, ");
    }
    void badPhotoAmongOthers()
    {
        QFETCH(QString, bad);
        QFETCH(QByteArray, said);
        const QStringList good = {kSamples + "/rocket.jpg", kSamples + "/coffee.png"};
        QTemporaryDir alone, out;
        QCOMPARE(meloGrade(presetArguments(alone.path(), 1) + good).exitCode, 0);
        const Run run = meloGrade(presetArguments(out.path(), 2) + QStringList{good[0], bad, good[1]});
        QCOMPARE(run.exitCode, 3);
        QVERIFY2(run.err.contains(said), run.err.constData());
        QVERIFY2(run.err.contains("melo-grade: 2 of 3 " + bad.toLocal8Bit() + " failed\n"), run.err.constData());
        QCOMPARE(QDir(out.path()).entryList(QDir::Files), (QStringList{"coffee.jpg", "rocket.jpg"}));
        for (const QString& name : QStringList{"coffee.jpg", "rocket.jpg"})
            QVERIFY2(fileBytes(out.path() + "/" + name) == fileBytes(alone.path() + "/" + name), qPrintable(name));
    }

    // On a terminal a bar counts the photos; a complaint meanwhile gets a
    // line of its own instead of being written across the bar.
    void progressBarOnATerminal()
    {
        QTemporaryDir out;
        const QString bad = m_dir.path() + "/none.jpg";  // no decoder warning ends the bar's line first
        const Run run = meloGradeOnTerminal(presetArguments(out.path(), 2) +
                                            QStringList{kSamples + "/rocket.jpg", bad, kSamples + "/coffee.png"});
        QCOMPARE(run.exitCode, 3);
        const int complaint = run.err.indexOf("melo-grade: " + bad.toLocal8Bit() + ": cannot read the image");
        QVERIFY2(complaint > 0 && (run.err.at(complaint - 1) == '\n' || run.err.mid(complaint - 3, 3) == "\033[K"),
                 run.err.constData());
        QVERIFY2(run.err.contains("\r\033[Kmelo-grade [########################] 3 of 3  "), run.err.constData());
        QVERIFY2(!run.err.contains(" -> "), run.err.constData());
        QVERIFY(QFileInfo::exists(out.path() + "/coffee.jpg"));
    }

private:
    static QStringList presetArguments(const QString& outDir, int jobs)
    {
        return {"preset", "--scene", "1", "--mid", "1", "--down", "3", "--strength", "80", "--presets",
                QStringLiteral(MELO_PRESET_DIR), "--jobs", QString::number(jobs), "--out-dir", outDir};
    }
};

QTEST_GUILESS_MAIN(TestMeloGrade)
#include "tst_melograde.moc"
