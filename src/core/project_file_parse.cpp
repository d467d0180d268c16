// Project file text: the nesting count before parsing, and a parser that builds only the part of
// the document the reader looks at, so that memory stays in proportion to what is read.
#include "core/project_file.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/file_io.h"
#include "core/helpers.h"
#include "core/path_check.h"
#include "core/project_file_internal.h"

namespace core {
namespace detail {
namespace {

using nlohmann::json;

// One open array or object.
struct OpenValue
{
    json *value;    // where it is built; nullptr when nothing of it is kept
    ValueRole role; // its own role
};

// Receives the parser's events and builds the document. Keys that the reader never looks at are
// dropped with everything inside them; a container where the reader expects a single field is
// kept empty. The scenes of a list are counted, and the parse stops past kMaxProjectScenes.
class ProjectBuilder
{
public:
    explicit ProjectBuilder(json &root)
        : m_root(root)
    {
    }

    bool null() { return Put(json(nullptr)); }
    bool boolean(bool value) { return Put(json(value)); }
    bool number_integer(json::number_integer_t value) { return Put(json(value)); }
    bool number_unsigned(json::number_unsigned_t value) { return Put(json(value)); }
    bool number_float(json::number_float_t value, const std::string &) { return Put(json(value)); }
    bool string(std::string &value) { return Put(json(std::move(value))); }
    bool binary(json::binary_t &) { return Put(json()); } // JSON text holds no binary values

    bool start_object(size_t) { return Open(json::value_t::object); }
    bool start_array(size_t) { return Open(json::value_t::array); }
    bool end_object() { return Close(); }
    bool end_array() { return Close(); }

    bool key(std::string &key)
    {
        const OpenValue &parent = m_open.back();
        m_key = std::move(key);
        m_keyRole = parent.value != nullptr ? RoleOfKey(parent.role, m_key) : ValueRole::Unread;
        return true;
    }

    bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &e)
    {
        m_error = std::string("not a valid JSON file: ") + e.what();
        return false;
    }

    const std::string &error() const { return m_error; }

private:
    // The role of the value that comes next, from its key or its place in an array.
    ValueRole NextRole() const
    {
        if (m_open.empty()) {
            return ValueRole::Root;
        }
        const OpenValue &parent = m_open.back();
        if (parent.value == nullptr) {
            return ValueRole::Unread;
        }
        if (parent.value->is_object()) {
            return m_keyRole;
        }
        return parent.role == ValueRole::SceneList ? ValueRole::Scene : ValueRole::Unread;
    }

    // Stores value in its place; returns where it went, nullptr when it is dropped.
    json *Store(json value, ValueRole role)
    {
        if (role == ValueRole::Unread) {
            return nullptr;
        }
        if (m_open.empty()) {
            m_root = std::move(value);
            return &m_root;
        }
        json &parent = *m_open.back().value;
        if (parent.is_object()) {
            json &slot = parent[m_key];
            slot = std::move(value);
            return &slot;
        }
        if (role == ValueRole::Scene && parent.size() >= kMaxProjectScenes) {
            m_error = StrPrintf("not a project file: diff_list holds more than %zu scenes",
                                kMaxProjectScenes);
            m_tooMany = true;
            return nullptr;
        }
        parent.push_back(std::move(value));
        return &parent.back();
    }

    bool Put(json value)
    {
        Store(std::move(value), NextRole());
        return !m_tooMany;
    }

    bool Open(json::value_t type)
    {
        ValueRole role = NextRole();
        json *value = Store(json(type), role);
        // Inside a single field nothing is kept: the empty container tells its type.
        m_open.push_back({role == ValueRole::Field ? nullptr : value, role});
        return !m_tooMany;
    }

    bool Close()
    {
        m_open.pop_back();
        return true;
    }

