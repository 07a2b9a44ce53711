// Reading the avatar a page hands over. The file holds whatever bytes the
// page's address served, so it is read only as a raster photo format judged by
// its content, and its dimensions are checked from the header before a single
// pixel is decoded: a few hundred bytes can otherwise claim gigabytes.
#pragma once

#include <QImage>
#include <QString>

// Largest width and height of an avatar; far above any label it is shown in.
inline constexpr int kMaxAvatarSide = 4096;

// The picture, or a null image when the file is missing, is not a PNG, JPEG,
// GIF, BMP or WebP picture (SVG is refused), claims more than kMaxAvatarSide
// on a side, or does not decode. `why`, when given, then says which.
QImage readAvatarPicture(const QString& path, QString* why = nullptr);
