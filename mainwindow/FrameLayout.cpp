#include "FrameLayout.h"

#include <algorithm>
#include <cmath>

namespace FrameLayout {

Frame frame(const QSize& window)
{
    const int w = window.width();
    const int h = window.height();
    Frame f;
    f.titleBar = QRect(0, 0, w, kTitleBarHeight);
    // Window buttons right-aligned, each 49 px left of its neighbour.
    f.closeBtn = QRect(w - kWindowButtonStep, 19, kWindowButtonSize, kWindowButtonSize);
    f.maxBtn = QRect(f.closeBtn.x() - kWindowButtonStep, 19, kWindowButtonSize, kWindowButtonSize);
    f.minBtn = QRect(f.maxBtn.x() - kWindowButtonStep, 19, kWindowButtonSize, kWindowButtonSize);
    f.userPanel = QRect(w - 400, kTitleBarHeight, 120, 156);
    f.loginBtn = QRect(w - 375, 8, 120, 34);
    f.view = QRect(0, kTitleBarHeight, w, h - kTitleBarHeight);
    return f;
}

Editor editor(const QSize& editorSize)
{
    const int ew = editorSize.width();
    const int eh = editorSize.height();
    Editor e;
    e.imageArea = QRect(0, 0, ew - kRightPanelWidth, eh);
    e.addImageBtn = QRect(e.imageArea.width() / 2 - 60, e.imageArea.height() / 2 - 18, 120, 35);
    e.rightPanel = QRect(ew - kRightPanelWidth, 0, kRightPanelWidth, eh);
    e.contentFrame = QRect(0, 0, kRightPanelWidth, eh);
    e.upperStrip = QRect(0, 0, 0, e.contentFrame.height() - 62);
    e.lowerStrip = QRect(0, e.rightPanel.height() - 62, 0, 0);
    return e;
}

QRect shownPhotoRect(const QSize& view, const QSize& photo)
{
    if (photo.isEmpty())
        return QRect();
    double w = photo.width();
    double h = photo.height();
    if (w > view.width()) {
        h = h * view.width() / w;
        w = view.width();
    }
    if (h > view.height()) {
        w = w * view.height() / h;
        h = view.height();
    }
    // Rounded up, so the shown pixmap, however Qt rounds its scaled size,
    // lies inside.
    const QSize shown(int(std::ceil(w - 1e-9)), int(std::ceil(h - 1e-9)));
    return QRect(QPoint((view.width() - shown.width()) / 2, (view.height() - shown.height()) / 2), shown);
}

ToolStrips toolStrips(const QSize& imageArea, const QSize& photo)
{
    const QRect area(QPoint(0, 0), imageArea);
    // The centring of the label may put the photo half a pixel further.
    const QRect shown = shownPhotoRect(imageArea, photo).adjusted(-1, -1, 1, 1);
    ToolStrips row;
    row.view = area;
    row.toolStrip = QRect(QPoint(kStripMargin, kStripTop), kToolStripRow);
    row.cropStrip = QRect(QPoint(row.toolStrip.right() + 1 + kStripGap, kStripTop), kCropStripRow);
    if (!shown.intersects(row.toolStrip) && !shown.intersects(row.cropStrip))
        return row;

    ToolStrips column;
    column.column = true;
    column.view = area;
    column.toolStrip = QRect(kStripMargin, kStripTop, kStripColumnWidth, kToolStripColumnHeight);
    column.cropStrip = QRect(kStripMargin, column.toolStrip.bottom() + 1 + kStripGap, kStripColumnWidth,
                             kCropStripColumnHeight);
    if (!shown.intersects(column.toolStrip) && !shown.intersects(column.cropStrip))
        return column;

    const int reserved = kStripMargin * 2 + kStripColumnWidth;
    column.view = QRect(reserved, 0, std::max(0, imageArea.width() - reserved), imageArea.height());
    return column;
}

StripButtons stripButtons(bool column)
{
    StripButtons b;
    if (!column) {
        b.crop = QRect(6, 6, 76, 32);
        b.cropReset = QRect(86, 6, 96, 32);
        b.separator = QRect(188, 12, 1, 20);
        b.eye = QRect(195, 6, 32, 32);
        b.ratioBox = QRect(6, 6, 112, 32);
        b.reset = QRect(124, 6, 76, 32);
        b.cancel = QRect(204, 6, 76, 32);
        b.accept = QRect(284, 6, 76, 32);
        return b;
    }
    const int w = kStripColumnWidth - 12;
    b.crop = QRect(6, 6, w, 32);
    b.cropReset = QRect(6, 42, w, 32);
    b.separator = QRect(16, 81, w - 20, 1);
    b.eye = QRect((kStripColumnWidth - 32) / 2, 88, 32, 32);
    b.ratioBox = QRect(6, 6, w, 32);
    b.reset = QRect(6, 42, w, 32);
    b.cancel = QRect(6, 78, w, 32);
    b.accept = QRect(6, 114, w, 32);
    return b;
}

bool pressStartsDrag(const QPoint& pos, Qt::MouseButton button, bool systemMaximized)
{
    return button == Qt::LeftButton && pos.y() < kTitleBarHeight && !systemMaximized;
}

QPoint dragTarget(const QPoint& windowPos, const QPoint& pressPos, const QPoint& eventPos)
{
    return windowPos - pressPos + eventPos;
}

} // namespace FrameLayout
