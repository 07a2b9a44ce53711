#include "CropGeometry.h"

#include "GlobalConstants.h"

#include <algorithm>
#include <cstdlib>

namespace crop {

namespace {

constexpr int kBand = 20;       // half the thickness of the handle band
constexpr int kHandle = 2 * kBand;

QRect fromEdges(int left, int top, int right, int bottom)
{
    return QRect(left, top, right - left, bottom - top);
}

int rightOf(const QRect& r) { return r.x() + r.width(); }
int bottomOf(const QRect& r) { return r.y() + r.height(); }

// Offsets "0 when below 1" and "0 when negative" agree for integers.
int atLeastZero(int v) { return v < 1 ? 0 : v; }

} // namespace

QSize viewSize(bool maximized)
{
    return maximized ? QSize(1545, 990) : QSize(1065, 718);
}

QRect imageRect(QSize view, QSize imageSize)
{
    return QRect(atLeastZero((view.width() - imageSize.width()) / 2),
                 atLeastZero((view.height() - imageSize.height()) / 2),
                 imageSize.width(), imageSize.height());
}

std::array<int, 2> ratioParts(int ratioIndex)
{
    if (ratioIndex < 1 || ratioIndex >= kCropRatioCount)
        return {0, 0};
    return {kCropRatioParts[ratioIndex][0], kCropRatioParts[ratioIndex][1]};
}

float ratioValue(int ratioIndex)
{
    const auto parts = ratioParts(ratioIndex);
    return parts[1] == 0 ? 0.0f : float(parts[0]) / float(parts[1]);
}

std::optional<QRect> defaultCropRect(int ratioIndex, QSize view, QSize imageSize)
{
    const int W = view.width();
    const int H = view.height();
    const int cols = imageSize.width();
    const int rows = imageSize.height();
    if (ratioIndex == 0)
        return imageRect(view, imageSize);
    if (ratioIndex == 1) {
        const int s = std::min(cols, rows);
        return QRect(atLeastZero((W - s) / 2), atLeastZero((H - s) / 2), s, s);
    }
    if (ratioIndex < 2 || ratioIndex >= kCropRatioCount)
        return std::nullopt;

    // Products in single precision, then truncated, as the frame has always
    // been laid out.
    const auto [a, b] = ratioParts(ratioIndex);
    const float h = float(cols) / float(a) * float(b);
    if (float(rows) >= h) {
        const int y = std::max(0, int((H - h) * 0.5));
        return QRect(atLeastZero((W - cols) / 2), y, cols, int(h));
    }
    const float w = float(rows) / float(b) * float(a);
    const int x = std::max(0, int((W - w) * 0.5));
    return QRect(x, atLeastZero((H - rows) / 2), int(w), rows);
}

Handles handlesFor(const QRect& r)
{
    Handles h;
    h.outer = QRect(r.x() - kBand, r.y() - kBand, r.width() + 2 * kBand, r.height() + 2 * kBand);
    h.inner = QRect(r.x() + kBand, r.y() + kBand, r.width() - 2 * kBand, r.height() - 2 * kBand);
    const int ol = h.outer.x();
    const int ot = h.outer.y();
    const int il = h.inner.x();
    const int it = h.inner.y();
    const int ir = rightOf(h.inner);
    const int ib = bottomOf(h.inner);
    const int iw = h.inner.width();
    const int ih = h.inner.height();
    h.zones[TopLeft] = QRect(ol, ot, kHandle, kHandle);
    h.zones[Top] = QRect(il, ot, iw, kHandle);
    h.zones[TopRight] = QRect(ir, ot, kHandle, kHandle);
    h.zones[Right] = QRect(ir, it, kHandle, ih);
    h.zones[BottomRight] = QRect(ir, ib, kHandle, kHandle);
    h.zones[Bottom] = QRect(il, ib, iw, kHandle);
    h.zones[BottomLeft] = QRect(ol, ib, kHandle, kHandle);
    h.zones[Left] = QRect(ol, it, kHandle, ih);
    return h;
}

int handleAt(const Handles& handles, QPoint p)
{
    for (int i = 0; i < HandleCount; ++i) {
        if (handles.zones[i].contains(p))
            return i;
    }
    return -1;
}

bool isCornerHandle(int handle)
{
    return handle == TopLeft || handle == TopRight || handle == BottomRight || handle == BottomLeft;
}

Qt::CursorShape handleCursor(int handle, bool lockedRatio)
{
    switch (handle) {
    case TopLeft:
    case BottomRight:
        return Qt::SizeFDiagCursor;
    case TopRight:
    case BottomLeft:
        return Qt::SizeBDiagCursor;
    case Top:
    case Bottom:
        return lockedRatio ? Qt::ArrowCursor : Qt::SizeVerCursor;
    case Left:
    case Right:
        return lockedRatio ? Qt::ArrowCursor : Qt::SizeHorCursor;
    default:
        return Qt::ArrowCursor;
    }
}

Hover hoverAt(const Handles& handles, QPoint p, bool lockedRatio)
{
    Hover hover;
    if (handles.inner.contains(p)) {
        hover.cursor = Qt::SizeAllCursor;
    } else if (handles.outer.contains(p)) {
        hover.handle = handleAt(handles, p);
        hover.cursor = handleCursor(hover.handle, lockedRatio);
    }
    return hover;
}

QPoint cornerOf(const QRect& r, int handle)
{
    switch (handle) {
    case TopLeft:
        return QPoint(r.x(), r.y());
    case TopRight:
        return QPoint(rightOf(r), r.y());
    case BottomRight:
        return QPoint(rightOf(r), bottomOf(r));
    case BottomLeft:
        return QPoint(r.x(), bottomOf(r));
    default:
        return QPoint();
    }
}

bool edgesContain(const QRect& r, QPoint p)
{
    return p.x() >= r.x() && p.x() <= rightOf(r) && p.y() >= r.y() && p.y() <= bottomOf(r);
}

QPoint clampToBound(QPoint p, const QRect& bound)
{
    return QPoint(std::clamp(p.x(), bound.x(), std::max(bound.x(), rightOf(bound))),
                  std::clamp(p.y(), bound.y(), std::max(bound.y(), bottomOf(bound))));
}

QRect freeResize(const QRect& r, int handle, QPoint p)
{
    int left = r.x();
    int top = r.y();
    int right = rightOf(r);
    int bottom = bottomOf(r);
    switch (handle) {
    case TopLeft: left = p.x(); top = p.y(); break;
    case Top: top = p.y(); break;
    case TopRight: right = p.x(); top = p.y(); break;
    case Right: right = p.x(); break;
    case BottomRight: right = p.x(); bottom = p.y(); break;
    case Bottom: bottom = p.y(); break;
    case BottomLeft: left = p.x(); bottom = p.y(); break;
    case Left: left = p.x(); break;
    default: break;
    }
    return fromEdges(left, top, right, bottom);
}

std::optional<QRect> lockedResize(const QRect& backup, int handle, QPoint dragPoint, QPoint pointer,
                                  int ratioIndex, const QRect& imageRect)
{
    const auto [a, b] = ratioParts(ratioIndex);
    if (b == 0 || !isCornerHandle(handle))
        return std::nullopt;
    const int dy = pointer.y() - dragPoint.y();
    if (std::abs(dy) < b)
        return std::nullopt;
    const int k = std::abs(dy) / b;
    const int offY = dy < 0 ? -k * b : k * b;
    // Along the diagonal: same signs for top-left and bottom-right, opposite
    // ones for top-right and bottom-left.
    const bool sameSigns = handle == TopLeft || handle == BottomRight;
    const int offX = (sameSigns == (offY > 0)) ? k * a : -k * a;

    const QPoint corner = cornerOf(backup, handle) + QPoint(offX, offY);
    if (!edgesContain(imageRect, corner))
        return std::nullopt;
    int left = backup.x();
    int top = backup.y();
    int right = rightOf(backup);
    int bottom = bottomOf(backup);
    (handle == TopLeft || handle == BottomLeft ? left : right) = corner.x();
    (handle == TopLeft || handle == TopRight ? top : bottom) = corner.y();
    return fromEdges(left, top, right, bottom);
}

std::optional<QRect> moveWithin(const QRect& rect, QPoint step, const QRect& imageRect)
{
    const QRect moved = rect.translated(step);
    if (!imageRect.contains(moved))
        return std::nullopt;
    return moved;
}

std::optional<QRect> mapToPreview(const QRect& viewRect, QSize view, QSize displaySize)
{
    if (viewRect.width() <= 0 || viewRect.height() <= 0)
        return std::nullopt;
    const int cols = displaySize.width();
    const int rows = displaySize.height();
    // Offsets are deliberately not clamped: in the normal window a preview
    // larger than the view gives negative offsets.
    int x = viewRect.x() - (view.width() - cols) / 2;
    int y = viewRect.y() - (view.height() - rows) / 2;
    int width = viewRect.width();
    int height = viewRect.height();

    if (x < 0) {
        if (x + width >= cols)
            return std::nullopt;
        width += x;
        x = 0;
    } else if (x + width >= cols) {
        width = cols - x;
    }
    if (y < 0) {
        if (y + height >= rows)
            return std::nullopt;
        height += y;
        y = 0;
    } else if (y + height > rows) {
        height = rows - y;
    }
    // A rectangle wholly beyond one side trims to nothing.
    if (width <= 0 || height <= 0)
        return std::nullopt;

    if (x == 1)
        x = 0;
    else if (y == 1)
        y = 0;
    return QRect(x, y, width, height);
}

} // namespace crop
