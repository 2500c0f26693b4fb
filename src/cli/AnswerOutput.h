#pragma once

#include "cli/ExitStatus.h"
#include "cli/JSONView.h"
#include "platform/foundation/NSData.h"

#include <cstdint>
#include <string>

namespace kelvo::cli {

class Session;

/// What "-o" writes of an answer: bytes as they are, or RTFD or a thumbnail in the form of the name (RichTextOutput.h,
/// PictureOutput.h).
enum class AnswerBytes : std::uint8_t { asTheyAre, richText, picture };

/// Before the work begins, and nothing when there is no "-o". Throws CommandError: usage, when bytes would go to a
/// terminal, or there is no such form of a picture, and file, when it is plain already that they could not be written.
void requireAnswerWritable(Session& session, AnswerBytes form);

/// Writes the bytes where "-o" says, and gives what was written; nothing when there is no "-o". Nil bytes are complained
/// of, as is rich text that was not written; whatever was there stays then, and the status says so. Throws CommandError.
ExitStatus writeAnswer(Session& session, const NSData& bytes, AnswerBytes form, const std::string& subject,
                       WrittenBytes& written);

} // namespace kelvo::cli
