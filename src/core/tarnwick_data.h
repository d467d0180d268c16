// Project data model: the whole state of one workspace and its records.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace core {

struct AppSettingsRecord;
class RecentFileList;

// A bounded numeric parameter, shown in an edit control.
struct ParamRange
{
    double dValue = 0.0;
    double dMin = 0.0;
    double dMax = 0.0;
    double dStep = 0.001; // spin step; 0.001 until ResetProject sets the table's step
    std::string strText;  // the value as displayed
    int nType = 0;        // 1: integer ("%d"); otherwise decimal (UpdateParamText)
};

// One caption: scene caption, watermark or title.
struct CapParam
{
    double capTime_first = 0.0;  // seconds
    double capTime_second = 0.0; // seconds
    std::string caption;         // may begin with an ASS override block
    int cap_pos_type = 2;        // alignment number
    std::string font_name = "Yu Gothic UI";
    int font_size = 24;
    uint32_t color = 0xFFFFFF; // ASS colour value AABBGGRR
    int bold = 0;
    int italic = 0;
    int underline = 0;
    int strike_uut = 0;
    int encoding = 128; // font character set
    int outline = 2;
};

// The stream facts of one video file.
struct VideoInfo
{
    std::string r_frame_rate; // rate as a fraction, such as "30000/1001"
    double fps = 0.0;
    int frame_num = 0;
    int width = 0;
    int height = 0;
    int rotation = 0; // degrees; 90 or -90 swaps width and height for display
    int start_frame = 0;
    std::string field_order; // "progressive" or another tool value
    int sar_num = 1;
    int sar_den = 1;
    bool bHasAudio = false;
};

// One element of diff_list: a scene on the scene tab, a source file on the merge tab.
struct SceneEntry
{
    SceneEntry() = default;
    // A scene made from frame numbers: both flags set, everything else default.
    SceneEntry(int first, int last, const std::string &file);

    // Stores both times rounded to hundredths ("%.02f" read back) and the text.
    void SetCaption(double firstSeconds, double lastSeconds, const std::string &text);

    bool bAnalyzed = false;
    bool bEnable = true;
    int framNo_first = 0;  // inclusive
    int framNo_second = 0; // inclusive
    std::string strOriginalFile;
    std::string strWorkFile;
    std::string fileName; // full path of the segment file
    CapParam capParam;
    VideoInfo viIn;
    VideoInfo viOut;
};

// Main window rectangle, as saved in the settings.
struct WindowRect
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

// A mutex that travels with a record without being copied: a copy gets a fresh mutex.
struct CopyableMutex
{
    CopyableMutex() = default;
    CopyableMutex(const CopyableMutex &) {}
    CopyableMutex &operator=(const CopyableMutex &) { return *this; }
    mutable std::mutex m;
};

// The picture values of a project as the filter chain uses them.
struct PictureValues
{
    double brightness = 0.0;
    double contrast = 1.0;
    double saturation = 1.0;
    double gamma = 1.0;
    int primaries = 0;
    int cine_sco = 0;
};

// The whole state of one workspace. Two instances live as long as the program, one per tab.
class CTarnwickData
{
public:
    CTarnwickData();
    virtual ~CTarnwickData() = default;

    // Returns the instance to a fresh project; see the field comments for what survives.
    // Takes sceneLock while it touches diff_list, so the caller must not hold it.
    void ResetProject(bool keepProjectPath);
    // The window title of the project; the scene tab hands it to its view.
    std::string BuildTitle() const;
    // The picture values, as a copy.
    PictureValues Picture() const;

