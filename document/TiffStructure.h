// Writes little-endian TIFF structures: a first image directory with its
// entries, nested directories (EXIF) and data blocks placed after them. Used
// for the EXIF block of photographs developed from camera RAW files, which
// carry their camera details in no JPEG-ready form.
#pragma once

#include <QByteArray>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

class TiffDirectory
{
public:
    enum Type : quint16 { Byte = 1, Ascii = 2, Short = 3, Long = 4, Rational = 5, SRational = 10 };

    void bytes(quint16 tag, const std::vector<quint8>& values);
    // A NUL is appended.
    void ascii(quint16 tag, const QByteArray& text);
    void shorts(quint16 tag, const std::vector<quint16>& values);
    void longs(quint16 tag, const std::vector<quint32>& values);
    void rationals(quint16 tag, const std::vector<std::pair<quint32, quint32>>& values);
    void srationals(quint16 tag, const std::vector<std::pair<qint32, qint32>>& values);
    // A LONG holding the offset of a directory written after this one.
    void subDirectory(quint16 tag, const TiffDirectory& directory);
    // A LONG holding the offset of a block of bytes written after this
    // directory (image strips).
    void dataOffset(quint16 tag, const QByteArray& data);

    bool empty() const { return m_entries.empty(); }
    // Appends the directory (entries in tag order, next-directory offset 0)
    // and everything it points to. Offsets count from the start of `out`,
    // which must begin with the TIFF header.
    void writeTo(QByteArray& out) const;

private:
    struct Entry {
        quint16 type = 0;
        quint32 count = 0;
        QByteArray value;                          // little-endian values
        std::shared_ptr<TiffDirectory> directory;  // for subDirectory
        QByteArray data;                           // for dataOffset
        bool isData = false;
    };
    void add(quint16 tag, Entry entry);
    template <typename Pairs>
    static Entry fractions(quint16 type, const Pairs& values);
    std::map<quint16, Entry> m_entries;
};

// "II*\0", the first directory at offset 8, then the directory.
QByteArray tiffFile(const TiffDirectory& first);
