// Project file (.twproj): the key-to-field tables, the writer and the reader of a project.
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

#include "core/file_io.h"
#include "core/helpers.h"
#include "core/tarnwick_data.h"

namespace core {
namespace {

using nlohmann::json;

// How a field is written, and which check the reader applies to it as a root key.
enum class Kind {
    String,    // string; is_string
    Flag,      // int used as bool, written as a boolean; is_boolean
    Boolean,   // bool, written as a boolean
    Integer,   // int; is_number
    Colour,    // uint32, written unsigned; also read from a boolean, a signed or a float number
    Float,     // double, written as a float even when integral; is_number
    Param,     // ParamRange: dValue written as a float; read clamped, its text rebuilt; is_number
    SceneList, // diff_list, an array of scene objects; is_array
    Caption,   // CapParam object; read whenever the key is present
};

// Where older files hold a caption key outside a caption object.
enum OldPlace : unsigned {
    kNowhere = 0,
    kSceneLevel = 1, // scene objects without a caption object
    kRootLevel = 2,  // the root, as one style for every scene
};

using CaptionMember = std::
    variant<double CapParam::*, std::string CapParam::*, int CapParam::*, uint32_t CapParam::*>;
using SceneMember = std::variant<bool SceneEntry::*,
                                 int SceneEntry::*,
                                 std::string SceneEntry::*,
                                 CapParam SceneEntry::*>;
// Members of the data itself, or of its viInput record.
using RootMember = std::variant<std::string CTarnwickData::*,
                                int CTarnwickData::*,
                                ParamRange CTarnwickData::*,
                                std::vector<SceneEntry> CTarnwickData::*,
                                CapParam CTarnwickData::*,
                                std::string VideoInfo::*,
                                int VideoInfo::*,
                                double VideoInfo::*>;

// One row of a key-to-field table. oldPlaces: where older files also hold the key.
template <typename Member> struct KeyRow
{
    const char *key;
    Kind kind;
    Member member;
    unsigned oldPlaces = kNowhere;
};
using CaptionKey = KeyRow<CaptionMember>;
using SceneKey = KeyRow<SceneMember>;
using RootKey = KeyRow<RootMember>;

// Its presence as a string at the root marks a file of the old format.
constexpr char kFontNameKey[] = "font_name";

const CaptionKey kCaptionKeys[] = {
    {"capTime_first", Kind::Float, &CapParam::capTime_first, kSceneLevel},
    {"capTime_second", Kind::Float, &CapParam::capTime_second, kSceneLevel},
    {"caption", Kind::String, &CapParam::caption, kSceneLevel},
    {"cap_pos_type", Kind::Integer, &CapParam::cap_pos_type, kRootLevel},
    {kFontNameKey, Kind::String, &CapParam::font_name, kRootLevel},
    {"font_size", Kind::Integer, &CapParam::font_size, kRootLevel},
    {"color", Kind::Colour, &CapParam::color, kRootLevel},
    {"bold", Kind::Integer, &CapParam::bold, kRootLevel},
    {"italic", Kind::Integer, &CapParam::italic, kRootLevel},
    {"underline", Kind::Integer, &CapParam::underline, kRootLevel},
    {"strike_uut", Kind::Integer, &CapParam::strike_uut, kRootLevel},
    {"encoding", Kind::Integer, &CapParam::encoding, kRootLevel},
    {"outline", Kind::Integer, &CapParam::outline, kNowhere},
};

const SceneKey kSceneKeys[] = {
    {"enable", Kind::Boolean, &SceneEntry::bEnable},
    {"framNo_first", Kind::Integer, &SceneEntry::framNo_first},
    {"framNo_second", Kind::Integer, &SceneEntry::framNo_second},
    {"fileName", Kind::String, &SceneEntry::fileName},
    {"capParam", Kind::Caption, &SceneEntry::capParam},
};

// In reading order.
const RootKey kRootKeys[] = {
    {"project_file", Kind::String, &CTarnwickData::project_file},
    {"input_file", Kind::String, &CTarnwickData::input_file},
    {"input_mp4_file", Kind::String, &CTarnwickData::input_mp4_file},
    {"output_folder", Kind::String, &CTarnwickData::output_folder},
    {"output_name", Kind::String, &CTarnwickData::output_name},
    {"pts_file", Kind::String, &CTarnwickData::pts_file},
    {"cine_sco", Kind::Flag, &CTarnwickData::cine_sco},
    {"transition", Kind::Flag, &CTarnwickData::transition},
    {"primaries", Kind::Flag, &CTarnwickData::primaries},
    {"play_scene_loop", Kind::Flag, &CTarnwickData::play_scene_loop},
    {"play_loop", Kind::Flag, &CTarnwickData::play_loop},
    {"diff_list", Kind::SceneList, &CTarnwickData::diff_list},
    {"threshold", Kind::Param, &CTarnwickData::threshold},
    {"valid_min_unit", Kind::Param, &CTarnwickData::valid_min_unit},
    {"cut_min_unit", Kind::Param, &CTarnwickData::cut_min_unit},
    {"brightness", Kind::Param, &CTarnwickData::brightness},
    {"saturation", Kind::Param, &CTarnwickData::saturation},
    {"contrast", Kind::Param, &CTarnwickData::contrast},
    {"gamma", Kind::Param, &CTarnwickData::gamma},
    {"list_idx", Kind::Integer, &CTarnwickData::list_idx},
    {"r_frame_rate", Kind::String, &VideoInfo::r_frame_rate},
    {"fps", Kind::Float, &VideoInfo::fps},
    {"frame_num", Kind::Integer, &VideoInfo::frame_num},
    {"width", Kind::Integer, &VideoInfo::width},
    {"height", Kind::Integer, &VideoInfo::height},
    {"rotation", Kind::Integer, &VideoInfo::rotation},
    {"start_frame", Kind::Integer, &VideoInfo::start_frame},
    {"field_order", Kind::String, &VideoInfo::field_order},
    {"sar_num", Kind::Integer, &VideoInfo::sar_num},
    {"sar_den", Kind::Integer, &VideoInfo::sar_den},
    {"play_vol", Kind::Integer, &CTarnwickData::play_vol},
    {"capWatermark", Kind::Caption, &CTarnwickData::capWatermark},
    {"capTitle", Kind::Caption, &CTarnwickData::capTitle},
};

// The frame-time list of a project is named "<stem>_pts.csv".
constexpr char kPtsSuffix[] = "_pts.csv";

template <typename Data, typename T> auto &Field(Data &data, T CTarnwickData::*member)
{
    return data.*member;
}

template <typename Data, typename T> auto &Field(Data &data, T VideoInfo::*member)
{
    return data.viInput.*member;
}

// ---- Writing ----

json CaptionToJson(const CapParam &cap);
json SceneToJson(const SceneEntry &entry);

template <typename T> json ValueToJson(Kind kind, const T &value)
{
    if constexpr (std::is_same_v<T, int>) {
        return kind == Kind::Flag ? json(value != 0) : json(value);
    } else if constexpr (std::is_same_v<T, ParamRange>) {
        return json(value.dValue);
    } else if constexpr (std::is_same_v<T, CapParam>) {
        return CaptionToJson(value);
    } else if constexpr (std::is_same_v<T, std::vector<SceneEntry>>) {
        json array = json::array();
        for (const SceneEntry &entry : value) {
            array.push_back(SceneToJson(entry));
        }
        return array;
    } else {
        return json(value); // strings, booleans, the unsigned colour, floats
    }
}

json CaptionToJson(const CapParam &cap)
{
    json object = json::object();
    for (const CaptionKey &row : kCaptionKeys) {
        object[row.key] =
            std::visit([&](auto member) { return ValueToJson(row.kind, cap.*member); }, row.member);
    }
    return object;
}

json SceneToJson(const SceneEntry &entry)
{
    json object = json::object();
    for (const SceneKey &row : kSceneKeys) {
        object[row.key] = std::visit(
            [&](auto member) { return ValueToJson(row.kind, entry.*member); }, row.member);
    }
    return object;
}

// The whole document; the caller holds the scene lock.
json ProjectToJson(const CTarnwickData &data)
{
    json root = json::object();
    for (const RootKey &row : kRootKeys) {
        root[row.key] = std::visit(
            [&](auto member) { return ValueToJson(row.kind, Field(data, member)); }, row.member);
    }
    return root;
}

// ---- Reading ----
// The library's get<>() throws its type_error for a value of the wrong type; LoadProjectFile
// turns that into a failed load.

CapParam ReadCaption(const json &object);
SceneEntry ReadScene(const json &object);

// Integers (and booleans, as the library converts them) are narrowed to 32 bits the way a cast
// does; a float is truncated toward zero and saturated at the limits of int.
int ReadInt(const json &value)
{
    if (value.is_number_float()) {
        double truncated = std::trunc(value.get<double>());
        return static_cast<int>(std::clamp(truncated, double(INT_MIN), double(INT_MAX)));
    }
    return value.get<int>();
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

template <typename T> void ReadValue(const json &value, Kind kind, T &field)
{
    if constexpr (std::is_same_v<T, int>) {
        field = kind == Kind::Flag ? (value.get<bool>() ? 1 : 0) : ReadInt(value);
    } else if constexpr (std::is_same_v<T, uint32_t>) {
        field = ReadColour(value);
    } else if constexpr (std::is_same_v<T, ParamRange>) {
        field.dValue = std::max(field.dMin, std::min(field.dMax, value.get<double>()));
        UpdateParamText(field);
    } else if constexpr (std::is_same_v<T, CapParam>) {
        field = ReadCaption(value);
    } else if constexpr (std::is_same_v<T, std::vector<SceneEntry>>) {
        for (const json &element : value) {
            field.push_back(ReadScene(element));
        }
    } else {
        field = value.get<T>(); // strings, booleans, floats
    }
}

// Reads the caption keys present in object; places limits the rows to those that older files
// hold in that place (kNowhere: every row).
void ReadCaptionKeys(const json &object, unsigned places, CapParam &cap)
{
    if (!object.is_object()) {
        return;
    }
    for (const CaptionKey &row : kCaptionKeys) {
        if (places != kNowhere && (row.oldPlaces & places) == 0) {
            continue;
        }
        auto it = object.find(row.key);
        if (it != object.end()) {
            std::visit([&](auto member) { ReadValue(*it, row.kind, cap.*member); }, row.member);
        }
    }
}

// A value that is not an object reads as a default caption; missing keys keep the defaults.
CapParam ReadCaption(const json &object)
{
    CapParam cap;
    ReadCaptionKeys(object, kNowhere, cap);
    return cap;
}

SceneEntry ReadScene(const json &object)
{
    SceneEntry entry;
    if (!object.is_object()) {
        return entry;
    }
    bool hasCaptionObject = false;
    for (const SceneKey &row : kSceneKeys) {
        auto it = object.find(row.key);
        if (it == object.end()) {
            continue;
        }
        hasCaptionObject = hasCaptionObject || row.kind == Kind::Caption;
        std::visit([&](auto member) { ReadValue(*it, row.kind, entry.*member); }, row.member);
    }
    if (!hasCaptionObject) {
        // Older files keep the times and the text in the scene object itself.
        ReadCaptionKeys(object, kSceneLevel, entry.capParam);
    }
    return entry;
}

const char *RootCheckName(Kind kind)
{
    return kind == Kind::String      ? "is_string"
           : kind == Kind::Flag      ? "is_boolean"
           : kind == Kind::SceneList ? "is_array"
                                     : "is_number";
}

// Root keys of the wrong type are skipped and leave their field as it was.
void ReadRootKeys(const json &root, CTarnwickData &data)
{
    data.diff_list.clear();
    for (const RootKey &row : kRootKeys) {
        bool accepted = row.kind == Kind::Caption
                            ? root.is_object() && root.contains(row.key)
                            : CheckJsonKey(root, row.key, RootCheckName(row.kind));
        if (!accepted) {
            continue;
        }
        const json &value = root.at(row.key);
        std::visit([&](auto member) { ReadValue(value, row.kind, Field(data, member)); },
                   row.member);
    }
}

// Old files carry one caption style at the root, meant for every scene. The style is applied to
// a copy of each scene's caption that is then dropped: the scenes keep what they were read
// with. What lasts is a default title made from the input's path.
void ApplyOldRootCaptionKeys(const json &root, CTarnwickData &data)
{
    if (!CheckJsonKey(root, kFontNameKey, "is_string")) {
        return;
    }
    for (const SceneEntry &entry : data.diff_list) {
        CapParam styled = entry.capParam;
        for (const CaptionKey &row : kCaptionKeys) {
            const char *check = row.kind == Kind::String ? "is_string" : "is_number";
            if ((row.oldPlaces & kRootLevel) != 0 && CheckJsonKey(root, row.key, check)) {
                std::visit(
                    [&](auto member) { ReadValue(root.at(row.key), row.kind, styled.*member); },
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

// Everything after a successful parse, on the scratch copy. Throws the library's type_error.
void ReadProject(const json &root, const std::string &path, CTarnwickData &data)
{
    ReadRootKeys(root, data);
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
}

// Control characters in a path or a library text would break the one-line message.
void SetError(std::string *pError, std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= 0 && c < 0x20; }, ' ');
    if (pError != nullptr) {
        *pError = std::move(text);
    }
}

} // namespace

bool CheckJsonKey(const nlohmann::json &json, const std::string &key, const std::string &kindName)
{
    static const struct
    {
        const char *name;
        bool (nlohmann::json::*test)() const noexcept;
    } kKinds[] = {
        {"is_number", &nlohmann::json::is_number},
        {"is_number_float", &nlohmann::json::is_number_float},
        {"is_number_integer", &nlohmann::json::is_number_integer},
        {"is_string", &nlohmann::json::is_string},
        {"is_boolean", &nlohmann::json::is_boolean},
        {"is_array", &nlohmann::json::is_array},
    };
    if (!json.is_object()) {
        return false;
    }
    auto it = json.find(key);
    if (it == json.end()) {
        return false;
    }
    for (const auto &kind : kKinds) {
        if (kindName == kind.name) {
            return ((*it).*kind.test)();
        }
    }
    return false;
}

bool CTarnwickData::SaveProjectFile(const std::string &path, std::string *pError)
{
    std::string text;
    try {
        json root;
        {
            std::lock_guard<std::mutex> lock(sceneLock.m);
            root = ProjectToJson(*this);
        }
        // Strict: a text that is not valid UTF-8 fails the save instead of being written.
        text = root.dump(4, ' ', false, json::error_handler_t::strict);
    } catch (const json::type_error &e) {
        SetError(pError,
                 path + ": not saved, a text of the project is not valid UTF-8 (" + e.what() + ")");
        return false;
    } catch (const std::exception &e) {
        SetError(pError, path + ": not saved: " + e.what());
        return false;
    }
    std::string writeError;
    if (!WriteFileAtomically(path, std::string(kProjectFileBom) + text + "\n", &writeError)) {
        SetError(pError, writeError);
        return false;
    }
    project_file = path;
    UpdateTitle();
    return true;
}

bool CTarnwickData::LoadProjectFile(const std::string &path, std::string *pError)
{
    std::string bytes;
    std::string readError;
    if (!ReadRegularFile(path, bytes, &readError)) {
        SetError(pError, readError);
        return false;
    }
    if (bytes.empty()) {
        SetError(pError, path + ": the file is empty");
        return false;
    }
    json root;
    try {
        // The parser skips the byte-order mark.
        root = json::parse(bytes);
    } catch (const std::exception &e) {
        SetError(pError, path + ": not a valid JSON file: " + e.what());
        return false;
    }
    // Everything is read into a copy, so that a type error deep in the file leaves this
    // workspace exactly as it was.
    std::unique_lock<std::mutex> lock(sceneLock.m);
    CTarnwickData scratch(*this);
    lock.unlock();
    scratch.pTitleWnd = nullptr;
    try {
        ReadProject(root, path, scratch);
    } catch (const json::exception &e) {
        SetError(pError, path + ": " + e.what());
        return false;
    } catch (const std::exception &e) {
        SetError(pError, path + ": cannot be read: " + e.what());
        return false;
    }
    lock.lock();
    TitleTarget *titleWnd = pTitleWnd;
    *this = scratch;
    pTitleWnd = titleWnd;
    lock.unlock();
    UpdateTitle();
    return true;
}

} // namespace core
