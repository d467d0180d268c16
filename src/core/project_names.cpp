// Names that a project derives from its input file: segments, project file, outputs.
#include "core/project_names.h"

#include "core/helpers.h"
#include "core/paths.h"

namespace core {
namespace {

constexpr char kPartialTail[] = ".partial.mp4";

} // namespace

std::string SegmentStem(const CTarnwickData &data)
{
    return data.output_folder + ReplaceExtension(FileNamePart(data.input_file), "_seg_");
}

std::string SegmentPath(const CTarnwickData &data, int first, int last)
{
    return SegmentStem(data) + StrPrintf("%d_%d.mp4", first, last);
}

std::string SegmentPattern(const CTarnwickData &data)
{
    return SegmentStem(data) + "*.mp4";
}

std::string PartialSegmentPath(const std::string &fileName)
{
    constexpr char kMp4[] = ".mp4";
    constexpr size_t kMp4Length = sizeof(kMp4) - 1;
    if (fileName.size() >= kMp4Length &&
        fileName.compare(fileName.size() - kMp4Length, kMp4Length, kMp4) == 0) {
        return fileName.substr(0, fileName.size() - kMp4Length) + kPartialTail;
    }
    return fileName + kPartialTail;
}

std::string PartialSegmentPattern(const CTarnwickData &data)
{
    return SegmentStem(data) + "*" + kPartialTail;
}

void DeriveProjectNames(CTarnwickData &data, const std::string &path)
{
    data.input_file = path;
    const std::string base = FileNamePart(path);
    if (data.project_file.empty()) {
        data.project_file = path + ".twproj";
    }
    if (data.output_folder.empty()) {
        data.output_folder = SetTrailingSeparator(path + "_out", true);
    }
    if (data.output_name.empty()) {
        data.output_name = ReplaceExtension(base, "_trim.mp4");
    }
    data.pts_file = data.output_folder + ReplaceExtension(base, "_pts.csv");
    if (data.capTitle.caption.empty()) {
        data.capTitle.caption = StrPrintf("{\\fad(500,500)}%s", base.c_str());
    }
}

} // namespace core
