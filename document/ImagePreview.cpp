#include "ImagePreview.h"

#include "GlobalConstants.h"
#include "SettingsStore.h"

#include <QCoreApplication>

#include <opencv2/imgproc.hpp>

namespace {

// Scales by one factor for both axes. cv::resize rounds cols * f and rows * f
// to the nearest integer; a zero-sized result is refused here instead of by
// an OpenCV assertion.
cv::Mat scaled(const cv::Mat& src, float factor)
{
    if (src.empty())
        return cv::Mat();
    const double f = factor;
    if (cvRound(src.cols * f) < 1 || cvRound(src.rows * f) < 1)
        return cv::Mat();
    try {
        cv::Mat out;
        cv::resize(src, out, cv::Size(0, 0), f, f, cv::INTER_AREA);
        return out;
    } catch (const std::exception&) {  // cv::Exception and std::bad_alloc alike
        return cv::Mat();
    }
}

} // namespace

float previewScale(int cols, int rows)
{
    if (cols <= 0 || rows <= 0)
        return 0.0f;
    return cols < rows ? kPreviewHeight / rows : kPreviewWidth / cols;
}

float thumbnailScale(int cols)
{
    return cols > 0 ? kThumbnailWidth / cols : 0.0f;
}

cv::Mat makePreview(const cv::Mat& full)
{
    cv::Mat preview = scaled(full, previewScale(full.cols, full.rows));
    // Interactive work stays at 8 bits whatever the file holds; only the save
    // goes back to the full-depth source.
    if (preview.depth() == CV_16U)
        preview.convertTo(preview, CV_8U, 1.0 / 257.0);
    return preview;
}

cv::Mat makeThumbnail(const cv::Mat& preview)
{
    const float t = thumbnailScale(preview.cols);
    const int maxRows = int(kThumbnailMaxHeight / double(t));
    if (t > 0.0f && preview.rows > maxRows && maxRows > 0) {
        const cv::Rect middle(0, (preview.rows - maxRows) / 2, preview.cols, maxRows);
        return scaled(preview(middle), t);
    }
    return scaled(preview, t);
}

int recogniseScene(const QString& path, int current)
{
    for (int i = 0; i < kSceneCount; ++i) {
        // Only the first occurrence is looked at; one at position 0 does not count.
        if (path.indexOf(QString::fromUtf8(kSceneWords[i])) > 0)
            return i;
    }
    return current;
}

QString fileNameOf(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString cutAtLastDot(const QString& fileName)
{
    const int dot = fileName.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? fileName : fileName.left(dot);
}

QString cacheFolderFromInstallLocation()
{
    const QString location = readSettingValue(kProductKey, kInstallLocation);
    if (location.isEmpty())
        return QString();
    return QStringLiteral("%1//%2//").arg(location, QString::fromUtf8(kCacheFolder));
}

QString cacheDirectory()
{
    const QString dir = cacheFolderFromInstallLocation();
    if (dir.isEmpty()) {
        // Not installed: record where the program runs from so later starts find it.
        writeSettingValue(kProductKey, kProductName,
                          QStringLiteral("%1").arg(QCoreApplication::applicationDirPath()));
    }
    return dir;
}

QString tempFilePathFor(const QString& cacheDir, const QString& photoPath)
{
    return QStringLiteral("%1%2_temp.jpg").arg(cacheDir, cutAtLastDot(fileNameOf(photoPath)));
}
