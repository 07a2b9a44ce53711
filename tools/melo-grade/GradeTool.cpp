#include "GradeTool.h"

#include "PhotoReader.h"
#include "PhotoWriter.h"

#include <QFile>

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

std::optional<PhotoFormat> outputFormat(const std::string& path)
{
    const QString name = QFile::decodeName(path.c_str());
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot < 0 || dot < name.lastIndexOf(QLatin1Char('/')))
        return std::nullopt;
    return photoFormatForExtension(name.mid(dot));
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

std::optional<Photo> readPhotoFile(const std::string& path)
{
    PhotoReadResult read = readPhoto(QFile::decodeName(path.c_str()));
    if (!read)
        complain(path + ": cannot read the image: " + read.reason.toStdString());
    return read.photo;
}

bool isWritableFormat(const std::string& path)
{
    return outputFormat(path).has_value();
}

bool writePhotoFile(const std::string& path, const Photo& photo)
{
    const std::optional<PhotoFormat> format = outputFormat(path);
    if (!format) {
        complain(path + ": unknown output format (use .jpg, .png or .tif)");
        return false;
    }
    QString error;
    if (writePhoto(QFile::decodeName(path.c_str()), photo, *format, &error))
        return true;
    complain(path + ": cannot write the image: " + error.toStdString());
    return false;
}
