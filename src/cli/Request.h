#pragma once

#include "platform/filekinds/FileKind.h"
#include "platform/foundation/Value.h"
#include "protocol/Operations.h"

#include <string_view>

namespace kelvo {
class KelvoImExport;
}

namespace kelvo::cli {

/// One question to the service, with the arguments of its operation.
struct Request {
    Operation operation = Operation::metaDataForFile;
    NSString file;
    NSData data;
    NSURL baseURL;
    bool allowsRemoteRequest = false;
    bool wantsRichText = false;
    bool wantsPDFText = false;
    bool mayUseImporters = true;
};

/// The subcommand that asks for the operation.
std::string_view subcommandOfOperation(Operation operation);

/// How long the command waits for the answer unless it is told otherwise, in seconds.
double defaultTimeout(Operation operation, FileKind kind);

/// Asks, and gives what came back: a dictionary, data, nil, or a boolean for writeRTFDData:toFile:.
Value perform(KelvoImExport& service, const Request& request);

/// Nil or false.
bool isNoAnswer(const Value& result);

/// The bytes that "-o" writes: the answer itself, its thumbnail, or its RTFD. Nil when the answer has none.
NSData bytesOfResult(Operation operation, const Value& result);

} // namespace kelvo::cli
