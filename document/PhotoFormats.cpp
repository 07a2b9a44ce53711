#include "PhotoFormats.h"

#include "HeifDecoder.h"
#include "RawDecoder.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QUrl>

namespace {

const char* const kExtensions[] = {
    "jpg", "jpeg", "jpe", "png", "tif", "tiff", "bmp", "webp", "heic", "heif", "hif", "avif",
    // camera RAW
    "dng", "cr2", "cr3", "crw", "nef", "nrw", "arw", "srf", "sr2", "raf", "orf", "rw2",
    "pef", "srw", "x3f", "mrw", "3fr", "erf", "kdc", "mos", "iiq", "rwl",
};

} // namespace

QStringList photoFileFilters()
{
    QStringList patterns;
    for (const char* extension : kExtensions)
        patterns << QStringLiteral("*.%1").arg(QLatin1String(extension));
    for (const char* extension : kExtensions)
        patterns << QStringLiteral("*.%1").arg(QString::fromLatin1(extension).toUpper());
    // In Chinese, as the rest of the window and Qt's own file dialog are.
    return {QStringLiteral("所有照片 (%1)").arg(patterns.join(QLatin1Char(' '))), QStringLiteral("所有文件 (*)")};
}

bool looksLikePhoto(const QByteArray& head)
{
    static const QByteArray signatures[] = {
        QByteArray("\xff\xd8\xff"), QByteArray("\x89PNG\r\n\x1a\n"), QByteArray("II*\0", 4),
        QByteArray("MM\0*", 4), QByteArray("BM"),
    };
    for (const QByteArray& s : signatures) {
        if (head.startsWith(s))
            return true;
    }
    if (head.startsWith("RIFF") && head.mid(8, 4) == "WEBP")
        return true;
    return looksLikeHeif(head) || looksLikeRaw(head);
}

QString droppedPhotoPath(const QList<QUrl>& urls)
{
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return QString();
    const QString path = urls.first().toLocalFile();
    if (!QFileInfo(path).isFile())
        return QString();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    // Enough for the first directory of a camera's TIFF-based RAW file.
    return looksLikePhoto(file.read(4096)) ? path : QString();
}
