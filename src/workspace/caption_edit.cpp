// Caption editing of the scene tab: target choice, time bounds, font and the automatic fill.
#include "workspace/caption_edit.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "core/helpers.h"
#include "core/paths.h"

namespace workspace {

namespace {

constexpr int kPositionRows = 10;
constexpr int kBoldWeight = 700;
constexpr int kNormalWeight = 400;
constexpr char kAutoWatermark[] = "TarnwickMP4\\NBrindlemoor.";
constexpr char kAutoTitleFormat[] = "{\\fad(500,500)}%s";

// A time kept in hundredths, rounded the way "%.02f" rounds.
double Hundredths(double seconds)
{
    return std::strtod(core::StrPrintf("%.02f", seconds).c_str(), nullptr);
}

// A typed box text as a number: the plain conversion, unreadable text is 0.
double ParseSeconds(const std::string &text)
{
    return std::strtod(text.c_str(), nullptr);
}

// Upper bound first, then the lower: a frame shorter than a step still gives a time of 0.
double ClampTime(double value, double lower, double upper)
{
    return std::max(lower, std::min(upper, value));
}

// True when an entry of the list has a caption text.
bool AnyCaptionIn(const std::vector<core::SceneEntry> &list)
{
    return std::any_of(list.begin(), list.end(), [](const core::SceneEntry &entry) {
        return !entry.capParam.caption.empty();
    });
}

} // namespace

std::string TrimText(const std::string &text)
{
    constexpr char kSpace[] = " \t\r\n\v\f";
    const size_t begin = text.find_first_not_of(kSpace);
    if (begin == std::string::npos) {
        return std::string();
    }
    const size_t end = text.find_last_not_of(kSpace);
    return text.substr(begin, end - begin + 1);
}

double SceneSeconds(const core::CTarnwickData &data, const core::SceneEntry &entry)
{
    const double fps = data.viCurrent.fps;
    if (fps <= 0.0) {
        return 0.0;
    }
    return (entry.framNo_second - entry.framNo_first + 1) / fps;
}

bool ClampCaptionTimes(core::CapParam &cap, double sceneSeconds)
{
    const double d = Hundredths(sceneSeconds);
    const double first = ClampTime(cap.capTime_first, 0.0, d - kCaptionTimeStep);
    const double second = ClampTime(cap.capTime_second, kCaptionTimeStep, d);
    const bool changed = first != cap.capTime_first || second != cap.capTime_second;
    cap.capTime_first = first;
    cap.capTime_second = second;
    return changed;
}

std::optional<core::CapParam> CaptionEditor::GetCaptionTarget(const core::CTarnwickData &data) const
{
    std::lock_guard lock(data.sceneLock.m);
    const core::CapParam *target = TargetRecord(data);
    if (target == nullptr) {
        return std::nullopt;
    }
    return *target;
}

int CaptionEditor::TargetLabelId() const
{
    switch (m_nCaptionTarget) {
    case kTargetTitle:
        return 1103;
    case kTargetWatermark:
        return 1102;
    default:
        return 3018;
    }
}

const core::CapParam *CaptionEditor::TargetRecord(const core::CTarnwickData &data) const
{
    if (m_nCaptionTarget == kTargetWatermark) {
        return &data.capWatermark;
    }
    if (m_nCaptionTarget == kTargetTitle) {
        return &data.capTitle;
    }
    const int row = data.list_idx;
    if (row < 0 || row >= static_cast<int>(data.diff_list.size())) {
        return nullptr;
    }
    return &data.diff_list[row].capParam;
}

core::CapParam *CaptionEditor::TargetRecord(core::CTarnwickData &data) const
{
    const core::CTarnwickData &view = data;
    return const_cast<core::CapParam *>(TargetRecord(view));
}

double CaptionEditor::TargetSeconds(const core::CTarnwickData &data) const
{
    if (m_nCaptionTarget != kTargetScene) {
        return kTitleFrameSeconds;
    }
    const int row = data.list_idx;
    if (row < 0 || row >= static_cast<int>(data.diff_list.size())) {
        return 0.0;
    }
    return SceneSeconds(data, data.diff_list[row]);
}

void CaptionEditor::LoadFieldsLocked(const core::CTarnwickData &data)
{
    const core::CapParam *target = TargetRecord(data);
    m_Caption = target != nullptr ? *target : core::CapParam();
    m_strCaptionText = m_Caption.caption;
    m_strCaptionStart = core::StrPrintf("%.02f", m_Caption.capTime_first);
    m_strCaptionEnd = core::StrPrintf("%.02f", m_Caption.capTime_second);
}

void CaptionEditor::LoadCaptionFields(const core::CTarnwickData &data)
{
    std::lock_guard lock(data.sceneLock.m);
    LoadFieldsLocked(data);
}

void CaptionEditor::NextTarget(const core::CTarnwickData &data)
{
    m_nCaptionTarget = (m_nCaptionTarget + 1) % 3;
    LoadCaptionFields(data);
}

void CaptionEditor::ResetTarget(const core::CTarnwickData &data)
{
    m_nCaptionTarget = kTargetScene;
    LoadCaptionFields(data);
}

bool CaptionEditor::SetText(core::CTarnwickData &data, const std::string &text)
{
    std::lock_guard lock(data.sceneLock.m);
    core::CapParam *target = TargetRecord(data);
    const std::string trimmed = TrimText(text);
    if (target == nullptr || trimmed == target->caption) {
        return false;
    }
    target->caption = trimmed;
    LoadFieldsLocked(data);
    return true;
}

bool CaptionEditor::ApplyTime(core::CTarnwickData &data, double value, bool bSpin, bool bStart)
{
    core::CapParam *target = TargetRecord(data);
    if (target == nullptr) {
        return false;
    }
    double d = TargetSeconds(data);
    if (bSpin) {
        d = Hundredths(d);
        value = Hundredths(value);
    }
    value = bStart ? ClampTime(value, 0.0, d - kCaptionTimeStep)
                   : ClampTime(value, kCaptionTimeStep, d);
    if (bSpin) {
        value = Hundredths(value);
    }
    double &time = bStart ? target->capTime_first : target->capTime_second;
    double &other = bStart ? target->capTime_second : target->capTime_first;
    if (value == time) {
        return false;
    }
    time = value;
    const double room = std::max(0.0, d - value);
    if (other > room) {
        other = room;
    }
    LoadFieldsLocked(data);
    return true;
}

bool CaptionEditor::SetStartTime(core::CTarnwickData &data, const std::string &text)
{
    std::lock_guard lock(data.sceneLock.m);
    const core::CapParam *target = TargetRecord(data);
    const std::string trimmed = TrimText(text);
    if (target == nullptr || trimmed == core::StrPrintf("%.02f", target->capTime_first)) {
        return false;
    }
    return ApplyTime(data, ParseSeconds(trimmed), false, true);
}

bool CaptionEditor::SetEndTime(core::CTarnwickData &data, const std::string &text)
{
    std::lock_guard lock(data.sceneLock.m);
    const core::CapParam *target = TargetRecord(data);
    const std::string trimmed = TrimText(text);
    if (target == nullptr || trimmed == core::StrPrintf("%.02f", target->capTime_second)) {
        return false;
    }
    return ApplyTime(data, ParseSeconds(trimmed), false, false);
}

bool CaptionEditor::StepStart(core::CTarnwickData &data, int direction)
{
    std::lock_guard lock(data.sceneLock.m);
    const core::CapParam *target = TargetRecord(data);
    if (target == nullptr || direction == 0) {
        return false;
    }
    const double step = direction > 0 ? kCaptionTimeStep : -kCaptionTimeStep;
    return ApplyTime(data, target->capTime_first + step, true, true);
}

bool CaptionEditor::StepEnd(core::CTarnwickData &data, int direction)
{
    std::lock_guard lock(data.sceneLock.m);
    const core::CapParam *target = TargetRecord(data);
    if (target == nullptr || direction == 0) {
        return false;
    }
    const double step = direction > 0 ? kCaptionTimeStep : -kCaptionTimeStep;
    return ApplyTime(data, target->capTime_second + step, true, false);
}

bool CaptionEditor::StoreWholeCaption(core::CTarnwickData &data)
{
    core::CapParam *target = TargetRecord(data);
    if (target == nullptr) {
        return false;
    }
    *target = m_Caption;
    LoadFieldsLocked(data);
    return true;
}

bool CaptionEditor::SetPosition(core::CTarnwickData &data, int index)
{
    if (index < 0 || index >= kPositionRows) {
        return false;
    }
    std::lock_guard lock(data.sceneLock.m);
    if (TargetRecord(data) == nullptr) {
        return false;
    }
    m_Caption.cap_pos_type = index;
    return StoreWholeCaption(data);
}

FontChoice CaptionEditor::FontDialogSeed() const
{
    FontChoice font;
    font.face = m_Caption.font_name;
    font.height = -m_Caption.font_size;
    font.weight = m_Caption.bold != 0 ? kBoldWeight : kNormalWeight;
    font.bItalic = m_Caption.italic != 0;
    font.bUnderline = m_Caption.underline != 0;
    font.bStrikeOut = m_Caption.strike_uut != 0;
    font.charSet = m_Caption.encoding;
    font.colour = m_Caption.color;
    return font;
}

bool CaptionEditor::SetFont(core::CTarnwickData &data, const FontChoice &font)
{
    m_Caption.font_name = font.face;
    m_Caption.font_size = std::abs(font.height);
    m_Caption.color = font.colour;
    m_Caption.bold = font.weight >= kBoldWeight ? -1 : 0;
    m_Caption.italic = font.bItalic ? -1 : 0;
    m_Caption.underline = font.bUnderline ? -1 : 0;
    m_Caption.strike_uut = font.bStrikeOut ? -1 : 0;
    m_Caption.encoding = font.charSet;
    std::lock_guard lock(data.sceneLock.m);
    return StoreWholeCaption(data);
}

bool CaptionEditor::ResetCaptions(core::CTarnwickData &data)
{
    std::lock_guard lock(data.sceneLock.m);
    for (core::SceneEntry &entry : data.diff_list) {
        entry.capParam = core::CapParam();
    }
    data.capTitle = core::DefaultTitle();
    data.capWatermark = core::DefaultWatermark();
    if (TargetRecord(data) == nullptr) {
        return false;
    }
    LoadFieldsLocked(data);
    return true;
}

AutoCaptionOutcome CaptionEditor::AutoCaptions(core::CTarnwickData &data, bool bConfirmed)
{
    std::lock_guard lock(data.sceneLock.m);
    const bool anyCaption = AnyCaptionIn(data.diff_list);
    if (data.diff_list.empty()) {
        return AutoCaptionOutcome::Nothing;
    }
    if (anyCaption && !bConfirmed) {
        return AutoCaptionOutcome::NeedsConfirmation;
    }
    if (anyCaption) {
        for (core::SceneEntry &entry : data.diff_list) {
            entry.capParam.caption.clear();
        }
        data.capWatermark.caption.clear();
        data.capTitle.caption.clear();
    } else {
        for (size_t i = 0; i < data.diff_list.size(); ++i) {
            core::SceneEntry &entry = data.diff_list[i];
            const std::string text = core::StrPrintf("Scene%03d", static_cast<int>(i) + 1);
            entry.SetCaption(0.0, SceneSeconds(data, entry), text);
        }
        data.capWatermark.caption = kAutoWatermark;
        data.capTitle.caption =
            core::StrPrintf(kAutoTitleFormat, core::FileNamePart(data.input_file).c_str());
    }
    LoadFieldsLocked(data);
    return anyCaption ? AutoCaptionOutcome::Emptied : AutoCaptionOutcome::Filled;
}

bool CaptionEditor::ClampCaptionToScene(core::CTarnwickData &data, int row)
{
    std::lock_guard lock(data.sceneLock.m);
    if (row < 0 || row >= static_cast<int>(data.diff_list.size())) {
        return false;
    }
    core::SceneEntry &entry = data.diff_list[row];
    const bool changed = ClampCaptionTimes(entry.capParam, SceneSeconds(data, entry));
    LoadFieldsLocked(data);
    return changed;
}

bool AnySceneCaption(const core::CTarnwickData &data)
{
    std::lock_guard lock(data.sceneLock.m);
    return AnyCaptionIn(data.diff_list);
}

int AutoCaptionLabelId(const core::CTarnwickData &data)
{
    return AnySceneCaption(data) ? 3024 : 3109;
}

} // namespace workspace
