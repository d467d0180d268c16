// The scene workspace as a model of state and commands: one video turned into a list of
// scenes and one finished film. The window's widgets and the command line are views of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workspace/caption_edit.h"
#include "workspace/scene_edit.h"
#include "workspace/scene_list.h"
#include "workspace/tab_base.h"

namespace workspace {

// The ranged values of the tab, for the commit and spin commands.
enum class ValueField {
    Threshold,
    ValidMinUnit,
    CutMinUnit,
    Brightness,
    Saturation,
    Contrast,
    Gamma
};

// String ids of the messages the model shows through TabView::ShowError; each takes the file.
inline constexpr int kIdsFileMissing = 3200;
inline constexpr int kIdsNotAVideo = 3201;
inline constexpr int kIdsFolderDropped = 3202;
inline constexpr int kIdsProjectUnreadable = 3203;
inline constexpr int kIdsProjectInputGone = 3204;
inline constexpr int kIdsFolderNotMade = 3205;
inline constexpr int kIdsPathUnusable = 3206;    // a character no tool's command text can carry
inline constexpr int kIdsNameTooLong = 3207;     // no room for the names made from it
inline constexpr int kIdsPictureTooSmall = 3340; // no pixel left to compare at the scan's size
inline constexpr int kIdsFilmNotMp4 = 3380;      // a film's name that does not end in ".mp4"

// The video file chooser's filter and the finished film's.
extern const char *const kVideoFilter;
extern const char *const kMp4Filter;
extern const char *const kProjectFilter;

// What the last reading of a project file found.
struct ProjectReadReport
{
    bool bRead = false;
    std::string error;                 // why the file could not be read
    std::vector<std::string> warnings; // values that cannot be right, one line each
};

class CTarnwickTabScene : public CTarnwickTab
{
public:
    CTarnwickTabScene(TabView &view, engine::MessageLoop &loop, engine::EngineHost &host);
    ~CTarnwickTabScene() override;

    // The tab's start: an empty project (keeping project_file when that file exists), the
    // status bar, list, fields and controls shown, and the engine's queue thread started.
    void Init();

    // ---- Files and projects ----
    // 0 on success; -1 when the file does not exist; else the failing step's result.
    int OpenVideo(const std::string &given);
    // OpenVideo for a scene extraction that follows at once (the command line's scan, extract
    // and run): the analysis cuts no scene, since the extraction empties the list, and a
    // picture too small to scan is refused before anything changes (message 3340, -1, and
    // LastAnalysis().bPictureTooSmall).
    int OpenVideoToExtract(const std::string &given);
    // 0 on success; -1 when the file does not exist or cannot be read; else the analysis' result.
    int OpenProject(const std::string &given, bool bForce);
    // Opens the project file for its list alone, without its video: list, captions and fields
    // as the project keeps them (lengths at the input's rate), no analysis, and the input need
    // not exist. For reviewing and editing the list; a job needs OpenProject. 0, or -1 with a
    // message when the file cannot be read (the workspace as it was). What the reading found
    // is in LastProjectRead.
    int OpenProjectList(const std::string &given);
    const ProjectReadReport &LastProjectRead() const { return m_projectRead; }
    // Called with project_file after every successful opening of a video or project (the
    // host enters it in the recent list and saves the settings). Owning thread.
    void SetOpenNotice(std::function<void(const std::string &)> notice)
    {
        m_openNotice = std::move(notice);
    }
    // Writes the project (see bAutoSave); false, with the reason in LastSaveError, when the
    // file could not be written. True when nothing was to be written.
    bool SaveProject(bool bForce);
    // Save as: false when the file could not be written (project_file keeps its value), with
    // the reason in LastSaveError.
    bool SaveProjectAs(const std::string &path);
    const std::string &LastSaveError() const { return m_saveError; }
    void ClearProject(bool bUpdateControls);
    void ResetScenes(bool bMakeDefault);
    void MarkPictureChanged();
    void ChangeOutputFolder(const std::string &oldFolder, const std::string &newFolder);
    // Dropped files: the first that can be read counts.
    void DropFiles(const std::vector<std::string> &paths);
    // The names a project for video takes (project file, output folder and film's name where
    // not set yet, frame times file, default title where empty), set before the video is
    // opened so that they can be checked and locked first; the open keeps them. input_file
    // names video with bNameInput (a still of the video shown without opening it), else it
    // stays empty for the open to set.
    void PlanProjectNames(const std::string &video, bool bNameInput);
    // The output folder and the film's name the next open takes, set before it and as given
    // (the folder with its trailing separator): nothing moves and nothing opens again, as
    // ChangeOutputNames does for a project that is open.
    void PresetOutputNames(const std::string &folder, const std::string &name);

