#include "ImageHeaders.h"

#include "JpegSegments.h"

#include <QtEndian>

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

// Real profiles are a few kilobytes to a few megabytes; a chunk that inflates
// beyond this is not a profile worth keeping.
constexpr qsizetype kMaxProfileBytes = 16 * 1024 * 1024;
constexpr quint16 kTiffWidth = 256;
constexpr quint16 kTiffHeight = 257;
constexpr quint16 kTiffOrientation = 274;
constexpr quint16 kTiffIcc = 34675;
constexpr quint16 kTypeShort = 3;
constexpr quint16 kTypeLong = 4;
const char kPngSignature[] = "\x89PNG\r\n\x1a\n";

quint32 u8(const QByteArray& b, qsizetype at) { return static_cast<unsigned char>(b[int(at)]); }
quint32 be32(const QByteArray& b, qsizetype at) { return qFromBigEndian<quint32>(b.constData() + at); }

// ---- TIFF ----------------------------------------------------------------

struct TiffEntry {
    quint16 tag, type;
    quint32 count;
    char value[4];
};

struct Tiff {
    const QByteArray& b;
    bool little = true;
    quint32 ifd = 0;

    quint32 get(qsizetype at, int len) const
    {
        return len == 2 ? (little ? qFromLittleEndian<quint16>(b.constData() + at)
                                  : qFromBigEndian<quint16>(b.constData() + at))
                        : (little ? qFromLittleEndian<quint32>(b.constData() + at)
                                  : qFromBigEndian<quint32>(b.constData() + at));
    }
    bool open()
    {
        if (b.size() < 8)
            return false;
        if (b.startsWith(QByteArray("II*\0", 4)))
            little = true;
        else if (b.startsWith(QByteArray("MM\0*", 4)))
            little = false;
        else
            return false;
        ifd = get(4, 4);
        return qsizetype(ifd) + 2 <= b.size() && qsizetype(ifd) + 2 + 12 * qsizetype(get(ifd, 2)) + 4 <= b.size();
    }
    std::vector<TiffEntry> entries() const
    {
        std::vector<TiffEntry> out(get(ifd, 2));
        for (size_t i = 0; i < out.size(); ++i) {
            const qsizetype at = ifd + 2 + 12 * qsizetype(i);
            out[i] = {quint16(get(at, 2)), quint16(get(at + 2, 2)), get(at + 4, 4), {}};
            std::memcpy(out[i].value, b.constData() + at + 8, 4);
        }
        return out;
    }
    // The value field read as one LONG (an offset for longer values).
    quint32 word(const TiffEntry& e) const
    {
        return little ? qFromLittleEndian<quint32>(e.value) : qFromBigEndian<quint32>(e.value);
    }
    // A single SHORT or LONG value.
    std::optional<quint32> number(const TiffEntry& e) const
    {
        if (e.type == kTypeShort)
            return little ? qFromLittleEndian<quint16>(e.value) : qFromBigEndian<quint16>(e.value);
        if (e.type == kTypeLong)
            return word(e);
        return std::nullopt;
    }
};

std::optional<ImageHeader> probeTiff(const QByteArray& b)
{
    Tiff tiff{b};
    if (!tiff.open())
        return std::nullopt;
    ImageHeader h;
    h.format = ImageFormat::Tiff;
    for (const TiffEntry& e : tiff.entries()) {
        if (e.tag == kTiffWidth)
            h.width = tiff.number(e).value_or(0);
        else if (e.tag == kTiffHeight)
            h.height = tiff.number(e).value_or(0);
        else if (e.tag == kTiffOrientation)
            h.orientation = int(tiff.number(e).value_or(1));
        else if (e.tag == kTiffIcc && e.count > 4 && e.count <= kMaxProfileBytes) {
            const quint32 at = tiff.word(e);
            if (qsizetype(at) + e.count <= b.size())
                h.iccProfile = b.mid(int(at), int(e.count));
        }
    }
    if (h.width <= 0 || h.height <= 0)
        return std::nullopt;
    return h;
}

// ---- PNG -----------------------------------------------------------------

QByteArray inflateBounded(const char* data, qsizetype size)
{
    z_stream z{};
    if (inflateInit(&z) != Z_OK)
        return QByteArray();
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
    z.avail_in = uInt(size);
    QByteArray out;
    int rc = Z_OK;
    while (rc == Z_OK && out.size() < kMaxProfileBytes) {
        const int old = out.size();
        out.resize(old + 64 * 1024);
        z.next_out = reinterpret_cast<Bytef*>(out.data() + old);
        z.avail_out = 64 * 1024;
        rc = inflate(&z, Z_NO_FLUSH);
        out.resize(out.size() - int(z.avail_out));
    }
    inflateEnd(&z);
    return rc == Z_STREAM_END ? out : QByteArray();
}

bool isPng(const QByteArray& b) { return b.size() >= 33 && b.startsWith(QByteArray(kPngSignature, 8)); }

std::optional<ImageHeader> probePng(const QByteArray& b)
{
    if (!isPng(b) || b.mid(12, 4) != "IHDR")
        return std::nullopt;
    ImageHeader h;
    h.format = ImageFormat::Png;
    h.width = be32(b, 16);
    h.height = be32(b, 20);
    for (qsizetype at = 8; at + 12 <= b.size();) {
        const qsizetype length = be32(b, at);
        const QByteArray type = b.mid(int(at + 4), 4);
        if (type == "IDAT" || length > b.size() - at - 12)
            break;
        if (type == "iCCP") {
            const QByteArray data = b.mid(int(at + 8), int(length));
            const int nul = data.indexOf('\0');
            // keyword, its terminator, compression method 0, zlib stream
            if (nul > 0 && nul + 2 < data.size() && data[nul + 1] == 0)
                h.iccProfile = inflateBounded(data.constData() + nul + 2, data.size() - nul - 2);
        }
        at += 12 + length;
    }
    return h;
}

