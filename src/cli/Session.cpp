#include "cli/Session.h"

#include "cli/Files.h"
#include "cli/Printable.h"
#include "cli/RecordView.h"
#include "platform/ledger/RequestNotes.h"

#include <fmt/format.h>

namespace kelvo::cli {

template <typename Call>
auto Session::translatingErrors(const std::string& subject, Call call) {
    try {
        return call();
    } catch (const ClientError& error) {
        isReachable_ = error.kind() != ClientError::Kind::notThere;
        learnOutcome();
        if (!isReachable_)
            throw CommandError(ExitStatus::service, printable(error.reason()));
        throw CommandError(ExitStatus::service,
                           subject + ": " +
                               (outcome_ ? outcomeOfRecord(*outcome_)
                                         : printable(NSString::stringByRepairingUTF8String(error.what()))));
    }
}

Value Session::ask(const Request& request, FileKind kind, const std::string& subject) {
    client_.setTimeout(options_.timeoutSeconds.value_or(defaultTimeout(request.operation, kind)));
    Value result = translatingErrors(subject, [&] { return perform(client_, request); });
    learnOutcome();
    return result;
}

void Session::learnOutcome() {
    const auto latest = client_.outcomeOfLastRequest();
    if (latest && (!outcome_ || latest->outcome != Outcome::answered))
        outcome_ = latest;
}

void Session::learnOutcome(const RequestOutcome& outcome) {
    RequestRecord record;
    record.isCompleted = true;
    record.outcome = outcome.outcome;
    record.sentence = outcome.sentence;
    outcome_ = record;
}

ServiceStatus Session::status() {
    return translatingErrors("status", [&] { return client_.status(); });
}

std::vector<RequestRecord> Session::recentRequests(std::size_t most) {
    return translatingErrors("status", [most] { return Client::recentRequests(most); });
}

bool Session::isServiceRunning() {
    try {
        client_.status();
        return true;
    } catch (const ClientError&) {
        return false;
    }
}

void Session::printJSON(const Value& result, const WrittenBytes& written) {
    output_.write(lineOfJSON(result, written));
    if (options_.printsOutcome)
        output_.write(lineOfJSON(outcome_ ? Value(valueOfRecord(*outcome_)) : Value()));
}

void Session::complain(const std::string& sentence) {
    // In the order in which things happened, when both go to one place.
    output_.flush();
    errors_.write(errors_.styled(Style::failure, "plumwick:") + " " + sentence + "\n");
    errors_.flush();
}

ExitStatus Session::complainOfNoAnswer(const std::string& subject) {
    const bool isTold = outcome_ && outcome_->outcome != Outcome::answered;
    complain(subject + ": " +
             (isTold ? outcomeOfRecord(*outcome_) : "broken: the data is no rich text that can be read"));
    return ExitStatus::noAnswer;
}

void Session::tellWhatIsMissing(const std::string& subject) {
    if (!options_.printsOutcome && outcome_ && outcome_->outcome == Outcome::answered &&
        !outcome_->sentence.isNil())
        complain(subject + ": " + outcomeOfRecord(*outcome_));
}

void Session::listRefused(const std::string& subject) {
    if (!outcome_)
        return;
    output_.flush();
    for (const NSString& address : outcome_->refusedAddresses)
        errors_.write(printable(address) + "\n");
    if (outcome_->refusedAddresses.size() == RequestNotes::mostRefusedAddresses)
        complain(fmt::format("{}: {} loads were refused; of their addresses the first {} are known", subject,
                             outcome_->refusedLoadCount, outcome_->refusedAddresses.size()));
}

ExitStatus runEachFile(Session& session, const std::vector<std::string>& files,
                       const std::function<ExitStatus(const std::string& file)>& run, EachFile manner) {
    ExitStatus status = ExitStatus::answered;
    for (const std::string& file : files) {
        const bool isHeaded =
            files.size() > 1 && !session.options().printsJSON && manner == EachFile::underItsName;
        if (isHeaded)
            session.output().write(session.output().styled(Style::strong, subjectOf(file)) + "\n");
        session.forgetOutcome();
        try {
            status = worse(status, run(file));
            if (manner == EachFile::underItsName || session.options().printsJSON)
                session.tellWhatIsMissing(subjectOf(file));
        } catch (const CommandError& error) {
            if (session.options().printsJSON)
                session.printJSON(nullptr);
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
