// Helpers of the grading tests: writing LUT files, comparing images.
#pragma once

#include "FileBytes.h"
#include "ImageCompare.h"
#include "LutApply.h"
#include "StdoutCapture.h"

#include <opencv2/core.hpp>

#include <functional>

// The text of a ".cube" file: header lines, "LUT_3D_SIZE <size>", then the
// entries red fastest, each from colour(r, g, b) with r, g, b from 0 to 1.
QByteArray cubeText(int size, const std::function<LutRgb(float, float, float)>& colour,
                    const QByteArray& header = QByteArray());

// A 4096 x 4096 BGR image holding every 8-bit colour exactly once.
cv::Mat everyColourImage();
