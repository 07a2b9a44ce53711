// The open photograph and the images derived from it: full resolution,
// working result, preview, display image and thumbnail, plus the crops made on
// the preview. A plain value the main window owns and its slots forward to.
//
// Images share pixels by reference count: an operation never writes into a
// matrix it has handed out, it replaces whole matrices. Every operation that
// can fail leaves all members as they were and reports false; none throws.
#pragma once

#include "DisplayProfile.h"
#include "PhotoLoading.h"
#include "SaveJob.h"
#include "SaveSetting.h"

#include <QRect>
#include <QString>
#include <QVector>

#include <opencv2/core.hpp>

#include <memory>

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

    // What a save carries over from the source file: its colour profile and
    // its EXIF segment (orientation 1, the pixels being upright).
    QByteArray m_iccProfile;
    QByteArray m_exifSegment;
    // The screen's conversion of the profile to sRGB; null when none is needed.
    std::shared_ptr<const DisplayProfile> m_display;

    QVector<QRect> m_cropRects;  // every accepted crop, in preview pixels of its time
    QRect m_acceptedRect;        // the last accepted crop

    // Opening a path: recognises the scene in it, settles the cache folder,
    // reads the file and, on success only, takes over path, temporary path,
    // scene and images and forgets the crops. On failure (not a regular
    // file, unreadable, too large, cut-off or undecodable) the previous
    // photograph stays, untouched, and `reason` says why.
    bool openAdjustment(const QString& path, QString* reason = nullptr);
    // The second half of openAdjustment, for a photograph loaded elsewhere
    // (on another thread) from `path`: false, and nothing changes, when
    // `loaded` failed.
    bool adoptPhoto(const QString& path, const LoadedPhoto& loaded, QString* reason = nullptr);

    // Reads the file at `path` (local 8-bit encoding) with readPhoto. With
    // `full`: source, its profile and EXIF, working copy, preview, display
    // image and thumbnail. Without: only the display image. False for a null
    // path or a file readPhoto refuses.
    bool loadImageFile(const char* path, bool full, QString* reason = nullptr);

    // Accepts a crop rectangle in preview pixels: the preview is cut, and only
    // then does it become m_acceptedRect and join m_cropRects. A rectangle
    // that is empty, not inside the preview, or so thin that its thumbnail
    // would be empty is refused and nothing changes.
    bool acceptCrop(const QRect& rect);
    // Cuts preview and display image to m_acceptedRect (views on the same
    // pixels) and rebuilds the thumbnail. False, unchanged, if it does not fit.
    bool cropRect();
    // Cuts preview and display image to `rect` and rebuilds the thumbnail;
    // false and unchanged when it does not fit or the thumbnail is empty.
    bool cutTo(const QRect& rect);
    // Undoes every crop: forgets them and rebuilds preview, display image and
    // thumbnail from the source. False when no photograph is open.
    bool resetCrop();

    // The snapshot a save record runs on (see SaveJob). A silent save
    // (interactive zero) writes the display image as it is. The user's save
    // grades the source with `layers` of `scene` and, when `cropApplied` (the
    // undo-crop button is enabled) and crops were accepted, replays them.
    SaveJob saveJob(const setting& st, bool cropApplied, int scene, const LayerSelection& layers) const;

    // Silent save of the display image into the cache folder under the base
    // name of `path` (".jpg"). False for an empty path or a failed write.
    bool saveTempFile(const QString& path) const;

    bool hasImage() const { return !m_srcMat.empty(); }

    // What the screen shows of one of the document's images (see displayPixels).
    cv::Mat forDisplay(const cv::Mat& image) const { return displayPixels(image, m_display.get()); }

private:
    // Source, profile, EXIF, working copy, preview, display image, thumbnail.
    void takeImages(const LoadedPhoto& loaded);
};
