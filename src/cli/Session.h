#pragma once

#include "cli/ExitStatus.h"
#include "cli/JSONView.h"
#include "cli/Options.h"
#include "cli/Output.h"
#include "cli/Request.h"

#include "protocol/RequestOutcome.h"

#include <plumwick/Client.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::cli {

/// The conversation of one run of the command, and where it writes.
class Session {
public:
    Session(const Options& options, Output& output, Output& errors)
        : options_(options), output_(output), errors_(errors) {}

    const Options& options() const noexcept { return options_; }
    Output& output() noexcept { return output_; }
    Output& errors() noexcept { return errors_; }

    /// Throws CommandError (service), with `subject` (printable) at the beginning of its sentence. After a
    /// failure to reach any service isReachable() is false, and asking again makes no sense.
    Value ask(const Request& request, FileKind kind, const std::string& subject);
    ServiceStatus status();
    std::vector<RequestRecord> recentRequests(std::size_t most);
    bool isServiceRunning();
    bool isReachable() const noexcept { return isReachable_; }

    /// What became of the requests since it was forgotten last: of the first, or of a later one that had no answer.
    const std::optional<RequestRecord>& outcome() const noexcept { return outcome_; }
    /// What became of work that the command did by itself.
    void learnOutcome(const RequestOutcome& outcome);
    /// Before the work on the next file.
    void forgetOutcome() { outcome_.reset(); }

    /// The result as a line of JSON, and as options say behind it one of what became of the request, null when there was
    /// none.
    void printJSON(const Value& result, const WrittenBytes& written = {});
    /// One line on standard error.
    void complain(const std::string& sentence);
    /// On an answer of nil or false, and on rich text that the command itself could not read: why. Gives the status.
    ExitStatus complainOfNoAnswer(const std::string& subject);
    /// Of an answer: what is missing from it, when that was noted and is not printed as part of the outcome.
    void tellWhatIsMissing(const std::string& subject);
    /// What the page was not let load, an address a line on standard error.
    void listRefused(const std::string& subject);

private:
    void learnOutcome();
    template <typename Call>
    auto translatingErrors(const std::string& subject, Call call);

    const Options& options_;
    Output& output_;
    Output& errors_;
    Client client_;
    std::optional<RequestRecord> outcome_;
    bool isReachable_ = true;
};

/// How the answers for several files are told apart: each stands under the name of its file, or is a line that says by
/// itself whose it is, and what is missing from it.
enum class EachFile : std::uint8_t { underItsName, inItsLine };

/// Every file is tried, so that one that is broken does not keep the others from being answered. With JSON a file that
/// fails gives a null. The worst status is the result.
ExitStatus runEachFile(Session& session, const std::vector<std::string>& files,
                       const std::function<ExitStatus(const std::string& file)>& run,
                       EachFile manner = EachFile::underItsName);

} // namespace kelvo::cli
