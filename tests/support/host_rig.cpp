// A host model with recording views and a settings file, for the host tests.
#include "support/host_rig.h"

namespace testsupport {

HostRig::HostRig()
    : settingsPath(dir.file("settings.json"))
{
}

workspace::HostOptions HostRig::Options(const std::string &systemLanguage) const
{
    workspace::HostOptions options;
    options.systemLanguage = systemLanguage;
    options.stringTableFolders = {std::string(TW_SOURCE_DIR) + "/res"};
    options.manualFolders = {dir.file("doc")};
    options.cudaDevice = false;
    return options;
}

workspace::HostModel &HostRig::Make(const workspace::HostOptions &options)
{
    host.reset();
    store = std::make_unique<workspace::FileSettingsStore>(settingsPath);
    host = std::make_unique<workspace::HostModel>(view, sceneView, mergeView, *store, options);
    return *host;
}

workspace::FileSettingsStore HostRig::Store() const
{
    return workspace::FileSettingsStore(settingsPath);
}

void HostRig::WriteRecord(const core::AppSettingsRecord &record)
{
    workspace::FileSettingsStore file(settingsPath);
    workspace::WriteSettingsRecord(file, record);
}

void HostRig::WriteRecent(const std::vector<std::string> &paths)
{
    workspace::FileSettingsStore file(settingsPath);
    workspace::RecentFiles recent(file);
    for (auto it = paths.rbegin(); it != paths.rend(); ++it) {
        recent.Add(*it);
    }
    recent.WriteOut();
}

} // namespace testsupport
