// The user's save as a plain function over a snapshot of what it needs, so
// it holds no reference into the window and can run anywhere: the source
// photograph (shared pixels, never written to), the layers to grade with,
// the crops to replay and the record saying where and how to write.
#pragma once

#include "ImageSaver.h"
#include "LayerGrading.h"
#include "Photo.h"

#include <QRect>
#include <QString>
#include <QVector>

struct SaveJob {
    Photo source;                 // full resolution, with its profile and EXIF
    int scene = -1;               // the presets' scene; -1: nothing to grade
    LayerSelection layers;
    QVector<QRect> crops;         // preview crops to replay, in order; empty for none
    setting record;
    QString presetRoot = ::presetRoot();
};

// The full-resolution picture the job writes: the source graded with the
// layers at its own depth, alpha untouched (the source itself when no layer
// applies), then cut by the crops.
cv::Mat savedPixels(const SaveJob& job);

// savedPixels written as the record says, with the source's profile and EXIF.
// Intermediate images are released when it returns.
SaveResult runSave(const SaveJob& job);
