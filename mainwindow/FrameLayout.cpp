#include "FrameLayout.h"

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

bool pressStartsDrag(const QPoint& pos, Qt::MouseButton button, bool systemMaximized)
{
    return button == Qt::LeftButton && pos.y() < kTitleBarHeight && !systemMaximized;
}

QPoint dragTarget(const QPoint& windowPos, const QPoint& pressPos, const QPoint& eventPos)
{
    return windowPos - pressPos + eventPos;
}

} // namespace FrameLayout
