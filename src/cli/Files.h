#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

#include <string>
#include <string_view>

namespace kelvo::cli {

class Output;

/// What stands for standard input or standard output where bytes are meant.
inline constexpr std::string_view standardStream = "-";

// Names are in file-system bytes, as the command line gives them. Each function throws CommandError (file)
// with a sentence that names the file.

/// The file in sentences: its name, printable, or "standard input".
std::string subjectOf(const std::string& name);

/// The name as the client library takes it.
NSString pathOfFile(const std::string& name);

/// Throws unless the name is that of a file or folder that can be read. Pipes and devices are refused: the
/// service reads by name and must not wait on them.
void requireReadable(const std::string& name);

/// The whole file, pipe or (for "-") standard input. What the wire could not carry is refused before it is
/// read whole.
NSData readInput(const std::string& name);

/// Throws when it is plain already that the output could not be written there; asked before the work begins.
void requireWritable(const std::string& name);

/// Writes the bytes, to standard output for "-". A file appears whole or not at all; a pipe or device is
/// written as it stands.
void writeOutput(const std::string& name, const NSData& data, Output& standardOutput);

/// An RTFD package on its way: the service writes to path(), in a hidden folder beside the destination, and
/// commit() puts what it wrote in its place. Whatever is not committed is removed.
class PackageOutput {
public:
    /// Throws when something other than an RTFD package or an empty folder stands at the destination already.
    explicit PackageOutput(const std::string& destination);
    PackageOutput(const PackageOutput&) = delete;
    PackageOutput& operator=(const PackageOutput&) = delete;
    ~PackageOutput();

    const std::string& path() const noexcept { return path_; }
    /// An older package at the destination is gone afterwards.
    void commit();

private:
    std::string destination_;
    std::string folder_;
    std::string path_;
};

} // namespace kelvo::cli
