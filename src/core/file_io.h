// Whole-file reading and atomic writing, for files that must never be seen half written.
#pragma once

#include <string>

namespace core {

// Reads the whole of a regular file into bytes. Anything else (a folder, a pipe, a device) is
// refused, so that a reader can neither block nor run forever. On failure pError, when given,
// receives "<path>: <reason>" ("cannot open the file: ...", "not a regular file", "cannot read
// the file: ...").
bool ReadRegularFile(const std::string &path, std::string &bytes, std::string *pError = nullptr);

// Writes bytes to "<path>.tmp" beside path, flushes it to disk and renames it over path, so that
// path holds either its old or its new content, never a half file. An existing target keeps its
// permission bits. A path that is (or runs through) a symbolic link is written through it: the
// file the link names is replaced, in its own folder, and the link stays. On failure path is
// untouched, the temporary file is removed and pError, when
// given, receives "<path>: cannot write the file: <reason>". Two writers of the same path at the
// same time are not supported.
bool WriteFileAtomically(const std::string &path,
                         const std::string &bytes,
                         std::string *pError = nullptr);

} // namespace core
