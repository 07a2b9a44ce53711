// Where the preset library is unpacked to and read from, for this user only.
//
// On Windows: the product folder in the temporary folder, as always. Elsewhere
// the shared temporary folder would let another user's copy use (and at its
// exit delete) the same folder, or plant a link there that unpacking and
// clean-up would follow; so the library goes into a folder only this user can
// enter: $XDG_RUNTIME_DIR, or the temporary folder's "melo-<uid>" made
// owner-only, and the product folder inside.
#pragma once

#include <QString>

// The folder the archive is extracted into (its top folder "MELO" lands
// inside). Created when needed. Empty when no safe folder exists: the
// candidate is a link, is not a folder, belongs to someone else or others
// may enter it.
QString presetUnpackParent();

// The preset library root: the product folder in presetUnpackParent(); empty
// when that is refused.
QString presetLibraryFolder();

// Whether the path may be unpacked into or removed: a folder (not a link to
// one) that belongs to this user; an absent path only with allowAbsent.
bool isOwnRealFolder(const QString& path, bool allowAbsent);
