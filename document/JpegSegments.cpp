#include "JpegSegments.h"

#include <cstring>

#include <QMap>

namespace {

constexpr unsigned char kMarker = 0xFF;
constexpr unsigned char kSoi = 0xD8;
constexpr unsigned char kEoi = 0xD9;
constexpr unsigned char kSos = 0xDA;
constexpr unsigned char kApp0 = 0xE0;
constexpr unsigned char kApp1 = 0xE1;
constexpr unsigned char kApp2 = 0xE2;
constexpr char kExifHeader[] = {'E', 'x', 'i', 'f', 0, 0};
constexpr char kIccHeader[] = "ICC_PROFILE";  // with its terminating zero
constexpr int kIccHeaderSize = 12;
constexpr int kTiffStart = 4 + 6;  // marker, length, "Exif\0\0"
constexpr quint16 kOrientationTag = 0x0112;

unsigned char byteAt(const QByteArray& b, qsizetype i) { return static_cast<unsigned char>(b[int(i)]); }

// Markers that stand alone, without a length field.
bool standalone(unsigned char m) { return m == 0x01 || (m >= 0xD0 && m <= 0xD7); }

// Start-of-frame markers: every coding process except DHT (C4), JPG (C8) and
// DAC (CC), which share the range.
bool isFrameHeader(unsigned char m)
{
    return m >= 0xC0 && m <= 0xCF && m != 0xC4 && m != 0xC8 && m != 0xCC;
}

// Position just after the entropy-coded data that starts at pos: the first
// 0xFF that is neither a stuffed zero, a restart marker nor fill. -1 when the
// data runs to the end of the buffer.
qsizetype skipScanData(const QByteArray& b, qsizetype pos)
{
    const qsizetype n = b.size();
    const char* data = b.constData();
    while (pos + 1 < n) {
        // Scan data is most of a JPEG: find its next 0xFF the fast way.
        const void* marker = std::memchr(data + pos, kMarker, size_t(n - 1 - pos));
        if (!marker)
            return -1;
        pos = static_cast<const char*>(marker) - data;
        const unsigned char next = byteAt(b, pos + 1);
        if (next == 0x00 || standalone(next))
            pos += 2;
        else if (next == kMarker)
            ++pos;
        else
            return pos;
    }
    return -1;
}

// Reader of the TIFF structure inside an EXIF segment, in its byte order.
struct TiffView {
    QByteArray& seg;
    bool little = true;

    bool has(qsizetype at, int len) const { return at >= kTiffStart && at + len <= seg.size(); }
    quint32 read(qsizetype at, int len) const
    {
        quint32 v = 0;
        for (int i = 0; i < len; ++i) {
            const int shift = little ? 8 * i : 8 * (len - 1 - i);
            v |= quint32(byteAt(seg, at + i)) << shift;
        }
        return v;
    }
    void write16(qsizetype at, quint16 v)
    {
        seg[int(at + (little ? 0 : 1))] = char(v & 0xFF);
        seg[int(at + (little ? 1 : 0))] = char(v >> 8);
    }
    // Offset of the orientation entry's value in the segment, or -1.
    qsizetype orientationValueAt()
    {
        if (seg.size() < kTiffStart + 8 || seg.mid(4, 6) != QByteArray(kExifHeader, 6))
            return -1;
        const QByteArray order = seg.mid(kTiffStart, 2);
        if (order != "II" && order != "MM")
            return -1;
        little = order == "II";
        const qsizetype ifd = kTiffStart + qsizetype(read(kTiffStart + 4, 4));
        if (!has(ifd, 2))
            return -1;
        const quint32 count = read(ifd, 2);
        for (quint32 i = 0; i < count; ++i) {
            const qsizetype entry = ifd + 2 + 12 * qsizetype(i);
            if (!has(entry, 12))
                return -1;
            // Type 3 is SHORT; its single value sits at the start of the value field.
            if (read(entry, 2) == kOrientationTag && read(entry + 2, 2) == 3)
                return entry + 8;
        }
        return -1;
    }
};

} // namespace

bool isJpeg(const QByteArray& bytes)
{
    return bytes.size() >= 3 && byteAt(bytes, 0) == kMarker && byteAt(bytes, 1) == kSoi
           && byteAt(bytes, 2) == kMarker;
}

