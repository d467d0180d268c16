// The stream facts ffprobe printed for a file, kept while the file stays as it was.
#include "engine/probe_cache.h"

#include <map>
#include <mutex>
#include <tuple>

#include <sys/stat.h>

namespace engine {
namespace {

using FileIdentity = std::tuple<dev_t, ino_t, off_t, long long, long long>;

struct Kept
{
    FileIdentity identity;
    std::string text;
};

// A handful of files is probed per job; a bound keeps a long session's memory flat.
constexpr size_t kMaxKept = 64;

std::mutex &CacheLock()
{
    static std::mutex lock;
    return lock;
}

std::map<std::string, Kept> &Cache()
{
    static std::map<std::string, Kept> cache;
    return cache;
}

std::optional<FileIdentity> IdentityOf(const std::string &path)
{
    struct stat st
    {
    };
    if (path.empty() || stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) {
        return std::nullopt;
    }
    return FileIdentity{st.st_dev,
                        st.st_ino,
                        st.st_size,
                        static_cast<long long>(st.st_mtim.tv_sec),
                        static_cast<long long>(st.st_mtim.tv_nsec)};
}

} // namespace

std::optional<std::string> CachedProbeText(const std::string &path)
{
    const std::optional<FileIdentity> identity = IdentityOf(path);
    if (!identity) {
        return std::nullopt;
    }
    std::lock_guard<std::mutex> guard(CacheLock());
    auto at = Cache().find(path);
    if (at == Cache().end() || at->second.identity != *identity) {
        return std::nullopt;
    }
    return at->second.text;
}

void KeepProbeText(const std::string &path, const std::string &text)
{
    const std::optional<FileIdentity> identity = IdentityOf(path);
    if (!identity) {
        return;
    }
    std::lock_guard<std::mutex> guard(CacheLock());
    if (Cache().size() >= kMaxKept && Cache().count(path) == 0) {
        Cache().erase(Cache().begin());
    }
    Cache()[path] = Kept{*identity, text};
}

} // namespace engine
