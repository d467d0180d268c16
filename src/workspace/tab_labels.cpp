// The fixed texts of the host and the tabs by string id.
#include "workspace/tab_labels.h"

#include "core/helpers.h"
#include "core/merge_formats.h"

namespace workspace {
namespace {

// Labels both tabs carry alike.
std::vector<ControlLabel> CommonLabels()
{
    return {{Control::OutputFolder, 3412},
            {Control::BrowseOutputFolder, 3411},
            {Control::OutputName, 3413},
            {Control::ShowInput, 3415},
            {Control::ShowOutput, 3416},
            {Control::ClearOutputFolder, 3417},
            {Control::Transition, 3429},
            {Control::ResetSceneList, 3430},
            {Control::Stop, 3435},
            {Control::Play, 3436},
            {Control::Back10, 3437},
            {Control::Forward10, 3438},
            {Control::PreviousFrame, 3439},
            {Control::NextFrame, 3440},
            {Control::SceneLoop, 3441},
            {Control::PlayLoop, 3442},
            {Control::Volume, 3449},
            {Control::Help, 1095}};
}

std::vector<std::string> Texts(const std::vector<int> &ids)
{
    std::vector<std::string> texts;
    for (int id : ids) {
        texts.push_back(core::LoadStringById(id));
    }
    return texts;
}

} // namespace

const std::vector<ControlLabel> &SceneTabLabels()
{
    static const std::vector<ControlLabel> labels = [] {
        std::vector<ControlLabel> l = CommonLabels();
        const std::vector<ControlLabel> own = {{Control::InputPath, 3410},
                                               {Control::BrowseInput, 3411},
                                               {Control::ChooseOutputFile, 3414},
                                               {Control::Threshold, 3418},
                                               {Control::ValidMinUnit, 3419},
                                               {Control::CutMinUnit, 3420},
                                               {Control::ResetScanSettings, 3421},
                                               {Control::Brightness, 3422},
                                               {Control::Saturation, 3423},
                                               {Control::Contrast, 3424},
                                               {Control::Gamma, 3425},
                                               {Control::CinemaScope, 3426},
                                               {Control::Primaries, 3427},
                                               {Control::ResetPicture, 3421},
                                               {Control::AutoPicture, 3428},
                                               {Control::ExtractScenes, 3431},
                                               {Control::SegmentOutput, 3432},
                                               {Control::FinalOutput, 3433},
                                               {Control::ExtractAndOutput, 3434},
                                               {Control::CaptionText, 3048},
                                               {Control::CaptionStart, 3049},
                                               {Control::CaptionEnd, 3443},
                                               {Control::CaptionPosition, 3448},
                                               {Control::Font, 3444},
                                               {Control::ResetCaptions, 3445}};
        l.insert(l.end(), own.begin(), own.end());
        return l;
    }();
    return labels;
}

const std::vector<ControlLabel> &MergeTabLabels()
{
    static const std::vector<ControlLabel> labels = [] {
        std::vector<ControlLabel> l = CommonLabels();
        const std::vector<ControlLabel> own = {{Control::InputPath, 3410},
                                               {Control::ResetScanSettings, 3421},
                                               {Control::ExtractScenes, 1101},
                                               {Control::SegmentOutput, 3446},
                                               {Control::FinalOutput, 3447},
                                               {Control::ExtractAndOutput, 3406},
                                               {Control::PictureSize, 3150},
                                               {Control::FrameRate, 3151}};
        l.insert(l.end(), own.begin(), own.end());
        return l;
    }();
    return labels;
}

const std::vector<int> &SceneListColumnIds()
{
    static const std::vector<int> ids = {
        3043, 3044, 3045, 3046, 3047, 3048, 3049, 3050, 3051, 3052};
    return ids;
}

const std::vector<int> &MergeListColumnIds()
{
    // Number, file name, size, rate, input frames, output frames, their length, output start
    // and its time.
    static const std::vector<int> ids = {3043, 3149, 3150, 3151, 3154, 3155, 3047, 3051, 3052};
    return ids;
}

const std::vector<int> &CaptionPositionIds()
{
    static const std::vector<int> ids = {
        3053, 3054, 3055, 3056, 3057, 3058, 3059, 3060, 3061, 3062};
    return ids;
}

std::vector<std::string> MergeSizeChoices()
{
    std::vector<std::string> texts;
    for (const core::MergeSize &size : core::kMergeSizes) {
        texts.push_back(core::StrPrintf("%d x %d", size.width, size.height));
    }
    return texts;
}

std::vector<std::string> MergeRateChoices()
{
    std::vector<std::string> texts;
    for (const core::MergeRate &rate : core::kMergeRates) {
        texts.push_back(core::StrPrintf("%.02f", core::MergeRateFps(rate)));
    }
    return texts;
}

TabTexts TabTextsOf(int nTab)
{
    TabTexts texts;
    for (const ControlLabel &label : nTab == 0 ? SceneTabLabels() : MergeTabLabels()) {
        texts.labels.emplace_back(label.control, core::LoadStringById(label.nStringId));
    }
    if (nTab == 0) {
        texts.columnHeads = Texts(SceneListColumnIds());
        texts.captionPositions = Texts(CaptionPositionIds());
    } else {
        texts.columnHeads = Texts(MergeListColumnIds());
        texts.sizeChoices = MergeSizeChoices();
        texts.rateChoices = MergeRateChoices();
    }
    return texts;
}

HostTexts CurrentHostTexts()
{
    HostTexts texts;
    texts.language = core::GetLanguage();
    texts.bJapanese = core::IsJapanese();
    texts.menu = core::LoadMenuById(core::kMainMenuId);
    texts.sceneTabButton = core::LoadStringById(3152);
    texts.mergeTabButton = core::LoadStringById(3153);
    texts.scene = TabTextsOf(0);
    texts.merge = TabTextsOf(1);
    return texts;
}

} // namespace workspace
