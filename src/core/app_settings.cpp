// Program settings: the 892-byte "All Data" record, its byte layout, and the recent-file list.
#include "core/app_settings.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "core/language.h"

namespace core {

namespace {

void PutInt32(std::vector<uint8_t> &bytes, size_t offset, int32_t value)
{
    uint32_t bits = static_cast<uint32_t>(value);
    for (size_t i = 0; i < 4; ++i) {
        bytes[offset + i] = static_cast<uint8_t>(bits >> (8 * i));
    }
}

int32_t GetInt32(const std::vector<uint8_t> &bytes, size_t offset)
{
    uint32_t bits = 0;
    for (size_t i = 0; i < 4; ++i) {
        bits |= static_cast<uint32_t>(bytes[offset + i]) << (8 * i);
    }
    return static_cast<int32_t>(bits);
}

// Copies text into a zero-filled field, keeping room for the NUL. A cut backs up to the start of
// a UTF-8 character rather than leave half of one.
void PutString(std::vector<uint8_t> &bytes,
               size_t offset,
               size_t fieldSize,
               const std::string &text)
{
    size_t length = text.size();
    if (length > fieldSize - 1) {
        length = fieldSize - 1;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
            --length;
        }
    }
    std::copy(text.begin(),
              text.begin() + static_cast<std::ptrdiff_t>(length),
              bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

std::string GetString(const std::vector<uint8_t> &bytes, size_t offset, size_t fieldSize)
{
    auto first = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    auto last = first + static_cast<std::ptrdiff_t>(fieldSize);
    return std::string(first, std::find(first, last, uint8_t{0}));
}

bool FileExists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::exists(path, ec);
}

} // namespace

std::vector<uint8_t> SerializeSettings(const AppSettingsRecord &record)
{
    std::vector<uint8_t> bytes(kAppSettingsSize, 0);
    PutString(bytes, kSettingsLanguageOffset, kSettingsLanguageSize, record.language);
    PutInt32(bytes, kSettingsRectOffset, record.rcMainWindow.left);
    PutInt32(bytes, kSettingsRectOffset + 4, record.rcMainWindow.top);
    PutInt32(bytes, kSettingsRectOffset + 8, record.rcMainWindow.right);
    PutInt32(bytes, kSettingsRectOffset + 12, record.rcMainWindow.bottom);
    PutInt32(bytes, kSettingsUseCudaOffset, record.bUseCuda);
    PutInt32(bytes, kSettingsAutoSaveOffset, record.bAutoSave);
    PutInt32(bytes, kSettingsReopenLastOffset, record.bReopenLast);
    PutString(bytes, kSettingsProjectOffset, kSettingsProjectSize, record.lastProject);
    PutInt32(bytes, kSettingsPresetOffset, record.nEncodePreset);
    return bytes;
}

AppSettingsRecord DeserializeSettings(const uint8_t *data, size_t size)
{
    std::vector<uint8_t> bytes(kAppSettingsSize, 0);
    if (data != nullptr) {
        std::copy(data, data + std::min(size, kAppSettingsSize), bytes.begin());
    }
    AppSettingsRecord record;
    record.language = GetString(bytes, kSettingsLanguageOffset, kSettingsLanguageSize);
    record.rcMainWindow.left = GetInt32(bytes, kSettingsRectOffset);
    record.rcMainWindow.top = GetInt32(bytes, kSettingsRectOffset + 4);
    record.rcMainWindow.right = GetInt32(bytes, kSettingsRectOffset + 8);
    record.rcMainWindow.bottom = GetInt32(bytes, kSettingsRectOffset + 12);
    record.bUseCuda = GetInt32(bytes, kSettingsUseCudaOffset);
    record.bAutoSave = GetInt32(bytes, kSettingsAutoSaveOffset);
    record.bReopenLast = GetInt32(bytes, kSettingsReopenLastOffset);
    record.lastProject = GetString(bytes, kSettingsProjectOffset, kSettingsProjectSize);
    record.nEncodePreset = GetInt32(bytes, kSettingsPresetOffset);
    return record;
}

AppSettingsRecord DeserializeSettings(const std::vector<uint8_t> &bytes)
{
    return DeserializeSettings(bytes.data(), bytes.size());
}

MemoryRecentFileList::MemoryRecentFileList(std::vector<std::string> entries)
    : m_entries(std::move(entries))
{
}

std::vector<std::string> MemoryRecentFileList::Entries() const
{
    return m_entries;
}

void MemoryRecentFileList::RemoveEntry(size_t index)
{
    if (index < m_entries.size()) {
        m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(index));
    }
}

void MemoryRecentFileList::WriteOut()
{
    ++m_writeCount;
}

void MemoryRecentFileList::Add(const std::string &path)
{
    m_entries.erase(std::remove(m_entries.begin(), m_entries.end(), path), m_entries.end());
    m_entries.insert(m_entries.begin(), path);
    if (m_entries.size() > kRecentFileCount) {
        m_entries.resize(kRecentFileCount);
    }
}

void CTarnwickData::CaptureSettings(AppSettingsRecord &record, RecentFileList &recent) const
{
    record = AppSettingsRecord();
    record.language = GetLanguage();
    record.rcMainWindow = rcMainWindow;
    record.bUseCuda = bUseCuda;
    record.bAutoSave = bAutoSave;
    record.bReopenLast = bReopenLast;
    record.nEncodePreset = nEncodePreset;
    record.lastProject = project_file;
    if (!record.lastProject.empty()) {
        return;
    }
    std::vector<std::string> entries = recent.Entries();
    if (entries.empty()) {
        return;
    }
    if (FileExists(entries.front())) {
        record.lastProject = entries.front();
        return;
    }
    // A remembered project that has gone would be offered again at every start: drop it.
    recent.RemoveEntry(0);
    recent.WriteOut();
}

void CTarnwickData::ApplySettings(const AppSettingsRecord &record)
{
    rcMainWindow = record.rcMainWindow;
    // The stored switch wins over what the constructor detected, also without a CUDA device.
    bUseCuda = record.bUseCuda;
    bAutoSave = record.bAutoSave;
    bReopenLast = record.bReopenLast;
    nEncodePreset = record.nEncodePreset;
    if (!record.language.empty()) {
        SetLanguage(record.language);
    }
    if (bReopenLast != 0) {
        project_file = record.lastProject;
    }
}

} // namespace core