bool jpegDataComplete(const QByteArray& b)
{
    if (!isJpeg(b))
        return false;
    const qsizetype n = b.size();
    qsizetype pos = 2;
    while (pos < n) {
        // Like the decoder, tolerate stray bytes before a marker.
        while (pos < n && byteAt(b, pos) != kMarker)
            ++pos;
        while (pos < n && byteAt(b, pos) == kMarker)
            ++pos;
        if (pos >= n)
            return false;
        const unsigned char marker = byteAt(b, pos++);
        if (marker == kEoi)
            return true;
        if (standalone(marker))
            continue;
        if (pos + 2 > n)
            return false;
        const qsizetype length = (qsizetype(byteAt(b, pos)) << 8) | byteAt(b, pos + 1);
        if (length < 2 || pos + length > n)
            return false;
        pos += length;
        if (marker == kSos) {
            pos = skipScanData(b, pos);
            if (pos < 0)
                return false;
        }
    }
    return false;
}

JpegHeader readJpegHeader(const QByteArray& b)
{
    JpegHeader header;
    if (!isJpeg(b))
        return header;
    QMap<int, QByteArray> iccChunks;
    const qsizetype n = b.size();
    qsizetype pos = 2;
    while (pos + 4 <= n && byteAt(b, pos) == kMarker) {
        const unsigned char marker = byteAt(b, pos + 1);
        if (marker == kMarker) {  // fill byte
            ++pos;
            continue;
        }
        if (marker == kSos || marker == kEoi || standalone(marker))
            break;
        const qsizetype length = (qsizetype(byteAt(b, pos + 2)) << 8) | byteAt(b, pos + 3);
        if (length < 2 || pos + 2 + length > n)
            break;
        const QByteArray payload = b.mid(int(pos + 4), int(length - 2));
        if (isFrameHeader(marker) && payload.size() >= 5) {
            header.height = (int(byteAt(payload, 1)) << 8) | byteAt(payload, 2);
            header.width = (int(byteAt(payload, 3)) << 8) | byteAt(payload, 4);
            header.valid = true;
        } else if (marker == kApp1 && header.exifSegment.isEmpty() && payload.startsWith(QByteArray(kExifHeader, 6))) {
            header.exifSegment = b.mid(int(pos), int(length + 2));
        } else if (marker == kApp2 && payload.startsWith(QByteArray(kIccHeader, kIccHeaderSize))
                   && payload.size() > kIccHeaderSize + 2) {
            iccChunks.insert(byteAt(payload, kIccHeaderSize), payload.mid(kIccHeaderSize + 2));
        }
        pos += 2 + length;
    }
    // Chunks are numbered from 1; a profile with a missing chunk is unusable.
    int expected = 1;
    for (auto it = iccChunks.cbegin(); it != iccChunks.cend(); ++it, ++expected) {
        if (it.key() != expected) {
            header.iccProfile.clear();
            break;
        }
        header.iccProfile += it.value();
    }
    return header;
}

QByteArray iccSegments(const QByteArray& profile)
{
    // 2 length bytes, the 12-byte name and the chunk's number and count.
    constexpr int kChunk = 65535 - 2 - kIccHeaderSize - 2;
    const int count = (profile.size() + kChunk - 1) / kChunk;
    QByteArray out;
    if (count > 255)
        return out;
    for (int i = 0; i < count; ++i) {
        const QByteArray data = profile.mid(i * kChunk, kChunk);
        const int length = 2 + kIccHeaderSize + 2 + data.size();
        out += char(kMarker);
        out += char(kApp2);
        out += char(length >> 8);
        out += char(length & 0xFF);
        out += QByteArray(kIccHeader, kIccHeaderSize);
        out += char(i + 1);
        out += char(count);
        out += data;
    }
    return out;
}

int exifOrientation(const QByteArray& segment)
{
    QByteArray copy = segment;
    TiffView view{copy};
    const qsizetype at = view.orientationValueAt();
    return at < 0 ? 0 : int(view.read(at, 2));
}

bool setExifOrientation(QByteArray& segment, quint16 value)
{
    TiffView view{segment};
    const qsizetype at = view.orientationValueAt();
    if (at < 0)
        return false;
    view.write16(at, value);
    return true;
}

QByteArray insertSegment(const QByteArray& jpeg, const QByteArray& segment)
{
    if (!isJpeg(jpeg))
        return jpeg;
    int at = 2;
    if (jpeg.size() >= 6 && byteAt(jpeg, 3) == kApp0) {
        const int length = (int(byteAt(jpeg, 4)) << 8) | byteAt(jpeg, 5);
        if (4 + length <= jpeg.size())
            at = 4 + length;
    }
    QByteArray out;
    out.reserve(jpeg.size() + segment.size());
    out.append(jpeg.constData(), at).append(segment).append(jpeg.constData() + at, jpeg.size() - at);
    return out;
}
