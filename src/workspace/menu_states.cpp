// The main menu's availability and check rules.
#include "workspace/menu_states.h"

#include "core/helpers.h"

namespace workspace {
namespace {

// Characters of a UTF-8 text (continuation bytes do not count).
size_t CharCount(const std::string &text)
{
    size_t n = 0;
    for (unsigned char c : text) {
        if ((c & 0xC0) != 0x80) {
            ++n;
        }
    }
    return n;
}

// The first nMax characters of a UTF-8 text.
std::string CutChars(const std::string &text, size_t nMax)
{
    size_t n = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
            if (n == nMax) {
                return text.substr(0, i);
            }
            ++n;
        }
    }
    return text;
}

MenuItemState ItemState(int nCommand, const MenuFacts &f)
{
    MenuItemState s;
    s.nCommand = nCommand;
    s.bEnabled = true;
    switch (nCommand) {
    case kCmdNewProject:
    case kCmdOpenProject:
        s.bEnabled = !f.bBusy;
        break;
    case kCmdSaveProject:
    case kCmdSaveProjectAs:
        s.bEnabled = f.bSceneInput && !f.bBusy;
        break;
    case kCmdHardwareAcceleration:
        s.bEnabled = f.bCudaDevice && !f.bBusy;
        s.bChecked = f.bUseCuda;
        break;
    case kCmdSaveAutomatically:
        s.bChecked = f.bAutoSave;
        break;
    case kCmdReopenLast:
        s.bChecked = f.bReopenLast;
        break;
    case kCmdPreset0:
    case kCmdPreset1:
    case kCmdPreset2:
        s.bEnabled = !f.bBusy;
        s.bChecked = f.nEncodePreset == nCommand - kCmdPreset0;
        break;
    case kCmdJapanese:
        s.bChecked = f.bJapanese;
        break;
    case kCmdEnglish:
        s.bChecked = !f.bJapanese;
        break;
    default:
        break;
    }
    return s;
}

} // namespace

bool MenuStates::Enabled(int nCommand) const
{
    for (const MenuItemState &item : items) {
        if (item.nCommand == nCommand) {
            return item.bEnabled;
        }
    }
    for (const RecentMenuEntry &entry : recent) {
        if (entry.nCommand == nCommand) {
            return entry.bEnabled;
        }
    }
    return false;
}

bool MenuStates::Checked(int nCommand) const
{
    for (const MenuItemState &item : items) {
        if (item.nCommand == nCommand) {
            return item.bChecked;
        }
    }
    return false;
}

MenuStates ComputeMenuStates(const MenuFacts &facts)
{
    MenuStates states;
    for (int nCommand : kMenuCommands) {
        states.items.push_back(ItemState(nCommand, facts));
    }
    for (size_t i = 0; i < facts.recent.size(); ++i) {
        RecentMenuEntry entry;
        entry.nCommand = kCmdRecentFirst + static_cast<int>(i);
        entry.path = facts.recent[i];
        entry.text = core::StrPrintf(
            "&%d %s", static_cast<int>(i + 1), AbbreviatePath(facts.recent[i], 30).c_str());
        entry.bEnabled = !facts.bBusy;
        states.recent.push_back(entry);
    }
    states.bTabButtons = !facts.bBusy;
    states.nCurrentTab = facts.nCurrentTab;
    return states;
}

std::string AbbreviatePath(const std::string &path, size_t nMax)
{
    if (CharCount(path) <= nMax) {
        return path;
    }
    const size_t lastSlash = path.rfind('/');
    const std::string name = lastSlash == std::string::npos ? path : path.substr(lastSlash + 1);
    const size_t firstEnd = path.find('/', path.size() > 1 && path[0] == '/' ? 1 : 0);
    if (lastSlash != std::string::npos && firstEnd != std::string::npos && firstEnd < lastSlash) {
        const std::string shortened =
            core::StrPrintf("%s.../%s", path.substr(0, firstEnd + 1).c_str(), name.c_str());
        if (CharCount(shortened) <= nMax) {
            return shortened;
        }
    }
    return CutChars(name, nMax);
}

} // namespace workspace