    json &m_root;
    std::vector<OpenValue> m_open;
    std::string m_key;
    ValueRole m_keyRole = ValueRole::Unread;
    std::string m_error;
    bool m_tooMany = false;
};

// Length of the valid UTF-8 sequence at text[pos], 0 when there is none.
size_t Utf8Length(const std::string &text, size_t pos)
{
    const auto lead = static_cast<uint8_t>(text[pos]);
    size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (pos + length > text.size()) {
        return 0;
    }
    return IsValidUtf8(text.substr(pos, length)) ? length : 0;
}

bool ParseProjectText(const std::string &bytes, json &root, std::string &error)
{
    ProjectBuilder builder(root);
    // The parser skips the byte-order mark.
    if (!json::sax_parse(bytes, &builder)) {
        error = builder.error();
        return false;
    }
    return true;
}

std::string TooLarge(const std::string &path, uintmax_t size)
{
    return StrPrintf("%s: the file is %ju bytes; a project file is at most %zu MiB",
                     path.c_str(),
                     size,
                     kMaxProjectFileBytes >> 20);
}

} // namespace

bool LoadProjectJson(const std::string &path, json &root, std::string &error)
{
    // The size is looked at before anything is read; a file that grows meanwhile is caught after.
    std::error_code sizeError;
    uintmax_t size = std::filesystem::file_size(path, sizeError);
    if (!sizeError && size > kMaxProjectFileBytes) {
        error = TooLarge(path, size);
        return false;
    }
    std::string bytes;
    if (!ReadRegularFile(path, bytes, &error)) {
        return false;
    }
    if (bytes.size() > kMaxProjectFileBytes) {
        error = TooLarge(path, bytes.size());
        return false;
    }
    if (bytes.empty()) {
        error = path + ": the file is empty";
        return false;
    }
    // JSON text holds no NUL byte: this is a video or another binary file given where a
    // project belongs, and the parser's complaint about its bytes would only puzzle.
    if (bytes.find('\0') != std::string::npos) {
        error = path + ": not a project file: it holds binary data (a video, perhaps), not the "
                       "JSON text of a project";
        return false;
    }
    size_t offset = 0;
    if (JsonNestingDepth(bytes, kMaxProjectNesting, &offset) > kMaxProjectNesting) {
        error = StrPrintf("%s: not a project file: arrays and objects are nested more than %d "
                          "deep at byte %zu",
                          path.c_str(),
                          kMaxProjectNesting,
                          offset + 1);
        return false;
    }
    std::string reason;
    if (!ParseProjectText(bytes, root, reason)) {
        error = path + ": " + reason;
        return false;
    }
    if (!root.is_object()) {
        error = path + ": not a project file: the JSON root is " + JsonTypeText(root) +
                ", not an object";
        return false;
    }
    return true;
}

const char *JsonTypeText(const json &value)
{
    switch (value.type()) {
    case json::value_t::null:
        return "null";
    case json::value_t::boolean:
        return "a boolean";
    case json::value_t::string:
        return "a string";
    case json::value_t::array:
        return "an array";
    case json::value_t::object:
        return "an object";
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
    case json::value_t::number_float:
        return "a number";
    default:
        return "no JSON value";
    }
}

std::string PrintableLine(const std::string &text)
{
    std::string line;
    line.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        const auto byte = static_cast<uint8_t>(text[pos]);
        size_t length = Utf8Length(text, pos);
        if (length == 0) {
            line += StrPrintf("\\x%02X", byte);
            length = 1;
        } else if (byte < 0x20 || byte == 0x7F) {
            line += ' ';
        } else {
            line.append(text, pos, length);
        }
        pos += length;
    }
    return line;
}

} // namespace detail

int JsonNestingDepth(std::string_view text, int limit, size_t *pOffset)
{
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\') {
                ++i; // the escaped character cannot end the string
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > limit) {
                if (pOffset != nullptr) {
                    *pOffset = i;
                }
                return depth;
            }
            deepest = std::max(deepest, depth);
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

} // namespace core
