#include "importers/archives/ArchiveNames.h"

#include "importers/archives/NameCharset.h"
#include "importers/support/Texts.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/encodings/NSStringEncoding.h"

#include <algorithm>
#include <string_view>

namespace kelvo::importers {
namespace {

/// More does not make the guess any better.
constexpr std::size_t mostBytesOfGuess = std::size_t{64} << 10;

bool isUTF8(std::string_view bytes) {
    return stringOf(bytes).UTF8String() == bytes;
}

} // namespace

std::string textOfNames(const std::vector<std::string>& names) {
    std::string unknown;
    for (const std::string& name : names) {
        if (unknown.size() < mostBytesOfGuess && !isUTF8(name))
            unknown.append(unknown.empty() ? "" : "\n").append(name);
    }
    unknown.resize(std::min(unknown.size(), mostBytesOfGuess));
    const NSStringEncoding encoding = unknown.empty() ? NSUTF8StringEncoding : likelyEncodingOfNames(unknown);
    std::string text;
    for (const std::string& name : names) {
        if (!text.empty())
            text += '\n';
        const std::size_t start = text.size();
        text += unknown.empty() || isUTF8(name)
                    ? name
                    : stringByRepairingData_encoding(NSData::dataWithBytes(name), encoding).UTF8String();
        // A line each, whatever somebody has put into a name.
        std::replace_if(
            text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
            [](char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F; }, ' ');
    }
    return text;
}

} // namespace kelvo::importers
