// Test support: temporary folders, running tools and the CLI, and making clips with lavfi.
#pragma once

#include <string>
#include <vector>

namespace testsupport {

// A fresh folder under the system's temporary folder, deleted with everything in it at the end.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::string &path() const { return m_path; }
    // path() + "/" + name
    std::string file(const std::string &name) const;

private:
    std::string m_path;
};

struct RunResult
{
    int exitCode = -1; // exit status, or 128 + signal number
    std::string out;   // standard output
    std::string err;   // standard error
};

// Runs a program found on PATH with the given arguments (argv[0] is the program), without a
// shell, and collects its output.
RunResult RunProgram(const std::vector<std::string> &argv);

// Runs the command-line front end with the given arguments.
RunResult RunCli(const std::vector<std::string> &args);

// A command line that its command must refuse, and the problem it must name.
struct ArgumentCase
{
    std::vector<std::string> args;
    std::string problem;
};

// Runs each case: exit 2, nothing on standard output, and on standard error exactly
// "tarnwickmp4-cli COMMAND: PROBLEM" followed by usage (the whole usage line with its "\n").
void ExpectArgumentProblems(const std::string &command,
                            const std::string &usage,
                            const std::vector<ArgumentCase> &cases);

// Makes a video clip with ffmpeg from a lavfi source description, for example
// "testsrc2=size=160x120:rate=25:duration=2". Extra output arguments go before the file name.
// Fails the current test (ADD_FAILURE) and returns false when ffmpeg fails.
bool MakeClip(const std::string &path,
              const std::string &lavfi,
              const std::vector<std::string> &outputArgs = {
                  "-c:v", "libx264", "-pix_fmt", "yuv420p"});

// Makes path from the clip part played 1 + streamLoop times, by stream copy (ffmpeg's
// -stream_loop). Fails the current test (ADD_FAILURE) and returns false when ffmpeg fails.
bool LoopClip(const std::string &path, const std::string &part, int streamLoop);

// Makes an audio-only file with one second of a sine tone in AAC, for example "sound.m4a".
// Fails the current test (ADD_FAILURE) and returns false when ffmpeg fails.
bool MakeSoundClip(const std::string &path);

// Frames of a file's video as ffprobe counts them by decoding; -1 when it cannot read it.
int DecodedFrames(const std::string &path);

// Seconds of a file's first stream of kind ("v" or "a") as ffprobe states them; -1 when the
// file has no such stream.
double StreamSeconds(const std::string &path, const std::string &kind);

// The files in folder whose names contain part, with their paths; none when the folder is
// missing.
std::vector<std::string> FilesMatching(const std::string &folder, const std::string &part);

// The text up to its first line feed, without it.
std::string FirstLine(const std::string &text);

// Reads a whole file; empty when it cannot be read.
std::string ReadFile(const std::string &path);
// Writes a whole file (binary); false on failure.
bool WriteFile(const std::string &path, const std::string &data);

// Number of processes whose command line contains marker (read from /proc).
int CountProcessesWith(const std::string &marker);

// Folder of the shared real recordings.
std::string FootageDir();

} // namespace testsupport
