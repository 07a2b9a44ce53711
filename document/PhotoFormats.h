// The photograph formats the reader opens, as the add button's file dialog
// and a drop onto the window see them.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The file dialog's entries that follow the product's own first one: every
// photograph the reader opens (each extension in lower and upper case), then
// all files.
QStringList photoFileFilters();

// By the first bytes: JPEG, PNG, TIFF (camera RAW included), BMP, WebP,
// HEIF/AVIF or another RAW signature.
bool looksLikePhoto(const QByteArray& head);

class QUrl;
template <typename T> class QList;

// The photograph a drop carries: exactly one local regular file that starts
// like a photograph, whatever its name. Empty for anything else.
QString droppedPhotoPath(const QList<QUrl>& urls);
