#include "DisplayProfile.h"

#include <lcms2.h>

#include <cmath>

namespace {

struct ProfileHandle {
    cmsHPROFILE p;
    explicit ProfileHandle(cmsHPROFILE profile) : p(profile) {}
    ~ProfileHandle()
    {
        if (p)
            cmsCloseProfile(p);
    }
};

// Same primaries and the same tone curve as sRGB: converting would change
// nothing worth the time.
bool sameAsSrgb(cmsHPROFILE profile)
{
    const ProfileHandle srgb(cmsCreate_sRGBProfile());
    for (cmsTagSignature tag : {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag}) {
        const auto* a = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tag));
        const auto* b = static_cast<const cmsCIEXYZ*>(cmsReadTag(srgb.p, tag));
        if (!a || !b || std::fabs(a->X - b->X) > 0.002 || std::fabs(a->Y - b->Y) > 0.002
            || std::fabs(a->Z - b->Z) > 0.002)
            return false;
    }
    for (cmsTagSignature tag : {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag}) {
        const auto* a = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tag));
        const auto* b = static_cast<const cmsToneCurve*>(cmsReadTag(srgb.p, tag));
        if (!a || !b)
            return false;
        for (float x : {0.02f, 0.2f, 0.5f, 0.8f})
            if (std::fabs(cmsEvalToneCurveFloat(a, x) - cmsEvalToneCurveFloat(b, x)) > 0.002f)
                return false;
    }
    return true;
}

} // namespace

std::shared_ptr<const DisplayProfile> DisplayProfile::forProfile(const QByteArray& iccProfile)
{
    if (iccProfile.isEmpty())
        return nullptr;
    const ProfileHandle source(cmsOpenProfileFromMem(iccProfile.constData(), cmsUInt32Number(iccProfile.size())));
    if (!source.p || cmsGetColorSpace(source.p) != cmsSigRgbData || sameAsSrgb(source.p))
        return nullptr;
    const ProfileHandle srgb(cmsCreate_sRGBProfile());
    std::shared_ptr<DisplayProfile> display(new DisplayProfile);
    // No cache: one transform may serve several threads.
    display->m_bgr = cmsCreateTransform(source.p, TYPE_BGR_8, srgb.p, TYPE_BGR_8, INTENT_PERCEPTUAL, cmsFLAGS_NOCACHE);
    display->m_bgra = cmsCreateTransform(source.p, TYPE_BGRA_8, srgb.p, TYPE_BGRA_8, INTENT_PERCEPTUAL,
                                         cmsFLAGS_NOCACHE | cmsFLAGS_COPY_ALPHA);
    if (!display->m_bgr || !display->m_bgra)
        return nullptr;
    return display;
}

DisplayProfile::~DisplayProfile()
{
    if (m_bgr)
        cmsDeleteTransform(m_bgr);
    if (m_bgra)
        cmsDeleteTransform(m_bgra);
}

cv::Mat DisplayProfile::toSrgb(const cv::Mat& image) const
{
    if (image.depth() != CV_8U || (image.channels() != 3 && image.channels() != 4) || image.empty())
        return image;
    cv::Mat out(image.size(), image.type());
    void* transform = image.channels() == 3 ? m_bgr : m_bgra;
    for (int y = 0; y < image.rows; ++y)
        cmsDoTransform(transform, image.ptr(y), out.ptr(y), cmsUInt32Number(image.cols));
    return out;
}

cv::Mat displayPixels(const cv::Mat& image, const DisplayProfile* profile)
{
    cv::Mat out = image;
    if (out.depth() == CV_16U)
        out.convertTo(out, CV_8U, 1.0 / 257.0);
    return profile ? profile->toSrgb(out) : out;
}
