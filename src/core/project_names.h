// Names that a project derives from its input file: segments, project file, outputs.
#pragma once

#include <string>

#include "core/tarnwick_data.h"

namespace core {

// output_folder + the input's file name with its extension replaced by "_seg_": the common
// front of every segment file name of the project.
std::string SegmentStem(const CTarnwickData &data);

// The segment file of frames first..last: "%s%d_%d.mp4" of SegmentStem, first, last.
std::string SegmentPath(const CTarnwickData &data, int first, int last);

// Pattern matching every segment file of the project: SegmentStem + "*.mp4".
std::string SegmentPattern(const CTarnwickData &data);

// The name a segment is written under until its tool has succeeded: fileName with ".mp4"
// replaced by ".partial.mp4" (appended when fileName does not end in ".mp4"). A stopped, failed
// or killed cut never leaves a half file under the segment's own name.
std::string PartialSegmentPath(const std::string &fileName);

// Pattern matching the partial segment files of the project: SegmentStem + "*.partial.mp4".
std::string PartialSegmentPattern(const CTarnwickData &data);

// Fills the names of a project for a newly given input file: project_file (input + ".twproj")
// and output_folder (input + "_out/") and output_name (stem + "_trim.mp4") when empty;
// pts_file always; the title text when empty. input_file is set to path.
void DeriveProjectNames(CTarnwickData &data, const std::string &path);

} // namespace core
