// melo-grade apply [--lut FILE [--strength N]]... INPUT OUTPUT
//
// Applies each LUT in turn to the result so far. Without --strength the LUT
// output replaces the picture, as applyLutFile gives it; with --strength N it
// is laid over the result so far as an editor layer is.
#include "GradeTool.h"

#include "LayerGrading.h"
#include "LutApply.h"
#include "LutCache.h"

namespace {

struct Step {
    std::string file;
    int strength = -1;  // -1: replace
};

}  // namespace

int runApplyCommand(const Arguments& args)
{
    std::vector<Step> steps;
    Arguments positional;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--lut") {
            if (i + 1 >= args.size())
                return usageError("--lut needs a file");
            steps.push_back({args[++i]});
        } else if (args[i] == "--strength") {
            if (steps.empty() || steps.back().strength >= 0)
                return usageError("--strength follows the --lut it belongs to, once");
            if (i + 1 >= args.size() || !parseNumber(args[i + 1], 0, 100, steps.back().strength))
                return usageError("--strength needs a number from 0 to 100");
            ++i;
        } else if (args[i].rfind("--", 0) == 0) {
            return usageError("unknown option " + args[i]);
        } else {
            positional.push_back(args[i]);
        }
    }
    if (positional.size() != 2)
        return usageError("apply needs an input and an output image");
    if (!isWritableFormat(positional[1]))
        return usageError(positional[1] + ": unknown output format (use .jpg, .png or .tif)");

    std::vector<std::shared_ptr<const LutKernel>> kernels;
    for (const Step& step : steps) {
        kernels.push_back(loadLutCached(step.file));
        if (!kernels.back()) {
            complain(step.file + ": cannot read the LUT");
            return kExitLutFailed;
        }
    }
    std::optional<Photo> photo = readPhotoFile(positional[0]);
    if (!photo)
        return kExitImageFailed;
    if (!steps.empty()) {
        // Graded at the photograph's own depth; an alpha channel passes through.
        cv::Mat picture = toGradable(photo->pixels);
        for (size_t i = 0; i < steps.size(); ++i) {
            const cv::Mat graded = applyLut(picture, *kernels[i]);
            // The blend goes over the LUT output's own memory.
            picture = steps[i].strength < 0 ? graded : blendLayer(picture, graded, steps[i].strength, true);
        }
        photo->pixels = picture;
    }
    return writePhotoFile(positional[1], *photo) ? kExitOk : kExitImageFailed;
}
