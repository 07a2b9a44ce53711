// The generated preset library does what its captions say on real
// photographs, and ships as a real encrypted archive.
#include "GlobalConstants.h"
#include "GradingTestSupport.h"
#include "LutApply.h"
#include "Presets.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <QDirIterator>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

namespace {

const char* const kPhotos[] = {"coffee.png", "chelsea.png", "astronaut.png", "rocket.jpg", "motorcycle_left.png"};

struct Measures {
    double luminance;    // mean grey level
    double chroma;       // mean of each pixel's largest minus smallest channel
    double blueOverRed;  // mean blue minus mean red
};

Measures measure(const cv::Mat& bgr)
{
    cv::Mat grey, planes[3];
    cv::cvtColor(bgr, grey, cv::COLOR_BGR2GRAY);
    cv::split(bgr, planes);
    const cv::Mat chroma = cv::max(cv::max(planes[0], planes[1]), planes[2]) -
                           cv::min(cv::min(planes[0], planes[1]), planes[2]);
    return {cv::mean(grey)[0], cv::mean(chroma)[0], cv::mean(planes[0])[0] - cv::mean(planes[2])[0]};
}

QString captionOf(int scene, int file)
{
    const char* caption = file < 4 ? kTopCaptions[scene][file]
                          : file < 8 ? kMidCaptions[scene][file - 4]
                                     : kDownCaptions[scene][file - 8];
    return QString::fromUtf8(caption);
}

cv::Mat graded(const cv::Mat& photo, int scene, int file)
{
    return applyLutFile(photo, presetFilePath(MELO_PRESET_DIR "/MELO", scene, file).toLocal8Bit().constData());
}

// Runs 7z with stdin closed (so it cannot ask for a password); returns its
// exit code and leaves its output in said.
int sevenZip(const QStringList& arguments, QByteArray& said)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStandardPaths::findExecutable("7z"), arguments);
    process.closeWriteChannel();
    const bool finished = process.waitForFinished(60000);
    said = process.readAll();
    return finished ? process.exitCode() : -1;
}

QStringList cubeFilesUnder(const QString& folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next().mid(folder.size() + 1);
    files.sort();
    return files;
}

}  // namespace

class TestPresets : public QObject
{
    Q_OBJECT
    QVector<cv::Mat> m_photos;

private slots:
    void initTestCase()
    {
        for (const char* name : kPhotos) {
            m_photos << cv::imread(std::string(MELO_SAMPLES_DIR "/") + name, cv::IMREAD_COLOR);
            QVERIFY2(!m_photos.back().empty(), name);
        }
    }

    // Each caption of a kind names a measurable change; every preset carrying
    // it must make that change on every photograph.
    void captionsAreKept_data()
    {
        QTest::addColumn<int>("scene");
        QTest::addColumn<int>("file");
        QTest::addColumn<QString>("effect");
        const QMap<QString, QString> effects = {
            {"增加曝光", "brighter"}, {"降低亮度", "darker"},     {"鲜艳色彩", "more chroma"},
            {"自然饱和", "more chroma"}, {"降低饱和", "less chroma"}, {"冷调风格", "cooler"},
            {"蓝调风格", "cooler"},   {"暖调风格", "warmer"},     {"暖红风格", "warmer"},
        };
        int rows = 0;
        for (int scene = 0; scene < kSceneCount; ++scene) {
            if (scene == 3)
                continue;  // monochrome: below
            for (int file = 0; file < kPresetFilesPerScene; ++file) {
                const QString caption = captionOf(scene, file);
                if (!effects.contains(caption))
                    continue;
                QTest::addRow("scene %d file %d %s", scene, file, qPrintable(caption))
                    << scene << file << effects[caption];
                ++rows;
            }
        }
        QVERIFY(rows >= 20);
    }
    void captionsAreKept()
    {
        QFETCH(int, scene);
        QFETCH(int, file);
        QFETCH(QString, effect);
        for (const cv::Mat& photo : m_photos) {
            const Measures b = measure(photo), a = measure(graded(photo, scene, file));
            const bool kept = effect == "brighter"      ? a.luminance > b.luminance + 5
                              : effect == "darker"      ? a.luminance < b.luminance - 5
                              : effect == "more chroma" ? a.chroma > b.chroma * 1.05
                              : effect == "less chroma" ? a.chroma < b.chroma * 0.8
                              : effect == "cooler"      ? a.blueOverRed > b.blueOverRed + 5
                                                        : a.blueOverRed < b.blueOverRed - 5;
            QVERIFY2(kept, qPrintable(QString("luminance %1 -> %2, chroma %3 -> %4, blue-red %5 -> %6")
                                          .arg(b.luminance).arg(a.luminance).arg(b.chroma).arg(a.chroma)
                                          .arg(b.blueOverRed).arg(a.blueOverRed)));
        }
    }

