// tarnwickmp4-cli scenes and edit: the scene list of a saved project as the scene tab shows it,
// and the list commands of the tab (tick, untick, split, delete, duplicate, move, captions,
// title, watermark) applied to it, with the project saved again.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/job_lock.h"
#include "core/tarnwick_data.h"
#include "workspace/scene_edit.h"
#include "workspace/scene_list.h"

namespace cli {
namespace {

constexpr const char *kScenesUsage = "Usage: tarnwickmp4-cli scenes PROJECT [--json]\n";
constexpr const char *kEditUsage =
    "Usage: tarnwickmp4-cli edit PROJECT [--tick N] [--untick N] [--split N AT] [--delete N] "
    "[--duplicate N] [--move N TO] [--caption N TEXT] [--title TEXT] [--watermark TEXT]\n";

bool ParseInt(const std::string &text, int &value)
{
    char *end = nullptr;
    errno = 0;
    long number = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || number < -1000000000 || number > 1000000000) {
        return false;
    }
    value = static_cast<int>(number);
    return true;
}

// Opens the project named by path on the session's scene tab, its list alone; prints why not
// on err and returns false.
bool OpenList(const char *command, const std::string &path, ScanSession &session, std::ostream &err)
{
    const std::string head = std::string("tarnwickmp4-cli ") + command + ": ";
    std::string problem = UnusablePath(path);
    if (!problem.empty()) {
        err << head << PrintablePath(path) << ": " << problem << "\n";
        return false;
    }
    return session.OpenProjectList(path, head, err);
}

void PrintScenesJson(const core::CTarnwickData &data, std::ostream &out)
{
    const workspace::StartFrames starts =
        workspace::ComputeStartFrames(data, workspace::ListKind::Scene);
    const double fps = data.viCurrent.fps;
    nlohmann::ordered_json root;
    root["project"] = data.project_file;
    root["fps"] = fps;
    root["transition"] = data.transition != 0;
    root["scenes"] = nlohmann::ordered_json::array();
    for (size_t i = 0; i < data.diff_list.size(); ++i) {
        const core::SceneEntry &scene = data.diff_list[i];
        const int frames = scene.framNo_second - scene.framNo_first + 1;
        nlohmann::ordered_json item;
        item["number"] = i + 1;
        item["ticked"] = scene.bEnable;
        item["first"] = scene.framNo_first;
        item["last"] = scene.framNo_second;
        item["frames"] = frames;
        item["seconds"] = fps > 0 ? frames / fps : 0.0;
        item["caption"] = scene.capParam.caption;
        item["caption_start"] = scene.capParam.capTime_first;
        item["caption_length"] = scene.capParam.capTime_second;
        item["output_start"] = starts.rowStart[i] ? nlohmann::ordered_json(*starts.rowStart[i])
                                                  : nlohmann::ordered_json();
        item["segment"] = scene.fileName;
        root["scenes"].push_back(item);
    }
    out << root.dump(4) << "\n";
}

// The list as the tab shows it, one line per row.
void PrintScenesTable(const std::vector<workspace::ListRow> &rows, std::ostream &out)
{
    out << "  No  Tick   First    Last  Frames  Length       Caption start/length  Output at"
           "   Caption\n";
    for (const workspace::ListRow &row : rows) {
        std::vector<std::string> c = row.columns;
        c.resize(9);
        out << std::setw(4) << c[0] << "  " << (row.bChecked ? "[x]" : "[ ]") << std::setw(8)
            << c[1] << std::setw(8) << c[2] << std::setw(8) << c[3] << "  " << c[4] << "  "
            << std::setw(8) << c[6] << "/" << std::setw(8) << c[7] << "  " << std::setw(9)
            << (c[8].empty() ? "-" : c[8] + " ") << "  " << c[5] << "\n";
    }
}

// The edits of the command line in the order given; false on a malformed option.
bool ParseEdits(const std::vector<std::string> &args,
                std::string &project,
                std::vector<workspace::SceneEdit> &edits)
{
    using Kind = workspace::SceneEdit::Kind;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        auto need = [&](size_t n) { return i + n < args.size(); };
        workspace::SceneEdit edit;
        if (arg == "--title" || arg == "--watermark") {
            if (!need(1)) {
                return false;
            }
            edit.kind = arg == "--title" ? Kind::Title : Kind::Watermark;
            edit.text = args[++i];
        } else if (arg == "--tick" || arg == "--untick" || arg == "--delete" ||
                   arg == "--duplicate") {
            if (!need(1) || !ParseInt(args[i + 1], edit.nScene)) {
                return false;
            }
            ++i;
            edit.kind = arg == "--tick"     ? Kind::Tick
                        : arg == "--untick" ? Kind::Untick
                        : arg == "--delete" ? Kind::Delete
                                            : Kind::Duplicate;
        } else if (arg == "--split" || arg == "--move") {
            if (!need(2) || !ParseInt(args[i + 1], edit.nScene) ||
                !ParseInt(args[i + 2], edit.nValue)) {
                return false;
            }
            i += 2;
            edit.kind = arg == "--split" ? Kind::Split : Kind::Move;
        } else if (arg == "--caption") {
            if (!need(2) || !ParseInt(args[i + 1], edit.nScene)) {
                return false;
            }
            edit.kind = Kind::Caption;
            edit.text = args[i + 2];
            i += 2;
        } else if (arg.size() > 1 && arg[0] == '-') {
            return false;
        } else if (project.empty() && !arg.empty()) {
            project = arg;
            continue;
        } else {
            return false;
        }
        edits.push_back(edit);
    }
    return !project.empty();
}

} // namespace

int RunScenes(const std::vector<std::string> &args, CliOutput &io)
{
    std::string project;
    bool json = false;
    for (const std::string &arg : args) {
        if (arg == "--json") {
            json = true;
        } else if (project.empty() && !arg.empty() && arg[0] != '-') {
            project = arg;
        } else {
            io.err << kScenesUsage;
            return kExitBadInput;
        }
    }
    if (project.empty()) {
        io.err << kScenesUsage;
        return kExitBadInput;
    }
    ScanSession session;
    if (!OpenList("scenes", project, session, io.err)) {
        return kExitBadInput;
    }
    if (json) {
        PrintScenesJson(session.data, io.out);
    } else {
        PrintScenesTable(session.Tab().ListRows(), io.out);
    }
    return kExitOk;
}

int RunEdit(const std::vector<std::string> &args, CliOutput &io)
{
    std::string project;
    std::vector<workspace::SceneEdit> edits;
    if (!ParseEdits(args, project, edits)) {
        io.err << kEditUsage;
        return kExitBadInput;
    }
    const std::string head = "tarnwickmp4-cli edit: ";
    ScanSession session;
    if (!OpenList("edit", project, session, io.err)) {
        return kExitBadInput;
    }
    workspace::CTarnwickTabScene &tab = session.Tab();
    const std::string file = session.data.project_file;
    core::JobLock lock;
    std::string problem;
    if (!lock.TryAcquire(core::ProjectLockPath(file), "edit " + project, &problem)) {
        io.err << head << "the project " << file << " " << problem << "\n";
        return kExitFailed;
    }
    for (const workspace::SceneEdit &edit : edits) {
        problem = tab.ApplyEdit(edit);
        if (!problem.empty()) {
            io.err << head << project << ": " << problem << "; nothing was saved\n";
            return kExitBadInput;
        }
    }
    if (!tab.SaveProjectAs(file)) {
        io.err << head << tab.LastSaveError() << "\n";
        return kExitFailed;
    }
    PrintScenesTable(tab.ListRows(), io.out);
    return kExitOk;
}

} // namespace cli
