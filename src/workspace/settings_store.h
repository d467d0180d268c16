// The per-user settings store behind an interface (section, entry, bytes or text), a file that
// holds it for the command line and the tests, and the recent project list kept in it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/app_settings.h"

namespace workspace {

// A per-user key-value store: a section name, an entry name and an opaque value. The window
// implements it over QSettings; FileSettingsStore keeps it in one file. Used on the thread that
// owns the host.
class SettingsStore
{
public:
    virtual ~SettingsStore() = default;
    // Nothing when the entry is absent or holds text.
    virtual std::optional<std::vector<uint8_t>> ReadBytes(const std::string &section,
                                                          const std::string &entry) const = 0;
    // Nothing when the entry is absent or holds bytes.
    virtual std::optional<std::string> ReadText(const std::string &section,
                                                const std::string &entry) const = 0;
    // Each write reaches the store at once; false when it could not be kept.
    virtual bool WriteBytes(const std::string &section,
                            const std::string &entry,
                            const std::vector<uint8_t> &value) = 0;
    virtual bool
    WriteText(const std::string &section, const std::string &entry, const std::string &value) = 0;
    // An absent entry is fine.
    virtual bool RemoveEntry(const std::string &section, const std::string &entry) = 0;
};

// The store in one JSON file: {"section": {"entry": {"text": "..."} or {"bytes": "<hex>"}}}.
// The file is read once by the constructor (missing or unreadable: an empty store) and written
// whole, through a temporary file renamed over it, after every change.
class FileSettingsStore : public SettingsStore
{
public:
    explicit FileSettingsStore(std::string path);

    std::optional<std::vector<uint8_t>> ReadBytes(const std::string &section,
                                                  const std::string &entry) const override;
    std::optional<std::string> ReadText(const std::string &section,
                                        const std::string &entry) const override;
    bool WriteBytes(const std::string &section,
                    const std::string &entry,
                    const std::vector<uint8_t> &value) override;
    bool WriteText(const std::string &section,
                   const std::string &entry,
                   const std::string &value) override;
    bool RemoveEntry(const std::string &section, const std::string &entry) override;

    const std::string &Path() const { return m_path; }

private:
    struct Value
    {
        bool bBytes = false;
        std::string data; // the text, or the bytes as they are
    };
    bool Write();

    std::string m_path;
    std::map<std::string, std::map<std::string, Value>> m_sections;
};

// The recent project list in a store: section "Recent Files", entries "File1".."File5", the most
// recent first. Empty entries are not kept.
class RecentFiles : public core::RecentFileList
{
public:
    // store must outlive the list. Reads the list from the store.
    explicit RecentFiles(SettingsStore &store);

    std::vector<std::string> Entries() const override { return m_entries; }
    void RemoveEntry(size_t index) override;
    // Writes "File1".. for the entries and removes the numbers behind them.
    void WriteOut() override;
    // Puts path first, dropping an equal entry and anything beyond core::kRecentFileCount.
    void Add(const std::string &path);
    // Reads the list from the store again.
    void Read();

private:
    SettingsStore &m_store;
    std::vector<std::string> m_entries;
};

// The settings record of the store (section "App Settings", entry "All Data"); nothing when
// the value is absent or empty. A short value fills the front of the record.
std::optional<core::AppSettingsRecord> ReadSettingsRecord(const SettingsStore &store);
bool WriteSettingsRecord(SettingsStore &store, const core::AppSettingsRecord &record);

} // namespace workspace
