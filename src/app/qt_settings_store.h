// The per-user settings store of the window: QSettings in INI form under "Brindlemoor" /
// "TarnwickMP4", the 892-byte record as bytes under "App Settings" / "All Data" and the recent
// projects under "Recent Files" / "File1".."File5".
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class QSettings;

namespace app {

class QtSettingsStore
{
public:
    // The user's store (~/.config/Brindlemoor/TarnwickMP4.conf, or below XDG_CONFIG_HOME).
    QtSettingsStore();
    // A store in the INI file at path, for tests.
    explicit QtSettingsStore(const std::string &path);
    ~QtSettingsStore();

    // The stored record, as stored; empty when there is none.
    std::vector<uint8_t> ReadRecord() const;
    void WriteRecord(const std::vector<uint8_t> &bytes);
    // The recent projects, entry 0 first; at most five, empty ones kept in their place.
    std::vector<std::string> ReadRecentFiles() const;
    // Writes the entries as File1.. and removes the entries beyond them.
    void WriteRecentFiles(const std::vector<std::string> &entries);
    // Writes what is pending to the file now.
    void Flush();
    std::string FilePath() const;

private:
    std::unique_ptr<QSettings> m_settings;
};

} // namespace app
