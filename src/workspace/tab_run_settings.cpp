// Commands that set what a tab's jobs take at their start (volume, encoder preset, hardware path,
// saving as it goes) and what the scene tab's next open and render take (planned names, title,
// watermark): the host's menus, the volume bar and the command line set them alike.
#include "workspace/tab_scene.h"

#include <algorithm>
#include <mutex>

#include "core/project_names.h"
#include "engine/tarnwick_process.h"
#include "workspace/tab_base.h"

namespace workspace {

void CTarnwickTab::SetVolume(int nValue)
{
    const int volume = std::clamp(nValue, 0, 100);
    {
        // The player reads the volume under the lock each time it starts.
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        if (m_Data.play_vol == volume) {
            return;
        }
        m_Data.play_vol = volume;
    }
    const int nJob = m_Process.nProcessID;
    if (nJob == engine::kJobPlayInput || nJob == engine::kJobPlayOutput ||
        nJob == engine::kJobPlayScenes) {
        RunHelper([this, nJob] {
            m_Process.CancelProcess();
            m_Process.StartThread(nJob);
        });
    }
}

void CTarnwickTab::SetEncodePreset(int nPreset)
{
    m_Data.nEncodePreset = std::clamp(nPreset, 0, 2);
}

void CTarnwickTab::SetUseCuda(bool bOn)
{
    m_Data.bUseCuda = bOn ? 1 : 0;
}

void CTarnwickTab::SetAutoSave(bool bOn)
{
    m_Data.bAutoSave = bOn ? 1 : 0;
}

void CTarnwickTabScene::PlanProjectNames(const std::string &video, bool bNameInput)
{
    core::DeriveProjectNames(m_Data, video);
    if (!bNameInput) {
        m_Data.input_file.clear(); // the open itself sets it
    }
    ShowFields();
}

void CTarnwickTabScene::PresetOutputNames(const std::string &folder, const std::string &name)
{
    m_Data.output_folder = folder;
    m_Data.output_name = name;
    ShowFields();
}

void CTarnwickTabScene::SetTitleText(const std::string &text)
{
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.capTitle.caption = text;
    }
    m_captions.LoadCaptionFields(m_Data);
    ShowFields();
    SaveProject(false);
}

void CTarnwickTabScene::RemoveWatermark()
{
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        m_Data.capWatermark.caption.clear();
    }
    m_captions.LoadCaptionFields(m_Data);
    ShowFields();
    SaveProject(false);
}

} // namespace workspace
