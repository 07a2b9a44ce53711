#include "ImageDocument.h"

#include "ImagePreview.h"
#include "ImageSaver.h"
#include "PhotoReader.h"

#include <QFile>

namespace {

bool fitsInside(const cv::Rect& r, const cv::Mat& image)
{
    return !r.empty() && (r & cv::Rect(0, 0, image.cols, image.rows)) == r;
}

cv::Rect toCvRect(const QRect& r) { return cv::Rect(r.x(), r.y(), r.width(), r.height()); }

} // namespace

void ImageDocument::takeImages(const LoadedPhoto& loaded)
{
    m_srcMat = loaded.photo.pixels;
    m_iccProfile = loaded.photo.iccProfile;
    m_exifSegment = loaded.photo.exifSegment;
    m_display = loaded.display;
    m_orgMat = m_srcMat;
    m_lutMat.release();
    m_showMat = loaded.preview;
    m_dstMat = m_showMat;
    m_thumbMat = loaded.thumbnail;
}

bool ImageDocument::openAdjustment(const QString& path, QString* reason)
{
    return adoptPhoto(path, loadPhoto(path), reason);
}

bool ImageDocument::adoptPhoto(const QString& path, const LoadedPhoto& loaded, QString* reason)
{
    if (!loaded.ok()) {
        if (reason)
            *reason = loaded.reason;
        return false;
    }
    m_sceneIndex = recogniseScene(path, m_sceneIndex);
    m_filePath = path;
    m_tempFilePath = tempFilePathFor(cacheDirectory(), path);
    takeImages(loaded);
    // Crops belong to the photograph they were made on.
    m_cropRects.clear();
    return true;
}

bool ImageDocument::loadImageFile(const char* path, bool full, QString* reason)
{
    if (!path)
        return false;
    const QString name = QFile::decodeName(path);
    if (!full) {
        PhotoReadResult read = readPhoto(name);
        if (!read) {
            if (reason)
                *reason = read.reason;
            return false;
        }
        m_dstMat = read.photo->pixels;
        return true;
    }
    const LoadedPhoto loaded = loadPhoto(name);
    if (!loaded.ok()) {
        if (reason)
            *reason = loaded.reason;
        return false;
    }
    takeImages(loaded);
    return true;
}

bool ImageDocument::acceptCrop(const QRect& rect)
{
    // Recorded only once made: a refused cut must not be replayed on save.
    if (!cutTo(rect))
        return false;
    m_acceptedRect = rect;
    m_cropRects.append(rect);
    return true;
}

bool ImageDocument::cropRect()
{
    return cutTo(m_acceptedRect);
}

bool ImageDocument::cutTo(const QRect& rect)
{
    const cv::Rect r = toCvRect(rect);
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

SaveJob ImageDocument::saveJob(const setting& st, bool cropApplied, int scene, const LayerSelection& layers) const
{
    SaveJob job;
    job.record = st;
    job.source = Photo{st.interactive == 0 ? m_dstMat : m_srcMat, m_iccProfile, m_exifSegment};
    if (st.interactive == 0)
        return job;
    job.scene = scene;
    job.layers = layers;
    if (cropApplied && !m_acceptedRect.isEmpty())
        job.crops = m_cropRects;
    return job;
}

bool ImageDocument::saveTempFile(const QString& path) const
{
    const std::optional<setting> st = tempSaveSetting(path);
    return st && runSave(saveJob(*st, false, -1, LayerSelection())).status == SaveStatus::Written;
}
