#include "mdimport/ImporterTool.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/processes/NSTask.h"

#include <cstddef>
#include <string_view>

namespace kelvo {
namespace {

/// Thousands of importers.
constexpr std::size_t mostBytesOfListing = 1u << 20;
/// What a killed process may take to be gone; one that takes longer is left to the system.
constexpr double secondsToDie = 1;

/// Whether the tool has ended by itself, and in time.
bool endsByItself(NSTask& tool, double seconds) {
    try {
        return tool.waitUntilExitForSeconds(seconds);
    } catch (const NSException&) {
        return false; // too much to keep
    }
}

/// How many bytes make whole characters, if those before the last character are UTF-8.
std::size_t lengthOfWholeCharacters(std::string_view text) {
    constexpr std::size_t longestCharacter = 4;
    for (std::size_t count = 1; count < longestCharacter && count <= text.size(); ++count) {
        const auto byte = static_cast<unsigned char>(text[text.size() - count]);
        if ((byte & 0xC0U) == 0x80)
            continue;
        const std::size_t due = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return due > count ? text.size() - count : text.size();
    }
    return text.size();
}

} // namespace

NSData listingOfImporterTool(double seconds) {
    if (!NSFileManager::defaultManager().fileExistsAtPath(mdimportPath))
        return nullptr;
    const auto pipe = NSPipe::pipe();
    NSFileHandle& reader = *pipe->fileHandleForReading();
    reader.setMaximumPendingBytes(mostBytesOfListing);
    NSTask tool;
    tool.setLaunchPath(mdimportPath);
    tool.setArguments(NSArray::arrayWithObjects({u"-L"}));
    tool.setStandardError(pipe);
    // What the tool has started ends with it.
    tool.setSession(NSTask::Session::own);
    tool.launch();

    const bool isWhole = endsByItself(tool, seconds);
    if (!isWhole)
        tool.killTask();
    // Whatever else the tool has left behind may hold the pipe for ever.
    const NSData output = reader.availableDataWithoutWaiting();
    reader.closeFile();
    tool.waitUntilExitForSeconds(secondsToDie);
    return isWhole ? output : output.subdataWithRange({0, lengthOfWholeCharacters(output.characters())});
}

} // namespace kelvo