    // ---- Commands of the controls ----
    void BrowseInput();
    void InputPathConfirmed(const std::string &text);
    void BrowseOutputFolder();
    void OutputFolderConfirmed(const std::string &text);
    void ChooseOutputFile();
    void OutputNameConfirmed(const std::string &text);
    // The output folder and the film's name set together, as the output file chooser sets
    // them (an empty text keeps its value): the paths follow the folder, and the project is
    // saved and opened again once. The opening's result; 0 when nothing changed, -1 when the
    // folder cannot be made (nothing changed then).
    int ChangeOutputNames(const std::string &folderText, const std::string &nameText);
    void ClearOutputFolder();
    void OpenProjectDialog();
    void SaveProjectAsDialog();
    void ExtractScenes();
    void ExtractAndOutput();
    void SegmentOutput();
    void FinalOutput();
    void ShowInput();
    void ShowOutput();
    // The play button with the input on show: the player from seconds (plain decimal text;
    // empty: where the last playback stopped, or the start; past the end: the start again). The
    // position arrives through the view's position readout.
    void PlayInput(const std::string &seconds);
    // Where the last playback stopped, as seconds text that PlayInput takes unchanged.
    std::string PlayPosition() const;
    // The time a PlayInput from seconds starts at, as the player gets it.
    std::string PlayStart(const std::string &seconds) const;
    void SetTransition(bool bOn);
    void SetCinemaScope(bool bOn);
    void SetPrimaries(bool bOn);
    void SetSceneLoop(bool bOn);
    void SetPlayLoop(bool bOn);
    // A value box committed: trimmed, parsed, clamped, shown in its normal form, saved.
    void CommitValue(ValueField field, const std::string &text);
    // A spin button: one step up (direction > 0) or down.
    void SpinValue(ValueField field, int direction);
    void ResetScanSettings();
    void ResetPicture();
    void ResetSceneList();
    void AutoPicture();
    // The result of the last automatic picture (0: the values were measured and set).
    int LastAutoPictureResult() const { return m_nAutoPictureResult; }
    // Scene extraction cuts each scene while it scans (the default); off, it only lists them
    // and writes nothing.
    void SetCutWhileScanning(bool bCut);

    // ---- The scene list ----
    void SelectRow(int nRow, int nColumn) override;
    void SetRowChecked(int nRow, bool bChecked);
    // Whether a cell editor is open, with its bounds and text.
    bool CellEditOpen() const { return m_bCellEdit; }
    const core::ParamRange &CellValue() const { return m_CellValue; }
    void OnCellEdited(const std::string &text);
    ContextMenu ContextMenuAt(int nRow, int nColumn) const;
    void SplitRow();
    void DeleteRow();
    void DuplicateRow();
    // One edit of the list as a command names it by scene number (tick, split at a frame, move,
    // a caption, the title...; see SceneEdit), then the list shown again. Empty, or why the
    // edit cannot be made, with the project unchanged then. Not while a job runs.
    std::string ApplyEdit(const SceneEdit &edit);
    // Edits in the order given, all or none: each is checked and made on a copy of the list,
    // and only when all can be made does the project take them; the segments they made stale
    // are deleted last. Empty, or why the first that cannot be made cannot.
    std::string ApplyEdits(const std::vector<SceneEdit> &edits);

    // ---- Captions ----
    void NextCaptionTarget();
    void CaptionTextConfirmed(const std::string &text);
    void CaptionStartConfirmed(const std::string &text);
    void CaptionEndConfirmed(const std::string &text);
    void StepCaptionStart(int direction);
    void StepCaptionEnd(int direction);
    void CaptionPositionChanged(int index);
    void ChooseFont(const FontChoice &font);
    FontChoice FontDialogSeed() const { return m_captions.FontDialogSeed(); }
    void ResetCaptions();
    void AutoCaptions();
    // The title's text exactly as given (a command line's text is its text: not trimmed);
    // empty means no title. The caption boxes follow; the project is saved.
    void SetTitleText(const std::string &text);
    // No watermark in the film: its text emptied, the boxes following; the project is saved.
    void RemoveWatermark();
    const CaptionEditor &Captions() const { return m_captions; }

    void OnInputAnalysed(bool bKeepSelection) override;

    FieldTexts Fields() const override;
    std::vector<ListRow> ListRows() const override;
    std::string InputSummary() const;

protected:
    ControlStates ComputeControls(bool bEnable) const override;
    void OnScenesChanged(const engine::JobMessage &msg) override;
    void OnRenderJobStart() override { SaveProject(false); }
    // Saves the project; an extraction that ended before it found a scene leaves the default
    // scene first, as a scan without motion does.
    void OnRenderJobEnd() override;
    void RefreshInputSummary() override;
    int SceneOffset() const override;

private:
    core::ParamRange &Value(ValueField field);
    // The value's tail: normal form shown, picture values mark the segment stale, saved.
    void ValueChanged(ValueField field);
    // After a caption command that changed something.
    void CaptionChanged();
    void EnqueueCurrentCheck();
    // Extraction (1053) or extraction and output (1057) on an emptied list; refused, with the
    // list as it was, for a picture too small to scan.
    void StartExtraction(int nJob);
    // Shows message 3340 for file when a width x height picture is too small to scan; true then.
    bool RefuseTooSmallToScan(const std::string &file, int width, int height);
    void DeleteFiles(const std::vector<std::string> &files);
    // Runs the input analysis and what follows it for OpenVideo and OpenProject.
    int AnalyzeInput(bool bProjectLoad);

    // Reads the project file given into the workspace (the previous project saved first):
    // list, captions and fields. 0, or -1 with a message, the workspace as it was.
    int LoadProjectInto(const std::string &path);

    CaptionEditor m_captions;
    ProjectReadReport m_projectRead;
    std::function<void(const std::string &)> m_openNotice;
    std::string m_saveError;
    core::ParamRange m_CellValue;
    bool m_bCellEdit = false;
    bool m_bValueGuard = false;
    std::atomic<int> m_nAutoPictureResult{0};
};

} // namespace workspace
