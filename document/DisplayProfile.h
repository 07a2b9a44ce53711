// Showing a photograph whose colour profile is not sRGB as a colour-managed
// viewer shows it: its pixels converted to sRGB (LittleCMS) for the screen
// only. Grading and saving keep working on the file's own values.
#pragma once

#include <QByteArray>

#include <opencv2/core.hpp>

#include <memory>

class DisplayProfile
{
public:
    // The conversion for an embedded profile; null when there is nothing to
    // do (no profile, an unreadable or non-RGB one, or one equal to sRGB).
    // Made once per opened photograph and shared.
    static std::shared_ptr<const DisplayProfile> forProfile(const QByteArray& iccProfile);
    ~DisplayProfile();
    DisplayProfile(const DisplayProfile&) = delete;
    DisplayProfile& operator=(const DisplayProfile&) = delete;

    // An 8-bit BGR or BGRA image converted to sRGB (alpha kept); another
    // kind is returned as it is.
    cv::Mat toSrgb(const cv::Mat& image) const;

private:
    DisplayProfile() = default;
    void* m_bgr = nullptr;   // cmsHTRANSFORM
    void* m_bgra = nullptr;
};

// What the screen shows of a matrix: 16 bits brought to 8, then the profile's
// conversion when there is one. Without a conversion an 8-bit matrix is
// returned as it is (shared), at no cost.
cv::Mat displayPixels(const cv::Mat& image, const DisplayProfile* profile);
