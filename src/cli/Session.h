#pragma once

#include "cli/ExitStatus.h"
#include "cli/Options.h"
#include "cli/Output.h"
#include "cli/Request.h"

#include <plumwick/Client.h>

#include <functional>
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
    bool isServiceRunning();
    bool isReachable() const noexcept { return isReachable_; }

    /// One line on standard error.
    void complain(const std::string& sentence);
    /// On an answer of nil or false: that, and whether the service can do it at all. Gives the status.
    ExitStatus complainOfNoAnswer(Operation operation, const std::string& subject);

private:
    template <typename Call>
    auto translatingErrors(const std::string& subject, Call call);

    const Options& options_;
    Output& output_;
    Output& errors_;
    Client client_;
    bool isReachable_ = true;
};

/// Every file is tried, so that one that is broken does not keep the others from being answered; what is
/// printed for each of several stands under its name. With JSON a file that fails gives a null. The worst
/// status is the result.
ExitStatus runEachFile(Session& session, const std::vector<std::string>& files,
                       const std::function<ExitStatus(const std::string& file)>& run);

} // namespace kelvo::cli
