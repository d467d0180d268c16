// Program settings: the 892-byte "All Data" record, its byte layout, and the recent-file list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/tarnwick_data.h"

namespace core {

// Where the settings live in the per-user store.
inline constexpr const char *kSettingsOrganisation = "Brindlemoor";
inline constexpr const char *kSettingsApplication = "TarnwickMP4";
inline constexpr const char *kSettingsSection = "App Settings";
inline constexpr const char *kSettingsEntry = "All Data";
inline constexpr const char *kRecentFilesSection = "Recent Files";
inline constexpr const char *kRecentFilesEntryFormat = "File%d"; // numbered from 1
inline constexpr size_t kRecentFileCount = 5;

// Byte layout of the record. Integers are little-endian 32-bit; strings are NUL-terminated and
// zero-filled behind the terminator.
inline constexpr size_t kAppSettingsSize = 892;
inline constexpr size_t kSettingsReservedSize = 512; // written as zero, ignored on reading
inline constexpr size_t kSettingsLanguageOffset = 512;
inline constexpr size_t kSettingsLanguageSize = 85;
inline constexpr size_t kSettingsRectOffset = 600; // left, top, right, bottom
inline constexpr size_t kSettingsUseCudaOffset = 616;
inline constexpr size_t kSettingsAutoSaveOffset = 620;
inline constexpr size_t kSettingsReopenLastOffset = 624;
inline constexpr size_t kSettingsProjectOffset = 628;
inline constexpr size_t kSettingsProjectSize = 260;
inline constexpr size_t kSettingsPresetOffset = 888;

// The settings record in memory. Strings longer than their field are cut when serialised, so
// that a terminating NUL always fits; the cut never splits a UTF-8 character.
struct AppSettingsRecord
{
    std::string language; // at most 84 bytes are stored
    WindowRect rcMainWindow;
    int32_t bUseCuda = 0;
    int32_t bAutoSave = 0;
    int32_t bReopenLast = 0;
    std::string lastProject; // at most 259 bytes are stored
    int32_t nEncodePreset = 0;
};

// Exactly kAppSettingsSize bytes in the layout above.
std::vector<uint8_t> SerializeSettings(const AppSettingsRecord &record);
// Reads a stored value: shorter input is zero-extended, longer input is cut at
// kAppSettingsSize, the reserved bytes are ignored, and each string ends at the first NUL within
// its field (or at the field's end).
AppSettingsRecord DeserializeSettings(const std::vector<uint8_t> &bytes);
AppSettingsRecord DeserializeSettings(const uint8_t *data, size_t size);

// The recent project list of the settings store ("Recent Files", "File1".."File5"). Entry 0 is
// the most recent. Used on the UI thread only.
class RecentFileList
{
public:
    virtual ~RecentFileList() = default;
    // The entries in order; an entry may be empty.
    virtual std::vector<std::string> Entries() const = 0;
    // Removes one entry, moving the later ones up; an index out of range is ignored.
    virtual void RemoveEntry(size_t index) = 0;
    // Writes the list to its store now.
    virtual void WriteOut() = 0;
};

// A recent list held in memory only, for the command line and tests. Counts WriteOut calls.
class MemoryRecentFileList : public RecentFileList
{
public:
    MemoryRecentFileList() = default;
    explicit MemoryRecentFileList(std::vector<std::string> entries);

    std::vector<std::string> Entries() const override;
    void RemoveEntry(size_t index) override;
    void WriteOut() override;

    // Puts the path first, dropping an equal entry and anything beyond kRecentFileCount.
    void Add(const std::string &path);
    // How often WriteOut was called.
    int WriteCount() const { return m_writeCount; }

private:
    std::vector<std::string> m_entries;
    int m_writeCount = 0;
};

} // namespace core
