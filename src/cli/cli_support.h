// Pieces the commands share: the checks of input files, paths and output options, ffprobe's
// error lines and temporary folders.
#pragma once

#include <functional>
#include <string>

namespace cli {

// Why path cannot be handed to a tool, in its absolute form, as a phrase for a message: "the
// path contains a double quote, which a tool's command line cannot carry; rename it or its
// folder". Empty when it can.
std::string UnusablePath(const std::string &path);

// What is wrong with --output-folder DIR or --output-name NAME (either may be empty: not
// given), as a whole message line without the command's name; empty when both can be used. A
// name must be a file name, without "/", that ends in ".mp4" (any case).
std::string CheckOutputOptions(const std::string &folder, const std::string &name);

// path with every control character shown as "?", so that a message stays one line.
std::string PrintablePath(const std::string &path);

// Why file cannot be read before any tool runs: UnusablePath's phrase, "does not exist",
// folderProblem when it names a folder, unreadableProblem when it cannot be read; empty when
// it can be tried.
std::string
CheckInputFile(const std::string &file, const char *folderProblem, const char *unreadableProblem);

// Why the files made from the file name of path (segments, working files, locks) would pass the
// 255 bytes a file name may have, as a phrase: "the file name is 230 bytes long without its
// extension; ..."; empty when there is room.
std::string NameRoomProblem(const std::string &path);

// The lines of ffprobe's error output in text, without the JSON around them, each passed
// through tidy when one is given, joined with "; ". Empty when there are none.
std::string FfprobeErrorLines(const std::string &text,
                              const std::function<void(std::string &line)> &tidy = {});

// A fresh folder of this run under the system's temporary folder, named prefix and six
// random characters, ending in "/"; empty when none can be made.
std::string MakeTemporaryFolder(const char *prefix);

} // namespace cli
