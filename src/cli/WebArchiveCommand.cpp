#include "cli/WebArchiveCommand.h"

#include "cli/Files.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "cli/TextView.h"
#include "protocol/ResultKeys.h"

namespace kelvo::cli {

ExitStatus runWebArchive(Session& session, const std::string& file) {
    const Options& options = session.options();
    const std::string subject = printableFileName(file);
    requireReadable(file);
    Request request;
    request.operation = Operation::searchableTextOfWebArchive;
    request.file = pathOfFile(file);
    const Value result = session.ask(request, kindOfFile(request.file), subject);
    Output& output = session.output();
    if (options.printsJSON)
        session.printJSON(result);
    const NSDictionary dictionary = result.dictionary();
    if (dictionary.count() == 0)
        return session.complainOfNoAnswer(subject);
    if (options.printsJSON)
        return ExitStatus::answered;
    const NSString text =
        dictionary.objectForKey(options.wantsSource ? ResultSourceKey : ResultStringKey).string();
    if (text.isEmpty()) {
        session.complain(subject + (options.wantsSource ? ": its document has no source that is text"
                                                        : ": is a web archive without text"));
        return ExitStatus::noAnswer;
    }
    output.write(wholeText(text, output) + "\n");
    return ExitStatus::answered;
}

} // namespace kelvo::cli