    // Black and white throughout: every output colour depends on its
    // lightness alone (plain grey, or one tint per lightness).
    void monochromeSceneIsEvenlyToned()
    {
        for (int file = 0; file < kPresetFilesPerScene; ++file) {
            for (const cv::Mat& photo : m_photos) {
                cv::Vec3d sum[256], squares[256];
                int count[256] = {};
                const cv::Mat out = graded(photo, 3, file);
                for (auto it = out.begin<cv::Vec3b>(); it != out.end<cv::Vec3b>(); ++it) {
                    const int y = ((*it)[0] + (*it)[1] * 6 + (*it)[2] * 3) / 10;
                    const cv::Vec3d tint = cv::Vec3d(*it) - cv::Vec3d::all(y);
                    sum[y] += tint;
                    squares[y] += tint.mul(tint);
                    ++count[y];
                }
                double worst = 0;  // the largest variance of a tint channel at one lightness
                for (int y = 0; y < 256; ++y)
                    for (int c = 0; c < 3 && count[y] >= 20; ++c)
                        worst = std::max(worst, squares[y][c] / count[y] - std::pow(sum[y][c] / count[y], 2));
                QVERIFY2(worst < 1.5 * 1.5, qPrintable(QString("file %1 (%2): tint spread %3 at one lightness")
                                                           .arg(file).arg(captionOf(3, file)).arg(std::sqrt(worst))));
            }
        }
    }

    // Without the password 7z can neither list (the names are encrypted too)
    // nor extract; with it the archive unpacks to exactly the library.
    void archiveIsEncrypted()
    {
        QTemporaryDir dir;
        QByteArray said;
        for (const QStringList& refused : {QStringList{"l", "-pvmk", MELO_PRESET_ARCHIVE},
                                           QStringList{"x", "-y", "-pvmk", "-o" + dir.path(), MELO_PRESET_ARCHIVE}}) {
            QVERIFY(sevenZip(refused, said) != 0);
            QVERIFY2(!said.contains(".CUBE"), said.constData());
        }
        QVERIFY(cubeFilesUnder(dir.path()).isEmpty());

        QString error;
        QVERIFY2(unpackPresetArchive(MELO_PRESET_ARCHIVE, dir.path(), &error), qPrintable(error));
        const QStringList files = cubeFilesUnder(dir.path());
        QCOMPARE(files.size(), kSceneCount * kPresetFilesPerScene);
        for (int scene = 0; scene < kSceneCount; ++scene)
            for (int file = 0; file < kPresetFilesPerScene; ++file) {
                const QString name = QString("MELO/%1/%2.CUBE").arg(scene).arg(file);
                QVERIFY2(files.contains(name), qPrintable(name));
                QVERIFY(fileBytes(dir.path() + "/" + name) == fileBytes(MELO_PRESET_DIR "/" + name));
            }
        QVERIFY(!unpackPresetArchive(dir.path() + "/none.dll", dir.path(), &error));
        QVERIFY(error.contains("none.dll"));
    }
};

QTEST_APPLESS_MAIN(TestPresets)
#include "tst_presets.moc"
