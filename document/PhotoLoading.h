// Everything opening a photograph computes before the document takes it
// over, as plain functions that may run on any thread: the photograph read
// with readPhoto, the preview and thumbnail derived from it, the screen's
// conversion of its profile; and, for a large JPEG or a camera RAW, a quick
// first preview to show while the rest is decoded.
#pragma once

#include "DisplayProfile.h"
#include "Photo.h"
#include "PhotoReader.h"

#include <QByteArray>
#include <QString>

#include <opencv2/core.hpp>

#include <memory>

struct LoadedPhoto {
    Photo photo;
    cv::Mat preview;     // the preview rule applied to photo.pixels
    cv::Mat thumbnail;   // of the preview
    std::shared_ptr<const DisplayProfile> display;
    QString reason;      // why it failed; empty on success
    PhotoReadError error = PhotoReadError::None;

    bool ok() const { return reason.isEmpty(); }
};

// The photograph in `bytes` (as read from a file) and its derived images.
// Fails with a reason when readPhoto would, or when the picture is too thin
// for a preview or thumbnail.
LoadedPhoto loadPhotoBytes(const QByteArray& bytes);
// The same for a file: readPhoto's refusals come first.
LoadedPhoto loadPhoto(const QString& path);

// A JPEG's preview decoded with libjpeg's DCT scaling (1/2, 1/4 or 1/8, the
// smallest that is still at least the preview's size), turned upright and
// scaled to exactly the preview's size. Close to, not equal to, the preview
// of the full decode. Empty when the bytes are not a whole JPEG under the
// pixel cap, or when no scaling would help (a photograph already small).
cv::Mat quickJpegPreview(const QByteArray& bytes);

// The quick first preview of a photograph, of the size of its preview: a
// JPEG's from quickJpegPreview, a camera RAW's developed at half size (no
// demosaic), with the profile it is shown with. Empty pixels for other
// formats and where quickJpegPreview gives none.
Photo quickPreview(const QByteArray& bytes);
