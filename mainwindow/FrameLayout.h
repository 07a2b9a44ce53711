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

// The floating tool strips of the image view: the editor's strip (crop, undo
// crop, the eye) and, while cropping, the crop strip beside or below it. They
// never cover the photograph: laid out in a row along the top, else in a
// column down the left, in the margin the shown photo leaves; where it leaves
// none (a photo of the view's own shape in the small window) the view gives
// the column its width and the photo is fitted beside it.
struct ToolStrips {
    QRect view;          // the image view, in image-area coordinates
    QRect toolStrip;     // both strips in image-area coordinates
    QRect cropStrip;
    bool column = false;  // laid out in a column: the buttons stacked
};
inline constexpr int kStripMargin = 12;
inline constexpr int kStripTop = 10;
inline constexpr int kStripGap = 8;
inline constexpr QSize kToolStripRow{233, 44};
inline constexpr QSize kCropStripRow{366, 44};
inline constexpr int kStripColumnWidth = 124;
inline constexpr int kToolStripColumnHeight = 126;
inline constexpr int kCropStripColumnHeight = 152;
ToolStrips toolStrips(const QSize& imageArea, const QSize& photo);

// Where a photo of `photo` pixels shows in a view of `view`: shrunk to the
// width if wider, then to the height if still taller, never enlarged, and
// centred. It may be one pixel larger than the pixmap actually shown.
QRect shownPhotoRect(const QSize& view, const QSize& photo);

// The buttons inside each strip, in row or column arrangement, in strip
// coordinates: crop, undo crop, separator, eye; ratio box, reset, cancel, OK.
struct StripButtons {
    QRect crop, cropReset, separator, eye;
    QRect ratioBox, reset, cancel, accept;
};
StripButtons stripButtons(bool column);

// A left press inside the title bar starts dragging the window, unless the
// window system has it maximised (it never has: maximising is a resize).
bool pressStartsDrag(const QPoint& pos, Qt::MouseButton button, bool systemMaximized);

// Where the window goes while dragging.
QPoint dragTarget(const QPoint& windowPos, const QPoint& pressPos, const QPoint& eventPos);

} // namespace FrameLayout
