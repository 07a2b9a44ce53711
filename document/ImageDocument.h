// The open photograph and the images derived from it: full resolution,
// working result, preview, display image and thumbnail, plus the crops made on
// the preview. A plain value the main window owns and its slots forward to.
//
// Images share pixels by reference count: an operation never writes into a
// matrix it has handed out, it replaces whole matrices. Every operation that
// can fail leaves all members as they were and reports false; none throws.
#pragma once

#include "SaveSetting.h"

#include <QRect>
#include <QString>
#include <QVector>

#include <opencv2/core.hpp>

#include <functional>

class ImageDocument
{
public:
    QString m_filePath;       // the open photograph, as given to openAdjustment
    QString m_tempFilePath;   // "<cache dir><base name>_temp.jpg"; nothing reads it
    int m_sceneIndex = -1;    // scene category 0..5, -1 until one is recognised

    cv::Mat m_srcMat;    // as read: full resolution, the file's own depth and channels
    cv::Mat m_orgMat;    // full-resolution working result (saved)
    cv::Mat m_showMat;   // preview, base of interactive grading; cut by crops
    cv::Mat m_dstMat;    // display image
    cv::Mat m_thumbMat;  // 82 px wide thumbnail of the preview
    cv::Mat m_lutMat;    // latest LUT output (written by grading)

    QVector<QRect> m_cropRects;  // every accepted crop, in preview pixels of its time
    QRect m_acceptedRect;        // the last accepted crop

    // Opening a path: recognises the scene in it, settles the cache folder,
    // reads the file and, on success only, takes over path, temporary path,
    // scene and images and forgets the crops. On failure (unreadable, empty,
    // cut-off or undecodable file) the previous photograph stays, untouched.
    bool openAdjustment(const QString& path);

    // Reads the file at `path` (local 8-bit encoding). With `full`: source,
    // working copy, preview, display image and thumbnail. Without: only the
    // display image. False for a null path or an unreadable file.
    bool loadImageFile(const char* path, bool full);

    // Accepts a crop rectangle in preview pixels: it becomes m_acceptedRect,
    // is appended to m_cropRects and the preview is cut. A rectangle that is
    // empty or not inside the preview is refused and nothing changes.
    bool acceptCrop(const QRect& rect);
    // Cuts preview and display image to m_acceptedRect (views on the same
    // pixels) and rebuilds the thumbnail. False, unchanged, if it does not fit.
    bool cropRect();
    // Undoes every crop: forgets them and rebuilds preview, display image and
    // thumbnail from the source. False when no photograph is open.
    bool resetCrop();

    // The image a save record writes. A silent save (interactive zero) takes
    // the display image. The user's save restarts from the source
    // (m_orgMat = m_srcMat), lets `regradeFull` grade m_orgMat at full
    // resolution, and, when `cropApplied` (the undo-crop button is enabled) and
    // crops were accepted, replays them on it. The result is also m_orgMat.
    cv::Mat imageForSave(const setting& st, bool cropApplied, const std::function<void()>& regradeFull);

    // Silent save of the display image into the cache folder under the base
    // name of `path` (".jpg"). False for an empty path or a failed write.
    bool saveTempFile(const QString& path) const;

    bool hasImage() const { return !m_srcMat.empty(); }
};
