#include "SaveJob.h"

#include <opencv2/core.hpp>

// Today the grading works on 8-bit BGR: this is the one place where a
// source's alpha is put back. Once it keeps channels, this does nothing.
cv::Mat withSourceAlpha(const cv::Mat& graded, const cv::Mat& source)
{
    if (source.channels() != 4 || graded.channels() != 3)
        return graded;
    cv::Mat alpha;
    cv::extractChannel(source, alpha, 3);
    if (alpha.depth() != graded.depth())
        alpha.convertTo(alpha, graded.depth(), graded.depth() == CV_8U ? 1.0 / 257.0 : 257.0);
    cv::Mat out;
    cv::merge(std::vector<cv::Mat>{graded, alpha}, out);
    return out;
}

cv::Mat savedPixels(const SaveJob& job)
{
    cv::Mat image = job.source.pixels;
    if (job.scene >= 0 && !image.empty()) {
        const LayerGradeResult graded = gradeLayers(image, job.scene, job.layers, job.presetRoot);
        if (graded.graded)
            image = withSourceAlpha(graded.image, job.source.pixels);
    }
    if (!job.crops.isEmpty())
        image = replayCrops(image, job.crops);
    return image;
}

SaveResult runSave(const SaveJob& job)
{
    return writeSettingFile(job.record, Photo{savedPixels(job), job.source.iccProfile, job.source.exifSegment});
}
