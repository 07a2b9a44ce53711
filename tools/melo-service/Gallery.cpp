#include "Gallery.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <fstream>
#include <iterator>

namespace {

struct Choice {
    const char* published;
    const char* sample;
};

// One or more photographs per scene word of the application.
const Choice kChoices[] = {
    {"人像_astronaut.png", "astronaut.png"},
    {"风光_rocket.jpg", "rocket.jpg"},
    {"动物鸟类_chelsea.png", "chelsea.png"},
    {"自然景观_hubble_deep_field.jpg", "hubble_deep_field.jpg"},
    {"人文_coffee.png", "coffee.png"},
    {"人文_motorcycle_left.png", "motorcycle_left.png"},
    {"黑白影调_camera.png", "camera.png"},
};

const char kAvatarSample[] = "coffee.png";
constexpr int kAvatarSize = 128;

bool readWholeFile(const std::string& path, std::string* bytes)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    bytes->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

std::string mimeTypeOf(const std::string& name)
{
    const auto dot = name.rfind('.');
    const std::string ext = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    if (ext == "jpg" || ext == "jpeg")
        return "image/jpeg";
    if (ext == "png")
        return "image/png";
    return "application/octet-stream";
}

// The centre square of the sample, scaled down.
std::string makeAvatar(const std::string& path)
{
    const cv::Mat picture = cv::imread(path, cv::IMREAD_COLOR);
    if (picture.empty())
        return std::string();
    const int side = std::min(picture.cols, picture.rows);
    const cv::Rect square((picture.cols - side) / 2, (picture.rows - side) / 2, side, side);
    cv::Mat avatar;
    cv::resize(picture(square), avatar, cv::Size(kAvatarSize, kAvatarSize), 0, 0, cv::INTER_AREA);
    std::vector<uchar> jpeg;
    if (!cv::imencode(".jpg", avatar, jpeg))
        return std::string();
    return std::string(jpeg.begin(), jpeg.end());
}

} // namespace

Gallery::Gallery(const std::string& samplesDir)
{
    for (const Choice& choice : kChoices) {
        GalleryPicture picture{choice.published, mimeTypeOf(choice.published), std::string()};
        if (!readWholeFile(samplesDir + "/" + choice.sample, &picture.bytes) || picture.bytes.empty()) {
            std::fprintf(stderr, "melo-service: sample %s missing in %s\n", choice.sample, samplesDir.c_str());
            continue;
        }
        m_pictures.push_back(std::move(picture));
    }
    m_avatar = makeAvatar(samplesDir + "/" + kAvatarSample);
}

const GalleryPicture* Gallery::find(const std::string& name) const
{
    for (const GalleryPicture& picture : m_pictures) {
        if (picture.name == name)
            return &picture;
    }
    return nullptr;
}

std::string Gallery::indexJson() const
{
    std::string json = "{\"code\":200,\"data\":{\"pictures\":[";
    for (size_t i = 0; i < m_pictures.size(); ++i) {
        // Published names contain no quote or backslash.
        json += (i ? ",{" : "{");
        json += "\"name\":\"" + m_pictures[i].name + "\",\"url\":\"/gallery/" + m_pictures[i].name + "\"}";
    }
    return json + "]}}";
}
