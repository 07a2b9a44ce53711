// The interactive regrade gives exactly what a fresh three-layer grade gives,
// whatever changes between two calls: strengths, presets, scene, picture.
#include "GradingTestSupport.h"
#include "LayerGradeCache.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <random>

class TestLayerGradeCache : public QObject
{
    Q_OBJECT
private slots:
    // A random walk of edits, each checked against gradeLayers: mostly
    // strength steps (the slider case), sometimes a preset, the scene, the
    // picture (colour, grey, a crop of the first) or a missing preset.
    void sameAsFreshGrade()
    {
        QTemporaryDir dir;
        const QString root = dir.path() + "/MELO";
        for (int scene : {0, 2}) {
            QDir().mkpath(QStringLiteral("%1/%2").arg(root).arg(scene));
            for (int n = 0; n < kPresetFilesPerScene; ++n)
                QFile::copy(presetFilePath(MELO_PRESET_DIR "/MELO", scene, n), presetFilePath(root, scene, n));
        }
        QFile::remove(presetFilePath(root, 2, 9));   // down 1 of scene 2 is missing

        const cv::Mat photo = cv::imread(MELO_SAMPLES_DIR "/coffee.png", cv::IMREAD_COLOR);
        cv::Mat grey;
        cv::cvtColor(photo, grey, cv::COLOR_BGR2GRAY);
        const cv::Mat bases[] = {photo, grey, photo(cv::Rect(40, 30, 300, 200))};

        std::mt19937 random(7);
        auto pick = [&random](int n) { return int(random() % unsigned(n)); };
        LayerGradeCache cache;
        LayerSelection selection;
        int scene = 0;
        int base = 0;
        for (int step = 0; step < 120; ++step) {
            const int layer = pick(3);
            switch (pick(10)) {
            case 0: selection.ids[layer] = pick(layer == 2 ? 13 : 5) - 1; break;
            case 1: scene = pick(4) == 0 ? -1 : 2 * pick(2); break;
            case 2: base = pick(3); break;
            default: selection.strengths[layer] = pick(101); break;
            }
            const LayerGradeResult fresh = gradeLayers(bases[base], scene, selection, root);
            const LayerGradeResult kept = cache.grade(bases[base], scene, selection, root);
            QVERIFY2(kept.graded == fresh.graded && sameImage(kept.image, fresh.image)
                         && sameImage(kept.lastLutOutput, fresh.lastLutOutput),
                     qPrintable(QStringLiteral("step %1").arg(step)));
        }
    }
};

QTEST_GUILESS_MAIN(TestLayerGradeCache)
#include "tst_layergradecache.moc"
