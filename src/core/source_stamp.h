// The record of which source file a working file (a working MP4, a converted merge segment) was
// made from, kept in a small file beside it: a file found under its name is used again only
// when it was made from the same source, not from another file of the same name.
#pragma once

#include <string>

namespace core {

// The record's file for file: ".<name without its extension>.source" in file's folder (the
// files recorded are all MP4 files).
std::string SourceStampPath(const std::string &file);

// The record of source as it stands now: its real path (links followed), size and modification
// time, as one line of JSON. Empty when source cannot be read.
std::string SourceStampOf(const std::string &source);

// Writes the record of source beside file, atomically; to be called when file has just been
// made whole from source. False when source cannot be read or the record cannot be written.
bool WriteSourceStamp(const std::string &file, const std::string &source);

// Removes the record of file, before file is made anew: a run killed meanwhile leaves a file
// without a record, which is not trusted.
void RemoveSourceStamp(const std::string &file);

// True only when file exists and its record names source with the size and modification time
// that source has now. A file without a record (made before records were kept) is not trusted.
bool MadeFromSource(const std::string &file, const std::string &source);

} // namespace core
