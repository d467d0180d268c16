// The scene list and the merge list as data: output start frames, row texts, cell edits and the
// row commands (split, delete, duplicate, tick, move, drag).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/tarnwick_data.h"

namespace workspace {

// Locking: every function below that takes a CTarnwickData reads or changes diff_list and
// list_idx under data.sceneLock, which it takes itself; the caller must not hold it. Functions on
// a plain vector of entries take no lock: the caller hands them its own copy.

// The two lists share their arithmetic; they differ in what a row's length is and in what the
// delete command does with the segment file.
enum class ListKind {
    Scene, // rows are scenes of the input: length last - first + 1
    Merge  // rows are whole files: length viOut.frame_num, and only analysed rows count
};

// Text and background colour of an unticked row (0xBBGGRR; grey reads the same either way).
inline constexpr uint32_t kUntickedTextColour = 0x808080;
inline constexpr uint32_t kUntickedBackColour = 0xDCDCDC;

// Where each ticked row starts in the finished file.
struct StartFrames
{
    // One element per row: the start frame, or nothing for a row that takes no part (unticked,
    // or on the merge list not analysed yet).
    std::vector<std::optional<int>> rowStart;
    // The start frames of the rows that take part, in row order: the step points of the
    // output preview.
    std::vector<int> tickedStarts;
};

// A cross-fade takes half its length from the first and the last row of the list and its full
// length from every other row. First and last are positions in the list, not among the ticked
// rows: an unticked first row leaves the first ticked row with the full reduction.
StartFrames ComputeStartFrames(const std::vector<core::SceneEntry> &rows,
                               ListKind kind,
                               double fps,
                               bool transition,
                               double transitionSec);
// The same for the project's list at viCurrent.fps, transition and dTransitionSec.
StartFrames ComputeStartFrames(const core::CTarnwickData &data, ListKind kind);

// Frame count of a row: last - first + 1 on the scene list, viOut.frame_num on the merge list.
int RowFrameCount(const core::SceneEntry &entry, ListKind kind);

// round(viCurrent.fps * valid_min_unit): the fewest frames a scene may have.
int MinSceneFrames(const core::CTarnwickData &data);

// What one row of a list shows.
template <size_t N> struct RowTexts
{
    std::array<std::string, N> columns;
    bool bChecked = true;
    // Set only for an unticked row; otherwise the row keeps the list's colours.
    std::optional<uint32_t> textColour;
    std::optional<uint32_t> backColour;
};

// Scene list: number "%03d", first, last, frame count, its time code, caption, caption start
// and length "%.02f", output start and its time code (both empty when startFrame is empty).
using SceneRowText = RowTexts<10>;
SceneRowText SceneRowTexts(const core::CTarnwickData &data, int row, std::optional<int> startFrame);

// Merge list: number, file name, "%d x %d" size, "%.02f" rate, input frames, output frames, their
// time code, output start and its time code.
struct MergeRowText : RowTexts<9>
{
    // An unticked row that is not analysed leaves its start columns as they stand on the list;
    // columns 7 and 8 then hold what a new row shows there (the unanalysed word).
    bool bKeepStartColumns = false;
};
// unanalyzedWord fills columns 2 to 6 of a row not analysed yet, and 7 and 8 when it is ticked.
MergeRowText MergeRowTexts(const core::CTarnwickData &data,
                           int row,
                           std::optional<int> startFrame,
                           const std::string &unanalyzedWord = "Unanalyzed");

// Bounds and start value of the in-place editor of column 1 (first frame), 2 (last frame) or
// 3 (frame count). The start value is clamped to the lower bound first, then to the upper; bounds
// that cross (a scene shorter than the minimum) are left as they are.
struct CellBounds
{
    int nLower = 0;
    int nUpper = 0;
    int nStart = 0;
};
// Nothing for a row out of range or a column other than 1, 2 and 3.
std::optional<CellBounds> CellEditBounds(const core::CTarnwickData &data, int row, int column);

struct CellEditResult
{
    // The text differed from the editor's start text and the row was written: the caller
    // rebuilds the list, reloads the caption fields and queues the check of nSceneToCheck.
    bool bChanged = false;
    int nSceneToCheck = -1;
};
// Commits an editor's text on row (the current row): trimmed; unchanged text does nothing; text
// that is not a number reads as 0; the value is clamped like the start value. Column 1 sets the
// first frame, 2 the last, 3 the last as first + value - 1. The row's caption is then kept
// inside the new length.
CellEditResult
ApplyCellEdit(core::CTarnwickData &data, int row, int column, const std::string &text);

// What a row command leaves for the caller to do, after it has changed the list.
struct ListChange
{
    bool bChanged = false;
    // Fewer than two rows: the list is not touched; the caller puts the default content in
    // place (the default scene on the scene tab, an empty merge list on the merge tab).
    bool bResetScenes = false;
    std::vector<std::string> filesToDelete; // segment files that no entry names any more
    std::vector<int> scenesToCheck;         // rows whose segment is to be checked, in order
    // Delete: frame count of the deleted row, for the position readout; -1 otherwise.
    int nDeletedFrames = -1;
};

// The frames at which the later part of a split of a row may begin.
struct SplitFrames
{
    int nFirst = 0; // first + m: the earlier part keeps m frames
    int nLast = 0;  // last - m + 1: the later part keeps m frames
};
// Where row can be split so that each part keeps at least m frames (MinSceneFrames, and at
// least 1); nothing when the row is out of range or has fewer than 2m frames.
std::optional<SplitFrames> SplitRange(const core::CTarnwickData &data, int row);
// Split is offered when the row has at least twice the fewest frames of a scene.
bool CanSplit(const core::CTarnwickData &data, int row);
// Splits row so that the later part begins exactly at frame, which must lie in SplitRange. The
// row becomes the later part; the earlier part, with default caption settings, is inserted
// before it. The later part becomes current. Both halves are to be checked, the old segment file
// deleted unless another row still names it. Does nothing when frame is outside the range.
ListChange SplitRowAt(core::CTarnwickData &data, int row, int frame);
// The context menu's split, at the preview position: the later part begins at the scene's first
// frame + previewFrameOffset, held inside SplitRange (so at first + m from the scene's start).
ListChange SplitRow(core::CTarnwickData &data, int row, int previewFrameOffset);
// Removes row. With fewer than two rows only bResetScenes is set. list_idx is clamped to the
// last row. The scene list deletes the row's segment unless another row (a duplicate) still
// names it, and checks the new current scene; the merge list keeps the file (a later reset
// removes it).
ListChange DeleteRow(core::CTarnwickData &data, int row, ListKind kind);
// Inserts a copy of row (its file name included) at row; the current row becomes row + 1, the
// lower of the two.
ListChange DuplicateRow(core::CTarnwickData &data, int row);
// Ticks or unticks row. False when the row is out of range or already in that state.
bool SetChecked(core::CTarnwickData &data, int row, bool bChecked);
// Moves row from to position to (the others shift); a target beyond the end is the last row, a
// negative target the first. list_idx follows the entry it named. False when nothing moved.
bool MoveRow(core::CTarnwickData &data, int from, int to);
// Exchanges two entries; the rows in between stay. False when a == b or either is out of range.
bool SwapRows(core::CTarnwickData &data, int a, int b);

// Where the pointer is, vertically, relative to the list's client area during a row drag.
enum class PointerZone { Above, Inside, Below };
// The first visible row after the drag's scroll: one line up above the area, one line down
// below it, within 0 .. rowCount - rowsPerPage.
int DragScrollTopRow(int topRow, int rowsPerPage, int rowCount, PointerZone zone);
// The row a drag step goes to: the row under the pointer (hitRow, -1 for none); with none, the top
// visible row above the area, top + rowsPerPage - 1 (at most the last row) below it, and -1
// (nothing happens) inside it.
int DragTargetRow(int hitRow, int topRow, int rowsPerPage, int rowCount, PointerZone zone);
// One drag step: swaps the dragged row with targetRow and makes targetRow current. Returns the
// new drag row; dragRow unchanged when targetRow is negative, out of range or dragRow itself.
int DragToRow(core::CTarnwickData &data, int dragRow, int targetRow);

// The context menu of a list at a row and column.
struct ContextMenu
{
    bool bShow = false;
    bool bHasSplit = false;     // the scene list only
    bool bSplitEnabled = false; // greyed when the scene is too short to split
    bool bHasDelete = false;
    bool bHasDuplicate = false;
};
// None during a render job or off the rows; none over columns 1, 2 and 3 of the scene list,
// whose cells are edited in place; any column on the merge list.
ContextMenu
ContextMenuAt(const core::CTarnwickData &data, ListKind kind, int row, int column, bool bRenderJob);

} // namespace workspace
