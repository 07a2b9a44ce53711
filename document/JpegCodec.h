// JPEG straight through libjpeg-turbo: decoded into BGR (or grey) and encoded
// from it without a separate colour-order pass or a growing output buffer.
// The library and every setting are those OpenCV's codec uses, so pixels and
// bytes are the same as cv::imdecode's and cv::imencode's, only sooner: on a
// photograph, decoding and encoding are most of what opening and saving cost.
#pragma once

#include <QByteArray>

#include <opencv2/core.hpp>

// The picture as stored (no orientation applied), at 1/scaleDenom of its size
// (1, 2, 4 or 8; the library rounds scaled sizes up). Three components give
// BGR; one gives grey, or BGR when colour is asked for. Empty for anything
// else (four components such as CMYK, damaged or not JPEG at all, more than
// maxPixels): for the caller to hand to a general decoder. Warnings about
// damaged data are not reported: the caller checks completeness first.
cv::Mat decodeJpeg(const QByteArray& bytes, int scaleDenom, bool colour, qint64 maxPixels);

// 8-bit grey or BGR (BGRA's alpha is dropped) at the given quality, baseline,
// default sampling and tables, with segments (whole ones: marker, length,
// body; EXIF and ICC for one) right after the JFIF header. Empty when it
// cannot be encoded or a segment is malformed. Never throws.
QByteArray encodeJpeg(const cv::Mat& pixels, int quality, const QByteArray& segments = QByteArray());
