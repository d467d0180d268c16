// Project file (.twproj): the writer, the key check and the roles of keys for the parser.
#include "core/project_file.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/file_io.h"
#include "core/project_file_internal.h"
#include "core/tarnwick_data.h"

namespace core {
namespace {

using nlohmann::json;
using namespace detail;

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

// The current row as the file keeps it: a row of the list, or -1 for an empty list. While a job
// runs no row may be current (-1); the file then names the first, so that the next opening
// keeps the list as it stands.
int SavedRow(const CTarnwickData &data)
{
    const int count = static_cast<int>(data.diff_list.size());
    return count == 0 ? -1 : std::clamp(data.list_idx, 0, count - 1);
}

template <typename Member> json RootValueToJson(const CTarnwickData &data, Kind kind, Member member)
{
    if constexpr (std::is_same_v<Member, int CTarnwickData::*>) {
        if (member == &CTarnwickData::list_idx) {
            return json(SavedRow(data));
        }
    }
    return ValueToJson(kind, Field(data, member));
}

// The whole document; the caller holds the scene lock.
json ProjectToJson(const CTarnwickData &data)
{
    json root = json::object();
    for (const RootKey &row : kRootKeys) {
        root[row.key] = std::visit(
            [&](auto member) { return RootValueToJson(data, row.kind, member); }, row.member);
    }
    return root;
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
        detail::SetError(pError,
                         path + ": not saved, a text of the project is not valid UTF-8 (" +
                             e.what() + ")");
        return false;
    } catch (const std::exception &e) {
        detail::SetError(pError, path + ": not saved: " + e.what());
        return false;
    }
    std::string writeError;
    if (!WriteFileAtomically(path, std::string(kProjectFileBom) + text + "\n", &writeError)) {
        detail::SetError(pError, writeError);
        return false;
    }
    {
        // Under the lock: a helper thread may be copying the data meanwhile.
        std::lock_guard<std::mutex> lock(sceneLock.m);
        if (project_file != path) {
            project_file = path;
        }
    }
    return true;
}

namespace detail {

ValueRole RoleOfKey(ValueRole parent, const std::string &key)
{
    // Caption keys: in a caption object every row; in a scene or at the root those older files
    // hold there.
    unsigned places = parent == ValueRole::Root    ? kRootLevel
                      : parent == ValueRole::Scene ? kSceneLevel
                                                   : kNowhere;
    if (parent == ValueRole::Root) {
        for (const RootKey &row : kRootKeys) {
            if (key == row.key) {
                return row.kind == Kind::SceneList ? ValueRole::SceneList
                       : row.kind == Kind::Caption ? ValueRole::Caption
                                                   : ValueRole::Field;
            }
        }
    } else if (parent == ValueRole::Scene) {
        for (const SceneKey &row : kSceneKeys) {
            if (key == row.key) {
                return row.kind == Kind::Caption ? ValueRole::Caption : ValueRole::Field;
            }
        }
    } else if (parent != ValueRole::Caption) {
        return ValueRole::Unread;
    }
    for (const CaptionKey &row : kCaptionKeys) {
        if (key == row.key && (places == kNowhere || (row.oldPlaces & places) != 0)) {
            return ValueRole::Field;
        }
    }
    return ValueRole::Unread;
}

} // namespace detail

} // namespace core
