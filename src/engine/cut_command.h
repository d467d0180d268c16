// The command that cuts one scene of the input into its segment: cut times and command text.
#pragma once

#include <string>
#include <vector>

namespace engine {

// Start and length of a cut in seconds, as command-line texts ("%.6f").
struct CutTimes
{
    std::string start;
    std::string duration;
};

// The times of the cut of frames framNo_first..framNo_second (inclusive). From the frame
// numbers at fps (both 0 when fps is not above 0); but when pts_list holds more than
// framNo_second + 1 entries, from the list: start at the first frame's time, end at the time
// of the frame after the scene. The last scene of a file has no such frame and keeps the
// frame-number times. Frame numbers are not checked beyond that.
CutTimes
CutSceneTimes(int framNo_first, int framNo_second, double fps, const std::vector<double> &pts_list);

// What a cut command is made of.
struct CutCommandArgs
{
    std::string prefix;       // "ffmpeg -y " or "ffmpeg -y -hwaccel cuda "
    CutTimes times;           // from CutSceneTimes
    std::string sourcePath;   // the file cut from
    std::string encoderText;  // the text behind "-c:v ", such as "mpeg4 -qscale:v 4"
    double fps = 0.0;         // rounded to the nearest whole number for "-g"
    std::string r_frame_rate; // the input's rate fraction behind "-r"
    std::string fileName;     // the segment written
};

// The whole command text: the seek before the input, a re-encode that starts on a key frame
// with time stamps from zero, AAC audio at 192k and the index at the front of the file.
std::string BuildCutCommand(const CutCommandArgs &args);

} // namespace engine
