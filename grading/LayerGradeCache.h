// Interactive regrading: grades exactly as gradeLayers does, one layer at a
// time, and keeps every layer's input and LUT output. Grading the same base
// again reuses the layers below the first one whose preset or input changed;
// a layer whose only change is its strength is just blended again. So one
// step of a strength slider costs a blend plus the layers above it, not
// three LUT applications.
//
// Images are recognised by their pixels' address, size and type: this relies
// on the rule that pixels handed out are never written again (whole
// matrices are replaced). The cache holds references to what it keeps, so
// an address cannot be reused by another image meanwhile.
#pragma once

#include "LayerGrading.h"

class LayerGradeCache
{
public:
    LayerGradeResult grade(const cv::Mat& base, int scene, const LayerSelection& selection,
                           const QString& root = presetRoot());
    // Forgets everything kept (the memory is released).
    void clear();

private:
    struct Stage {
        int id = -1;
        int strength = 0;
        cv::Mat input;    // what lay below, as given (recognised by its pixels)
        cv::Mat below;    // the same as the blend sees it (8-bit BGR)
        LayerGradeResult result;
    };
    cv::Mat m_base;
    int m_scene = -1;
    QString m_root;
    Stage m_stages[kPresetLayerCount];
};
