// Project file (.twproj): the layout constant and the key check of the reader. The members
// CTarnwickData::SaveProjectFile and LoadProjectFile are defined beside them.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace core {

// The three bytes that open every project file (UTF-8 byte-order mark).
inline constexpr char kProjectFileBom[] = "\xEF\xBB\xBF";

// True when json is an object that holds key with a value of the kind named by kindName:
// "is_number" (integer, unsigned or float), "is_number_float", "is_number_integer" (integer or
// unsigned), "is_string", "is_boolean", "is_array". Any other kind name gives false, and so does
// a root that is not an object.
bool CheckJsonKey(const nlohmann::json &json, const std::string &key, const std::string &kindName);

} // namespace core
