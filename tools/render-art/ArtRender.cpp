#include "ArtRender.h"
#include "IcoFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QImageWriter>
#include <QPainter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSvgRenderer>

namespace {

// Text in a drawing must come out in the font it names: a silent fallback
// would change the artwork from one machine to the next.
bool checkFonts(const QString &svg, const QString &file, QString *error)
{
    static const QRegularExpression re(
        QStringLiteral("font-family\\s*[=:]\\s*[\"']?([^\"';]+)"));
    const QStringList installed = QFontDatabase().families();
    auto it = re.globalMatch(svg);
    while (it.hasNext()) {
        const QString family = it.next().captured(1).trimmed();
        if (!installed.contains(family, Qt::CaseInsensitive)) {
            *error = QStringLiteral("%1: font '%2' is not installed").arg(file, family);
            return false;
        }
    }
    return true;
}

bool paintLayer(QPainter *painter, const QString &path, const ArtEntry &entry,
                const QRectF &target, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1").arg(path);
        return false;
    }
    QString svg = QString::fromUtf8(file.readAll());
    for (const auto &r : entry.recolors)
        svg.replace(r.first, r.second, Qt::CaseInsensitive);
    if (!checkFonts(svg, path, error))
        return false;
    QSvgRenderer renderer(svg.toUtf8());
    if (!renderer.isValid()) {
        *error = QStringLiteral("%1 is not a valid SVG drawing").arg(path);
        return false;
    }
    renderer.render(painter, target);
    return true;
}

bool saveImage(const QImage &image, const QString &outPath, QString *error)
{
    const bool jpeg = outPath.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive);
    QImageWriter writer(outPath);
    if (jpeg)
        writer.setQuality(95);
    else
        writer.setCompression(9);
    if (!writer.write(image)) {
        *error = QStringLiteral("cannot write %1: %2").arg(outPath, writer.errorString());
        return false;
    }
    return true;
}

bool saveIco(const ArtEntry &entry, const QString &svgDir, const QString &outPath,
             QString *error)
{
    QList<QImage> images;
    for (int side : entry.icoSizes) {
        const QImage image = renderArt(entry, svgDir, QSize(side, side), side <= 32, error);
        if (image.isNull())
            return false;
        images.append(image);
    }
    const QByteArray ico = packIco(images, error);
    if (ico.isEmpty())
        return false;
    QSaveFile file(outPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(ico) != ico.size() || !file.commit()) {
        *error = QStringLiteral("cannot write %1").arg(outPath);
        return false;
    }
    return true;
}

} // namespace

QImage renderArt(const ArtEntry &entry, const QString &svgDir, const QSize &size, bool small,
                 QString *error)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(entry.matte.isValid() ? entry.matte : QColor(Qt::transparent));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QStringList layers =
        small && !entry.smallSource.isEmpty() ? QStringList{entry.smallSource} : entry.sources;
    for (const QString &layer : layers) {
        if (!paintLayer(&painter, QDir(svgDir).filePath(layer), entry, QRectF(QPointF(), size),
                        error))
            return QImage();
    }
    painter.end();
    return image.convertToFormat(entry.matte.isValid() ? QImage::Format_RGB32
                                                       : QImage::Format_ARGB32);
}

bool writeArt(const ArtEntry &entry, const QString &svgDir, const QString &outPath,
              QString *error)
{
    QDir().mkpath(QFileInfo(outPath).absolutePath());
    if (outPath.endsWith(QLatin1String(".ico"), Qt::CaseInsensitive))
        return saveIco(entry, svgDir, outPath, error);
    const QImage image = renderArt(entry, svgDir, entry.size, false, error);
    return !image.isNull() && saveImage(image, outPath, error);
}
