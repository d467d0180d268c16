// The reason a tool gives for its failure, picked from what it wrote: the line that tells the
// user what went wrong (a full disk, a folder that cannot be written, a bad argument).
#pragma once

#include <string>

namespace engine {

// The tool's own words for its failure in output (standard output and error as read), without
// the "[name @ 0x...] " in front: the last line that ends in a system error text such as
// ": No space left on device" or ": Is a directory", else the last line that speaks of an
// error, a failure or something invalid ("Conversion failed!", progress lines and the indented
// facts of the streams aside). Empty
// when no line says anything of the kind.
std::string ToolWords(const std::string &output);

// Keeps words as the calling thread's last tool words (CTarnwickProcess::LastToolWords). The
// runner's, after every tool.
void SetLastToolWords(const std::string &words);

} // namespace engine
