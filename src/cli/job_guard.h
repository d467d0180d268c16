// What every command that writes a project does around its job: the output folder made, and
// the project and the output folder locked for the job's whole length.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "core/job_lock.h"
#include "core/tarnwick_data.h"

namespace cli {

class JobGuard
{
public:
    // head: the start of every message line, such as "tarnwickmp4-cli render: ".
    explicit JobGuard(std::string head)
        : m_head(std::move(head))
    {
    }
    // Releases the locks, and removes the folders that Take made and that stayed empty: a
    // command refused before any work leaves nothing behind.
    ~JobGuard();
    JobGuard(const JobGuard &) = delete;
    JobGuard &operator=(const JobGuard &) = delete;

    // Makes data's output folder and takes both locks for owner (what the job does, for the
    // message another job gets). False, with one line on err naming the folder or the project
    // and the reason, when the folder cannot be made or a lock is held.
    bool Take(const core::CTarnwickData &data, const std::string &owner, std::ostream &err);

private:
    std::string m_head;
    std::vector<std::string> m_madeFolders; // the deepest first
    core::JobLock m_projectLock;
    core::JobLock m_folderLock;
};

} // namespace cli
