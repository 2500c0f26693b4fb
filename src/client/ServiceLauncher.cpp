#include "client/ServiceLauncher.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/processes/NSTask.h"
#include "platform/foundation/processes/ProcessFacts.h"
#include "protocol/KelvoImExport.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

namespace kelvo {
namespace {

constexpr std::string_view programName = "PlumwickHelper";

using Clock = std::chrono::steady_clock;

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

std::unique_ptr<NSConnection> connectionIfAny() {
    return NSConnection::connectionWithRegisteredName(KelvoImExport::registeredName);
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

std::unique_ptr<NSConnection> startService(const NSString& program, double timeoutSeconds) {
    const auto lock =
        PortLock::lock(socketPathOfPortName(KelvoImExport::registeredName), ".start", timeoutSeconds);
    // Whoever held the lock may have started it.
    if (auto connection = connectionIfAny())
        return connection;
    if (!lock)
        throw NSException(NSPortException, u"Another client has been starting the service for too long.");
    if (program.isNil())
        throw NSException(NSPortException,
                          u"The service's program PlumwickHelper was found neither beside this "
                          u"program, nor among the installed helper programs, nor on PATH.");

    NSTask service;
    service.setLaunchPath(program);
    service.setStandardInput(NSFileHandle::fileHandleWithNullDevice());
    service.setStandardOutput(NSFileHandle::fileHandleWithNullDevice());
    service.setStandardError(NSFileHandle::fileHandleWithNullDevice());
    service.setSession(NSTask::Session::own);
    service.launch();

    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(timeoutSeconds));
    auto pause = std::chrono::microseconds(500);
    constexpr auto longestPause = std::chrono::microseconds(50'000);
    while (Clock::now() < end) {
        if (auto connection = connectionIfAny()) {
            // A copy that was started by hand at the same moment has the name; ours would run on unreachable.
            if (connection->peerProcessIdentifier() != service.processIdentifier())
                service.terminate();
            return connection;
        }
        if (!service.isRunning())
            throw NSException(NSPortException,
                              stringWithFormat(u"%@ ended as soon as it was started.", program));
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, longestPause);
    }
    service.terminate();
    throw NSException(NSPortException, stringWithFormat(u"%@ was started and does not answer.", program));
}

} // namespace kelvo
