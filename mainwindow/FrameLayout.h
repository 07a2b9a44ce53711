// Geometry of the main window frame, recomputed on every resize: absolute
// pixel rectangles, no layout managers.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace FrameLayout {

inline constexpr int kTitleBarHeight = 50;
inline constexpr int kWindowButtonSize = 19;
inline constexpr int kWindowButtonStep = 49;
inline constexpr int kRightPanelWidth = 375;
inline constexpr QSize kMaximizedSize{1920, 1040};
inline constexpr QSize kNormalSize{1440, 768};

struct Frame {
    QRect titleBar;
    QRect closeBtn;
    QRect maxBtn;        // the restore and the maximise button share it
    QRect minBtn;
    QRect userPanel;     // a top-level dialog: applied as its own window geometry
    QRect loginBtn;      // the user frame shares it
    QRect view;          // both web views and the editor
};
Frame frame(const QSize& window);

struct Editor {
    QRect imageArea;     // children of the image area fill it
    QRect addImageBtn;   // in image-area coordinates
    QRect rightPanel;
    QRect contentFrame;  // in right-panel coordinates
    QRect upperStrip;    // zero-width children of the right panel
    QRect lowerStrip;
};
Editor editor(const QSize& editorSize);

// A left press inside the title bar starts dragging the window, unless the
// window system has it maximised (it never has: maximising is a resize).
bool pressStartsDrag(const QPoint& pos, Qt::MouseButton button, bool systemMaximized);

// Where the window goes while dragging.
QPoint dragTarget(const QPoint& windowPos, const QPoint& pressPos, const QPoint& eventPos);

} // namespace FrameLayout
