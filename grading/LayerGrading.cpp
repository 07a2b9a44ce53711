#include "LayerGrading.h"

#include "GlobalConstants.h"
#include "ImageBuffers.h"
#include "LutApply.h"
#include "LutCache.h"

#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>

#include <QFileInfo>

#include <algorithm>
#include <cstdio>

namespace {

const char* const kLayerNames[kPresetLayerCount] = {"top", "mid", "down"};
const int kLayerFileOffsets[kPresetLayerCount] = {0, 4, 8};
constexpr std::size_t kPixelsPerBlendStripe = 1 << 16;

void skipLayer(int layer, const char* why, const QString& detail)
{
    printf("grading: %s layer skipped, %s %s\n", kLayerNames[layer], why, detail.toLocal8Bit().constData());
    fflush(stdout);
}

}  // namespace

int presetFileNumber(PresetLayer layer, int id) { return id + kLayerFileOffsets[int(layer)]; }

namespace {

double blendWeight(int strength) { return double(float(strength) / 100.0f); }

// One addWeighted over the colour; a fourth channel is the base's alpha,
// which grading never changes. The LUT output carries the same alpha, so it
// is taken from whichever of the two out does not overwrite.
void blendInto(const cv::Mat& base, const cv::Mat& lutOut, double a, cv::Mat& out)
{
    const bool overBase = out.data == base.data;
    cv::addWeighted(base, 1.0 - a, lutOut, a, 1.0, out, -1);
    if (base.channels() == 4 && out.type() == base.type()) {
        const int alpha[] = {3, 3};
        cv::mixChannels(overBase ? &lutOut : &base, 1, &out, 1, alpha, 1);
    }
}

// Rows graded and blended per run stay in the cache between the two steps:
// about 16 thousand pixels, under 200 KB of LUT output at any depth.
constexpr int kPixelsPerFusedRun = 1 << 14;

// blendLayer(below, applyLut(below, kernel), strength) computed a few rows at
// a time, the LUT output of each run held in a small buffer of its thread:
// the same values without writing and reading back a picture-sized LUT
// output. out is made unless it is below itself, which is then graded in
// place.
void gradeLayerInto(const cv::Mat& below, const LutKernel& kernel, int strength, cv::Mat& out)
{
    if (out.data != below.data)
        createReusable(out, below.size(), below.type());
    const double a = blendWeight(strength);
    const int rowsPerRun = std::max(1, kPixelsPerFusedRun / std::max(1, below.cols));
    cv::parallel_for_(
        cv::Range(0, below.rows),
        [&](const cv::Range& rows) {
            thread_local cv::Mat runBuffer;
            runBuffer.create(rowsPerRun, below.cols, below.type());
            for (int y = rows.start; y < rows.end; y += rowsPerRun) {
                const int end = std::min(rows.end, y + rowsPerRun);
                cv::Mat lutOut = runBuffer.rowRange(0, end - y);
                applyLutInto(below.rowRange(y, end), kernel, lutOut);
                cv::Mat part = out.rowRange(y, end);
                blendInto(below.rowRange(y, end), lutOut, a, part);
            }
        },
        double(below.total()) / kPixelsPerBlendStripe);
}

}  // namespace

cv::Mat blendLayer(const cv::Mat& base, const cv::Mat& lutOut, int strength, bool inPlace)
{
    const double a = blendWeight(strength);
    // Per element: each value is read before its place is written.
    cv::Mat out = inPlace ? lutOut : cv::Mat();
    // The blend is per element, so stripes of rows on both cores give the
    // same values as one call; it matters on the preview, where a slider step
    // blends up to three layers, and on a full-size save.
    const bool stripes = base.size() == lutOut.size() && base.type() == lutOut.type() && base.dims == 2
                         && base.total() >= kPixelsPerBlendStripe * 2;
    if (!stripes) {
        blendInto(base, lutOut, a, out);
        return out;
    }
    // Fresh pages cost more than the blend itself on a large picture.
    if (!inPlace)
        createReusable(out, base.size(), base.type());
    cv::parallel_for_(
        cv::Range(0, base.rows),
        [&](const cv::Range& rows) {
            cv::Mat part = out.rowRange(rows);
            blendInto(base.rowRange(rows), lutOut.rowRange(rows), a, part);
        },
        double(base.total()) / kPixelsPerBlendStripe);
    return out;
}

namespace {

// The preset of one layer, or null after saying why the layer is skipped.
std::shared_ptr<const LutKernel> layerKernel(int layer, int id, int scene, bool havePicture, const QString& root)
{
    if (scene < 0 || scene >= kSceneCount) {
        skipLayer(layer, "no such scene", QString::number(scene));
        return nullptr;
    }
    if (!havePicture) {
        skipLayer(layer, "no picture", QString());
        return nullptr;
    }
    const QString path = presetFilePath(root, scene, presetFileNumber(PresetLayer(layer), id));
    if (!QFileInfo(path).isFile()) {
        skipLayer(layer, "missing preset", path);
        return nullptr;
    }
    auto kernel = loadLutCached(path.toLocal8Bit().toStdString());
    if (!kernel)
        skipLayer(layer, "unreadable preset", path);
    return kernel;
}

bool samePixels(const cv::Mat& a, const cv::Mat& b)
{
    return a.data == b.data && a.size() == b.size() && a.type() == b.type() && a.step == b.step;
}

}  // namespace

void LayerGradeMemo::clear() { *this = LayerGradeMemo(); }

LayerGradeResult gradeLayers(const cv::Mat& base, int scene, const LayerSelection& selection,
                             const QString& root, LayerGradeMemo* memo, GradeOutputs outputs)
{
    // A memo keeps every stage's LUT output: no blending over them.
    const bool inPlace = outputs != GradeOutputs::WithLutOutput && !memo;
    LayerGradeResult result;
    result.image = base;
    const cv::Mat source = toGradable(base);
    // A stage of the memo holds while everything before it is unchanged.
    bool unchanged = memo && !source.empty() && samePixels(memo->m_base, source);
    for (int layer = 0; layer < kPresetLayerCount; ++layer) {
        const int id = selection.ids[layer];
        const auto kernel = id < 0 ? nullptr : layerKernel(layer, id, scene, !source.empty(), root);
        LayerGradeMemo::Stage stage;
        if (kernel) {
            const cv::Mat below = result.graded ? result.image : source;
            const LayerGradeMemo::Stage* before = memo ? &memo->m_stages[layer] : nullptr;
            const bool sameLut = unchanged && before->kernel == kernel;
            stage.kernel = kernel;
            stage.strength = selection.strengths[layer];
            if (inPlace) {
                // Unless the caller gives its photograph up, the first layer
                // writes a picture of its own and the next ones grade that.
                if (result.graded || (outputs == GradeOutputs::OverBase && source.data == base.data))
                    stage.image = below;
                gradeLayerInto(below, *kernel, stage.strength, stage.image);
            } else {
                stage.lutOut = sameLut ? before->lutOut : applyLut(below, *kernel);
                unchanged = sameLut && before->strength == stage.strength;
                stage.image = unchanged ? before->image : blendLayer(below, stage.lutOut, stage.strength);
                result.lastLutOutput = stage.lutOut;
            }
            result.image = stage.image;
            result.graded = true;
        } else if (memo && memo->m_stages[layer].kernel) {
            unchanged = false;
        }
        if (memo)
            memo->m_stages[layer] = stage;
    }
    if (memo)
        memo->m_base = source;
    return result;
}
