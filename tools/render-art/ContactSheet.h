#pragma once

#include "ArtEntry.h"

#include <QImage>

// Where the rendered file of an entry lives below the output folder: the
// resource prefix without its leading slash, or "files" for pictures that are
// installed but not compiled in (prefix "-").
QString artOutputPath(const QString &outDir, const ArtEntry &entry);

// Lays out every rendered picture on its intended background, small icons
// also enlarged pixel for pixel, icons with every size they hold, the crop
// frames stretched as border images over a photograph and the preset check
// mark over a thumbnail of it. photo may be empty (a grey ramp stands in).
QImage contactSheet(const QList<ArtEntry> &entries, const QString &outDir, const QString &photo,
                    QString *error);
