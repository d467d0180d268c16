// The record of which source file a working file was made from, kept beside it.
#include "core/source_stamp.h"

#include <filesystem>
#include <system_error>

#include <nlohmann/json.hpp>

#include "core/file_io.h"

namespace core {
namespace {

namespace fs = std::filesystem;

bool IsRegularFile(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && fs::is_regular_file(path, ec);
}

} // namespace

std::string SourceStampPath(const std::string &file)
{
    const fs::path path(file);
    std::string name(1, '.');
    // Without the file's extension, so that a pattern or name search for the file itself
    // ("*_seg_*.mp4") never meets its record.
    name.append(path.stem().string()).append(".source");
    return (path.parent_path() / name).string();
}

std::string SourceStampOf(const std::string &source)
{
    std::error_code ec;
    const fs::path real = fs::canonical(source, ec);
    if (ec || !fs::is_regular_file(real, ec)) {
        return "";
    }
    const std::uintmax_t size = fs::file_size(real, ec);
    if (ec) {
        return "";
    }
    const fs::file_time_type modified = fs::last_write_time(real, ec);
    if (ec) {
        return "";
    }
    nlohmann::ordered_json record;
    record["path"] = real.string();
    record["size"] = size;
    record["modified"] = static_cast<long long>(modified.time_since_epoch().count());
    // A name that is not UTF-8 is kept comparable rather than refused.
    return record.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

bool WriteSourceStamp(const std::string &file, const std::string &source)
{
    const std::string record = SourceStampOf(source);
    return !record.empty() && WriteFileAtomically(SourceStampPath(file), record);
}

void RemoveSourceStamp(const std::string &file)
{
    std::error_code ignored;
    fs::remove(SourceStampPath(file), ignored);
}

bool MadeFromSource(const std::string &file, const std::string &source)
{
    if (!IsRegularFile(file)) {
        return false;
    }
    const std::string wanted = SourceStampOf(source);
    std::string kept;
    return !wanted.empty() && ReadRegularFile(SourceStampPath(file), kept) && kept == wanted;
}

} // namespace core
