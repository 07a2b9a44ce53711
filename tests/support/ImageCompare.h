// Whether two images are the same to the last bit: size, type and every value.
#pragma once

#include <opencv2/core.hpp>

inline bool sameImage(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && a.type() == b.type() && (a.empty() || cv::norm(a, b, cv::NORM_INF) == 0);
}
