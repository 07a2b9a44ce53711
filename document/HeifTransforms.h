// The rotations and mirrors a HEIF file records for one of its images (its
// "irot" and "imir" properties, in the order they apply), read from the
// file's boxes. This libheif mirrors 8-bit pictures only; a deeper one is
// decoded as stored and turned with these, so it keeps its depth.
#pragma once

#include <QByteArray>

#include <opencv2/core.hpp>

#include <optional>
#include <vector>

enum class HeifStep { TurnLeft, FlipLeftRight, FlipTopBottom };

// The steps for the image with `itemId`, none when it has no transformation.
// Nothing when the boxes cannot be read, or when the image is also cropped
// ("clap"), which only libheif applies.
std::optional<std::vector<HeifStep>> heifTransformations(const QByteArray& file, quint32 itemId);

bool heifStepsMirror(const std::vector<HeifStep>& steps);

// `stored` with the steps applied in order.
cv::Mat applyHeifSteps(const cv::Mat& stored, const std::vector<HeifStep>& steps);
