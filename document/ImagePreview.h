// The rules that derive the document's smaller images and names from an
// opened photograph. Free functions so they can be checked from tables.
#pragma once

#include <QString>

#include <opencv2/core.hpp>

// Preview width for landscape and square photographs, height for portraits.
inline constexpr float kPreviewWidth = 1200.0f;
inline constexpr float kPreviewHeight = 990.0f;
// Thumbnail width of the preset buttons.
inline constexpr float kThumbnailWidth = 82.0f;
// A preset button shows no more than this height of its thumbnail; a taller
// picture (a thin crop) is thumbnailed from its middle part only.
inline constexpr int kThumbnailMaxHeight = 246;

// Preview scale in single precision: 990 / rows for portraits (cols < rows),
// 1200 / cols otherwise. Small photographs are enlarged too. The single
// precision is part of the rule: it decides how the sizes round.
float previewScale(int cols, int rows);
// Thumbnail scale in single precision: 82 / cols.
float thumbnailScale(int cols);

// The preview and the thumbnail (INTER_AREA). Both return an empty matrix
// instead of throwing when the input is empty or the result would have no
// pixels (an extremely thin picture). The thumbnail is at most
// kThumbnailMaxHeight tall: of a taller picture the middle rows are taken.
// The preview of a 16-bit photograph has 8 bits (rounded to nearest), its
// channels as in the source.
cv::Mat makePreview(const cv::Mat& full);
cv::Mat makeThumbnail(const cv::Mat& preview);

// Scene category named in a path: the index of the first scene word (in table
// order) found at a position greater than 0. A word at the very start does not
// count. Returns `current` when no word matches.
int recogniseScene(const QString& path, int current);

// The part of a path after its last "/".
QString fileNameOf(const QString& path);
// A file name cut before its last "." (the whole name when it has none).
QString cutAtLastDot(const QString& fileName);

// Cache folder inside the install location ("%1//%2//"), empty when the
// install location is not recorded.
QString cacheFolderFromInstallLocation();
// The same, and when the install location is not recorded the application's
// folder is written to the product key as the value "MELO".
QString cacheDirectory();
// "<cache dir><base name>_temp.jpg"; with an empty cache directory a bare
// relative file name.
QString tempFilePathFor(const QString& cacheDir, const QString& photoPath);
