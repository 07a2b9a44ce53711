#pragma once

#include "CropGeometry.h"

#include <QLabel>
#include <QPointF>
#include <QRect>

#include <array>

#include <opencv2/core.hpp>

// The image view. It shows the display image as its own pixmap and carries
// two children over it:
// - the image layer, which always covers the view and shows the reference
//   image (the ungraded preview) for the before/after compare; hidden
//   except while the compare shows the unedited picture;
// - the crop frame, shown in crop mode, whose geometry is the crop rectangle.
// In crop mode the pointer moves the rectangle (press inside the inner
// rectangle) or resizes it by eight handles, free or locked to a ratio.
// All crop geometry is in view coordinates laid out for the fixed view size
// of the window state (see crop::viewSize).
class MyDrawLabel : public QLabel
{
    Q_OBJECT
public:
    explicit MyDrawLabel(QWidget* parent = nullptr);

    // Keeps the matrix as the reference image, shows it on the image layer
    // by the fit rule and resets the crop rectangle. An empty matrix is
    // ignored (the previous image stays).
    void setImage(const cv::Mat& mat);
    const cv::Mat& image() const { return m_image; }
    QLabel* imageLayer() const { return m_imageLayer; }

    // Before/after compare: whether the image layer (the unedited picture)
    // is shown over the graded one.
    bool isOriginalShown() const;
    void setOriginalShown(bool shown);
    // Flips the compare and returns the new state.
    bool toggleOriginal();

    // Crop mode shows or hides the frame; both ways it hides the image layer.
    void setCropMode(bool on);
    bool cropMode() const { return m_cropMode; }
    // Ratio preset 0..9 (0 free); other values are ignored. Changes the
    // frame picture and resets the rectangle.
    void setRatioIndex(int index);
    int ratioIndex() const { return m_ratioIndex; }
    float ratio() const { return m_ratio; }
    // The default rectangle of the current ratio for the reference image.
    void resetCropRect();
    // Every change of the rectangle goes through here (frame and handles
    // follow). An empty or negative rectangle is kept as it is, so the cut
    // can refuse it.
    void setCropRect(const QRect& rect);
    QRect cropRect() const { return m_cropRect; }
    QRect imageRect() const { return m_imageRect; }
    QRect boundRect() const { return m_boundRect; }
    QLabel* frameLabel() const { return m_frameLabel; }

signals:
    void mouseButtonDBClicke();

protected:
    bool event(QEvent* e) override;
    void paintEvent(QPaintEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;

private:
    void hover(QPoint p);
    void press(QPoint p);
    void drag(QPoint p);
    void release();

    QLabel* m_imageLayer;
    QLabel* m_frameLabel;
    cv::Mat m_image;

    bool m_cropMode = false;
    bool m_pressed = false;
    bool m_moving = false;
    int m_ratioIndex = 0;
    float m_ratio = 1.0f;
    QPointF m_pressPoint;
    QPointF m_dragPoint;
    QRect m_imageRect;
    QRect m_cropRect;
    QRect m_boundRect;
    QRect m_backupRect;
    crop::Handles m_handles;   // outer, inner and the eight handle zones
    std::array<double, 4> m_edges{};
    int m_handleIndex = -1;
    std::array<int, 2> m_moveDelta{};
};
