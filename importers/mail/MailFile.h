#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo::importers {

/// The message of an emlx file, which says in its first line how long that is; all of the file when it does not.
std::string_view messageOfEMLX(std::string_view file);

/// Whether it begins with the line that stands before each message of a mailbox.
bool isMailbox(std::string_view file);

/// The next message of a mailbox, without the line before it; the rest stays in `mailbox`. Absent at the end.
std::optional<std::string_view> takeMessage(std::string_view& mailbox);

/// A message that somebody has saved in UTF-16, with a mark, in UTF-8; absent for all others.
std::optional<std::string> messageOfUTF16(std::string_view message);

/// The encoding that text of this charset is in, by what senders mean by the name; kCFStringEncodingInvalidId for nil and
/// names that nobody knows.
NSStringEncoding encodingOfMailCharset(const NSString& charset);

/// A header, some lines of which are of this charset and not encoded as headers should be, in UTF-8; absent when there are
/// none.
std::optional<std::string> headerOfCharset(std::string_view header, const NSString& charset);

/// A message whose header does not fit what the library makes of it in memory, with as much of its fields as does;
/// absent when they do.
std::optional<std::string> messageWithShortHeader(std::string_view message);

} // namespace kelvo::importers
