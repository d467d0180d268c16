// What every command that writes a project does around its job: the output folder made, and
// the project and the output folder locked for the job's whole length.
#include "cli/job_guard.h"

#include <filesystem>
#include <ostream>
#include <system_error>

#include "core/paths.h"

namespace cli {

JobGuard::~JobGuard()
{
    m_folderLock.Release();
    m_projectLock.Release();
    for (const std::string &folder : m_madeFolders) {
        std::error_code ec;
        std::filesystem::remove(folder, ec); // only an empty folder goes
    }
}

bool JobGuard::Take(const core::CTarnwickData &data, const std::string &owner, std::ostream &err)
{
    const std::string folder = core::SetTrailingSeparator(data.output_folder, false);
    std::error_code ec;
    m_madeFolders.clear();
    for (std::filesystem::path missing = folder;
         !missing.empty() && missing.has_relative_path() &&
         !std::filesystem::exists(std::filesystem::symlink_status(missing, ec));
         missing = missing.parent_path()) {
        m_madeFolders.push_back(missing.string());
    }
    std::filesystem::create_directories(folder, ec);
    std::error_code statusError;
    if (!std::filesystem::is_directory(folder, statusError)) {
        std::string reason = ec ? ec.message() : "a file of that name is in the way";
        err << m_head << "cannot create the output folder " << folder << ": " << reason << "\n";
        return false;
    }
    std::string problem;
    // The merge workspace keeps no project file: its output folder's lock covers it.
    if (!data.project_file.empty() &&
        !m_projectLock.TryAcquire(core::ProjectLockPath(data.project_file), owner, &problem)) {
        err << m_head << "the project " << data.project_file << " " << problem << "\n";
        return false;
    }
    if (!m_folderLock.TryAcquire(core::FolderLockPath(data.output_folder), owner, &problem)) {
        err << m_head << "the output folder " << data.output_folder << " " << problem << "\n";
        return false;
    }
    return true;
}

} // namespace cli
