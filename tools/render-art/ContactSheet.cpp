#include "ContactSheet.h"

#include "../../resources/ArtworkMetrics.h"

#include <QDir>
#include <QFontMetrics>
#include <QImageReader>
#include <QLinearGradient>
#include <QPainter>
#include <qdrawutil.h>

namespace {

constexpr int kSheetWidth = 1400;
constexpr int kGap = 16;
constexpr int kLabelHeight = 18;
constexpr int kPad = 8;
constexpr int kZoom = 4;
const QColor kSheetColor(0x26, 0x26, 0x26);
const QColor kLabelColor(0xC8, 0xC8, 0xC8);

QFont labelFont(int px, bool bold = false)
{
    QFont font(QStringLiteral("WenQuanYi Micro Hei"));
    font.setPixelSize(px);
    font.setBold(bold);
    return font;
}

QImage samplePhoto(const QString &path, const QSize &size)
{
    QImage photo(path);
    if (photo.isNull()) {
        photo = QImage(size, QImage::Format_RGB32);
        QPainter p(&photo);
        QLinearGradient ramp(0, 0, size.width(), size.height());
        ramp.setColorAt(0, QColor(0x6A, 0x7B, 0x8C));
        ramp.setColorAt(1, QColor(0xC9, 0xB2, 0x93));
        p.fillRect(photo.rect(), ramp);
        return photo;
    }
    return photo.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation)
        .copy(QRect(QPoint(), size));
}

// What one tile shows, before it is placed: a list of images, each drawn on
// the tile's background colour.
QList<QImage> tileImages(const ArtEntry &entry, const QString &file, const QString &photo)
{
    QList<QImage> shown;
    QImageReader reader(file);
    do {
        const QImage image = reader.read();
        if (!image.isNull())
            shown.append(image);
    } while (reader.jumpToNextImage());
    if (shown.isEmpty())
        return shown;
    const QImage picture = shown.last();

    if (entry.sheetStyle == QLatin1String("border")) {
        // Stretch the frame as the crop tool does: fixed corners, stretched edges.
        QImage canvas = samplePhoto(photo, QSize(420, 280));
        QPainter p(&canvas);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        const int s = kCropFrameSlice;
        const QMargins m(s, s, s, s);
        qDrawBorderPixmap(&p, QRect(40, 30, 340, 220), m, QPixmap::fromImage(picture),
                          picture.rect(), m);
        return {canvas};
    }
    if (entry.sheetStyle == QLatin1String("check")) {
        QImage thumb = samplePhoto(photo, picture.size());
        QPainter(&thumb).drawImage(0, 0, picture);
        return {thumb, picture};
    }
    if (shown.size() == 1 && qMax(picture.width(), picture.height()) <= 64)
        shown.append(picture.scaled(picture.size() * kZoom));
    return shown;
}

struct Tile
{
    QString label;
    QColor background;
    QList<QImage> images;
    QSize size;
};

Tile makeTile(const ArtEntry &entry, const QList<QImage> &images)
{
    Tile tile{QStringLiteral("%1  %2×%3").arg(entry.name).arg(entry.size.width()).arg(
                  entry.size.height()),
              entry.background.isValid() ? entry.background : QColor(0x33, 0x33, 0x33), images,
              QSize()};
    int w = kPad, h = 0;
    for (const QImage &image : images) {
        w += image.width() + kPad;
        h = qMax(h, image.height());
    }
    const int labelWidth = QFontMetrics(labelFont(12)).horizontalAdvance(tile.label) + 4;
    tile.size = QSize(qMax(w, labelWidth), kLabelHeight + h + 2 * kPad);
    return tile;
}

void paintTile(QPainter *p, const Tile &tile, const QPoint &at)
{
    p->setPen(kLabelColor);
    p->setFont(labelFont(12));
    p->drawText(QRect(at, QSize(tile.size.width(), kLabelHeight)), Qt::AlignLeft | Qt::AlignTop,
                tile.label);
    const QRect box(at + QPoint(0, kLabelHeight), tile.size - QSize(0, kLabelHeight));
    p->fillRect(box, tile.background);
    int x = box.left() + kPad;
    for (const QImage &image : tile.images) {
        p->drawImage(x, box.top() + kPad, image);
        x += image.width() + kPad;
    }
}

} // namespace

QString artOutputPath(const QString &outDir, const ArtEntry &entry)
{
    const QString folder = entry.prefix == QLatin1String("-") ? QStringLiteral("files")
                                                              : entry.prefix.mid(1);
    return QDir(outDir).filePath(folder + QLatin1Char('/') + entry.name);
}

QImage contactSheet(const QList<ArtEntry> &entries, const QString &outDir, const QString &photo,
                    QString *error)
{
    // First pass: tiles and their positions, grouped by resource prefix.
    struct Placed
    {
        Tile tile;
        QPoint at;
    };
    struct Heading
    {
        QString text;
        int y;
    };
    QList<Placed> placed;
    QList<Heading> headings;
    QString prefix;
    int x = kGap, y = 56, rowHeight = 0;
    for (const ArtEntry &entry : entries) {
        const QList<QImage> images = tileImages(entry, artOutputPath(outDir, entry), photo);
        if (images.isEmpty()) {
            *error = QStringLiteral("cannot read the rendered %1").arg(entry.name);
            return QImage();
        }
        const Tile tile = makeTile(entry, images);
        if (entry.prefix != prefix) {
            prefix = entry.prefix;
            y += rowHeight + (placed.isEmpty() ? 0 : kGap);
            headings.append({prefix == QLatin1String("-") ? QStringLiteral("installed files")
                                                          : QStringLiteral(":") + prefix + "/",
                             y});
            y += 28;
            x = kGap;
            rowHeight = 0;
        }
        if (x + tile.size.width() > kSheetWidth - kGap) {
            x = kGap;
            y += rowHeight + kGap;
            rowHeight = 0;
        }
        placed.append({tile, QPoint(x, y)});
        x += tile.size.width() + kGap;
        rowHeight = qMax(rowHeight, tile.size.height());
    }

    QImage sheet(kSheetWidth, y + rowHeight + kGap, QImage::Format_RGB32);
    sheet.fill(kSheetColor);
    QPainter p(&sheet);
    p.setPen(Qt::white);
    p.setFont(labelFont(20, true));
    p.drawText(QRect(kGap, 12, kSheetWidth, 30), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("MELO artwork"));
    p.setFont(labelFont(15, true));
    for (const Heading &h : headings) {
        p.setPen(QColor(0xFF, 0x73, 0x16));
        p.drawText(QRect(kGap, h.y, kSheetWidth, 24), Qt::AlignLeft | Qt::AlignVCenter, h.text);
    }
    for (const Placed &pl : placed)
        paintTile(&p, pl.tile, pl.at);
    return sheet;
}