    // Project file (.twproj). Save: false when the file cannot be written, data unchanged.
    // Load: false when the file cannot be read or parsed, is larger or nested deeper than any
    // project (kMaxProjectFileBytes, kMaxProjectNesting, kMaxProjectScenes in
    // core/project_file.h), has a root that is not an object, or holds a wrong type inside a
    // scene or caption; the data is then exactly as before the call. pError, when given,
    // receives a one-line reason on failure: "<path>: <reason>", a type error naming its field,
    // "<path>: diff_list[2].framNo_first (scene 3): expected a number, found a string".
    // pWarnings, when given, is emptied and on success receives one line per value that cannot
    // be right, without the path: root keys of a wrong type that were skipped, a missing or
    // empty input_file, scenes or captions that are not objects, parameters clamped to their
    // bounds, integers that do not fit 32 bits, and all that CheckProjectData finds.
    bool SaveProjectFile(const std::string &path, std::string *pError = nullptr);
    bool LoadProjectFile(const std::string &path,
                         std::string *pError = nullptr,
                         std::vector<std::string> *pWarnings = nullptr);

    // Fills pts_list from a CSV of frame times, or evenly from viInput when the file is
    // missing. True when the list is not empty, or when the file opened. A missing file with
    // viInput.fps not above 0 gives an empty list and false.
    bool LoadPtsList(const std::string &path);

    // Settings transfer with the 892-byte record.
    void CaptureSettings(AppSettingsRecord &record, RecentFileList &recent) const;
    void ApplySettings(const AppSettingsRecord &record);

    // output_folder + output_name, or empty when either is empty.
    std::string GetOutputPath() const;

    // The merge analysis points input_file at each file of its list in turn, and the
    // analyses set input_mp4_file, from their threads under sceneLock. Code on other threads
    // reads and writes the two through these, which take sceneLock.
    std::string InputFile() const;
    void SetInputFile(const std::string &path);
    // The file a player shows for the input: input_mp4_file, or input_file without one.
    std::string PlayableInput() const;
    // list_idx and viCurrent, which scans, analyses and stills also write from their
    // threads, read under sceneLock.
    int SelectedRow() const;
    VideoInfo CurrentVideo() const;

    // Time text of a frame at viCurrent.fps, truncated to hundredths: "%02d:%02d:%02d.%02d".
    std::string FrameToTimeCode(int frame) const;
    // The same at a rate the caller read (under sceneLock, where workers write viCurrent).
    static std::string TruncatedTimeCodeAt(int frame, double fps);
    // The same at fps (viCurrent.fps when fps is not above 0), without truncation.
    std::string FrameToTimeCodeAt(int frame, double fps) const;
    // Seconds of a frame as in FrameToTimeCodeAt, formatted with a printf format.
    std::string FrameToText(int frame, double fps, const char *format) const;

    std::string project_file;
    std::string input_file;
    std::string input_mp4_file;
    std::string output_folder;
    std::string output_name;
    std::string pts_file;
    std::vector<SceneEntry> diff_list;
    int cine_sco = 0;
    int transition = 0;
    int primaries = 0;
    ParamRange threshold;
    ParamRange brightness;
    ParamRange saturation;
    ParamRange contrast;
    ParamRange gamma;
    ParamRange valid_min_unit;
    ParamRange cut_min_unit;
    int bUseCuda = 0;
    int bAutoSave = 0;
    int bReopenLast = 0;
    WindowRect rcMainWindow;
    int play_scene_loop = 0;
    int play_loop = 0; // survives ResetProject on purpose
    int list_idx = -1;
    int nListSubItem = -1;
    VideoInfo viCurrent;
    VideoInfo viInput;
    VideoInfo viSource;
    int play_vol = 5;
    int nEncodePreset = 0;
    CapParam capWatermark;
    CapParam capTitle;
    std::vector<double> pts_list;
    double dTransitionSec = 0.5;
    double dMeanU = 0.0;
    double dMeanV = 0.0;

    // Guards diff_list (its size and its entries) and list_idx while a job thread appends
    // scenes and pool threads correct their own entries. Readers on other threads take it
    // for as long as they look at the list.
    CopyableMutex sceneLock;
};

// True when a CUDA driver is present and reports at least one device. The driver is asked
// once per process; safe on any thread.
bool HasCuda();

// The default caption records of a new project.
CapParam DefaultWatermark();
CapParam DefaultTitle();

} // namespace core
