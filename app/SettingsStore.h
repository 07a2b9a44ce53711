// The persisted settings: a handful of text values under full key paths.
//
// On Windows the key path is a registry key opened with QSettings in native
// format. Elsewhere each key path is kept as its own INI file under the user's
// configuration folder, the file's path mirroring the key path, so the same
// paths and value names work unchanged.
#pragma once

#include <QString>

// Returns the value as text; empty when the key or the value does not exist.
QString readSettingValue(const QString& keyPath, const QString& name);
void writeSettingValue(const QString& keyPath, const QString& name, const QString& value);
// Removes a value (used by the installer role and by tests).
void removeSettingValue(const QString& keyPath, const QString& name);

// The INI file that backs a key path off Windows (empty on Windows).
QString settingsFileForKey(const QString& keyPath);
