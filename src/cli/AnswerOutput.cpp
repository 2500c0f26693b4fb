#include "cli/AnswerOutput.h"

#include "cli/Files.h"
#include "cli/PictureOutput.h"
#include "cli/Printable.h"
#include "cli/RichTextOutput.h"
#include "cli/Session.h"

#include <fmt/format.h>

namespace kelvo::cli {

void requireAnswerWritable(Session& session, AnswerBytes form) {
    const auto& name = session.options().output;
    if (!name)
        return;
    if (*name == standardStream && session.output().isTerminal())
        throw CommandError(ExitStatus::usage,
                           "bytes are not written to a terminal; send them to a file or a pipe");
    if (form == AnswerBytes::picture && !pictureFormOfName(*name))
        throw CommandError(ExitStatus::usage,
                           fmt::format("{}: pictures are written as .tiff, .png or .jpeg, as their name says",
                                       printableFileName(*name)));
    form == AnswerBytes::richText ? requireRichTextWritable(*name) : requireWritable(*name);
}

ExitStatus writeAnswer(Session& session, const NSData& bytes, AnswerBytes form, const std::string& subject,
                       WrittenBytes& written) {
    if (!session.options().output)
        return ExitStatus::answered;
    const std::string& name = *session.options().output;
    if (bytes.isNil()) {
        session.complain(fmt::format("{}: the answer has nothing to write, {} is left as it was", subject,
                                     printableFileName(name)));
        return ExitStatus::noAnswer;
    }
    NSData own = bytes;
    if (form == AnswerBytes::picture)
        own = pictureOfThumbnail(bytes, pictureFormOfName(name).value_or(PictureForm::TIFF), subject);
    if (form == AnswerBytes::richText)
        own = writeRichText(session, bytes, name);
    else
        writeOutput(name, own, session.output());
    if (own.isNil())
        return session.complainOfNoAnswer(printableFileName(name));
    written = {own, name};
    return ExitStatus::answered;
}

} // namespace kelvo::cli
