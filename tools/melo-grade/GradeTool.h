// Shared parts of the melo-grade commands.
#pragma once

#include <opencv2/core.hpp>

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

// Reads an image as the editor opens it (depth and channels as stored);
// complains and returns an empty matrix when it cannot.
cv::Mat readImage(const std::string& path);

// Writes an image in the format its extension names: .jpg/.jpeg (quality
// 100), .png (compression 9), .tif/.tiff. Complains and returns false when
// the format is unknown or the file cannot be written.
bool writeImage(const std::string& path, const cv::Mat& image);

// Whether the extension names a format writeImage knows.
bool isWritableFormat(const std::string& path);
