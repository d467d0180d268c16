// The pure pieces of the final render: file names of the merge, the plan of merge levels, the
// concat list, and the command texts of the merge and the final encode.
#pragma once

#include <string>
#include <vector>

namespace render {

// Names of one render, from output_folder (ending in "/") and base (the input's file name
// without extension).
struct TrimNames
{
    std::string folder;
    std::string base;

    // "_merged*.mp4": every merge file of the render, deleted before, on failure and after.
    std::string MergeMask() const { return folder + base + "_merged*.mp4"; }
    // The film before the final encode: "%s%s_merged.mp4".
    std::string Merged() const { return folder + base + "_merged.mp4"; }
    // An intermediate of a merge level: "%s%s_merged_%d.mp4".
    std::string MergedPart(int number) const;
    // The concat demuxer's list: "_filelist.txt".
    std::string FileList() const { return folder + base + "_filelist.txt"; }
};

// Most inputs in one merge graph: min(25, the whole number nearest to
// 8388608 / (width x height) x 10). 25 up to about 2.1 million pixels; 10 at 3840x2160, 9 at
// 4096x2160. A picture without pixels gives 25.
int MergeBatchSize(int width, int height);

// One run of the merge: inputs [first, first + count) of the level's list become one file.
struct MergeGroup
{
    size_t first = 0;
    size_t count = 0;
    int progressBase = 0;  // frames of the earlier runs, for the progress line
    double duration = 0.0; // the group's durations minus (count - 1) fades
};

// The merge in levels: groups of nBatch inputs from the front (the last takes the rest) make
// the next level's list, until one entry is left. The last level has one group, the whole list.
struct MergePlan
{
    std::vector<std::vector<MergeGroup>> levels;
    int nPlanned = 0; // frames of all runs together: the progress total
};

// Plans the merge of inputs with the given durations. Each group adds the whole number nearest
// to its duration x fps to the running sum. No levels for fewer than two inputs.
MergePlan PlanMerge(const std::vector<double> &durations, int nBatch, double fade, double fps);

// Frames of the film after a merge with fades: floor((nTotal / fps - (nCount - 1) x fade) x
// fps), nTotal / fps taken as 0 when fps is not above 0. A product that misses a whole number
// only by the rounding of doubles counts as that number.
int FadedFrameCount(int nTotal, double fps, int nCount, double fade);

// The concat demuxer's list: a line "file '<name>'" for every file. A single quote in a name
// closes the quoted text, stands escaped and opens it again ('\''), so that any name the
// program accepts reaches the demuxer whole.
std::string ConcatListText(const std::vector<std::string> &files);

// What every encode of the render shares.
struct EncodeArgs
{
    std::string prefix;       // "ffmpeg -y " or "ffmpeg -y -hwaccel cuda "
    std::string encoderText;  // the text behind "-c:v "
    double fps = 0.0;         // rounded to the nearest whole number for "-g"
    std::string r_frame_rate; // behind "-r"
};

// The merge through the concat demuxer, without transition, to merged.
std::string
ConcatMergeCommand(const EncodeArgs &args, const std::string &listFile, const std::string &merged);

// One merge graph run: an "-i" per input, the graph, its video label and (bAudio) audio label.
std::string GraphMergeCommand(const EncodeArgs &args,
                              const std::vector<std::string> &inputs,
                              const std::string &graph,
                              bool bAudio,
                              const std::string &name);

// The final encode of merged to output, with the picture chain (which ends in "," or is empty)
// in front of the time-stamp reset. With frames above 0 the film ends where the job planned it:
// its picture at that many frames, and its sound, padded with silence where it is shorter, at
// the same moment (frames / args.fps seconds).
std::string FinalEncodeCommand(const EncodeArgs &args,
                               const std::string &merged,
                               const std::string &chain,
                               const std::string &output,
                               int frames = 0);

} // namespace render
