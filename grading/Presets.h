// Where the preset library lives, and unpacking it from its archive.
//
// The library is a folder "MELO" holding "<scene>/<n>.CUBE" for scenes 0 to 5
// and files 0 to 19 (top presets 0-3, mid 4-7, down 8-19). The program
// unpacks it at start-up into the temporary folder on Windows, into a folder
// of the user's own elsewhere (see PresetFolder.h).
#pragma once

#include <QString>

inline constexpr int kPresetFilesPerScene = 20;

// The library root: QDir::tempPath() + "\\MELO" on Windows, presetLibraryFolder()
// elsewhere.
QString presetRoot();

// "<root>/<scene>/<n>.CUBE" ("%1\\%2\\%3\\%4.CUBE" under the temporary folder on Windows).
QString presetFilePath(int scene, int fileNumber);

// The same under another library root (the folder that holds the scene folders).
QString presetFilePath(const QString& root, int scene, int fileNumber);

// Unpacks the password-protected preset archive into targetFolder (which then
// holds "MELO/<scene>/<n>.CUBE") with the 7z program. Waits at most
// timeoutMs. On failure returns false and, when error is given, says why.
bool unpackPresetArchive(const QString& archive, const QString& targetFolder, QString* error = nullptr,
                         int timeoutMs = 30000);
