#pragma once

#include "platform/foundation/NSData.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::cli {

class Session;

/// The forms in which rich text is written, by the end of the name.
enum class RichTextForm : std::uint8_t {
    /// ".rtfd": a package, which is a folder. The service writes it.
    package,
    /// ".rtf": a file without the attachments, made in the command's own process.
    plain,
    /// Any other name, or standard output: RTFD as one stream of bytes.
    bytes
};

RichTextForm richTextFormOfName(std::string_view name);

/// Throws CommandError (file) when it is plain already that rich text could not be written there; asked
/// before the work begins.
void requireRichTextWritable(const std::string& name);

/// Writes the RTFD in the form of the name, and gives the bytes of that form (of a package the RTFD itself).
/// Nil when the service did not write it, or when the bytes are no RTFD; whatever was there stays. Throws
/// CommandError.
NSData writeRichText(Session& session, const NSData& rtfd, const std::string& name);

/// The same as a package, whatever its name ends in.
bool writePackage(Session& session, const NSData& rtfd, const std::string& name);

} // namespace kelvo::cli
