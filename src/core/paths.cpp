// Paths and files: names, extensions, folders, deleting by pattern.
#include "core/paths.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

namespace core {

namespace fs = std::filesystem;

namespace {

// Matches a file name against a pattern in which "*" stands for any run of characters.
bool MatchesPattern(const std::string &name, const std::string &pattern)
{
    size_t n = 0;
    size_t p = 0;
    size_t starPos = std::string::npos;
    size_t starName = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starPos = p++;
            starName = n;
        } else if (p < pattern.size() && pattern[p] == name[n]) {
            ++p;
            ++n;
        } else if (starPos != std::string::npos) {
            p = starPos + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    return p == pattern.size();
}

} // namespace

std::string ReplaceExtension(const std::string &path, const std::string &newTail)
{
    size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
        return path;
    }
    return path.substr(0, dot) + newTail;
}

std::string SetTrailingSeparator(const std::string &path, bool wanted)
{
    if (path.empty()) {
        return path;
    }
    if (wanted) {
        return path.back() == '/' ? path : path + "/";
    }
    return path.back() == '/' ? path.substr(0, path.size() - 1) : path;
}

bool IsMp4File(const std::string &path)
{
    size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
        return false;
    }
    std::string tail = path.substr(dot);
    std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char ch) {
        return static_cast<char>(std::tolower(ch));
    });
    return tail == ".mp4";
}

std::string FolderPart(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string FileNamePart(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string RealPath(const std::string &path)
{
    if (path.empty()) {
        return path;
    }
    std::error_code ec;
    fs::path p = fs::absolute(path, ec);
    if (ec) {
        return path;
    }
    while (!p.has_filename() && p.has_relative_path()) {
        p = p.parent_path(); // "/a/b/" names the folder b
    }
    // As the system does: at most 40 links in a row, then the path is taken as it stands.
    for (int hop = 0; hop < 40; ++hop) {
        std::error_code folderError;
        fs::path folder = fs::weakly_canonical(p.parent_path(), folderError);
        if (!folderError && p.has_filename()) {
            p = folder / p.filename();
        }
        std::error_code linkError;
        if (!fs::is_symlink(fs::symlink_status(p, linkError))) {
            break;
        }
        fs::path target = fs::read_symlink(p, linkError);
        if (linkError) {
            break;
        }
        p = target.is_absolute() ? target : p.parent_path() / target;
    }
    if (p.filename() == "." || p.filename() == "..") {
        std::error_code canonicalError;
        fs::path whole = fs::weakly_canonical(p, canonicalError);
        if (!canonicalError) {
            p = whole;
        }
    }
    return p.string();
}

void DeleteByPattern(const std::string &pattern)
{
    size_t slash = pattern.rfind('/');
    std::string folder = slash == std::string::npos ? "." : pattern.substr(0, slash + 1);
    std::string namePattern = slash == std::string::npos ? pattern : pattern.substr(slash + 1);
    if (namePattern.empty()) {
        return;
    }
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) {
        return;
    }
    for (; it != fs::directory_iterator(); it.increment(ec)) {
        if (ec) {
            return;
        }
        std::error_code statusError;
        if (it->is_directory(statusError)) {
            continue;
        }
        if (MatchesPattern(it->path().filename().string(), namePattern)) {
            std::error_code removeError;
            fs::remove(it->path(), removeError);
        }
    }
}

bool DeleteTree(const std::string &folder)
{
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) {
        return true;
    }
    for (; it != fs::directory_iterator(); it.increment(ec)) {
        if (ec) {
            break;
        }
        std::error_code statusError;
        // A link to a folder is removed as a link; its target is left alone.
        if (it->is_directory(statusError) && !it->is_symlink(statusError)) {
            DeleteTree(it->path().string());
        } else {
            std::error_code removeError;
            fs::remove(it->path(), removeError);
        }
    }
    std::error_code removeError;
    return fs::remove(folder, removeError) && !removeError;
}

bool CreateFolders(const std::string &folder)
{
    if (folder.empty()) {
        return false;
    }
    std::error_code ec;
    fs::create_directories(folder, ec);
    std::error_code statusError;
    return fs::is_directory(folder, statusError);
}

} // namespace core
