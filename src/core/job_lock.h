// Advisory locks that keep two jobs, in one program or in two, off the same project or output
// folder.
#pragma once

#include <string>

namespace core {

// One lock file held with flock for the life of the object. The file holds the holder's process
// id and what it does, so that a refused job can say who holds the lock; it is removed when the
// lock is released. The lock ends with the process, however the process ends, so a killed job
// never leaves a folder locked: the file it leaves holds no lock and is taken over.
class JobLock
{
public:
    JobLock() = default;
    // Releases the lock, if held.
    ~JobLock();
    JobLock(const JobLock &) = delete;
    JobLock &operator=(const JobLock &) = delete;

    // Takes the lock of lockPath without waiting and writes owner into it. False when it is
    // held already (by another process, or by another JobLock of this one): pProblem then
    // receives "is in use by another job (<what the holder wrote>)"; or when the lock file cannot
    // be made: "cannot make the lock file <lockPath>: <reason>". A JobLock holds one lock.
    bool TryAcquire(const std::string &lockPath, const std::string &owner, std::string *pProblem);

    // Removes the lock file and releases the lock. Nothing happens when none is held.
    void Release();

    bool Held() const { return m_fd >= 0; }

private:
    int m_fd = -1;
    std::string m_path;
};

// The lock file of a project: the path of the real project file + ".lock", so that a project
// reached through a symbolic link is locked where it is reached by its own path.
std::string ProjectLockPath(const std::string &projectFile);
// The lock file of an output folder, inside the real folder: ".tarnwickmp4.lock".
std::string FolderLockPath(const std::string &folder);

} // namespace core
