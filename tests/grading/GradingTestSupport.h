// Helpers of the grading tests: writing LUT files, capturing what the engine
// prints on standard output, comparing images.
#pragma once

#include "LutApply.h"

#include <opencv2/core.hpp>

#include <QByteArray>
#include <QString>

#include <functional>

// The text of a ".cube" file: header lines, "LUT_3D_SIZE <size>", then the
// entries red fastest, each from colour(r, g, b) with r, g, b from 0 to 1.
QByteArray cubeText(int size, const std::function<LutRgb(float, float, float)>& colour,
                    const QByteArray& header = QByteArray());

// Writes bytes to path; fails the test on error.
void writeFile(const QString& path, const QByteArray& bytes);

// Runs work and returns everything it printed on standard output.
QByteArray captureStdout(const std::function<void()>& work);

// Whether two images have the same size, type and bytes.
bool sameImage(const cv::Mat& a, const cv::Mat& b);

// A 4096 x 4096 BGR image holding every 8-bit colour exactly once.
cv::Mat everyColourImage();
