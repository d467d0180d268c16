// Reading ffprobe's JSON into the stream facts of a file, and the number conversions it uses.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "core/tarnwick_data.h"

namespace engine {

// What reading the JSON needs beyond the text.
struct ProbeContext
{
    std::string input_file; // the project's input file
    int inputFrameNum = 0;  // viInput.frame_num: reused for input_file instead of counting
    // Counts the frames of a file whose text states none (GetNbFrame); may be empty (0 then).
    // Gets the record with width and height already read.
    std::function<int(const std::string &path, const core::VideoInfo &info)> countFrames;
};

// Reads the text of "ffprobe -print_format json -show_streams" for path into info. False, with
// info untouched, when the text is not JSON, its top is no object with "streams", or no stream
// is a video stream. Rules:
// - width, height: the numbers, -1 when missing;
// - rate: "avg_frame_rate" (default "0/1") when its fraction has a non-zero denominator, is
//   below 120 and is not a time base like "1000/1"; otherwise "r_frame_rate" (default "0/1")
//   whatever it says; fps 0 when the chosen fraction is not usable;
// - frame_num: "nb_frames" as a number, or a text read as an integer ("N/A" and text that is no
//   integer or does not fit give 0); when the key is missing, inputFrameNum for input_file if
//   above 0, otherwise countFrames;
// - start_frame: the integer part of "start_time" x fps + 0.5 ("N/A", missing or no number: 0);
// - rotation: the first numeric "rotation" of an object in "side_data_list";
// - field_order: the text, except "N/A" and "unknown", which leave it empty;
// - sar_num, sar_den: the two sides of "sample_aspect_ratio" ("0:1" gives 0 and 1); 1 and 1
//   when missing or when a side is no integer;
// - bHasAudio: some stream has "codec_type" "audio";
// - then SnapFrameRate, adjusting frame_num unless path is input_file.
// A key of another type than expected counts as missing; a number with a fraction where an
// integer is expected is cut to its integer part.
bool ProbeVideoText(const std::string &text,
                    const std::string &path,
                    const ProbeContext &context,
                    core::VideoInfo &info);

// Text to int as std::stoi reads it (leading white space, sign, decimal digits, trailing text
// ignored), but empty instead of throwing when no digit starts the text or the value does not
// fit an int.
std::optional<int> ParseIntPrefix(const std::string &text);
// Text to double as std::stod reads it, independent of the locale, empty instead of throwing.
std::optional<double> ParseDoublePrefix(const std::string &text);

} // namespace engine
