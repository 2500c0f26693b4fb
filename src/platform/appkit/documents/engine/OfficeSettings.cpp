#include "platform/appkit/documents/engine/OfficeSettings.h"

#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

namespace kelvo::documentengine {
namespace {

struct Setting {
    std::string_view path;
    std::string_view name;
    std::string_view value;
};

constexpr std::array settings{
    // Documents come from anywhere: no code of theirs runs, and nothing that they only refer to is fetched,
    // be it from the network or from the user's own files.
    Setting{"Common/Security/Scripting", "DisableMacrosExecution", "true"},
    Setting{"Common/Security/Scripting", "MacroSecurityLevel", "3"},
    Setting{"Common/Security/Scripting", "OfficeBasic", "0"},
    Setting{"Common/Security/Scripting", "ExecutePlugins", "false"},
    Setting{"Common/Security/Scripting", "CheckDocumentEvents", "true"},
    Setting{"Common/Security/Scripting", "BlockUntrustedRefererLinks", "true"},
    Setting{"Java/VirtualMachine", "Enable", "false"},
    Setting{"Writer/Content/Update", "Link", "2"}, // never
    // What a field shows is what its document says, not what this machine would put there today.
    Setting{"Writer/Content/Update", "Field", "false"},
    Setting{"Writer/Content/Update", "Chart", "false"},
    Setting{"WriterWeb/Content/Update", "Link", "2"},
    // The folder is our own and short-lived.
    Setting{"Common/Misc", "UseLocking", "false"},
    Setting{"Common/Misc", "UseDocumentOOoLockFile", "false"},
    Setting{"Common/Misc", "UseDocumentSystemFileLocking", "false"},
    Setting{"Common/Save/Document", "CreateBackup", "false"},
    Setting{"Common/Undo", "Steps", "0"},
    Setting{"Recovery/RecoveryInfo", "Enabled", "false"},
    Setting{"Recovery/AutoSave", "Enabled", "false"},
    Setting{"Linguistic/SpellChecking", "IsSpellAuto", "false"},
};

} // namespace

bool writeOfficeSettings(const std::filesystem::path& profile) {
    std::error_code error;
    std::filesystem::create_directories(profile / "user", error);
    std::ofstream file(profile / "user" / "registrymodifications.xcu", std::ios::binary);
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<oor:items xmlns:oor=\"http://openoffice.org/2001/registry\">\n";
    for (const Setting& setting : settings) {
        file << "<item oor:path=\"/org.openoffice.Office." << setting.path << "\"><prop oor:name=\""
             << setting.name << "\" oor:op=\"fuse\"><value>" << setting.value << "</value></prop></item>\n";
    }
    file << "</oor:items>\n";
    return static_cast<bool>(file.flush());
}

} // namespace kelvo::documentengine
