#pragma once

#include "ArtEntry.h"

#include <QImage>

// Draws the entry's SVG layers (file names relative to svgDir, painted in
// order over a transparent canvas) at the given pixel size. With small set,
// the entry's simplified drawing replaces its sources when it has one.
// Returns a null image and a message when a source cannot be used.
QImage renderArt(const ArtEntry &entry, const QString &svgDir, const QSize &size, bool small,
                 QString *error);

// Renders the entry and writes it to outPath; the format follows the file
// name: .png, .jpg (flattened on the matte colour) or .ico (every size of
// the entry's ico list in one file).
bool writeArt(const ArtEntry &entry, const QString &svgDir, const QString &outPath,
              QString *error);
