#include <plumwick/Client.h>

#include "client/ServiceLauncher.h"
#include "client/ServiceProgram.h"
#include "client/ServiceStatus.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/ledger/LedgerReader.h"
#include "protocol/KelvoImExportProxy.h"
#include "protocol/RequestOutcome.h"
#include "protocol/ServiceLedger.h"

#include <chrono>
#include <thread>
#include <utility>

namespace kelvo {
namespace {

const char* wordOfKind(ClientError::Kind kind) {
    switch (kind) {
    case ClientError::Kind::notThere:
        return "not there";
    case ClientError::Kind::timedOut:
        return "timed out";
    case ClientError::Kind::failed:
        return "failed";
    case ClientError::Kind::died:
        return "died";
    }
    return "";
}

NSString absolutePath(const NSString& file) {
    if (file.isEmpty() || file.characters().front() == u'/')
        return file;
    const NSString folder = NSFileManager::defaultManager().currentDirectoryPath();
    return folder.isNil() ? file : folder.stringByAppendingString(u"/").stringByAppendingString(file);
}

/// The service's ledger, if it can be read.
std::optional<LedgerReader> serviceLedger() {
    try {
        return LedgerReader::open(pathOfServiceLedger());
    } catch (const NSException&) {
        return std::nullopt;
    }
}

/// What the client itself knows of its latest request.
struct LatestRequest {
    Operation operation;
    NSString path;
    NSDate begun = NSDate::date();
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    /// 0 when it was not sent.
    std::uint64_t token = 0;
    RequestOutcome outcome = {};
    double milliseconds = 0;
    /// Whether the service knows no better.
    bool isFinal = false;
};

} // namespace

ClientError::ClientError(Kind kind, const NSString& reason)
    : kind_(kind), reason_(reason), text_(std::string(wordOfKind(kind)) + ": " + reason.UTF8String()) {}

struct Client::Implementation {
    explicit Implementation(ClientOptions given) : options(std::move(given)) {}

    /// A conversation that was alive a moment ago.
    KelvoImExportProxy& service(bool mayStart) {
        if (connection && !connection->isValid())
            disconnect();
        if (!connection) {
            connect(mayStart);
            connection->setRequestTimeout(options.timeoutSeconds);
            connection->setReplyTimeout(options.timeoutSeconds);
            proxy = rootProxyForConnection(*connection);
        }
        return *proxy;
    }

    void connect(bool mayStart) {
        try {
            connection = connectionToLivingService();
            if (!connection && mayStart)
                connection =
                    startService(pathOfServiceProgram(options.servicePath), options.startTimeoutSeconds);
        } catch (const NSException& exception) {
            throw ClientError(ClientError::Kind::notThere, exception.reason());
        }
        if (!connection)
            throw ClientError(ClientError::Kind::notThere, u"The service does not run.");
    }

