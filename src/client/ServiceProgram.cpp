#include "client/ServiceProgram.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/processes/ProcessFacts.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace kelvo {
namespace {

constexpr std::string_view programName = "PlumwickHelper";

bool isProgram(const std::string& path) {
    return access(path.c_str(), X_OK) == 0;
}

std::string folderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return std::string(path.substr(0, slash == std::string_view::npos ? 0 : slash));
}

/// Empty when this code is no shared library: the program itself goes by the name that it was called by.
std::string folderOfThisLibrary() {
    Dl_info library;
    if (dladdr(reinterpret_cast<void*>(&folderOfThisLibrary), &library) == 0 || library.dli_fname[0] != '/')
        return "";
    return folderOf(library.dli_fname);
}

std::string programOnSearchPath() {
    const char* variable = std::getenv("PATH");
    std::string_view folders = variable ? variable : "";
    while (!folders.empty()) {
        const std::size_t colon = std::min(folders.find(':'), folders.size());
        std::string candidate = std::string(folders.substr(0, colon)) + "/" + std::string(programName);
        // An empty or relative entry would depend on the working folder.
        if (candidate.front() == '/' && colon > 0 && isProgram(candidate))
            return candidate;
        folders.remove_prefix(std::min(colon + 1, folders.size()));
    }
    return "";
}

} // namespace

NSString pathOfServiceProgram(const NSString& given) {
    if (!given.isNil())
        return given;
    const std::string programs = folderOfThisProgram();
    const std::string libraries = folderOfThisLibrary();
    for (const std::string& folder :
         {programs, programs + "/" KELVO_HELPER_FROM_COMMAND,
          libraries.empty() ? programs : libraries + "/" KELVO_HELPER_FROM_LIBRARY,
          std::string(KELVO_HELPER_FOLDER)}) {
        const std::string candidate = folder + "/" + std::string(programName);
        if (isProgram(candidate))
            return NSFileManager::defaultManager().stringWithFileSystemRepresentation(candidate);
    }
    const std::string candidate = programOnSearchPath();
    return candidate.empty() ? NSString()
                             : NSFileManager::defaultManager().stringWithFileSystemRepresentation(candidate);
}

std::string folderOfServiceProgram() {
    const NSString program = pathOfServiceProgram(nullptr);
    const auto path = program.isNil()
                          ? std::nullopt
                          : NSFileManager::defaultManager().fileSystemRepresentationWithPath(program);
    // The service goes by where its program really lies.
    std::error_code failure;
    return folderOf(path ? std::filesystem::canonical(*path, failure).string() : "");
}

bool setPlatformRootOfService() {
    const std::string folder = folderOfServiceProgram();
    setPlatformRoot(folder);
    return !folder.empty();
}

} // namespace kelvo
