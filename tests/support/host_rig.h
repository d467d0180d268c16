// A host model with recording views, a settings file in a temporary folder and the string
// tables of the source tree, for the host tests.
#pragma once

#include <memory>
#include <string>

#include "support/recording_host_view.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/host_model.h"

namespace testsupport {

struct HostRig
{
    HostRig();
    // Options with the source tree's string tables, dir/doc for the manuals, no CUDA device.
    workspace::HostOptions Options(const std::string &systemLanguage = "en-US") const;
    // A new host (the previous one shut down and gone) over the settings file as it stands.
    workspace::HostModel &Make(const workspace::HostOptions &options);
    workspace::HostModel &Make() { return Make(Options()); }
    // The settings store as a new program would read it.
    workspace::FileSettingsStore Store() const;
    // Writes a settings record / recent list into the settings file before a start.
    void WriteRecord(const core::AppSettingsRecord &record);
    void WriteRecent(const std::vector<std::string> &paths);

    TempDir dir;
    std::string settingsPath;
    RecordingHostView view;
    RecordingView sceneView;
    RecordingView mergeView;
    std::unique_ptr<workspace::FileSettingsStore> store;
    std::unique_ptr<workspace::HostModel> host;
};

} // namespace testsupport
