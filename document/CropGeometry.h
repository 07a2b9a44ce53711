// Geometry of the crop tool, in view coordinates: where the preview lies in
// the image view, the default crop rectangle of each ratio preset, the frame's
// handle zones, the pointer rules for moving and resizing, and the mapping of
// an accepted rectangle into preview pixels.
//
// Rectangles are handled through their edges: right = x + width and
// bottom = y + height (the first column and row outside). A rectangle whose
// width or height is zero or negative is empty; such a rectangle can come out
// of a resize that drags an edge past its opposite one and is never cut.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <array>
#include <optional>

namespace crop {

// The notice shown when mapToPreview refuses a rectangle.
inline constexpr char kRefusedText[] = "裁剪超出了图片的区域";

// The image view is laid out for one of two fixed sizes, whatever the
// label's real size: 1545 x 990 in the maximised window, 1065 x 718 else.
QSize viewSize(bool maximized);

// Where a preview of imageSize lies in the view: centred, offsets of 0 or
// less become 0.
QRect imageRect(QSize view, QSize imageSize);

// Width and height parts of a locked ratio (1:1 for the square); {0, 0} for
// the free crop and for indices outside 0..9.
std::array<int, 2> ratioParts(int ratioIndex);
// Width : height of a ratio preset (1.0 for the square); 0 for the free crop.
float ratioValue(int ratioIndex);

// Default crop rectangle of ratio preset 0..9 for a preview of imageSize;
// nothing for other indices (the rectangle stays as it is).
std::optional<QRect> defaultCropRect(int ratioIndex, QSize view, QSize imageSize);

// Handle zone indices, in hit-test order.
enum Handle { TopLeft, Top, TopRight, Right, BottomRight, Bottom, BottomLeft, Left, HandleCount };

// The rectangle grown and shrunk by 20 px on each side and the eight 40 px
// handle zones between the two, which tile the band exactly.
struct Handles {
    QRect outer;
    QRect inner;
    std::array<QRect, HandleCount> zones;
};
Handles handlesFor(const QRect& cropRect);

// The first handle zone containing p, or -1.
int handleAt(const Handles& handles, QPoint p);
bool isCornerHandle(int handle);
// Cursor of a handle; with a locked ratio only corners resize, so the four
// edge handles show the arrow.
Qt::CursorShape handleCursor(int handle, bool lockedRatio);

// What hovering at p shows: the cursor, and the handle under the pointer
// (-1 inside the inner rectangle or outside the frame).
struct Hover {
    Qt::CursorShape cursor = Qt::ArrowCursor;
    int handle = -1;
};
Hover hoverAt(const Handles& handles, QPoint p, bool lockedRatio);

// The corner a locked resize drags for a corner handle.
QPoint cornerOf(const QRect& rect, int handle);

// True when p lies on or inside the edges of rect (right and bottom edges
// included), as a dragged corner may come to rest on the image border.
bool edgesContain(const QRect& rect, QPoint p);

// The pointer clamped into bound for free resizing: each coordinate to the
// bound's edges, so a point outside in both directions lands on a corner.
QPoint clampToBound(QPoint p, const QRect& bound);

// Free resizing: the edges of the handle move to the (clamped) point, the
// others stay. An edge taken past its opposite one gives an empty rectangle.
QRect freeResize(const QRect& rect, int handle, QPoint point);

// Locked resizing of a corner handle. The vertical step leads in whole ratio
// units (k = |dy| / b; nothing below one unit); the horizontal step is k * a.
// The corner travels along the rectangle's diagonal: when the pointer moves
// against the diagonal (e.g. up and right on the top-left corner), the
// vertical direction decides and the horizontal one follows the diagonal, so
// the ratio is always kept. The opposite corner of backup stays. Nothing when
// the step is below one unit, the handle is no corner, or the new corner
// lies outside imageRect.
std::optional<QRect> lockedResize(const QRect& backup, int handle, QPoint dragPoint, QPoint pointer,
                                  int ratioIndex, const QRect& imageRect);

// Moving: rect translated by step, or nothing when imageRect does not
// contain the result entirely (no sliding along the border).
std::optional<QRect> moveWithin(const QRect& rect, QPoint step, const QRect& imageRect);

// Maps a crop rectangle from view coordinates into pixels of the display
// image (displaySize), trims it to the image, and snaps an x (else a y) of 1
// to 0. Nothing means refused: wholly beyond one side, spanning beyond both,
// or empty (zero or negative width or height) before or after trimming.
std::optional<QRect> mapToPreview(const QRect& viewRect, QSize view, QSize displaySize);

} // namespace crop
