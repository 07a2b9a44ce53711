#include "SaveJob.h"

#include <opencv2/core.hpp>

cv::Mat savedPixels(const SaveJob& job)
{
    cv::Mat image = job.source.pixels;
    if (job.scene >= 0 && !image.empty()) {
        const LayerGradeResult graded =
            gradeLayers(image, job.scene, job.layers, job.presetRoot, nullptr, GradeOutputs::ImageOnly);
        if (graded.graded)
            image = graded.image;
    }
    if (!job.crops.isEmpty())
        image = replayCrops(image, job.crops);
    return image;
}

SaveResult runSave(const SaveJob& job)
{
    return writeSettingFile(job.record, Photo{savedPixels(job), job.source.iccProfile, job.source.exifSegment});
}
