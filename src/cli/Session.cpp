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

} // namespace kelvo::cli
