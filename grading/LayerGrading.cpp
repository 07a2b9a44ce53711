#include "LayerGrading.h"

#include "GlobalConstants.h"
#include "LutApply.h"
#include "LutCache.h"

#include <opencv2/core.hpp>

#include <QFileInfo>

#include <cstdio>

namespace {

const char* const kLayerNames[kPresetLayerCount] = {"top", "mid", "down"};
const int kLayerFileOffsets[kPresetLayerCount] = {0, 4, 8};

void skipLayer(int layer, const char* why, const QString& detail)
{
    printf("grading: %s layer skipped, %s %s\n", kLayerNames[layer], why, detail.toLocal8Bit().constData());
    fflush(stdout);
}

}  // namespace

int presetFileNumber(PresetLayer layer, int id) { return id + kLayerFileOffsets[int(layer)]; }

cv::Mat blendLayer(const cv::Mat& base, const cv::Mat& lutOut, int strength)
{
    const double a = double(float(strength) / 100.0f);
    cv::Mat out;
    cv::addWeighted(base, 1.0 - a, lutOut, a, 1.0, out, -1);
    return out;
}

LayerGradeResult gradeLayers(const cv::Mat& base, int scene, const LayerSelection& selection,
                             const QString& root)
{
    LayerGradeResult result;
    result.image = base;
    const cv::Mat source = toBgr8(base);
    for (int layer = 0; layer < kPresetLayerCount; ++layer) {
        const int id = selection.ids[layer];
        if (id < 0)
            continue;
        if (scene < 0 || scene >= kSceneCount) {
            skipLayer(layer, "no such scene", QString::number(scene));
            continue;
        }
        if (source.empty()) {
            skipLayer(layer, "no picture", QString());
            continue;
        }
        const QString path = presetFilePath(root, scene, presetFileNumber(PresetLayer(layer), id));
        if (!QFileInfo(path).isFile()) {
            skipLayer(layer, "missing preset", path);
            continue;
        }
        const auto kernel = loadLutCached(path.toLocal8Bit().toStdString());
        if (!kernel) {
            skipLayer(layer, "unreadable preset", path);
            continue;
        }
        const cv::Mat below = result.graded ? result.image : source;
        result.lastLutOutput = applyLut(below, *kernel);
        result.image = blendLayer(below, result.lastLutOutput, selection.strengths[layer]);
        result.graded = true;
    }
    return result;
}
