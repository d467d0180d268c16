// Project file (.twproj): the layout constants, the key check of the reader, the limits a file
// must keep to be parsed and the check of a loaded project's values. The members
// CTarnwickData::SaveProjectFile and LoadProjectFile are defined beside them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace core {

class CTarnwickData;

// The three bytes that open every project file (UTF-8 byte-order mark).
inline constexpr char kProjectFileBom[] = "\xEF\xBB\xBF";

// Files beyond these limits are refused before they are parsed, or as soon as the parse reaches
// the limit. No project comes near them: a saved project nests four levels (root, "diff_list", a
// scene, its "capParam"), and at the highest density scene extraction can give (one second of
// motion, one second of quiet) a day of video makes 43,200 scenes, each with a segment file of
// its own. The limits keep the memory a hostile file can claim in proportion to its size: a
// scene costs about 550 bytes however short its text, so 200,000 of them about 110 MB.
inline constexpr size_t kMaxProjectFileBytes = size_t(64) * 1024 * 1024;
inline constexpr int kMaxProjectNesting = 8;
inline constexpr size_t kMaxProjectScenes = 200'000;

// True when json is an object that holds key with a value of the kind named by kindName:
// "is_number" (integer, unsigned or float), "is_number_float", "is_number_integer" (integer or
// unsigned), "is_string", "is_boolean", "is_array". Any other kind name gives false, and so does
// a root that is not an object.
bool CheckJsonKey(const nlohmann::json &json, const std::string &key, const std::string &kindName);

// The deepest nesting of arrays and objects in a JSON text, counting brackets outside strings,
// without parsing it. Counting stops at the first bracket that goes deeper than limit: the result
// is then limit + 1 and *pOffset (when given) the offset of that bracket in text.
int JsonNestingDepth(std::string_view text, int limit, size_t *pOffset = nullptr);

// The warnings about one project: each one line "<field>: <what is wrong>", where a field inside
// the scene list carries its index and its list number, "diff_list[2].framNo_first (scene 3)".
// Past kMaxLines only a count is kept, so that a damaged list of many scenes cannot fill the
// memory with text.
class ProjectWarnings
{
public:
    static constexpr size_t kMaxLines = 100;

    void Add(std::string line);
    // The lines in the order added, then "... and N more warnings" if some were only counted.
    std::vector<std::string> Lines() const;
    bool Empty() const { return m_lines.empty(); }

private:
    std::vector<std::string> m_lines;
    size_t m_more = 0;
};

// Adds a warning for each value of data that cannot be right, whatever file it came from:
// - a path (input_file, input_mp4_file, output_folder, output_name, pts_file, a scene's fileName)
//   that no tool can be given (core::PathProblem), when it is not empty;
// - another text (frame rate, field order, captions and font names) that is not valid UTF-8;
// - a scene whose frame numbers are negative, whose last frame is before its first, or which
//   reaches frame_num or beyond while frame_num is above 0;
// - an fps that is not a positive finite number while the project names a video or has scenes;
// - a negative width, height or frame_num; a sar_den not above 0, a negative sar_num, or a
//   sar_num of 0 with a sar_den other than 1 (0:1 is how a probe stores an unknown aspect).
// - a scene whose segment file name does not end in "_<first>_<last>.mp4" of its frames.
// Reads data only; the caller holds whatever lock the list needs.
void CheckProjectData(const CTarnwickData &data, ProjectWarnings &warnings);

// Adds a warning when list_idx names no row of the list (a list of scenes with a current row
// before the first or past the last, or an empty list with a row other than -1). The reader
// adds it for a file that holds the key: a project without one has no current row yet.
void CheckCurrentRow(const CTarnwickData &data, ProjectWarnings &warnings);

} // namespace core
