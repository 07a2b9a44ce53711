// The gallery's pictures: real sample photographs published under names that
// carry the scene word the application recognises in a path, and an avatar.
#pragma once

#include <string>
#include <vector>

struct GalleryPicture {
    std::string name;       // published name, e.g. "人像_astronaut.png"
    std::string mimeType;
    std::string bytes;
};

class Gallery
{
public:
    // Loads the chosen samples from the folder; missing ones are reported on
    // standard error and left out.
    explicit Gallery(const std::string& samplesDir);

    const std::vector<GalleryPicture>& pictures() const { return m_pictures; }
    const GalleryPicture* find(const std::string& name) const;
    // JPEG of a square crop of a sample (empty when the sample is missing).
    const std::string& avatarJpeg() const { return m_avatar; }
    // {"code":200,"data":{"pictures":[{"name":..,"url":"/gallery/.."},..]}}
    std::string indexJson() const;

private:
    std::vector<GalleryPicture> m_pictures;
    std::string m_avatar;
};
