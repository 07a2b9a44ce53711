// The steps of start-up that touch files and other programs: the updater
// hand-over, the preset unpack, and the folders start-up and exit remove.
#pragma once

#include <QString>

class QObject;

// Folder and name joined the way the Windows code writes "%1\%2": with the
// platform's own separator.
QString joinNative(const QString& folder, const QString& name);

// The updater in a folder, joined "%1//%2" (the doubled slash is kept).
QString updaterPath(const QString& folder);
// The preset archive in the install folder.
QString presetArchivePath(const QString& installLocation);
// The unpacked preset library (see PresetFolder.h): the product folder in
// the temporary folder on Windows, in a folder of this user's elsewhere.
QString tempPresetFolder();
// The per-user folder start-up deletes after an unpack on Windows: the
// product folder beside the per-user application-data folder (its parent
// joined with "MELO"). Empty when the given folder has no parent to cut at.
// Elsewhere that folder holds the web pages' profile (the login), so no
// folder is deleted there.
QString perUserFolderToDelete(const QString& appDataLocation);

// Windows: the unpack command line, run as a whole.
QString unpackCommandLine(const QString& installLocation, const QString& archive,
                          const QString& targetFolder);
// Elsewhere: arguments for 7-Zip, extracting with full paths, silently.
QStringList unpackArguments(const QString& archive, const QString& targetFolder);

// Starts the updater from "InstallLocation" (or the executable's folder when
// that value is empty), detached and without arguments. A missing updater is
// not an error for the caller; the result only says whether it started.
bool startUpdater();

// When the preset archive exists in the install folder: extracts it into the
// preset folder's parent, waiting at most 30 s or until a termination signal
// (a slow extractor keeps running as a child of `owner`), then, on Windows,
// deletes the per-user folder. Otherwise nothing. A preset folder that is a
// link or not this user's is refused: nothing is extracted. Returns whether
// the archive existed.
bool unpackPresetLibrary(QObject* owner);

// Ends an extractor that unpackPresetLibrary left running for `owner`, and
// waits for it, so nothing writes into the preset folder once it is removed.
void stopPresetExtractor(QObject* owner);

// Removes the unpacked preset library with everything in it; a link or a
// folder of someone else's is left alone.
void removeTempPresetFolder();
