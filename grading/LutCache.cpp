#include "LutCache.h"

#include "LutApply.h"

#include <cstdlib>
#include <filesystem>
#include <list>
#include <map>
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

// Files that failed to read, with the size and time they had then: such a
// file is not read again until it changes, so a broken or huge preset costs
// its reading time once, not at every click.
constexpr size_t kFailureCapacity = 256;

std::mutex g_mutex;
std::list<Entry> g_entries;  // most recently used first
std::map<std::string, Stamp> g_failures;

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
        const auto failed = g_failures.find(path);
        if (failed != g_failures.end() && failed->second == stamp)
            return nullptr;
    }

    Lut3D* lut = readLutFile(path.c_str());
    if (!lut) {
        if (stamped) {
            std::lock_guard<std::mutex> lock(g_mutex);
            if (g_failures.size() >= kFailureCapacity)
                g_failures.erase(g_failures.begin());
            g_failures[path] = stamp;
        }
        return nullptr;
    }
    std::shared_ptr<const LutKernel> kernel = makeLutKernel(*lut);
    free(lut);
    if (stamped) {
        std::lock_guard<std::mutex> lock(g_mutex);
        g_failures.erase(path);
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
    g_failures.clear();
}
