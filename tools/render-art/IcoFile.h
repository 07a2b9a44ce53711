#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

// Packs several images into one Windows icon file. Each image is encoded by
// Qt's own "ico" writer (which stores one image per file) and the entries are
// then gathered under one directory, so every size keeps the exact bytes Qt
// would write for it. Returns an empty array and a message on failure.
QByteArray packIco(const QList<QImage> &images, QString *error);