QByteArray pngChunk(const char* type, const QByteArray& data)
{
    QByteArray chunk(4, '\0');
    qToBigEndian<quint32>(quint32(data.size()), chunk.data());
    chunk += QByteArray(type, 4) + data;
    quint32 crc = crc32(0, reinterpret_cast<const Bytef*>(chunk.constData() + 4), uInt(chunk.size() - 4));
    QByteArray tail(4, '\0');
    qToBigEndian<quint32>(crc, tail.data());
    return chunk + tail;
}

// ---- WebP, BMP, PNM ------------------------------------------------------

std::optional<ImageHeader> probeWebP(const QByteArray& b)
{
    if (b.size() < 30 || !b.startsWith("RIFF") || b.mid(8, 4) != "WEBP")
        return std::nullopt;
    ImageHeader h;
    h.format = ImageFormat::WebP;
    const QByteArray kind = b.mid(12, 4);
    if (kind == "VP8 ") {
        h.width = qFromLittleEndian<quint16>(b.constData() + 26) & 0x3FFF;
        h.height = qFromLittleEndian<quint16>(b.constData() + 28) & 0x3FFF;
    } else if (kind == "VP8L") {
        const quint32 bits = qFromLittleEndian<quint32>(b.constData() + 21);
        h.width = (bits & 0x3FFF) + 1;
        h.height = ((bits >> 14) & 0x3FFF) + 1;
    } else if (kind == "VP8X") {
        h.width = (u8(b, 24) | u8(b, 25) << 8 | u8(b, 26) << 16) + 1;
        h.height = (u8(b, 27) | u8(b, 28) << 8 | u8(b, 29) << 16) + 1;
    } else {
        return std::nullopt;
    }
    return h;
}

std::optional<ImageHeader> probeBmp(const QByteArray& b)
{
    if (b.size() < 26 || !b.startsWith("BM"))
        return std::nullopt;
    ImageHeader h;
    h.format = ImageFormat::Bmp;
    if (qFromLittleEndian<quint32>(b.constData() + 14) == 12) {  // the old OS/2 header
        h.width = qFromLittleEndian<qint16>(b.constData() + 18);
        h.height = qFromLittleEndian<qint16>(b.constData() + 20);
    } else {
        h.width = qFromLittleEndian<qint32>(b.constData() + 18);
        h.height = qAbs(qint64(qFromLittleEndian<qint32>(b.constData() + 22)));  // negative: top-down
    }
    return h;
}

std::optional<ImageHeader> probePnm(const QByteArray& b)
{
    if (b.size() < 3 || b[0] != 'P' || b[1] < '1' || b[1] > '6')
        return std::nullopt;
    ImageHeader h;
    h.format = ImageFormat::Pnm;
    qint64 numbers[2] = {0, 0};
    qsizetype at = 2;
    for (qint64& n : numbers) {
        for (;;) {  // white space and comments
            while (at < b.size() && std::strchr(" \t\r\n", b[int(at)]) && b[int(at)])
                ++at;
            if (at < b.size() && b[int(at)] == '#')
                at = b.indexOf('\n', int(at)) < 0 ? b.size() : b.indexOf('\n', int(at));
            else
                break;
        }
        const qsizetype digits = at;
        while (at < b.size() && b[int(at)] >= '0' && b[int(at)] <= '9' && n < (qint64(1) << 40))
            n = n * 10 + (b[int(at++)] - '0');
        if (at == digits)
            return std::nullopt;
    }
    h.width = numbers[0];
    h.height = numbers[1];
    return h;
}

} // namespace

std::optional<ImageHeader> probeImageHeader(const QByteArray& bytes)
{
    if (isJpeg(bytes)) {
        const JpegHeader jpeg = readJpegHeader(bytes);
        if (!jpeg.valid)
            return std::nullopt;
        ImageHeader h;
        h.width = jpeg.width;
        h.height = jpeg.height;
        h.iccProfile = jpeg.iccProfile;
        h.exifSegment = jpeg.exifSegment;
        const int orientation = exifOrientation(jpeg.exifSegment);
        h.orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
        return h;
    }
    for (auto probe : {probePng, probeTiff, probeWebP, probeBmp, probePnm}) {
        if (std::optional<ImageHeader> h = probe(bytes)) {
            if (h->orientation < 1 || h->orientation > 8)
                h->orientation = 1;
            return h;
        }
    }
    return std::nullopt;
}

QByteArray withPngIccProfile(const QByteArray& png, const QByteArray& profile)
{
    if (!isPng(png))
        return QByteArray();
    QByteArray compressed(int(compressBound(uLong(profile.size()))), '\0');
    uLongf length = uLongf(compressed.size());
    if (compress2(reinterpret_cast<Bytef*>(compressed.data()), &length,
                  reinterpret_cast<const Bytef*>(profile.constData()), uLong(profile.size()), 9) != Z_OK)
        return QByteArray();
    compressed.resize(int(length));
    const QByteArray chunk = pngChunk("iCCP", QByteArray("ICC profile", 12) + '\0' + compressed);
    // Signature and IHDR, the new chunk, then every other chunk but an old iCCP.
    QByteArray out = png.left(33) + chunk;
    for (qsizetype at = 33; at + 12 <= png.size();) {
        const qsizetype length = be32(png, at);
        if (length > png.size() - at - 12)
            return QByteArray();
        if (png.mid(int(at + 4), 4) != "iCCP")
            out += png.mid(int(at), int(12 + length));
        at += 12 + length;
    }
    return out;
}
