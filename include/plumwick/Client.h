#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/Visibility.h"
#include "platform/ledger/EngineFacts.h"
#include "platform/ledger/RequestRecord.h"
#include "protocol/KelvoImExport.h"
#include "protocol/ResultKeys.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The client library: asks the conversion service on this machine, and starts it when it does not run.
///
///     kelvo::Client client;
///     kelvo::NSDictionary result = client.searchableTextOfWebArchive(u"/home/ada/page.webarchive");
///     std::cout << result.objectForKey(kelvo::ResultStringKey).string().UTF8String();
///
/// Programs compile with `pkg-config --cflags --libs plumwick`, or with CMake's find_package(plumwick) and
/// target_link_libraries(… plumwick::plumwick).
namespace KELVO_PUBLIC kelvo {

/// Why an operation has no answer at all. (An answer of nil is no error: it is what the service found.)
class ClientError final : public std::exception {
public:
    enum class Kind : std::uint8_t {
        notThere, ///< no service could be reached or started
        timedOut, ///< no answer within the time limit; the service may still be at work on it
        failed,   ///< the service answered that the operation failed
        died      ///< the service ended before it answered
    };

    ClientError(Kind kind, const NSString& reason);

    Kind kind() const noexcept { return kind_; }
    /// A sentence for people.
    const NSString& reason() const noexcept { return reason_; }
    /// "not there", "timed out", "failed" or "died", a colon, and the reason, in UTF-8.
    const char* what() const noexcept override { return text_.c_str(); }

private:
    Kind kind_;
    NSString reason_;
    std::string text_;
};

struct ClientOptions {
    /// How long a call waits for its answer.
    double timeoutSeconds = KelvoImExport::timeoutSeconds;
    /// How long a service that is being started may take until it answers.
    double startTimeoutSeconds = 10.0;
    /// Whether to start the service when none answers.
    bool startsService = true;
    /// The service's program. Nil: PlumwickHelper beside the calling program, else in the folder for helper
    /// programs where this library was installed, else on PATH.
    NSString servicePath;
};

/// What is known of a running service without asking it.
struct ServiceStatus {
    NSString registeredName;
    pid_t processIdentifier = 0;
    double uptimeSeconds = 0;
    std::uint64_t residentBytes = 0;
    /// Nil when the running program carries no version note.
    NSString version;
    /// The engines that it has started and that run.
    std::vector<EngineFacts> engines;
};

/// One conversation with the service. The operations are those of KelvoImExport and wait for their answers;
/// each throws ClientError.
///
/// A path that is not absolute is taken from the calling program's working folder. Path strings stand for
/// file-system bytes as NSFileManager makes them, so that names that are not UTF-8 work too.
///
/// When the service has died between two calls it is started again. When it dies during a call that writes
/// nothing, it is started again and asked once more; a second death, or one during a call that writes, is
/// reported.
///
/// A client is used on the thread that made it, and that thread must not run a KJ event loop of its own.
/// Other threads may have their own clients.
class Client final : public KelvoImExport {
public:
    /// Makes no contact yet.
    explicit Client(ClientOptions options = {});
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() override;

    /// For the calls from now on.
    void setTimeout(double seconds);

    NSDictionary metaDataForFile(const NSString& file) override;
    NSData RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                   bool allowRemoteRequest) override;
    bool writeRTFDData_toFile(const NSData& data, const NSString& file) override;
    NSDictionary searchableTextOfWebArchive(const NSString& file) override;
    NSDictionary attributedStringWithContentsOfFile(const NSString& file) override;
    NSDictionary posterImageForMovieWithFile(const NSString& file) override;
    NSDictionary attributed_stringWithPDF(bool attributed, const NSData& pdf) override;
    NSDictionary imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file,
                                                                       bool stringFromPDF,
                                                                       bool canUseSpotlight) override;
    NSData PDFImageRepOfFile(const NSString& file) override;

    /// What became of the latest request of this client, as the service has written it down: why there was no answer,
    /// in one word and a sentence, and what it took. When the service was late or is gone the outcome is the client's
    /// own; so it is, by the result alone, when the service keeps no ledger or 512 later requests have been written
    /// over it. Absent before the first request, and when no service could be reached for the latest.
    std::optional<RequestRecord> outcomeOfLastRequest() const;
    /// The latest requests of all clients of this user, at most so many, in the order in which they began: up to 512
    /// are kept, also from before the service was started last. No service needs to run. Throws ClientError (notThere)
    /// when none has ever written anything down.
    static std::vector<RequestRecord> recentRequests(std::size_t most);

    /// Tells about the service that runs now; never starts one. Throws ClientError (notThere) when none does.
    ServiceStatus status();

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace kelvo
