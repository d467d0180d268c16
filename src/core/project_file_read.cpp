// Project file (.twproj): the reader, which takes a parsed document into a scratch copy of the
// workspace, names the field of a type error and notes values it skips, clamps or narrows.
#include "core/project_file.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>
#include <strings.h>

#include "core/helpers.h"
#include "core/paths.h"
#include "core/project_file_internal.h"
#include "core/tarnwick_data.h"

namespace core {
namespace {

using nlohmann::json;
using namespace detail;

// The frame-time list of a project is named "<stem>_pts.csv".
constexpr char kPtsSuffix[] = "_pts.csv";

// ---- Reading ----
// Each reader checks a value's type before it takes it, and on a type it cannot take returns
// false with the field named in state.error; LoadProjectFile then refuses the whole file.

// Where a value stands, for messages.
struct Where
{
    std::string path; // from the root: "diff_list[2].capParam.caption"
    int scene = -1;   // index of its scene in diff_list; -1 outside the list

    Where Member(const char *key) const { return {path + "." + key, scene}; }
    // "diff_list[2].capParam.caption (scene 3)"
    std::string Text() const
    {
        return scene < 0 ? path : path + " (scene " + std::to_string(scene + 1) + ")";
    }
};

struct ReadState
{
    ProjectWarnings &warnings;
    std::string error; // the type error that stopped the read: "<field>: expected ..., found ..."
};

bool ReadCaption(const json &value, const Where &where, CapParam &cap, ReadState &state);
bool ReadScenes(const json &array,
                const Where &where,
                std::vector<SceneEntry> &list,
                ReadState &state);

const char *Expectation(Kind kind)
{
    switch (kind) {
    case Kind::String:
        return "a string";
    case Kind::Flag:
    case Kind::Boolean:
        return "true or false";
    case Kind::SceneList:
        return "an array of scenes";
    case Kind::Caption:
        return "a caption object";
    default:
        return "a number";
    }
}

// The types the library converts to the field without an error: an int or a colour takes a
// boolean too, a double does not. Every value is a caption: one that is not an object reads as
// the default caption.
bool Accepts(Kind kind, const json &value)
{
    switch (kind) {
    case Kind::String:
        return value.is_string();
    case Kind::Flag:
    case Kind::Boolean:
        return value.is_boolean();
    case Kind::Integer:
    case Kind::Colour:
        return value.is_number() || value.is_boolean();
    case Kind::Float:
    case Kind::Param:
        return value.is_number();
    case Kind::SceneList:
        return value.is_array();
    case Kind::Caption:
        return true;
    }
    return false;
}

// Integers (and booleans, as the library converts them) are narrowed to 32 bits the way a cast
// does; a float is truncated toward zero and saturated at the limits of int. A number that does
// not come through whole is read all the same, with a warning.
int ReadInt(const json &value, const Where &where, ReadState &state)
{
    int result = 0;
    bool whole = true;
    if (value.is_number_float()) {
        double read = value.get<double>();
        result = static_cast<int>(std::clamp(std::trunc(read), double(INT_MIN), double(INT_MAX)));
        whole = double(result) == read;
    } else {
        result = value.get<int>();
        whole = value.is_boolean() ||
                (value.is_number_unsigned() ? value.get<uint64_t>() <= uint64_t(INT_MAX)
                                            : value.get<int64_t>() == result);
    }
    if (!whole) {
        state.warnings.Add(where.Text() + ": " + value.dump() +
                           " is not a 32-bit whole number; read as " + std::to_string(result));
    }
    return result;
}

// Colours are read from unsigned, signed, float and boolean values alike: a boolean gives 0 or
// 1, a float is truncated toward zero, and every number is reduced modulo 2^32, so -1 reads as
// 0xFFFFFFFF.
uint32_t ReadColour(const json &value)
{
    if (value.is_number_float()) {
        constexpr double kModulus = 4294967296.0;
        double reduced = std::fmod(std::trunc(value.get<double>()), kModulus);
        if (reduced < 0) {
            reduced += kModulus;
        }
        return static_cast<uint32_t>(reduced);
    }
    return value.get<uint32_t>();
}

// Clamped to the parameter's bounds, its text rebuilt; a value outside them is noted.
void ReadParam(const json &value, const Where &where, ParamRange &param, ReadState &state)
{
    double read = value.get<double>();
    param.dValue = std::max(param.dMin, std::min(param.dMax, read));
    UpdateParamText(param);
    if (param.dValue != read) {
        state.warnings.Add(where.Text() + ": " + value.dump() + " is outside " +
                           NumberText(param.dMin) + " to " + NumberText(param.dMax) + "; read as " +
                           param.strText);
    }
}

template <typename T>
bool ReadValue(const json &value, Kind kind, T &field, const Where &where, ReadState &state)
{
    if (!Accepts(kind, value)) {
        state.error = where.Text() + ": expected " + Expectation(kind) + ", found " +
                      detail::JsonTypeText(value);
        return false;
    }
    if constexpr (std::is_same_v<T, int>) {
        field = kind == Kind::Flag ? (value.get<bool>() ? 1 : 0) : ReadInt(value, where, state);
    } else if constexpr (std::is_same_v<T, uint32_t>) {
        field = ReadColour(value);
    } else if constexpr (std::is_same_v<T, ParamRange>) {
        ReadParam(value, where, field, state);
    } else if constexpr (std::is_same_v<T, CapParam>) {
        return ReadCaption(value, where, field, state);
    } else if constexpr (std::is_same_v<T, std::vector<SceneEntry>>) {
        return ReadScenes(value, where, field, state);
    } else {
        field = value.get<T>(); // strings, booleans, floats
    }
    return true;
}

// Reads the caption keys present in object; places limits the rows to those that older files
// hold in that place (kNowhere: every row).
bool ReadCaptionKeys(
    const json &object, unsigned places, const Where &where, CapParam &cap, ReadState &state)
{
    for (const CaptionKey &row : kCaptionKeys) {
        if (places != kNowhere && (row.oldPlaces & places) == 0) {
            continue;
        }
        auto it = object.find(row.key);
        if (it != object.end() &&
            !std::visit(
                [&](auto member) {
                    return ReadValue(*it, row.kind, cap.*member, where.Member(row.key), state);
                },
                row.member)) {
            return false;
        }
    }
    return true;
}

// A value that is not an object reads as a default caption; missing keys keep the defaults.
bool ReadCaption(const json &value, const Where &where, CapParam &cap, ReadState &state)
{
    cap = CapParam();
    if (!value.is_object()) {
        state.warnings.Add(where.Text() + ": expected a caption object, found " +
                           detail::JsonTypeText(value) + "; read with default values");
        return true;
    }
    return ReadCaptionKeys(value, kNowhere, where, cap, state);
}

bool ReadScene(const json &object, const Where &where, SceneEntry &entry, ReadState &state)
{
    if (!object.is_object()) {
        state.warnings.Add(where.Text() + ": expected a scene object, found " +
                           detail::JsonTypeText(object) + "; read with default values");
        return true;
    }
    bool hasCaptionObject = false;
    for (const SceneKey &row : kSceneKeys) {
        auto it = object.find(row.key);
        if (it == object.end()) {
            continue;
        }
        hasCaptionObject = hasCaptionObject || row.kind == Kind::Caption;
        if (!std::visit(
                [&](auto member) {
                    return ReadValue(*it, row.kind, entry.*member, where.Member(row.key), state);
                },
                row.member)) {
            return false;
        }
    }
    // Older files keep the times and the text in the scene object itself.
    return hasCaptionObject || ReadCaptionKeys(object, kSceneLevel, where, entry.capParam, state);
}

bool ReadScenes(const json &array,
                const Where &where,
                std::vector<SceneEntry> &list,
                ReadState &state)
{
    list.reserve(array.size());
    for (size_t i = 0; i < array.size(); ++i) {
        SceneEntry entry;
        Where scene{where.path + "[" + std::to_string(i) + "]", static_cast<int>(i)};
        if (!ReadScene(array[i], scene, entry, state)) {
            return false;
        }
        list.push_back(std::move(entry));
    }
    return true;
}

const char *RootCheckName(Kind kind)
{
    return kind == Kind::String      ? "is_string"
           : kind == Kind::Flag      ? "is_boolean"
           : kind == Kind::SceneList ? "is_array"
                                     : "is_number";
}

// Root keys of the wrong type are skipped with a warning and leave their field as it was.
bool ReadRootKeys(const json &root, CTarnwickData &data, ReadState &state)
{
    data.diff_list.clear();
    for (const RootKey &row : kRootKeys) {
        auto it = root.find(row.key);
        if (it == root.end()) {
            continue;
        }
        if (row.kind != Kind::Caption && !CheckJsonKey(root, row.key, RootCheckName(row.kind))) {
            state.warnings.Add(std::string(row.key) + ": expected " + Expectation(row.kind) +
                               ", found " + detail::JsonTypeText(*it) + "; ignored");
            continue;
        }
        auto read = [&](auto member) {
            return ReadValue(*it, row.kind, Field(data, member), Where{row.key}, state);
        };
        if (!std::visit(read, row.member)) {
            return false;
        }
    }
    auto input = root.find(kInputFileKey);
    if (input == root.end() ||
        (input->is_string() && input->get_ref<const std::string &>().empty())) {
        state.warnings.Add(std::string(kInputFileKey) +
                           (input == root.end() ? ": missing" : ": empty") +
                           "; the project names no video");
    }
    return true;
}

// Old files carry one caption style at the root, meant for every scene. The style is applied to
// a copy of each scene's caption that is then dropped: the scenes keep what they were read
// with, and nothing is said about the values. What lasts is a default title made from the
// input's path.
void ApplyOldRootCaptionKeys(const json &root, CTarnwickData &data)
{
    if (!CheckJsonKey(root, kFontNameKey, "is_string")) {
        return;
    }
    ProjectWarnings unheard;
    ReadState state{unheard, {}};
    for (const SceneEntry &entry : data.diff_list) {
        CapParam styled = entry.capParam;
        for (const CaptionKey &row : kCaptionKeys) {
            const char *check = row.kind == Kind::String ? "is_string" : "is_number";
            if ((row.oldPlaces & kRootLevel) != 0 && CheckJsonKey(root, row.key, check)) {
                std::visit(
                    [&](auto member) {
                        ReadValue(root.at(row.key), row.kind, styled.*member, Where{}, state);
                    },
                    row.member);
            }
        }
    }
    if (data.capTitle.caption.empty()) {
        data.capTitle.caption =
            StrPrintf("{\\fad(500,500)}%s", ReplaceExtension(data.input_file, "").c_str());
    }
}

bool EndsWithNoCase(const std::string &text, const char *tail)
{
    size_t length = std::strlen(tail);
    return text.size() >= length &&
           strncasecmp(text.c_str() + text.size() - length, tail, length) == 0;
}

// Everything after a successful parse, on the scratch copy. False on a type error, with the
// field in state.error.
bool ReadProject(const json &root, const std::string &path, CTarnwickData &data, ReadState &state)
{
    if (!ReadRootKeys(root, data, state)) {
        return false;
    }
    ApplyOldRootCaptionKeys(root, data);
    if (data.output_folder.empty() || data.output_folder.back() != '/') {
        data.output_folder += '/';
    }
    // LoadProjectFile sends the title once the workspace holds the project.
    data.project_file = path;
    if (!EndsWithNoCase(data.pts_file, kPtsSuffix)) {
        data.pts_file =
            data.output_folder + ReplaceExtension(FileNamePart(data.input_file), kPtsSuffix);
    }
    data.LoadPtsList(data.pts_file);
    return true;
}

} // namespace

bool CTarnwickData::LoadProjectFile(const std::string &path,
                                    std::string *pError,
                                    std::vector<std::string> *pWarnings)
{
    if (pWarnings != nullptr) {
        pWarnings->clear();
    }
    json root;
    std::string loadError;
    if (!detail::LoadProjectJson(path, root, loadError)) {
        detail::SetError(pError, loadError);
        return false;
    }
    // Everything is read into a copy, so that a type error deep in the file leaves this
    // workspace exactly as it was.
    std::unique_lock<std::mutex> lock(sceneLock.m);
    CTarnwickData scratch(*this);
    lock.unlock();
    ProjectWarnings warnings;
    ReadState state{warnings, {}};
    try {
        if (!ReadProject(root, path, scratch, state)) {
            detail::SetError(pError, path + ": " + state.error);
            return false;
        }
    } catch (const std::exception &e) {
        detail::SetError(pError, path + ": cannot be read: " + e.what());
        return false;
    }
    const auto row = root.find(detail::KeyOf(&CTarnwickData::list_idx));
    const bool bRowInFile = row != root.end() && row->is_number();
    root = json();
    CheckProjectData(scratch, warnings);
    if (bRowInFile) {
        CheckCurrentRow(scratch, warnings);
    }
    // The scenes are moved, not copied: the data has no move assignment of its own.
    std::vector<SceneEntry> scenes = std::move(scratch.diff_list);
    scratch.diff_list.clear();
    lock.lock();
    *this = scratch;
    diff_list = std::move(scenes);
    lock.unlock();
    if (pWarnings != nullptr) {
        *pWarnings = warnings.Lines();
    }
    return true;
}
} // namespace core
