// What a tab shows and asks, as the models tell it: the interface that a window's widgets and
// the command line implement. A model calls it on the thread that owns the tab's messages.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace workspace {

// Every control of the two tabs whose availability the models decide. Controls that only one
// tab has are never enabled on the other.
enum class Control {
    InputPath,
    BrowseInput,
    OutputFolder,
    BrowseOutputFolder,
    OutputName,
    ChooseOutputFile,
    ShowInput,
    ShowOutput,
    ClearOutputFolder,
    Threshold,
    ValidMinUnit,
    CutMinUnit,
    ResetScanSettings,
    Brightness,
    Saturation,
    Contrast,
    Gamma,
    CinemaScope,
    Primaries,
    ResetPicture,
    AutoPicture,
    Transition,
    ResetSceneList,
    ExtractScenes,    // merge tab: analysis
    SegmentOutput,    // merge tab: convert
    FinalOutput,      // merge tab: merge
    ExtractAndOutput, // merge tab: convert and merge
    Stop,
    SceneList,
    Position,
    Volume,
    Play,
    Back10,
    Forward10,
    BackStep,
    ForwardStep,
    PreviousFrame,
    NextFrame,
    SceneLoop,
    PlayLoop,
    CaptionTarget,
    CaptionText,
    CaptionStart,
    CaptionEnd,
    CaptionPosition,
    Font,
    ResetCaptions,
    AutoCaptions,
    Help,
    PictureSize, // merge tab
    FrameRate,   // merge tab
    Count
};
inline constexpr size_t kControlCount = static_cast<size_t>(Control::Count);

// Which controls are on, and the labels that depend on state (string ids).
struct ControlStates
{
    std::array<bool, kControlCount> enabled{};
    int nBackStepLabel = 3038;    // 3094 when the output is on show
    int nForwardStepLabel = 3039; // 3095 when the output is on show
    int nAutoCaptionLabel = 3109; // 3024 when a scene has a caption text
    int nCaptionTargetLabel = 3018;
    // The host's tab-switch buttons, from this tab's side: off while a render job runs.
    bool bTabSwitch = true;

    bool On(Control c) const { return enabled[static_cast<size_t>(c)]; }
    void Set(Control c, bool on) { enabled[static_cast<size_t>(c)] = on; }
};

// The contents of the bound controls: what the exchange from fields to controls writes.
struct FieldTexts
{
    std::string inputPath;
    std::string outputFolder;
    std::string outputName;
    std::string threshold;
    std::string validMinUnit;
    std::string cutMinUnit;
    std::string brightness;
    std::string saturation;
    std::string contrast;
    std::string gamma;
    bool bCinemaScope = false;
    bool bPrimaries = false;
    bool bTransition = false;
    bool bSceneLoop = false;
    bool bPlayLoop = false;
    int nVolume = 0;
    std::string captionText;
    std::string captionStart;
    std::string captionEnd;
    int nCaptionPosition = 0;
    int nSizeIndex = 0; // merge tab
    int nRateIndex = 0; // merge tab
};

// One row of a list as the view shows it: its column texts, its check mark and, for an
// unticked row, its colours (0xBBGGRR).
struct ListRow
{
    std::vector<std::string> columns;
    bool bChecked = true;
    std::optional<uint32_t> textColour;
    std::optional<uint32_t> backColour;
};

// The status bar's panes.
inline constexpr int kPaneStage = 0;
inline constexpr int kPaneState = 1;
inline constexpr int kPaneElapsed = 2;
inline constexpr int kPaneProgress = 3;

// The file choosers a tab opens.
struct FileChoice
{
    enum class Kind { OpenVideo, OpenProject, SaveProject, SaveOutput };
    Kind kind = Kind::OpenVideo;
    int nTitleId = 0;
    std::string filter;      // "Name (*.ext)|*.ext|...||"
    std::string defaultExt;  // without the point; empty: none
    std::string initialPath; // folder and name to start on
    bool bMustExist = false;
    bool bAskOverwrite = false;
};

class TabView
{
public:
    virtual ~TabView() = default;

    // The whole list anew; nSelect is selected and shown when not negative.
    virtual void ShowList(const std::vector<ListRow> &rows, int nSelect) = 0;
    // One row rewritten (its index exists on the list).
    virtual void ShowRow(int nRow, const ListRow &row) = 0;
    // The list's current row is nRow now (a row carried by a drag); the list keeps its scroll.
    virtual void SelectListRow(int nRow) = 0;
    virtual void SetStatusPane(int nPane, const std::string &text) = 0;
    virtual void SetProgress(int nPercent) = 0;
    // How much of the stage's total is done (frames, or scenes), as the progress pane shows
    // it; a stage without a total reports 0 of 0 when it begins.
    virtual void SetProgressCount(int nDone, int nTotal) = 0;
    // The position bar, 0 to 1000.
    virtual void SetPositionBar(int nValue) = 0;
    // The position readout and the file summary line.
    virtual void SetPositionText(const std::string &text) = 0;
    virtual void SetFileSummary(const std::string &text) = 0;
    // The line about the input and the planned output.
    virtual void SetInputSummary(const std::string &text) = 0;
    // The window title: the project and the facts of its video.
    virtual void SetTitle(const std::string &title) = 0;
    // A picture file for the picture pane; empty clears it.
    virtual void ShowPicture(const std::string &path) = 0;
    virtual void SetControls(const ControlStates &states) = 0;
    virtual void ShowFields(const FieldTexts &fields) = 0;
    // The wait cursor on or off.
    virtual void SetBusyCursor(bool bBusy) = 0;
    // A question with the message of string id nMessageId; true only for Yes.
    virtual bool AskYesNo(int nMessageId) = 0;
    // A message for the user: which file, what is wrong, what to do.
    virtual void ShowError(const std::string &text) = 0;
    // A file or folder chosen by the user; nothing when cancelled.
    virtual std::optional<std::string> ChooseFile(const FileChoice &choice) = 0;
    virtual std::optional<std::string> ChooseFolder(int nTitleId, const std::string &initial) = 0;
};

} // namespace workspace
