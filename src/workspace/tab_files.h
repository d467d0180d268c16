// Small file facts the workspace models ask before they act on a path.
#pragma once

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace workspace {

inline bool Exists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::exists(path, ec);
}

inline bool IsFolder(const std::string &path)
{
    std::error_code ec;
    return std::filesystem::is_directory(path, ec);
}

// The text as a number; text that is not one reads as 0.
inline double ParseValue(const std::string &text)
{
    char *end = nullptr;
    errno = 0;
    double value = std::strtod(text.c_str(), &end);
    return (end == text.c_str() || !std::isfinite(value)) ? 0.0 : value;
}

} // namespace workspace
