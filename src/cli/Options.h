#pragma once

#include "cli/ExitStatus.h"
#include "platform/foundation/NSURL.h"
#include "protocol/Operations.h"

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kelvo::cli {

class Output;

struct Importers {};
struct Show {};
struct Status {};
struct HTMLToText {};

/// What the command line asks for.
struct Options {
    /// An operation of the service, or one of the command's own subcommands.
    std::variant<Operation, Importers, Show, Status, HTMLToText> subject;
    /// In file-system bytes, at least one except for Importers and Status. "-" stands for standard input where the
    /// operation takes bytes; where it takes a name, "-" was refused.
    std::vector<std::string> files;
    /// In file-system bytes; "-" stands for standard output.
    std::optional<std::string> output;
    /// Nil when none was given.
    NSURL baseURL;
    bool allowsRemoteRequest = false;
    bool wantsRichText = false;
    /// A PDF by its pages.
    bool wantsPages = false;
    bool wantsPDFText = false;
    bool mayUseImporters = true;
    /// Where the thumbnails of several files go, in file-system bytes.
    std::optional<std::string> folder;
    /// The thumbnail on the terminal.
    bool showsPicture = false;
    bool reformats = false;
    bool takesOnlyBody = false;
    bool removesJunk = false;
    bool foldsAccents = false;
    bool honoursMarkers = false;
    /// Nil when none was given; else one that names a known encoding.
    NSString charset;
    bool wantsSource = false;
    bool printsOnlyText = false;
    bool printsJSON = false;
    /// Behind each answer in JSON, what became of the request.
    bool printsOutcome = false;
    bool listsRefused = false;
    /// The latest requests in place of the status.
    std::optional<std::size_t> recentCount;
    std::optional<double> timeoutSeconds;
};

/// Reads the command line. When it asks for help or makes no sense, says so and gives the status to end with.
std::variant<Options, ExitStatus> parseOptions(int argumentCount, const char* const* arguments,
                                               Output& output, Output& errors);

} // namespace kelvo::cli
