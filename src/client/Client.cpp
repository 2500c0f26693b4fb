#include <plumwick/Client.h>

#include "client/ServiceLauncher.h"
#include "client/ServiceStatus.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/connections/NSConnection.h"
#include "protocol/KelvoImExportProxy.h"

#include <chrono>
#include <thread>
#include <utility>

namespace kelvo {
namespace {

enum class Effect : std::uint8_t { reads, writes };

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

} // namespace

ClientError::ClientError(Kind kind, const NSString& reason)
    : kind_(kind), reason_(reason), text_(std::string(wordOfKind(kind)) + ": " + reason.UTF8String()) {}

struct Client::Implementation {
    explicit Implementation(ClientOptions given) : options(std::move(given)) {}

    /// A conversation that was alive a moment ago.
    KelvoImExport& service(bool mayStart) {
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
    auto perform(Effect effect, Call call) {
        for (bool isRepeated = false;; isRepeated = true) {
            KelvoImExport& asked = service(options.startsService);
            try {
                return call(asked);
            } catch (const NSException& exception) {
                if (exception.name() == NSPortTimeoutException)
                    throw ClientError(ClientError::Kind::timedOut, exception.reason());
                if (exception.name() != NSInvalidReceivePortException)
                    throw ClientError(ClientError::Kind::failed,
                                      NSString::stringByRepairingUTF8String(exception.what()));
                disconnect();
                if (effect == Effect::writes || isRepeated)
                    throw ClientError(ClientError::Kind::died, exception.reason());
            }
        }
    }

    ClientOptions options;
    // The proxy refers to the connection, and so goes first.
    std::unique_ptr<NSConnection> connection;
    std::unique_ptr<KelvoImExport> proxy;
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
    return implementation_->perform(Effect::reads, [path = absolutePath(file)](KelvoImExport& service) {
        return service.metaDataForFile(path);
    });
}

NSData Client::RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                       bool allowRemoteRequest) {
    return implementation_->perform(Effect::reads, [&](KelvoImExport& service) {
        return service.RTFDWithHTML_baseURL_allowRemoteRequest(html, baseURL, allowRemoteRequest);
    });
}

bool Client::writeRTFDData_toFile(const NSData& data, const NSString& file) {
    return implementation_->perform(Effect::writes, [&, path = absolutePath(file)](KelvoImExport& service) {
        return service.writeRTFDData_toFile(data, path);
    });
}

NSDictionary Client::searchableTextOfWebArchive(const NSString& file) {
    return implementation_->perform(Effect::reads, [path = absolutePath(file)](KelvoImExport& service) {
        return service.searchableTextOfWebArchive(path);
    });
}

NSDictionary Client::attributedStringWithContentsOfFile(const NSString& file) {
    return implementation_->perform(Effect::reads, [path = absolutePath(file)](KelvoImExport& service) {
        return service.attributedStringWithContentsOfFile(path);
    });
}

NSDictionary Client::posterImageForMovieWithFile(const NSString& file) {
    return implementation_->perform(Effect::reads, [path = absolutePath(file)](KelvoImExport& service) {
        return service.posterImageForMovieWithFile(path);
    });
}

NSDictionary Client::attributed_stringWithPDF(bool attributed, const NSData& pdf) {
    return implementation_->perform(Effect::reads, [&](KelvoImExport& service) {
        return service.attributed_stringWithPDF(attributed, pdf);
    });
}

NSDictionary Client::imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file,
                                                                           bool stringFromPDF,
                                                                           bool canUseSpotlight) {
    return implementation_->perform(Effect::reads, [=, path = absolutePath(file)](KelvoImExport& service) {
        return service.imageWithContentsOfFile_stringFromPDF_canUseSpotlight(path, stringFromPDF,
                                                                             canUseSpotlight);
    });
}

NSData Client::PDFImageRepOfFile(const NSString& file) {
    return implementation_->perform(Effect::reads, [path = absolutePath(file)](KelvoImExport& service) {
        return service.PDFImageRepOfFile(path);
    });
}

ServiceStatus Client::status() {
    implementation_->service(false);
    return statusOfProcess(implementation_->connection->peerProcessIdentifier());
}

} // namespace kelvo
