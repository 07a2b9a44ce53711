#pragma once

#include <opencv2/core.hpp>

class QLabel;

// Shows a matrix on a label by the fit rule: shrunk into the label's frame
// geometry (width first, then height, never enlarged) and centred. Returns
// false, leaving the label as it was, when the matrix has nothing to show.
bool showMatOnLabel(QLabel* label, const cv::Mat& mat);
