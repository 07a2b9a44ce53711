// Memory for the large images grading produces.
//
// Buffers of a megabyte or more are kept for reuse when their last image is
// released (a few, up to a bounded total), so grading pictures of the same
// size again neither maps fresh memory nor faults its pages in; fresh large
// buffers ask the system for huge pages. Images made with this allocator are
// ordinary cv::Mat values in every other respect.
#pragma once

#include <opencv2/core.hpp>

cv::MatAllocator* reusingImageAllocator();

// out as an image of the given size and type: kept if it already is one,
// else newly made with the reusing allocator.
void createReusable(cv::Mat& out, cv::Size size, int type);
