// The stream facts ffprobe printed for a file, kept for the life of the process: an opening
// probes the same unchanged file several times (the open, the analysis, the scan), and each
// probe of a large recording costs a tool start and a read of its index.
#pragma once

#include <optional>
#include <string>

namespace engine {

// ffprobe's text for path when it was kept for the file exactly as it is now (same device,
// inode, size and modification time); nothing for another file, a changed one, or one that is
// not a regular file.
std::optional<std::string> CachedProbeText(const std::string &path);

// Keeps text as ffprobe's output for path as the file is now. Regular files only.
void KeepProbeText(const std::string &path, const std::string &text);

} // namespace engine
