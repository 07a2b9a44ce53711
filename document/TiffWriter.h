// An uncompressed TIFF written by libtiff straight into a device (the save
// file itself, or a buffer), a strip at a time: a large 16-bit picture never
// exists a second time in memory on its way to the disk.
#pragma once

#include <QByteArray>
#include <QString>

#include <opencv2/core.hpp>

class QIODevice;

// Writes `pixels` (grey, grey and alpha, BGR or BGRA; 8 or 16 bits per
// channel, any row stride) as one uncompressed image: RGB on disk, grey as
// black-is-zero, alpha as an extra sample readers take for alpha, and
// `iccProfile` (when not empty) in tag 34675. The device must be open for
// writing, empty and seekable (the header is completed last). False with the
// reason (the device's own, such as a full disk, when it refused bytes) if
// anything failed; what was written is then of no use. Never throws.
// libtiff's messages go to this call alone, so writers on several threads do
// not mix them.
bool writeTiff(QIODevice& device, const cv::Mat& pixels, const QByteArray& iccProfile, QString* error = nullptr);

// The bytes writeTiff gives for this picture, for sizing a buffer.
qint64 tiffSizeEstimate(const cv::Mat& pixels, const QByteArray& iccProfile);
