// Grading a photograph with up to three preset layers (top, mid, down).
//
// Each chosen layer applies its preset's LUT to the result so far (the base
// for the first one) and lays the LUT output over that result at the layer's
// strength. The editor's preview, its full-resolution save and the batch tool
// all grade through gradeLayers.
#pragma once

#include "LutKernel.h"
#include "Presets.h"

#include <opencv2/core.hpp>

#include <QString>

#include <memory>

enum class PresetLayer { Top = 0, Mid = 1, Down = 2 };
inline constexpr int kPresetLayerCount = 3;

// The file number of a layer's preset button: top id, mid id + 4, down id + 8.
int presetFileNumber(PresetLayer layer, int id);

// base * (1 - a) + lutOut * a + 1 with a = strength / 100 (single precision,
// then widened), saturated at the images' depth (8 or 16 bits: the 1 is one
// level either way); the constant 1 is part of the look and is kept. Of four
// channels the fourth (alpha) is the base's, unchanged. With inPlace the
// result is written over lutOut (the same values) and returned.
cv::Mat blendLayer(const cv::Mat& base, const cv::Mat& lutOut, int strength, bool inPlace = false);

struct LayerSelection {
    int ids[kPresetLayerCount] = {-1, -1, -1};  // button id per layer, -1 for none
    int strengths[kPresetLayerCount] = {100, 100, 100};
};

struct LayerGradeResult {
    cv::Mat image;          // the graded picture, or the base when nothing was graded
    cv::Mat lastLutOutput;  // the most recent LUT output before its blend (not kept with ImageOnly)
    bool graded = false;    // at least one layer was applied
};

// What a grading hands back. ImageOnly (a save) grades each layer and blends
// it a few rows at a time, over the previous layer's result: no picture-sized
// LUT output, whose fresh pages cost more than the blend itself on a large
// photo. OverBase (a batch, which needs only the graded photo) does the same
// and grades the base's own pixels in place when they are already in a
// gradable form: no new picture at all.
enum class GradeOutputs { WithLutOutput, ImageOnly, OverBase };

// What the last grading of one picture computed, layer by layer. Given to
// gradeLayers again with the same picture (the same pixels, which nobody has
// written to), it lets a regrade skip the layers before the first one that
// changed, and the LUT application of a layer whose strength alone changed.
// The results are the same as without it. Meant for the interactive preview.
class LayerGradeMemo {
public:
    void clear();

private:
    friend LayerGradeResult gradeLayers(const cv::Mat&, int, const LayerSelection&, const QString&,
                                        LayerGradeMemo*, GradeOutputs);
    struct Stage {
        std::shared_ptr<const LutKernel> kernel;  // null: the layer was not applied
        int strength = 0;
        cv::Mat lutOut, image;
    };
    cv::Mat m_base;
    Stage m_stages[kPresetLayerCount];
};

// Grades base (as toGradable gives it: BGR or BGRA at 8 or 16 bits, grey
// made BGR) at its own depth, alpha untouched, with the chosen layers
// of a scene, reading presets under root. A layer whose preset is missing or
// unreadable, or any layer when the scene is not 0 to 5, is skipped with one
// line on standard output; the other layers still apply.
LayerGradeResult gradeLayers(const cv::Mat& base, int scene, const LayerSelection& selection,
                             const QString& root = presetRoot(), LayerGradeMemo* memo = nullptr,
                             GradeOutputs outputs = GradeOutputs::WithLutOutput);
