// Freedesktop desktop entries: the menu entry the installer lays out and the
// autostart entry that realises start-with-the-system off Windows.
#pragma once

#include <QString>

// Icon name of the program in the icon theme (share/icons/hicolor/...).
inline constexpr char kDesktopIconName[] = "melo";
// File name of both entries.
inline constexpr char kDesktopEntryFile[] = "melo.desktop";

// The text of an application entry that starts `program`.
QString desktopEntryText(const QString& program);
// Writes that entry to `file`, creating its folder. False when it cannot.
bool writeDesktopEntry(const QString& file, const QString& program);
// The user's autostart entry (configuration folder + "/autostart").
QString autostartEntryPath();
