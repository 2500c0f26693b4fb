// Whatever a file beside another one holds, another resource fork in it leaves all else as it was.

#include "Input.h"
#include "platform/foundation/AppleDouble.h"
#include "platform/foundation/BigEndian.h"

#include <algorithm>

using namespace kelvo;

namespace {

constexpr std::size_t headerSize = 26, lineSize = 12;
constexpr std::uint32_t forkID = static_cast<std::uint32_t>(AppleDouble::EntryID::resourceFork);

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData data = NSData::dataWithBytes(bytes, size);
    const auto file = AppleDouble::withData(data);
    if (!file)
        return 0;
    for (const auto id : {AppleDouble::EntryID::finderInfo, AppleDouble::EntryID::resourceFork})
        require(file->entry(id, 32).length() <= 32);
    const NSData fork = NSData::dataWithBytes("another fork");
    const NSData changed = file->dataByReplacingResourceFork(fork);
    if (changed.isNil())
        return 0;
    const auto now = AppleDouble::withData(changed);
    require(now && now->entry(AppleDouble::EntryID::resourceFork, fork.length()) == fork);
    const std::span<const std::uint8_t> before = data.bytes(), after = changed.bytes();
    bool hasFork = false;
    for (std::size_t line = headerSize; line < headerSize + lineSize * bigEndian16(before, 24);
         line += lineSize) {
        const std::uint32_t id = bigEndian32(before, line), length = bigEndian32(before, line + 8);
        const bool isReplaced = id == forkID && !hasFork;
        hasFork = hasFork || id == forkID;
        require(bigEndian32(after, line) == id);
        if (isReplaced)
            continue;
        require(bigEndian32(after, line + 8) == length);
        require(length == 0 || std::ranges::equal(before.subspan(bigEndian32(before, line + 4), length),
                                                  after.subspan(bigEndian32(after, line + 4), length)));
    }
    return 0;
}
