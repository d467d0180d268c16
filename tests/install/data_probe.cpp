// Run from an installed bin/ folder: loads both string tables through the program's own search
// and looks for the four manuals the way the help viewer does ("doc/" beside the executable,
// then the installed data folder). Prints what it found; exit 0 only when everything was found
// outside the executable's own folder, that is in the installed data folder.
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "core/language.h"

namespace fs = std::filesystem;

namespace {

bool FindTable(const std::string &tag, const fs::path &dataFolder)
{
    std::string error;
    if (!core::LoadLanguage(tag, &error)) {
        std::printf("%s: no string table\n%s\n", tag.c_str(), error.c_str());
        return false;
    }
    const fs::path loaded = core::LoadedStringTablePath();
    const std::string title = core::LoadStringById(1096);
    std::printf("%s: %s, help title \"%s\"\n", tag.c_str(), loaded.c_str(), title.c_str());
    return loaded.parent_path().lexically_normal() == (dataFolder / "res").lexically_normal() &&
           !title.empty();
}

bool FindManual(const std::string &name, const fs::path &exeFolder, const fs::path &dataFolder)
{
    std::error_code ec;
    for (const fs::path &folder : {exeFolder / "doc", dataFolder / "doc"}) {
        const fs::path file = folder / name;
        if (fs::is_regular_file(file, ec) && fs::file_size(file, ec) > 0) {
            std::printf("%s: %s\n", name.c_str(), file.lexically_normal().c_str());
            return folder == dataFolder / "doc";
        }
    }
    std::printf("%s: not found\n", name.c_str());
    return false;
}

} // namespace

int main()
{
    std::error_code ec;
    const fs::path exeFolder = fs::read_symlink("/proc/self/exe", ec).parent_path();
    const fs::path dataFolder = exeFolder / ".." / "share" / "tarnwickmp4";
    bool ok = FindTable("en-US", dataFolder);
    ok = FindTable("ja-JP", dataFolder) && ok;
    for (const char *name :
         {"manual_en.txt", "manual_ja.txt", "manual2_en.txt", "manual2_ja.txt"}) {
        ok = FindManual(name, exeFolder, dataFolder) && ok;
    }
    return ok ? 0 : 1;
}
