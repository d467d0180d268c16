// The scene workspace: its start, files and projects.
#include "workspace/tab_scene.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "core/source_stamp.h"
#include "engine/encoder_presets.h"
#include "engine/input_analysis.h"
#include "engine/scan_command.h"
#include "workspace/scene_defaults.h"
#include "workspace/tab_controls.h"
#include "workspace/tab_files.h"
#include "workspace/tab_link.h"

namespace workspace {

const char *const kVideoFilter =
    "Video Files "
    "(*.mp4;*.mov;*.mkv;*.avi;*.wmv;*.flv;*.webm;*.ts;*.m2ts;*.m2t;*.mpg;*.mpeg;*.asf;*.dat;*.3gp;"
    "*.ogv)|*.mp4;*.mov;*.mkv;*.avi;*.wmv;*.flv;*.webm;*.ts;*.m2ts;*.m2t;*.mpg;*.mpeg;*.asf;*.dat;*"
    ".3gp;*.ogv|MP4 Files (*.mp4)|*.mp4|MOV Files (*.mov)|*.mov|MKV Files (*.mkv)|*.mkv|AVI Files "
    "(*.avi)|*.avi|WMV Files (*.wmv)|*.wmv|FLV Files (*.flv)|*.flv|WebM Files (*.webm)|*.webm|TS "
    "Files (*.ts;*.m2ts;*.m2t)|*.ts;*.m2ts;*.m2t|MPEG Files (*.mpg;*.mpeg)|*.mpg;*.mpeg|ASF Files "
    "(*.asf)|*.asf|DAT Files (*.dat)|*.dat|3GP Files (*.3gp)|*.3gp|OGV Files (*.ogv)|*.ogv|All "
    "Files (*.*)|*.*||";
const char *const kMp4Filter = "MP4 Files (*.mp4)|*.mp4||";
const char *const kProjectFilter = "Project Files (*.twproj)|*.twproj||";

CTarnwickTabScene::CTarnwickTabScene(TabView &view,
                                     engine::MessageLoop &loop,
                                     engine::EngineHost &host)
    : CTarnwickTab(view, loop, host, 0)
{
    m_CellValue.nType = 1;
    m_CellValue.dStep = 1;
}

CTarnwickTabScene::~CTarnwickTabScene()
{
    // The engine's threads end while the tab they report to is whole.
    m_Process.CancelProcess();
    JoinHelpers();
    m_Process.EndThreads();
}

void CTarnwickTabScene::Init()
{
    const bool keepPath = !m_Data.project_file.empty() && Exists(m_Data.project_file);
    m_Data.ResetProject(keepPath);
    m_CellValue = core::ParamRange{};
    m_CellValue.nType = 1;
    m_CellValue.dStep = 1;
    m_bListEvents = 1;
    m_nDragRow = -1;
    m_captions.ResetTarget(m_Data);
    ResetStatusBar();
    RefreshInputSummary();
    UpdatePositionReadout(0, 0, 0);
    FillList(-1);
    m_view.ShowPicture("");
    ShowFields();
    UpdateControls(true);
    m_Process.StartQueueThread(0);
}

// ---- Files and projects ----

int CTarnwickTabScene::OpenVideo(const std::string &given)
{
    const std::string path = given; // a copy: the caller may pass a field that is cleared here
    if (path == m_Data.input_file) {
        return 0;
    }
    m_analysis = AnalysisReport{};
    if (!Exists(path)) {
        ShowFields();
        ReportProblem(kIdsFileMissing, path);
        return -1;
    }
    if (IsFolder(path)) {
        ShowFields();
        ReportProblem(kIdsFolderDropped, path);
        return -1;
    }
    if (RefusePath(path, true)) {
        ShowFields();
        return -1;
    }
    core::VideoInfo probe;
    int r = m_Process.GetVideoInfoFfprobe(path, probe);
    if (r != 0) {
        ShowFields();
        ReportProblem(kIdsNotAVideo, path);
        return r;
    }
    if (m_Process.bOpenForExtraction && RefuseTooSmallToScan(path, probe.width, probe.height)) {
        ShowFields();
        return -1;
    }
    // The folder that will hold segments and working files must be possible before anything
    // of the workspace changes.
    const std::string folder =
        !m_Data.output_folder.empty() ? m_Data.output_folder : path + "_out/";
    if (!core::CreateFolders(folder)) {
        ShowFields();
        ReportProblem(kIdsFolderNotMade, folder, std::strerror(errno));
        return -1;
    }
    m_view.SetBusyCursor(true);
    DisableAllControls();
    ResetStatusBar();
    // An open that replaces one video by another stays in the same project file and output
    // folder and keeps its watermark and title.
    const std::string projectFile = m_Data.project_file;
    const std::string outputFolder = m_Data.output_folder;
    const std::string outputName = m_Data.output_name;
    const core::CapParam watermark = m_Data.capWatermark;
    const core::CapParam title = m_Data.capTitle;
    ClearProject(false);
    m_Data.project_file = projectFile;
    m_Data.output_folder = outputFolder;
    m_Data.output_name = outputName;
    m_Data.capWatermark = watermark;
    m_Data.capTitle = title;
    core::DeriveProjectNames(m_Data, path);
    {
        // The analysis starts from the facts just read: a project saved before it ends knows the
        // video's rate and length already.
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.viInput = probe;
    }
    ShowFields();
    SaveProject(false);
    r = AnalyzeInput(false);
    m_view.SetBusyCursor(false);
    return r;
}

int CTarnwickTabScene::OpenVideoToExtract(const std::string &given)
{
    m_Process.bOpenForExtraction = true;
    const int r = OpenVideo(given);
    m_Process.bOpenForExtraction = false;
    return r;
}

bool CTarnwickTabScene::RefuseTooSmallToScan(const std::string &file, int width, int height)
{
    if (width <= 0 || height <= 0 || !engine::ScanPictureTooSmall(width, height)) {
        return false; // an unknown size is the scan's to find
    }
    m_analysis.bPictureTooSmall = true;
    m_analysis.nWidth = width;
    m_analysis.nHeight = height;
    ReportProblem(kIdsPictureTooSmall, file, core::StrPrintf("%dx%d", width, height));
    return true;
}

int CTarnwickTabScene::AnalyzeInput(bool bProjectLoad)
{
    StartElapsedTimer();
    m_report = JobReport{};
    m_report.nJob = engine::kJobInputAnalysis;
    m_analysis = AnalysisReport{};
    const std::string working =
        core::FileNameForSource(engine::WorkingFilePath(m_Data), m_Data.input_file);
    const bool bWorkingThere = core::MadeFromSource(working, m_Data.input_file);
    const int r = m_Process.AnalyzeInputFile(bProjectLoad, m_Data.SelectedRow());
    m_report.bFinished = true;
    m_report.nResult = r;
    m_analysis.bProbed = m_Data.viSource.width > 0;
    m_analysis.bNeedsWorkingFile =
        !engine::UsedAsItIs(m_Data.input_file, m_Data.viSource.field_order);
    m_analysis.bWorkingFileMade =
        !bWorkingThere && m_Data.input_mp4_file == working && Exists(working);
    switch (m_Process.ptsSource.load()) {
    case engine::CTarnwickProcess::PtsSource::Kept:
        m_analysis.times = TimesOrigin::Kept;
        break;
    case engine::CTarnwickProcess::PtsSource::Computed:
        m_analysis.times = TimesOrigin::Computed;
        break;
    case engine::CTarnwickProcess::PtsSource::Read:
        m_analysis.times = TimesOrigin::Read;
        break;
    default:
        m_analysis.times = TimesOrigin::None;
        break;
    }
    if (r == 0) {
        SaveProject(false);
        if (m_openNotice) {
            m_openNotice(m_Data.project_file);
        }
    }
    StopElapsedTimer();
    UpdateControls(true);
    return r;
}

int CTarnwickTabScene::LoadProjectInto(const std::string &path)
{
    m_projectRead = ProjectReadReport{};
    // Read into a scratch project first: a file that cannot be read leaves the workspace as
    // it was.
    core::CTarnwickData scratch;
    std::string error;
    if (!scratch.LoadProjectFile(path, &error)) {
        m_projectRead.error = error;
        if (!Exists(path)) {
            ReportProblem(kIdsFileMissing, path);
            return -1;
        }
        ReportProblem(kIdsProjectUnreadable, path, error);
        UpdateControls(true);
        return -1;
    }
    m_view.SetBusyCursor(true);
    DisableAllControls();
    if (!m_Data.project_file.empty() && m_Data.project_file != path) {
        SaveProject(false);
    }
    ResetStatusBar();
    const int autoSave = m_Data.bAutoSave;
    const int useCuda = m_Data.bUseCuda;
    ClearProject(false);
    if (!m_Data.LoadProjectFile(path, &error, &m_projectRead.warnings)) {
        m_projectRead.error = error;
        ReportProblem(kIdsProjectUnreadable, path, error);
        StopElapsedTimer();
        UpdateControls(true);
        m_view.SetBusyCursor(false);
        return -1;
    }
    m_projectRead.bRead = true;
    m_Data.bAutoSave = autoSave;
    m_Data.bUseCuda = useCuda;
    m_captions.LoadCaptionFields(m_Data);
    ShowFields();
    RefreshInputSummary();
    return 0;
}

int CTarnwickTabScene::OpenProject(const std::string &given, bool bForce)
{
    // A copy (the caller may pass a field that is cleared here), through its symbolic links: the
    // project is read, saved and locked where it really is.
    const std::string path = core::RealPath(given);
    if (path == m_Data.project_file && m_Data.bAutoSave != 0 && !bForce) {
        return 0;
    }
    m_analysis = AnalysisReport{};
    if (LoadProjectInto(path) != 0) {
        return -1;
    }
    core::VideoInfo probe;
    int r = m_Process.GetVideoInfoFfprobe(m_Data.input_file, probe);
    if (r != 0) {
        // The project stays loaded with its list.
        ReportProblem(kIdsProjectInputGone, m_Data.input_file, path);
        FillList(m_Data.SelectedRow());
        UpdateControls(true);
        m_view.SetBusyCursor(false);
        return r;
    }
    r = AnalyzeInput(true);
    m_view.SetBusyCursor(false);
    return r;
}

int CTarnwickTabScene::OpenProjectList(const std::string &given)
{
    const std::string path = core::RealPath(given);
    m_analysis = AnalysisReport{};
    if (LoadProjectInto(path) != 0) {
        return -1;
    }
    {
        // The list stands for the input as the tab shows it after opening: its lengths and
        // bounds use the input's rate, which the project keeps.
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.viCurrent = m_Data.viInput;
    }
    FillList(m_Data.SelectedRow());
    UpdateControls(true);
    m_view.SetBusyCursor(false);
    return 0;
}

bool CTarnwickTabScene::SaveProject(bool bForce)
{
    if (m_Data.bAutoSave == 0 && !bForce) {
        return true;
    }
    std::string path = m_Data.project_file;
    if (path.empty()) {
        if (m_Data.input_file.empty()) {
            return true;
        }
        path = m_Data.input_file + ".twproj";
    }
    // A failure says nothing here: the next save tries again, and a caller that must know
    // reads LastSaveError.
    m_saveError.clear();
    return m_Data.SaveProjectFile(path, &m_saveError);
}

bool CTarnwickTabScene::SaveProjectAs(const std::string &path)
{
    const std::string previous = m_Data.project_file;
    m_saveError.clear();
    if (!m_Data.SaveProjectFile(core::RealPath(path), &m_saveError)) {
        m_Data.project_file = previous;
        m_view.ShowError(core::LoadStringById(3075));
        return false;
    }
    m_view.SetTitle(m_Data.BuildTitle());
    return true;
}

void CTarnwickTabScene::ClearProject(bool bUpdateControls)
{
    StopProcess();
    m_Data.ResetProject(false);
    m_CellValue = core::ParamRange{};
    m_CellValue.nType = 1;
    m_CellValue.dStep = 1;
    m_bCellEdit = false;
    m_nDragRow = -1;
    m_captions.ResetTarget(m_Data);
    m_Process.strPreviewFile = std::string();
    m_Process.nPreviewFrame = 0;
    m_Process.strPreviewTime = std::string("0");
    m_bListEvents = 0;
    ResetStatusBar();
    FillList(-1);
    RefreshInputSummary();
    m_bListEvents = 1;
    UpdatePositionReadout(0, 0, 0);
    m_view.ShowPicture("");
    ShowFields();
    if (bUpdateControls) {
        UpdateControls(true);
    }
}

void CTarnwickTabScene::ResetScenes(bool bMakeDefault)
{
    if (bMakeDefault) {
        workspace::MakeDefaultScene(m_Data);
        m_CellValue = core::ParamRange{};
        FillList(m_Data.SelectedRow());
        ResetStatusBar();
        m_captions.LoadCaptionFields(m_Data);
        ShowFields();
        core::DeleteByPattern(core::SegmentPattern(m_Data));
        m_Process.EnqueueSceneCheck(m_Data.SelectedRow(), true);
    } else {
        m_captions.ResetTarget(m_Data);
        ShowFields();
        core::DeleteByPattern(core::SegmentPattern(m_Data));
    }
}

void CTarnwickTabScene::MarkPictureChanged()
{
    const int nJob = m_Process.nProcessID;
    if (nJob == engine::kJobPlayInput || nJob == engine::kJobPlayOutput) {
        return; // whole-file previews show no picture filters
    }
    if (nJob == engine::kJobPlayScenes) {
        RunHelper([this] {
            m_Process.CancelProcess();
            m_Process.StartThread(engine::kJobPlayScenes);
        });
        return;
    }
    EnqueueCurrentCheck();
}

void CTarnwickTabScene::EnqueueCurrentCheck()
{
    bool any = false;
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        any = !m_Data.diff_list.empty();
    }
    if (any) {
        m_Process.EnqueueSceneCheck(m_Data.SelectedRow(), true);
    }
}

