#include "cli/Session.h"

#include "cli/Printable.h"

#include <fmt/format.h>

namespace kelvo::cli {

template <typename Call>
auto Session::translatingErrors(const std::string& subject, Call call) {
    try {
        return call();
    } catch (const ClientError& error) {
        isReachable_ = error.kind() != ClientError::Kind::notThere;
        const std::string reason = printable(NSString::stringByRepairingUTF8String(error.what()));
        throw CommandError(ExitStatus::service,
                           isReachable_ ? fmt::format("{}: {}", subject, reason) : printable(error.reason()));
    }
}

Value Session::ask(const Request& request, FileKind kind, const std::string& subject) {
    client_.setTimeout(options_.timeoutSeconds.value_or(defaultTimeout(request.operation, kind)));
    return translatingErrors(subject, [&] { return perform(client_, request); });
}

ServiceStatus Session::status() {
    return translatingErrors("status", [&] { return client_.status(); });
}

bool Session::isServiceRunning() {
    try {
        client_.status();
        return true;
    } catch (const ClientError&) {
        return false;
    }
}

void Session::complain(const std::string& sentence) {
    // In the order in which things happened, when both go to one place.
    output_.flush();
    errors_.write(errors_.styled(Style::failure, "plumwick:") + " " + sentence + "\n");
    errors_.flush();
}

ExitStatus Session::complainOfNoAnswer(Operation operation, const std::string& subject) {
    if (hasEngine(operation))
        complain(fmt::format("{}: {}", subject,
                             operation == Operation::writeRTFDData ? "could not be written by the service"
                                                                   : "the service answered nil"));
    else
        complain(fmt::format("{}: {} does not work yet, the service has no engine for it and answered {}",
                             subject, subcommandOfOperation(operation),
                             operation == Operation::writeRTFDData ? "false" : "nil"));
    return ExitStatus::noAnswer;
}

ExitStatus runEachFile(Session& session, const std::vector<std::string>& files,
                       const std::function<ExitStatus(const std::string& file)>& run) {
    ExitStatus status = ExitStatus::answered;
    for (const std::string& file : files) {
        const bool isHeaded = files.size() > 1 && !session.options().printsJSON;
        if (isHeaded)
            session.output().write(session.output().styled(Style::strong, printableFileName(file)) + "\n");
        try {
            status = worse(status, run(file));
        } catch (const CommandError& error) {
            if (session.options().printsJSON)
                session.output().write("null\n");
            session.complain(error.what());
            status = worse(status, error.status());
            if (!session.isReachable())
                break;
        }
        if (isHeaded)
            session.output().write("\n");
    }
    return status;
}

} // namespace kelvo::cli
