#include "LayerGradeCache.h"

#include "LutApply.h"

namespace {

bool samePixels(const cv::Mat& a, const cv::Mat& b)
{
    return a.data == b.data && a.size == b.size && a.type() == b.type() && a.step == b.step;
}

} // namespace

LayerGradeResult LayerGradeCache::grade(const cv::Mat& base, int scene, const LayerSelection& selection,
                                        const QString& root)
{
    if (!samePixels(base, m_base) || scene != m_scene || root != m_root) {
        clear();
        m_base = base;
        m_scene = scene;
        m_root = root;
    }
    LayerGradeResult total;
    cv::Mat current = base;
    for (int layer = 0; layer < kPresetLayerCount; ++layer) {
        Stage& stage = m_stages[layer];
        const int id = selection.ids[layer];
        const int strength = selection.strengths[layer];
        if (id < 0) {
            stage = Stage();
            continue;
        }
        if (stage.id != id || !samePixels(stage.input, current)) {
            // This layer alone, graded as gradeLayers grades it over what
            // lies below.
            LayerSelection only;
            only.ids[layer] = id;
            only.strengths[layer] = strength;
            stage = Stage{id, strength, current, toBgr8(current), gradeLayers(current, scene, only, root)};
        } else if (stage.strength != strength && stage.result.graded) {
            stage.strength = strength;
            stage.result.image = blendLayer(stage.below, stage.result.lastLutOutput, strength);
        }
        if (stage.result.graded) {
            current = stage.result.image;
            total.lastLutOutput = stage.result.lastLutOutput;
            total.graded = true;
        }
    }
    total.image = current;
    return total;
}

void LayerGradeCache::clear()
{
    m_base.release();
    m_scene = -1;
    m_root.clear();
    for (Stage& stage : m_stages)
        stage = Stage();
}
