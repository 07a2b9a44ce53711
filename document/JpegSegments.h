// Just enough of the JPEG file structure to tell a cut-off file from a whole
// one and to carry a photograph's EXIF block over into a newly encoded file.
#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

// Starts with the start-of-image marker.
bool isJpeg(const QByteArray& bytes);

// True when the marker segments and the entropy-coded data of every scan lead
// to an end-of-image marker. A file cut anywhere before it (in the headers or
// in the image data) gives false. Bytes after the end marker are ignored.
bool jpegDataComplete(const QByteArray& bytes);

// The whole APP1 "Exif" segment (marker, length and payload) of a JPEG, read
// from the marker segments before the first scan; empty when there is none or
// the input is not a JPEG. The file variant reads only the header segments.
QByteArray exifSegmentOf(QIODevice& device);
QByteArray readExifSegment(const QString& path);

// Orientation (tag 0x0112) in the first image directory of an EXIF segment;
// 0 when absent or unreadable.
int exifOrientation(const QByteArray& segment);
// Sets the orientation in place; false when the segment has no such tag.
bool setExifOrientation(QByteArray& segment, quint16 value);

// Inserts a segment into a JPEG right after its start-of-image marker and its
// JFIF (APP0) segment, if any. The compressed image data is not touched.
// Returns the input unchanged when it is not a JPEG.
QByteArray insertSegment(const QByteArray& jpeg, const QByteArray& segment);
