#include "MyDrawLabel.h"

#include "ArtworkMetrics.h"
#include "GlobalConstants.h"
#include "ShowMat.h"
#include "WindowState.h"

#include <QMouseEvent>

namespace {

const char kLayerPlain[] = "QLabel{background-color:transparent;border:none;}";
const char kLayerCropTint[] = "QLabel{background-color:rgba(255,0,0,0.1);border:none;}";

// The frame picture is stretched around the rectangle, its 20 px corners kept
// (drawn in a 20 px border, so the edges and corners show).
QString cropFrameStyle(int ratioIndex)
{
    const char* picture = ratioIndex == 0 ? "cropBj.png" : "cropBj_ratio.png";
    return cropFrameStyleSheet(QStringLiteral(":/BrisaQT/Resources/") + QLatin1String(picture));
}

} // namespace

MyDrawLabel::MyDrawLabel(QWidget* parent)
    : QLabel(parent), m_imageLayer(new QLabel(this)), m_frameLabel(new QLabel(this))
{
    setMouseTracking(true);   // hover cursors over the handles
    // Both children leave the pointer to the view.
    m_imageLayer->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_imageLayer->setStyleSheet(QString::fromLatin1(kLayerPlain));
    m_imageLayer->setAlignment(Qt::AlignCenter);
    m_imageLayer->setGeometry(rect());
    m_imageLayer->hide();
    m_frameLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_frameLabel->setStyleSheet(cropFrameStyle(m_ratioIndex));
    m_frameLabel->hide();
    setCropRect(QRect());
}

void MyDrawLabel::setImage(const cv::Mat& mat)
{
    // While the editor is hidden the view's resize event waits until it is
    // shown again, but a maximise or restore refits the picture at once: the
    // layer must have the view's new size before the picture is fitted to it.
    m_imageLayer->setGeometry(rect());
    if (!showMatOnLabel(m_imageLayer, mat))
        return;
    m_image = mat;
    resetCropRect();
}

bool MyDrawLabel::isOriginalShown() const
{
    return !m_imageLayer->isHidden();
}

void MyDrawLabel::setOriginalShown(bool shown)
{
    m_imageLayer->setVisible(shown);
}

bool MyDrawLabel::toggleOriginal()
{
    setOriginalShown(!isOriginalShown());
    return isOriginalShown();
}

void MyDrawLabel::setCropMode(bool on)
{
    m_cropMode = on;
    m_frameLabel->setVisible(on);
    m_imageLayer->hide();
    if (!on) {
        m_pressed = false;
        m_moving = false;
        setCursor(Qt::ArrowCursor);
    }
    update();
}

void MyDrawLabel::setRatioIndex(int index)
{
    if (index < 0 || index >= kCropRatioCount)
        return;
    m_ratioIndex = index;
    m_frameLabel->setStyleSheet(cropFrameStyle(index));
    resetCropRect();
}

void MyDrawLabel::resetCropRect()
{
    const QSize view = crop::viewSize(isMainWindowMaximized());
    const QSize size(m_image.cols, m_image.rows);
    m_imageRect = crop::imageRect(view, size);
    if (const auto rect = crop::defaultCropRect(m_ratioIndex, view, size))
        setCropRect(*rect);
    if (m_ratioIndex != 0)
        m_ratio = crop::ratioValue(m_ratioIndex);
    m_boundRect = m_cropRect;
}

void MyDrawLabel::setCropRect(const QRect& rect)
{
    m_cropRect = rect;
    m_edges = {double(rect.x()), double(rect.y()), double(rect.x() + rect.width()),
               double(rect.y() + rect.height())};
    m_frameLabel->setGeometry(rect.x(), rect.y(), qMax(0, rect.width()), qMax(0, rect.height()));
    m_handles = crop::handlesFor(rect);
}

bool MyDrawLabel::event(QEvent* e)
{
    switch (e->type()) {
    case QEvent::MouseButtonDblClick:
        emit mouseButtonDBClicke();
        break;
    case QEvent::MouseButtonPress:
        if (m_cropMode)
            press(static_cast<QMouseEvent*>(e)->pos());
        break;
    case QEvent::MouseMove:
        if (m_cropMode) {
            const QPoint p = static_cast<QMouseEvent*>(e)->pos();
            m_pressed ? drag(p) : hover(p);
        }
        break;
    case QEvent::MouseButtonRelease:
        if (m_cropMode)
            release();
        break;
    default:
        break;
    }
    return QLabel::event(e);
}

void MyDrawLabel::hover(QPoint p)
{
    const crop::Hover h = crop::hoverAt(m_handles, p, m_ratioIndex != 0);
    if (h.handle >= 0)
        m_handleIndex = h.handle;
    setCursor(h.cursor);
}

void MyDrawLabel::press(QPoint p)
{
    if (m_pressed)
        return;
    m_pressPoint = p;
    if (!m_handles.outer.contains(p))
        return;
    // The zone under the press decides, even without a hover before it.
    const int handle = crop::handleAt(m_handles, p);
    if (handle >= 0)
        m_handleIndex = handle;
    m_dragPoint = m_ratioIndex != 0 ? QPointF(crop::cornerOf(m_cropRect, m_handleIndex)) : QPointF(p);
    m_moving = m_handles.inner.contains(p);
    m_pressed = true;
    m_backupRect = m_cropRect;
}

void MyDrawLabel::drag(QPoint p)
{
    if (m_moving) {
        const QPoint step = p - m_pressPoint.toPoint();
        m_pressPoint += step;
        m_moveDelta = {step.x(), step.y()};
        if (const auto moved = crop::moveWithin(m_cropRect, step, m_imageRect))
            setCropRect(*moved);
    } else if (m_ratioIndex == 0) {
        setCropRect(crop::freeResize(m_cropRect, m_handleIndex, crop::clampToBound(p, m_boundRect)));
    } else if (const auto resized = crop::lockedResize(m_backupRect, m_handleIndex, m_dragPoint.toPoint(),
                                                       p, m_ratioIndex, m_imageRect)) {
        setCropRect(*resized);
    }
}

void MyDrawLabel::release()
{
    m_pressed = false;
    m_moving = false;
    setCropRect(m_cropRect);
    setCursor(Qt::ArrowCursor);
}

void MyDrawLabel::paintEvent(QPaintEvent* e)
{
    const bool tint = m_cropMode && !m_cropRect.isEmpty();
    const QString style = QString::fromLatin1(tint ? kLayerCropTint : kLayerPlain);
    // Restyling repaints the view, so only a real change may restyle.
    if (m_imageLayer->styleSheet() != style)
        m_imageLayer->setStyleSheet(style);
    QLabel::paintEvent(e);
}

void MyDrawLabel::resizeEvent(QResizeEvent* e)
{
    m_imageLayer->setGeometry(rect());
    QLabel::resizeEvent(e);
}
