// Paths and files: names, extensions, folders, deleting by pattern.
#pragma once

#include <string>

namespace core {

// Text before the last "." followed by newTail; a path without "." comes back unchanged.
std::string ReplaceExtension(const std::string &path, const std::string &newTail);
// wanted: append "/" unless the path already ends in one; otherwise remove one trailing "/".
std::string SetTrailingSeparator(const std::string &path, bool wanted);
// The text from the last "." equals ".mp4", ignoring case.
bool IsMp4File(const std::string &path);
// The folder part of a path, up to and including its last "/"; empty for a bare name.
std::string FolderPart(const std::string &path);
// The file-name part of a path (behind the last "/").
std::string FileNamePart(const std::string &path);
// The absolute form of path with every symbolic link resolved, in its folders and in its last
// part: the file or folder that reading or writing path reaches. Parts that do not exist yet are
// kept as named, so a link to a file not made yet gives that file; "." and ".." are resolved and
// a trailing "/" is dropped. An empty path comes back empty.
std::string RealPath(const std::string &path);
// Deletes every plain file matching a pattern with "*" in its file name; errors ignored.
void DeleteByPattern(const std::string &pattern);
// Deletes a folder with everything in it; the result is that of removing the folder.
// A folder that cannot be listed gives true with nothing done.
bool DeleteTree(const std::string &folder);
// Creates a folder and its parents; an existing folder is fine. False on failure.
bool CreateFolders(const std::string &folder);

} // namespace core
