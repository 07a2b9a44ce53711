#include "LutCache.h"

#include "LutApply.h"

#include <cstdlib>
#include <filesystem>
#include <list>
#include <mutex>

namespace {

// Enough for two scenes' worth of presets (a 33-point table takes 0.6 MB).
constexpr size_t kCapacity = 48;

struct Stamp {
    std::uintmax_t size = 0;
    std::filesystem::file_time_type modified;
    bool operator==(const Stamp& other) const { return size == other.size && modified == other.modified; }
};

struct Entry {
    std::string path;
    Stamp stamp;
    std::shared_ptr<const LutKernel> kernel;
};

std::mutex g_mutex;
std::list<Entry> g_entries;  // most recently used first

bool stampOf(const std::string& path, Stamp& stamp)
{
    std::error_code error;
    const std::filesystem::path file(path);
    stamp.size = std::filesystem::file_size(file, error);
    if (error)
        return false;
    stamp.modified = std::filesystem::last_write_time(file, error);
    return !error;
}

}  // namespace

std::shared_ptr<const LutKernel> loadLutCached(const std::string& path)
{
    Stamp stamp;
    const bool stamped = stampOf(path, stamp);
    if (stamped) {
        std::lock_guard<std::mutex> lock(g_mutex);
        for (auto it = g_entries.begin(); it != g_entries.end(); ++it) {
            if (it->path == path && it->stamp == stamp) {
                g_entries.splice(g_entries.begin(), g_entries, it);
                return it->kernel;
            }
        }
    }

    Lut3D* lut = readLutFile(path.c_str());
    if (!lut)
        return nullptr;
    std::shared_ptr<const LutKernel> kernel = makeLutKernel(*lut);
    free(lut);
    if (stamped) {
        std::lock_guard<std::mutex> lock(g_mutex);
        g_entries.remove_if([&](const Entry& entry) { return entry.path == path; });
        g_entries.push_front({path, stamp, kernel});
        if (g_entries.size() > kCapacity)
            g_entries.pop_back();
    }
    return kernel;
}

void clearLutCache()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_entries.clear();
}
