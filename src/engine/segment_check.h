// Whether a segment's video stream really reaches the end that its header announces: the
// ffprobe command that reads only the packets of the file's last stretch, and the reading of
// its answer. A cut short file keeps the header of the whole one.
#pragma once

#include <string>

namespace engine {

// ffprobe of path's first video stream: its stated duration, and the time and length of every
// packet from the last key frame on (a seek to the end), as JSON. No picture is decoded.
std::string StreamEndCommand(const std::string &path);

// From StreamEndCommand's JSON: true when the last packet read ends where the stream's stated
// duration does (within half a packet), false when the packets end earlier, none could be
// read, or the text cannot be read. A stream that states no duration counts as whole.
bool StreamReachesItsEnd(const std::string &json);

} // namespace engine
