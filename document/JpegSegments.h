// Just enough of the JPEG file structure to tell a cut-off file from a whole
// one, to learn its size before decoding, and to carry a photograph's EXIF
// block and colour profile over into a newly encoded file.
#pragma once

#include <QByteArray>
#include <QString>

// Starts with the start-of-image marker.
bool isJpeg(const QByteArray& bytes);

// True when the marker segments and the entropy-coded data of every scan lead
// to an end-of-image marker. A file cut anywhere before it (in the headers or
// in the image data) gives false. Bytes after the end marker are ignored.
bool jpegDataComplete(const QByteArray& bytes);

// What the marker segments before the first scan say: the frame size (from
// the start-of-frame segment), the whole APP1 "Exif" segment (marker, length
// and payload) and the ICC profile reassembled from its APP2 chunks in their
// sequence order. `valid` is false when the input is not a JPEG or its
// segments end before a frame header.
struct JpegHeader {
    bool valid = false;
    int width = 0;
    int height = 0;
    QByteArray exifSegment;
    QByteArray iccProfile;
};
JpegHeader readJpegHeader(const QByteArray& bytes);

// A profile as APP2 "ICC_PROFILE" segments, split into as many chunks as the
// 64 KiB segment limit needs; empty for an empty profile.
QByteArray iccSegments(const QByteArray& profile);

// Orientation (tag 0x0112) in the first image directory of an EXIF segment;
// 0 when absent or unreadable.
int exifOrientation(const QByteArray& segment);
// Sets the orientation in place; false when the segment has no such tag.
bool setExifOrientation(QByteArray& segment, quint16 value);

// Inserts a segment into a JPEG right after its start-of-image marker and its
// JFIF (APP0) segment, if any. The compressed image data is not touched.
// Returns the input unchanged when it is not a JPEG.
QByteArray insertSegment(const QByteArray& jpeg, const QByteArray& segment);
