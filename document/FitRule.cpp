#include "FitRule.h"

#include <QVector>

#include <opencv2/imgproc.hpp>

namespace {

const QVector<QRgb>& greyRamp()
{
    static const QVector<QRgb> table = [] {
        QVector<QRgb> t(256);
        for (int i = 0; i < 256; ++i)
            t[i] = qRgb(i, i, i);
        return t;
    }();
    return table;
}

// Scale factor and offset that bring a depth's full range to 0..255
// (floating-point images are taken as 0..1).
void toByteRange(int depth, double& alpha, double& beta)
{
    alpha = 1.0;
    beta = 0.0;
    switch (depth) {
    case CV_8S: beta = 128.0; break;
    case CV_16U: alpha = 255.0 / 65535.0; break;
    case CV_16S: alpha = 255.0 / 65535.0; beta = 128.0; break;
    case CV_32S: alpha = 255.0 / 4294967295.0; beta = 128.0; break;
    case CV_32F:
    case CV_64F: alpha = 255.0; break;
    default: break;
    }
}

void releaseMat(void* info)
{
    delete static_cast<cv::Mat*>(info);
}

} // namespace

bool isShowableMat(const cv::Mat& mat)
{
    return mat.data && mat.rows > 0 && mat.cols > 0 && mat.total() > 0;
}

QImage matToQImage(const cv::Mat& input)
{
    if (!isShowableMat(input) || input.dims != 2)
        return QImage();
    cv::Mat mat = input;
    if (mat.depth() != CV_8U) {
        double alpha, beta;
        toByteRange(mat.depth(), alpha, beta);
        mat.convertTo(mat, CV_8U, alpha, beta);
    }

    if (mat.channels() == 3 || mat.channels() == 4) {
        // Convert straight into the image's own buffer: one copy in all. Four
        // channels keep straight alpha: the colours show over the background.
        const bool alpha = mat.channels() == 4;
        QImage image(mat.cols, mat.rows, alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
        if (image.isNull())
            return image;
        cv::Mat target(mat.rows, mat.cols, mat.type(), image.bits(), size_t(image.bytesPerLine()));
        cv::cvtColor(mat, target, alpha ? cv::COLOR_BGRA2RGBA : cv::COLOR_BGR2RGB);
        return image;
    }

    // Wrap the bytes; the image holds a reference to the matrix, so the
    // pixels live as long as the image (and no copy is made). A region of a
    // larger matrix keeps its real row step.
    auto* keep = new cv::Mat(mat);
    QImage image(keep->data, keep->cols, keep->rows, int(keep->step[0]), QImage::Format_Indexed8,
                 releaseMat, keep);
    image.setColorTable(greyRamp());
    return image;
}

QPixmap fitPixmap(const QPixmap& pixmap, QSize available)
{
    QPixmap fitted = pixmap;
    if (fitted.width() > available.width() && available.width() > 0)
        fitted = fitted.scaledToWidth(available.width(), Qt::SmoothTransformation);
    if (fitted.height() > available.height() && available.height() > 0)
        fitted = fitted.scaledToHeight(available.height(), Qt::SmoothTransformation);
    return fitted;
}

QPixmap fittedPixmap(const cv::Mat& mat, QSize available)
{
    QImage image = matToQImage(mat);
    if (image.isNull())
        return QPixmap();
    return fitPixmap(QPixmap::fromImage(std::move(image)), available);
}
