// Grading applied to the open photograph: the layer grading of the preview
// or of the full-resolution image, and the preset buttons' thumbnails.
#pragma once

#include "ImageDocument.h"
#include "LayerGrading.h"

#include <QImage>
#include <QString>
#include <QVector>

// Grades the document with the chosen layers of a scene: the preview into
// the display image, or with `full` the source into m_orgMat; m_lutMat keeps
// the last LUT output. Returns false and changes nothing when no layer was
// applied (none chosen, no picture, scene outside 0..5, presets missing).
// The preview is graded with `previewMemo` when one is given, so a strength
// step redoes only what changed; the full-resolution image is always graded
// afresh (keeping its layers would hold a lot of memory).
bool gradeDocument(ImageDocument& doc, int scene, const LayerSelection& selection, bool full,
                   LayerGradeMemo* previewMemo = nullptr, const QString& root = presetRoot());

// One preset button's face: the thumbnail graded by the preset, and the
// preset's caption.
struct PresetThumbnail {
    PresetLayer layer = PresetLayer::Top;
    int id = 0;          // button id within the layer's group
    QString caption;
    QImage image;
};

// The caption of preset file n (0..19) of a scene; empty outside the tables.
QString presetCaption(int scene, int fileNumber);

// The faces of the twenty presets of a scene, in file order, graded from the
// thumbnail and shown through `display` when given. A preset whose file is
// missing is left out (its button keeps what it showed). Empty for an empty
// thumbnail or a scene outside 0..5.
QVector<PresetThumbnail> presetThumbnails(const cv::Mat& thumb, int scene, const QString& root = presetRoot(),
                                          const DisplayProfile* display = nullptr);
