#include "ImageDocument.h"

#include "ImagePreview.h"
#include "ImageSaver.h"

#include <QFile>

namespace {

bool fitsInside(const cv::Rect& r, const cv::Mat& image)
{
    return !r.empty() && (r & cv::Rect(0, 0, image.cols, image.rows)) == r;
}

cv::Rect toCvRect(const QRect& r) { return cv::Rect(r.x(), r.y(), r.width(), r.height()); }

} // namespace

bool ImageDocument::openAdjustment(const QString& path)
{
    const int scene = recogniseScene(path, m_sceneIndex);
    const QString cacheDir = cacheDirectory();
    if (!loadImageFile(path.toLocal8Bit().constData(), true))
        return false;
    m_sceneIndex = scene;
    m_filePath = path;
    m_tempFilePath = tempFilePathFor(cacheDir, path);
    // Crops belong to the photograph they were made on.
    m_cropRects.clear();
    return true;
}

bool ImageDocument::loadImageFile(const char* path, bool full)
{
    if (!path)
        return false;
    const cv::Mat image = readImageFile(QFile::decodeName(path));
    if (image.empty())
        return false;
    if (!full) {
        m_dstMat = image;
        return true;
    }
    const cv::Mat preview = makePreview(image);
    const cv::Mat thumb = makeThumbnail(preview);
    if (preview.empty() || thumb.empty())
        return false;
    m_srcMat = image;
    m_orgMat = m_srcMat;
    m_showMat = preview;
    m_dstMat = m_showMat;
    m_thumbMat = thumb;
    return true;
}

bool ImageDocument::acceptCrop(const QRect& rect)
{
    const cv::Rect r = toCvRect(rect);
    if (!fitsInside(r, m_showMat) || !fitsInside(r, m_dstMat))
        return false;
    m_acceptedRect = rect;
    m_cropRects.append(rect);
    return cropRect();
}

bool ImageDocument::cropRect()
{
    const cv::Rect r = toCvRect(m_acceptedRect);
    if (!fitsInside(r, m_showMat) || !fitsInside(r, m_dstMat))
        return false;
    const cv::Mat preview = m_showMat(r);
    const cv::Mat thumb = makeThumbnail(preview);
    if (thumb.empty())
        return false;
    m_showMat = preview;
    m_dstMat = m_dstMat(r);
    m_thumbMat = thumb;
    return true;
}

bool ImageDocument::resetCrop()
{
    if (m_srcMat.empty())
        return false;
    const cv::Mat preview = makePreview(m_srcMat);
    const cv::Mat thumb = makeThumbnail(preview);
    if (preview.empty() || thumb.empty())
        return false;
    m_cropRects.clear();
    m_orgMat = m_srcMat;
    m_showMat = preview;
    m_dstMat = m_showMat;
    m_thumbMat = thumb;
    return true;
}

cv::Mat ImageDocument::imageForSave(const setting& st, bool cropApplied,
                                    const std::function<void()>& regradeFull)
{
    if (st.interactive == 0)
        return m_dstMat;
    m_orgMat = m_srcMat;
    if (regradeFull)
        regradeFull();
    if (cropApplied && !m_acceptedRect.isEmpty() && !m_cropRects.isEmpty())
        m_orgMat = replayCrops(m_orgMat, m_cropRects);
    return m_orgMat;
}

bool ImageDocument::saveTempFile(const QString& path) const
{
    const std::optional<setting> st = tempSaveSetting(path);
    return st && writeSettingFile(*st, m_dstMat, m_filePath).status == SaveStatus::Written;
}
