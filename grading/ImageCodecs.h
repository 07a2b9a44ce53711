// OpenCV's image codecs, for what our own decoders and encoders leave to it:
// PNG, BMP, WebP and TIFF reading, PNG writing, CMYK and damaged JPEGs.
//
// Off Windows the codec library is loaded on first use, not at start-up: it
// brings about 140 shared libraries with it (GDAL, GDCM, OpenEXR...), and
// loading them took about 130 ms of every start of the program and of
// melo-grade, most of which never touch a PNG. The functions behave as
// OpenCV's own (exceptions included); when the library cannot be loaded they
// fail as a decoder that cannot read the bytes does, after saying why once on
// standard error.
#pragma once

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace ImageCodecs {

// cv::imdecode
cv::Mat decode(cv::InputArray bytes, int flags);
// cv::imencode
bool encode(const std::string& extension, cv::InputArray pixels, std::vector<uchar>& encoded,
            const std::vector<int>& params = {});
// cv::imread
cv::Mat read(const std::string& path, int flags);

}  // namespace ImageCodecs
