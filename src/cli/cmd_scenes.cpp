// tarnwickmp4-cli scenes and edit: the scene list of a saved project as the scene tab shows it,
// and the list commands of the tab (tick, untick, split, delete, duplicate, move, captions,
// title, watermark) applied to it, with the project saved again.
#include <filesystem>
#include <initializer_list>
#include <iomanip>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/job_lock.h"
#include "core/tarnwick_data.h"
#include "workspace/scene_edit.h"
#include "workspace/scene_list.h"

namespace cli {
namespace {

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

// A caption on one line of the table: each line end (LF, CR or CR LF) shows as " / ", a tab
// or other control character as a space.
std::string OneLineCaption(const std::string &text)
{
    std::string line;
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '\r' || c == '\n') {
            line += " / ";
            i += c == '\r' && i + 1 < text.size() && text[i + 1] == '\n' ? 1 : 0;
        } else {
            line += c < 0x20 || c == 0x7F ? ' ' : static_cast<char>(c);
        }
    }
    return line;
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
            << (c[8].empty() ? "-" : c[8] + " ") << "  " << OneLineCaption(c[5]) << "\n";
    }
}

// A number of an edit: scene numbers, frames and positions alike; what the list makes of it
// is the list's to say.
bool ParseEditNumber(const std::string &text, int &value)
{
    return ParseWholeNumber(text, -1000000000, 1000000000, value);
}

// The edits of the command line in the order given. Returns what is wrong with them, or an
// empty text.
std::string ParseEdits(const std::vector<std::string> &args,
                       std::string &project,
                       std::vector<workspace::SceneEdit> &edits)
{
    using Kind = workspace::SceneEdit::Kind;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        workspace::SceneEdit edit;
        // The values that must follow arg, named as the usage line names them ("N", "AT").
        auto need = [&](std::initializer_list<const char *> words) -> std::string {
            if (i + words.size() < args.size()) {
                return "";
            }
            std::string names;
            for (const char *word : words) {
                names += (names.empty() ? "" : " ") + std::string(word);
            }
            return arg + " needs " + names;
        };
        auto notNumber = [&](size_t at, const char *what) {
            return arg + ": \"" + PrintablePath(args[at]) + "\" is not " + what;
        };
        std::string problem;
        if (arg == "--title" || arg == "--watermark") {
            if (!(problem = need({"TEXT"})).empty()) {
                return problem;
            }
            edit.kind = arg == "--title" ? Kind::Title : Kind::Watermark;
            edit.text = args[++i];
        } else if (arg == "--tick" || arg == "--untick" || arg == "--delete" ||
                   arg == "--duplicate") {
            if (!(problem = need({"N"})).empty()) {
                return problem;
            }
            if (!ParseEditNumber(args[i + 1], edit.nScene)) {
                return notNumber(i + 1, "a scene number");
            }
            ++i;
            edit.kind = arg == "--tick"     ? Kind::Tick
                        : arg == "--untick" ? Kind::Untick
                        : arg == "--delete" ? Kind::Delete
                                            : Kind::Duplicate;
        } else if (arg == "--split" || arg == "--move") {
            const bool split = arg == "--split";
            if (!(problem = need({"N", split ? "AT" : "TO"})).empty()) {
                return problem;
            }
            if (!ParseEditNumber(args[i + 1], edit.nScene)) {
                return notNumber(i + 1, "a scene number");
            }
            if (!ParseEditNumber(args[i + 2], edit.nValue)) {
                return notNumber(i + 2, split ? "a frame number" : "a position in the list");
            }
            i += 2;
            edit.kind = split ? Kind::Split : Kind::Move;
        } else if (arg == "--caption") {
            if (!(problem = need({"N", "TEXT"})).empty()) {
                return problem;
            }
            if (!ParseEditNumber(args[i + 1], edit.nScene)) {
                return notNumber(i + 1, "a scene number");
            }
            edit.kind = Kind::Caption;
            edit.text = args[i + 2];
            i += 2;
        } else if (project.empty() && !arg.empty() && arg[0] != '-') {
            project = arg;
            continue;
        } else {
            return UnexpectedArgument(arg);
        }
        edits.push_back(edit);
    }
    return project.empty() ? MissingArgument("PROJECT") : "";
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
            return ArgumentProblem(io, "scenes", UnexpectedArgument(arg));
        }
    }
    if (project.empty()) {
        return ArgumentProblem(io, "scenes", MissingArgument("PROJECT"));
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
    const std::string error = ParseEdits(args, project, edits);
    if (!error.empty()) {
        return ArgumentProblem(io, "edit", error);
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
    // All edits or none: a refused edit leaves the project and its segments as they were.
    problem = tab.ApplyEdits(edits);
    if (!problem.empty()) {
        io.err << head << project << ": " << problem << "; nothing was saved\n";
        return kExitBadInput;
    }
    if (!tab.SaveProjectAs(file)) {
        io.err << head << tab.LastSaveError() << "\n";
        return kExitFailed;
    }
    PrintScenesTable(tab.ListRows(), io.out);
    return kExitOk;
}

} // namespace cli