void CTarnwickTabScene::ChangeOutputFolder(const std::string &oldGiven, const std::string &newGiven)
{
    if (!MoveOutputFolder(oldGiven, newGiven, true)) {
        return;
    }
    SaveProject(false);
    OpenProject(std::string(m_Data.project_file), true);
    UpdateControls(true);
    ShowFields();
}

std::string CTarnwickTabScene::PlayPosition() const
{
    return m_Process.strPreviewTime.get();
}

void CTarnwickTabScene::SetCutWhileScanning(bool bCut)
{
    m_Process.bCutScenes = bCut;
}

void CTarnwickTabScene::DropFiles(const std::vector<std::string> &paths)
{
    if (m_Process.IsRenderJob()) {
        return;
    }
    for (const std::string &dropped : paths) {
        if (IsFolder(dropped)) {
            ReportProblem(kIdsFolderDropped, dropped);
            continue;
        }
        if (!Exists(dropped)) {
            ReportProblem(kIdsFileMissing, dropped);
            continue;
        }
        std::string path = dropped;
        const size_t dot = path.rfind('.');
        std::string ext = dot == std::string::npos ? "" : path.substr(dot);
        std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) {
            return static_cast<char>(std::tolower(c));
        });
        bool bProject = ext == ".twproj";
        if (!bProject && Exists(path + ".twproj")) {
            path += ".twproj";
            bProject = true;
        }
        StopProcess();
        if (bProject && OpenProject(path, false) == 0) {
            return;
        }
        if (path != dropped) {
            // A sibling project that failed falls back to opening the video fresh.
            ClearProject(false);
            OpenVideo(dropped);
        } else if (!bProject) {
            ClearProject(false);
            OpenVideo(dropped);
        }
        return;
    }
}

} // namespace workspace