    /// While a process ends, its conversations may break off before its socket does: whoever comes back in
    /// between would be let in and lost again. So the process that broke off last is given a moment to be
    /// gone.
    std::unique_ptr<NSConnection> connectionToLivingService() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        for (;;) {
            auto found = NSConnection::connectionWithRegisteredName(KelvoImExport::registeredName);
            if (!found || found->peerProcessIdentifier() != processThatBrokeOff ||
                std::chrono::steady_clock::now() >= end) {
                processThatBrokeOff = 0;
                return found;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void disconnect() {
        processThatBrokeOff = connection->peerProcessIdentifier();
        proxy.reset();
        connection.reset();
    }

    template <typename Call>
    auto perform(Operation operation, const NSString& path, Call call) {
        latest.reset();
        for (bool isRepeated = false;; isRepeated = true) {
            KelvoImExportProxy& asked = service(options.startsService);
            const std::uint64_t earlierToken = asked.latestToken();
            latest = LatestRequest{operation, path};
            const auto learn = [&](const RequestOutcome& outcome, bool isFinal) {
                latest->milliseconds = std::chrono::duration<double, std::milli>(
                                           std::chrono::steady_clock::now() - latest->begin)
                                           .count();
                latest->token = asked.latestToken() != earlierToken ? asked.latestToken() : 0;
                latest->outcome = outcome;
                latest->isFinal = isFinal;
            };
            try {
                auto result = call(static_cast<KelvoImExport&>(asked));
                learn(outcomeOfResult(operation, isAnswer(operation, result)), false);
                return result;
            } catch (const NSException& exception) {
                if (exception.name() == NSPortTimeoutException) {
                    learn({Outcome::timedOut,
                           stringWithFormat(u"no answer within %g seconds", options.timeoutSeconds)},
                          true);
                    throw ClientError(ClientError::Kind::timedOut, exception.reason());
                }
                if (exception.name() != NSInvalidReceivePortException) {
                    learn(outcomeOfFailure(exception), false);
                    throw ClientError(ClientError::Kind::failed,
                                      NSString::stringByRepairingUTF8String(exception.what()));
                }
                learn({Outcome::crashed, sentenceOfEndedService}, true);
                disconnect();
                if (operation == Operation::writeRTFDData || isRepeated)
                    throw ClientError(ClientError::Kind::died, exception.reason());
            }
        }
    }

    std::optional<RequestRecord> outcomeOfLatest() const {
        if (!latest)
            return std::nullopt;
        RequestRecord record;
        record.token = latest->token;
        record.operation = static_cast<std::uint8_t>(latest->operation);
        record.path = latest->path;
        record.begun = latest->begun;
        if (const auto ledger = latest->token != 0 ? serviceLedger() : std::nullopt)
            record = ledger->recordOfToken(latest->token).value_or(record);
        if (latest->isFinal || !record.isCompleted) {
            record.isCompleted = true;
            record.outcome = latest->outcome.outcome;
            record.sentence = latest->outcome.sentence;
            record.milliseconds = latest->milliseconds;
        }
        return record;
    }

    ClientOptions options;
    // The proxy refers to the connection, and so goes first.
    std::unique_ptr<NSConnection> connection;
    std::unique_ptr<KelvoImExportProxy> proxy;
    std::optional<LatestRequest> latest;
    pid_t processThatBrokeOff = 0;
};

Client::Client(ClientOptions options)
    : implementation_(std::make_unique<Implementation>(std::move(options))) {}

Client::~Client() = default;

void Client::setTimeout(double seconds) {
    implementation_->options.timeoutSeconds = seconds;
    if (implementation_->connection) {
        implementation_->connection->setRequestTimeout(seconds);
        implementation_->connection->setReplyTimeout(seconds);
    }
}

NSDictionary Client::metaDataForFile(const NSString& file) {
    const NSString path = absolutePath(file);
    return implementation_->perform(Operation::metaDataForFile, path,
                                    [&](KelvoImExport& service) { return service.metaDataForFile(path); });
}

NSData Client::RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                       bool allowRemoteRequest) {
    return implementation_->perform(Operation::RTFDWithHTML, nullptr, [&](KelvoImExport& service) {
        return service.RTFDWithHTML_baseURL_allowRemoteRequest(html, baseURL, allowRemoteRequest);
    });
}

bool Client::writeRTFDData_toFile(const NSData& data, const NSString& file) {
    const NSString path = absolutePath(file);
    return implementation_->perform(Operation::writeRTFDData, path, [&](KelvoImExport& service) {
        return service.writeRTFDData_toFile(data, path);
    });
}

NSDictionary Client::searchableTextOfWebArchive(const NSString& file) {
    const NSString path = absolutePath(file);
    return implementation_->perform(Operation::searchableTextOfWebArchive, path, [&](KelvoImExport& service) {
        return service.searchableTextOfWebArchive(path);
    });
}

NSDictionary Client::attributedStringWithContentsOfFile(const NSString& file) {
    const NSString path = absolutePath(file);
    return implementation_->perform(
        Operation::attributedStringWithContentsOfFile, path,
        [&](KelvoImExport& service) { return service.attributedStringWithContentsOfFile(path); });
}

NSDictionary Client::posterImageForMovieWithFile(const NSString& file) {
    const NSString path = absolutePath(file);
    return implementation_->perform(
        Operation::posterImageForMovieWithFile, path,
        [&](KelvoImExport& service) { return service.posterImageForMovieWithFile(path); });
}

NSDictionary Client::attributed_stringWithPDF(bool attributed, const NSData& pdf) {
    return implementation_->perform(Operation::stringWithPDF, nullptr, [&](KelvoImExport& service) {
        return service.attributed_stringWithPDF(attributed, pdf);
    });
}

NSDictionary Client::imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file,
                                                                           bool stringFromPDF,
                                                                           bool canUseSpotlight) {
    const NSString path = absolutePath(file);
    return implementation_->perform(Operation::imageWithContentsOfFile, path, [&](KelvoImExport& service) {
        return service.imageWithContentsOfFile_stringFromPDF_canUseSpotlight(path, stringFromPDF,
                                                                             canUseSpotlight);
    });
}

NSData Client::PDFImageRepOfFile(const NSString& file) {
    const NSString path = absolutePath(file);
    return implementation_->perform(Operation::PDFImageRepOfFile, path,
                                    [&](KelvoImExport& service) { return service.PDFImageRepOfFile(path); });
}

std::optional<RequestRecord> Client::outcomeOfLastRequest() const {
    return implementation_->outcomeOfLatest();
}

std::vector<RequestRecord> Client::recentRequests(std::size_t most) {
    const auto ledger = serviceLedger();
    if (!ledger)
        throw ClientError(ClientError::Kind::notThere, u"No service has written anything down.");
    return ledger->latestRecords(most);
}

ServiceStatus Client::status() {
    implementation_->service(false);
    ServiceStatus status = statusOfProcess(implementation_->connection->peerProcessIdentifier());
    if (const auto ledger = serviceLedger())
        status.engines = ledger->engines();
    return status;
}

} // namespace kelvo
