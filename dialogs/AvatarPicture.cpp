#include "AvatarPicture.h"

#include <QImageReader>

namespace {

const char* const kRasterFormats[] = {"png", "jpeg", "jpg", "gif", "bmp", "webp"};

bool isRasterFormat(const QByteArray& format)
{
    for (const char* raster : kRasterFormats) {
        if (format == raster)
            return true;
    }
    return false;
}

QImage refuse(QString* why, const QString& reason)
{
    if (why)
        *why = reason;
    return QImage();
}

} // namespace

QImage readAvatarPicture(const QString& path, QString* why)
{
    if (path.isEmpty())
        return refuse(why, QStringLiteral("no file"));
    QImageReader reader(path);
    // The name always ends in ".jpg"; only the content tells what it is.
    reader.setDecideFormatFromContent(true);
    const QByteArray format = reader.format().toLower();
    if (!isRasterFormat(format))
        return refuse(why, QStringLiteral("not a raster picture (%1)")
                               .arg(format.isEmpty() ? QStringLiteral("unknown") : QString::fromLatin1(format)));
    const QSize size = reader.size();
    if (!size.isValid() || size.isEmpty())
        return refuse(why, QStringLiteral("no readable size"));
    if (size.width() > kMaxAvatarSide || size.height() > kMaxAvatarSide)
        return refuse(why, QStringLiteral("%1 x %2 is larger than %3 x %3")
                               .arg(size.width()).arg(size.height()).arg(kMaxAvatarSide));
    QImage image = reader.read();
    if (image.isNull())
        return refuse(why, reader.errorString());
    return image;
}
