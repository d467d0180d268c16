// The settings store in a file, the recent project list and the settings record in a store.
#include "workspace/settings_store.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include <nlohmann/json.hpp>

#include "core/app_log.h"

namespace workspace {
namespace {

std::string ToHex(const std::string &bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(bytes.size() * 2);
    for (unsigned char c : bytes) {
        hex += digits[c >> 4];
        hex += digits[c & 0x0F];
    }
    return hex;
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

std::optional<std::string> FromHex(const std::string &hex)
{
    if (hex.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(hex.size() / 2);
    for (size_t i = 0; i < hex.size(); i += 2) {
        const int high = HexDigit(hex[i]);
        const int low = HexDigit(hex[i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

std::string EntryName(size_t index)
{
    // core::kRecentFilesEntryFormat, "File%d", numbered from 1.
    return "File" + std::to_string(index + 1);
}

} // namespace

FileSettingsStore::FileSettingsStore(std::string path)
    : m_path(std::move(path))
{
    std::ifstream in(m_path, std::ios::binary);
    if (!in) {
        return;
    }
    std::stringstream text;
    text << in.rdbuf();
    // A damaged file counts as an empty store: the settings then start from their defaults.
    nlohmann::json root = nlohmann::json::parse(text.str(), nullptr, false);
    if (!root.is_object()) {
        core::Log("%s(%d) unreadable settings file %s\n",
                  "FileSettingsStore::FileSettingsStore",
                  __LINE__,
                  m_path.c_str());
        return;
    }
    for (auto &[section, entries] : root.items()) {
        if (!entries.is_object()) {
            continue;
        }
        for (auto &[entry, value] : entries.items()) {
            if (!value.is_object()) {
                continue;
            }
            if (value.contains("text") && value["text"].is_string()) {
                m_sections[section][entry] = Value{false, value["text"].get<std::string>()};
            } else if (value.contains("bytes") && value["bytes"].is_string()) {
                if (std::optional<std::string> bytes = FromHex(value["bytes"].get<std::string>())) {
                    m_sections[section][entry] = Value{true, *bytes};
                }
            }
        }
    }
}

std::optional<std::vector<uint8_t>> FileSettingsStore::ReadBytes(const std::string &section,
                                                                 const std::string &entry) const
{
    auto s = m_sections.find(section);
    if (s == m_sections.end()) {
        return std::nullopt;
    }
    auto e = s->second.find(entry);
    if (e == s->second.end() || !e->second.bBytes) {
        return std::nullopt;
    }
    return std::vector<uint8_t>(e->second.data.begin(), e->second.data.end());
}

std::optional<std::string> FileSettingsStore::ReadText(const std::string &section,
                                                       const std::string &entry) const
{
    auto s = m_sections.find(section);
    if (s == m_sections.end()) {
        return std::nullopt;
    }
    auto e = s->second.find(entry);
    if (e == s->second.end() || e->second.bBytes) {
        return std::nullopt;
    }
    return e->second.data;
}

bool FileSettingsStore::WriteBytes(const std::string &section,
                                   const std::string &entry,
                                   const std::vector<uint8_t> &value)
{
    m_sections[section][entry] = Value{true, std::string(value.begin(), value.end())};
    return Write();
}

bool FileSettingsStore::WriteText(const std::string &section,
                                  const std::string &entry,
                                  const std::string &value)
{
    m_sections[section][entry] = Value{false, value};
    return Write();
}

bool FileSettingsStore::RemoveEntry(const std::string &section, const std::string &entry)
{
    auto s = m_sections.find(section);
    if (s == m_sections.end() || s->second.erase(entry) == 0) {
        return true;
    }
    return Write();
}

bool FileSettingsStore::Write()
{
    nlohmann::json root = nlohmann::json::object();
    for (const auto &[section, entries] : m_sections) {
        nlohmann::json values = nlohmann::json::object();
        for (const auto &[entry, value] : entries) {
            values[entry] = value.bBytes ? nlohmann::json{{"bytes", ToHex(value.data)}}
                                         : nlohmann::json{{"text", value.data}};
        }
        root[section] = values;
    }
    std::error_code ec;
    const std::filesystem::path target(m_path);
    if (target.has_parent_path()) {
        std::filesystem::create_directories(target.parent_path(), ec);
    }
    // Replace the file in one step, so that a crash never leaves half of it.
    const std::string temp = m_path + ".tmp";
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        // Texts are the program's own UTF-8; anything else is kept as replacement characters
        // rather than lose the whole store.
        out << root.dump(4, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
        if (!out) {
            std::filesystem::remove(temp, ec);
            return false;
        }
    }
    std::filesystem::rename(temp, target, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        return false;
    }
    return true;
}

RecentFiles::RecentFiles(SettingsStore &store)
    : m_store(store)
{
    Read();
}

void RecentFiles::Read()
{
    m_entries.clear();
    for (size_t i = 0; i < core::kRecentFileCount; ++i) {
        std::optional<std::string> path = m_store.ReadText(core::kRecentFilesSection, EntryName(i));
        if (path && !path->empty()) {
            m_entries.push_back(*path);
        }
    }
}

void RecentFiles::RemoveEntry(size_t index)
{
    if (index < m_entries.size()) {
        m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(index));
    }
}

void RecentFiles::WriteOut()
{
    for (size_t i = 0; i < core::kRecentFileCount; ++i) {
        if (i < m_entries.size()) {
            m_store.WriteText(core::kRecentFilesSection, EntryName(i), m_entries[i]);
        } else {
            m_store.RemoveEntry(core::kRecentFilesSection, EntryName(i));
        }
    }
}

void RecentFiles::Add(const std::string &path)
{
    if (path.empty()) {
        return;
    }
    m_entries.erase(std::remove(m_entries.begin(), m_entries.end(), path), m_entries.end());
    m_entries.insert(m_entries.begin(), path);
    if (m_entries.size() > core::kRecentFileCount) {
        m_entries.resize(core::kRecentFileCount);
    }
}

std::optional<core::AppSettingsRecord> ReadSettingsRecord(const SettingsStore &store)
{
    std::optional<std::vector<uint8_t>> bytes =
        store.ReadBytes(core::kSettingsSection, core::kSettingsEntry);
    if (!bytes || bytes->empty()) {
        return std::nullopt;
    }
    return core::DeserializeSettings(*bytes);
}

bool WriteSettingsRecord(SettingsStore &store, const core::AppSettingsRecord &record)
{
    return store.WriteBytes(
        core::kSettingsSection, core::kSettingsEntry, core::SerializeSettings(record));
}

} // namespace workspace
