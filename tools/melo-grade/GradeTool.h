// Shared parts of the melo-grade commands.
#pragma once

#include "Photo.h"

#include <opencv2/core.hpp>

#include <optional>

#include <string>
#include <vector>

// Exit codes of melo-grade.
enum ExitCode {
    kExitOk = 0,
    kExitLutFailed = 1,   // a LUT or preset could not be read
    kExitUsage = 2,       // bad arguments
    kExitImageFailed = 3  // an image could not be read or written (others were processed)
};

using Arguments = std::vector<std::string>;

int runLutCommand(const Arguments& args);
int runApplyCommand(const Arguments& args);
int runPresetCommand(const Arguments& args);

// Prints "melo-grade: <message>" as one line on standard error.
void complain(const std::string& message);
// complain(message), then returns kExitUsage.
int usageError(const std::string& message);

// A whole decimal number from min to max, or false.
bool parseNumber(const std::string& text, int min, int max, int& value);

// Reads a photograph as the editor opens it, with the same reader (upright,
// depth, alpha, profile and EXIF as stored); complains with the reason and
// returns none when it cannot.
std::optional<Photo> readPhotoFile(const std::string& path);

// Writes a photograph with the editor's writer, in the format its extension
// names: .jpg/.jpeg, .png, .tif/.tiff, atomically (an existing file survives
// a failed write). Complains and returns false when the format is unknown or
// the file cannot be written.
bool writePhotoFile(const std::string& path, const Photo& photo);

// Whether the extension names a format writePhotoFile knows.
bool isWritableFormat(const std::string& path);
