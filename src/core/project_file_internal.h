// Internals of the project-file sources: the key-to-field tables that the writer, the reader and
// the parser share, and the pieces of the reading that are kept in files of their own.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/tarnwick_data.h"

namespace core::detail {

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
inline constexpr char kFontNameKey[] = "font_name";
// The video of the project; a project without one is noted.
inline constexpr char kInputFileKey[] = "input_file";

inline const CaptionKey kCaptionKeys[] = {
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

inline const SceneKey kSceneKeys[] = {
    {"enable", Kind::Boolean, &SceneEntry::bEnable},
    {"framNo_first", Kind::Integer, &SceneEntry::framNo_first},
    {"framNo_second", Kind::Integer, &SceneEntry::framNo_second},
    {"fileName", Kind::String, &SceneEntry::fileName},
    {"capParam", Kind::Caption, &SceneEntry::capParam},
};

// In reading order.
inline const RootKey kRootKeys[] = {
    {"project_file", Kind::String, &CTarnwickData::project_file},
    {kInputFileKey, Kind::String, &CTarnwickData::input_file},
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

// The key of a root field of the data, as the table names it.
inline const char *KeyOf(int CTarnwickData::*member)
{
    for (const RootKey &row : kRootKeys) {
        const auto *field = std::get_if<int CTarnwickData::*>(&row.member);
        if (field != nullptr && *field == member) {
            return row.key;
        }
    }
    return "";
}

template <typename Data, typename T> auto &Field(Data &data, T CTarnwickData::*member)
{
    return data.*member;
}

template <typename Data, typename T> auto &Field(Data &data, T VideoInfo::*member)
{
    return data.viInput.*member;
}

// What the reader makes of a value, by the place it stands in: the parser keeps only the values
// that the reader looks at, and of a value read as a single field only its type.
enum class ValueRole {
    Root,      // the document
    SceneList, // "diff_list"
    Scene,     // an element of "diff_list"
    Caption,   // "capParam", "capWatermark", "capTitle"
    Field,     // a single field: a container here is kept empty, as a witness of its type
    Unread,    // a key the reader never looks at: dropped with all it holds
};

// The role of the value under key in an object of role parent, as the key tables answer it.
ValueRole RoleOfKey(ValueRole parent, const std::string &key);

// Reads and parses the project file at path. Refused before parsing: a file larger than
// kMaxProjectFileBytes or nested deeper than kMaxProjectNesting; while parsing: invalid JSON and
// more than kMaxProjectScenes scenes; after: a root that is not an object. Keeps only what
// RoleOfKey says the reader reads. On failure returns false with error set to
// "<path>: <reason>".
bool LoadProjectJson(const std::string &path, nlohmann::json &root, std::string &error);

// "null", "a boolean", "a number", "a string", "an array", "an object": the type of value as a
// message names it.
const char *JsonTypeText(const nlohmann::json &value);

// text as one line that a terminal shows as it is: control characters become spaces and each
// byte that is not part of valid UTF-8 becomes "\xNN".
std::string PrintableLine(const std::string &text);

// The shortest text that reads back as value: "1000", "0.25", "1e+308", "inf".
inline std::string NumberText(double value)
{
    char buffer[32];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

// Sets *pError (when given) to text made printable on one line.
inline void SetError(std::string *pError, const std::string &text)
{
    if (pError != nullptr) {
        *pError = PrintableLine(text);
    }
}

} // namespace core::detail
