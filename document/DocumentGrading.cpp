#include "DocumentGrading.h"

#include "FitRule.h"
#include "GlobalConstants.h"
#include "LutApply.h"

#include <QFileInfo>

namespace {

constexpr int kTopPresets = 4;
constexpr int kMidPresets = 4;

} // namespace

bool gradeDocument(ImageDocument& doc, int scene, const LayerSelection& selection, bool full,
                   LayerGradeMemo* previewMemo, const QString& root)
{
    const LayerGradeResult result = gradeLayers(full ? doc.m_srcMat : doc.m_showMat, scene, selection, root,
                                                full ? nullptr : previewMemo);
    if (!result.graded)
        return false;
    doc.m_lutMat = result.lastLutOutput;
    (full ? doc.m_orgMat : doc.m_dstMat) = result.image;
    return true;
}

QString presetCaption(int scene, int fileNumber)
{
    if (scene < 0 || scene >= kSceneCount || fileNumber < 0 || fileNumber >= kPresetFilesPerScene)
        return QString();
    if (fileNumber < kTopPresets)
        return QString::fromUtf8(kTopCaptions[scene][fileNumber]);
    if (fileNumber < kTopPresets + kMidPresets)
        return QString::fromUtf8(kMidCaptions[scene][fileNumber - kTopPresets]);
    return QString::fromUtf8(kDownCaptions[scene][fileNumber - kTopPresets - kMidPresets]);
}

QVector<PresetThumbnail> presetThumbnails(const cv::Mat& thumb, int scene, const QString& root,
                                          const DisplayProfile* display)
{
    QVector<PresetThumbnail> faces;
    if (thumb.empty() || scene < 0 || scene >= kSceneCount)
        return faces;
    for (int n = 0; n < kPresetFilesPerScene; ++n) {
        const QString path = presetFilePath(root, scene, n);
        if (!QFileInfo(path).isFile())
            continue;
        PresetThumbnail face;
        if (n < kTopPresets) {
            face.layer = PresetLayer::Top;
            face.id = n;
        } else if (n < kTopPresets + kMidPresets) {
            face.layer = PresetLayer::Mid;
            face.id = n - kTopPresets;
        } else {
            face.layer = PresetLayer::Down;
            face.id = n - kTopPresets - kMidPresets;
        }
        face.caption = presetCaption(scene, n);
        face.image = matToQImage(displayPixels(applyLutFile(thumb, path.toLocal8Bit().constData()), display));
        faces.append(face);
    }
    return faces;
}
