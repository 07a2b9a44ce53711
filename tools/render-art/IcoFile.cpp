#include "IcoFile.h"

#include <QBuffer>
#include <QImageWriter>
#include <QtEndian>

namespace {

// Layout of an icon file: a 6-byte header (reserved, type 1, count), then
// 16-byte directory entries whose last field is the offset of the image data.
constexpr int kHeaderSize = 6;
constexpr int kEntrySize = 16;
constexpr int kSizeField = 8;
constexpr int kOffsetField = 12;

bool encodeOne(const QImage &image, QByteArray *entry, QByteArray *data, QString *error)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "ico");
    if (!writer.write(image)) {
        *error = QStringLiteral("the ico writer failed: %1").arg(writer.errorString());
        return false;
    }
    const auto *raw = reinterpret_cast<const uchar *>(bytes.constData());
    if (bytes.size() < kHeaderSize + kEntrySize || qFromLittleEndian<quint16>(raw + 4) != 1) {
        *error = QStringLiteral("the ico writer produced an unexpected layout");
        return false;
    }
    const quint32 size = qFromLittleEndian<quint32>(raw + kHeaderSize + kSizeField);
    const quint32 offset = qFromLittleEndian<quint32>(raw + kHeaderSize + kOffsetField);
    if (quint64(offset) + size > quint64(bytes.size())) {
        *error = QStringLiteral("the ico writer produced a truncated image");
        return false;
    }
    *entry = bytes.mid(kHeaderSize, kEntrySize);
    *data = bytes.mid(int(offset), int(size));
    return true;
}

} // namespace

QByteArray packIco(const QList<QImage> &images, QString *error)
{
    QList<QByteArray> entries, datas;
    for (const QImage &image : images) {
        QByteArray entry, data;
        if (!encodeOne(image, &entry, &data, error))
            return {};
        entries.append(entry);
        datas.append(data);
    }
    QByteArray out(kHeaderSize, '\0');
    auto *head = reinterpret_cast<uchar *>(out.data());
    qToLittleEndian<quint16>(1, head + 2);
    qToLittleEndian<quint16>(quint16(images.size()), head + 4);
    quint32 offset = kHeaderSize + kEntrySize * quint32(images.size());
    for (int i = 0; i < entries.size(); ++i) {
        qToLittleEndian<quint32>(offset, reinterpret_cast<uchar *>(entries[i].data()) + kOffsetField);
        out += entries[i];
        offset += quint32(datas[i].size());
    }
    for (const QByteArray &data : datas)
        out += data;
    return out;
}
