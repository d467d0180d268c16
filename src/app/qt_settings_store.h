// The per-user settings store of the window: QSettings in INI form under "Brindlemoor" /
// "TarnwickMP4". Bytes are kept as a byte array, texts as strings; the host model decides what
// is stored where (the settings record under "App Settings" / "All Data", the recent projects
// under "Recent Files" / "File1".."File5").
#pragma once

#include <memory>
#include <string>

#include "workspace/settings_store.h"

class QSettings;

namespace app {

class QtSettingsStore : public workspace::SettingsStore
{
public:
    // The user's store (~/.config/Brindlemoor/TarnwickMP4.conf, or below XDG_CONFIG_HOME).
    QtSettingsStore();
    // A store in the INI file at path, for tests.
    explicit QtSettingsStore(const std::string &path);
    ~QtSettingsStore() override;

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

    std::string FilePath() const;

private:
    bool Sync();

    std::unique_ptr<QSettings> m_settings;
};

} // namespace app
