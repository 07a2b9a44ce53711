#include "GradeTool.h"

#include "ImagePreview.h"

#include <QFile>

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

std::string lowerExtension(const std::string& path)
{
    const size_t dot = path.find_last_of('.');
    const size_t slash = path.find_last_of('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return {};
    std::string extension = path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return extension;
}

bool encoderParameters(const std::string& path, std::vector<int>& parameters)
{
    const std::string extension = lowerExtension(path);
    if (extension == "jpg" || extension == "jpeg")
        parameters = {cv::IMWRITE_JPEG_QUALITY, 100};
    else if (extension == "png")
        parameters = {cv::IMWRITE_PNG_COMPRESSION, 9};
    else if (extension == "tif" || extension == "tiff")
        parameters = {};
    else
        return false;
    return true;
}

}  // namespace

void complain(const std::string& message)
{
    fprintf(stderr, "melo-grade: %s\n", message.c_str());
    fflush(stderr);
}

int usageError(const std::string& message)
{
    complain(message + " (melo-grade --help shows the usage)");
    return kExitUsage;
}

bool parseNumber(const std::string& text, int min, int max, int& value)
{
    if (text.empty() || text.size() > 9 ||
        !std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); }))
        return false;
    value = std::stoi(text);
    return value >= min && value <= max;
}

cv::Mat readImage(const std::string& path)
{
    // The editor's reader, so HEIF/AVIF and camera RAW come in too.
    const cv::Mat image = readImageFile(QFile::decodeName(path.c_str()));
    if (image.empty())
        complain(path + ": cannot read the image");
    return image;
}

bool isWritableFormat(const std::string& path)
{
    std::vector<int> parameters;
    return encoderParameters(path, parameters);
}

bool writeImage(const std::string& path, const cv::Mat& image)
{
    std::vector<int> parameters;
    if (!encoderParameters(path, parameters)) {
        complain(path + ": unknown output format (use .jpg, .png or .tif)");
        return false;
    }
    bool written = false;
    try {
        written = cv::imwrite(path, image, parameters);
    } catch (const cv::Exception&) {
        written = false;
    }
    if (!written)
        complain(path + ": cannot write the image");
    return written;
}
