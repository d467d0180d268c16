// The pure pieces of stills and playback: the still's path and command, the player's command,
// and the position rules of a playback run.
#pragma once

#include <string>

namespace engine {

// The file both the still and the capture of a stopped player are written to: outputFolder +
// on the merge tab outputName, on the scene tab the file name of inputFile, each with its
// extension replaced by "_preview.jpg". outputFolder is used as it stands (it ends in "/").
std::string PreviewImagePath(const std::string &outputFolder,
                             const std::string &inputFile,
                             const std::string &outputName,
                             bool bMergeMode);

// The time text of a still: strTime, or "0.000000" when it is empty.
std::string PreviewTimeText(const std::string &strTime);

// The command of one still: "ffmpeg -y " (with bUseCuda "ffmpeg -y -hwaccel cuda "), then
// "-ss <time> -i \"<file>\" -frames:v 1 -vf \"<chain>\" \"<stillPath>\"". The seek before the
// input keeps a still short.
std::string BuildStillCommand(bool bUseCuda,
                              const std::string &timeText,
                              const std::string &file,
                              const std::string &chain,
                              const std::string &stillPath);

// What a player command is made of.
struct PlayerArgs
{
    int left = 0; // screen position of the picture pane, where the player opens
    int top = 0;
    std::string ss;    // start, seconds as text, handed on unchanged
    std::string file;  // the file played
    std::string t;     // length, seconds as text
    int play_vol = 0;  // 0 to 100
    std::string chain; // the picture chain ending in the preview square, without comma
};

// "ffplay -window_title \"TWREVIEW\" -noborder -autoexit -left %d -top %d -ss %s -i \"%s\" -t %s
// -af \"volume=%.6f\" -vf \"%s,showinfo\"" with play_vol / 100. The showinfo lines tell the
// position; the title lets the tab find the player's window.
std::string BuildPlayerCommand(const PlayerArgs &args);

// A playback starts from the beginning when the position text is "0" or the position stands at
// or beyond the last frame (frame_num - 1).
bool IsPlaybackRestart(const std::string &strPreviewTime, int nPreviewFrame, int frame_num);

// Start of the next round of a looping playback: the position text when the position is below
// the last frame (frame_num - 1), else "0.000000".
std::string NextLoopStart(const std::string &strPreviewTime, int nPreviewFrame, int frame_num);

// The row with which job 1029 begins: list_idx, or the row after it when play_loop is set, the
// last playback reached the end of its file (nPreviewFrame at or beyond frame_num - 1) and a
// row follows among the n rows.
int FirstSceneToPlay(int list_idx, int n, bool play_loop, int nPreviewFrame, int frame_num);

} // namespace engine
