#include "cli/ReadDocumentCommand.h"

#include "cli/Files.h"
#include "cli/Printable.h"
#include "cli/RichTextView.h"
#include "cli/Session.h"
#include "cli/TextView.h"
#include "protocol/ResultKeys.h"

namespace kelvo::cli {

ExitStatus runReadDocument(Session& session, const std::string& file) {
    const std::string subject = printableFileName(file);
    requireReadable(file);
    Request request;
    request.operation = Operation::attributedStringWithContentsOfFile;
    request.file = pathOfFile(file);
    const Value result = session.ask(request, kindOfFile(request.file), subject);
    if (isNoAnswer(result))
        return session.complainOfNoAnswer(subject);
    const NSString text = textOfRichText(result.dictionary().objectForKey(ResultRtfdKey).data());
    if (text.isEmpty()) {
        session.complain(subject + ": is a document without text");
        return ExitStatus::noAnswer;
    }
    session.output().write(linesOfText(withLineFeeds(text), session.output()));
    return ExitStatus::answered;
}

} // namespace kelvo::cli
