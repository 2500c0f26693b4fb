#include "cli/Files.h"

#include "cli/ExitStatus.h"
#include "cli/Output.h"
#include "cli/Printable.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/connections/NSConnection.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

namespace kelvo::cli {
namespace {

[[noreturn]] void fail(const std::string& name, std::string_view what) {
    throw CommandError(ExitStatus::file, fmt::format("{}: {}", subjectOf(name), what));
}

[[noreturn]] void failWithError(const std::string& name, std::string_view what, int error) {
    fail(name, fmt::format("{}: {}", what, std::strerror(error)));
}

std::string withoutSlashesAtTheEnd(std::string name) {
    while (name.size() > 1 && name.back() == '/')
        name.pop_back();
    return name;
}

std::string folderOf(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : name.substr(0, slash);
}

std::string lastComponentOf(const std::string& name) {
    return name.substr(name.rfind('/') + 1);
}

bool isStream(mode_t mode) {
    return S_ISFIFO(mode) || S_ISCHR(mode) || S_ISSOCK(mode);
}

void requireWritableFolder(const std::string& name) {
    const std::string folder = folderOf(name);
    struct stat facts;
    if (stat(folder.c_str(), &facts) != 0)
        failWithError(name, "cannot be written, its folder is not there", errno);
    if (!S_ISDIR(facts.st_mode))
        failWithError(name, "cannot be written", ENOTDIR);
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        failWithError(name, "cannot be written", errno);
}

} // namespace

std::string subjectOf(const std::string& name) {
    return name == standardStream ? "standard input" : printableFileName(name);
}

NSString pathOfFile(const std::string& name) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(name);
}

void requireReadable(const std::string& name) {
    struct stat facts;
    if (stat(name.c_str(), &facts) != 0)
        failWithError(name, "cannot be read", errno);
    if (!S_ISREG(facts.st_mode) && !S_ISDIR(facts.st_mode))
        fail(name, "cannot be read by name, it is neither a file nor a folder");
    if (access(name.c_str(), S_ISDIR(facts.st_mode) ? R_OK | X_OK : R_OK) != 0)
        failWithError(name, "cannot be read", errno);
}

NSData readInput(const std::string& name) {
    const bool isStandardInput = name == standardStream;
    const FileDescriptor file(isStandardInput ? -1 : open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    const int descriptor = isStandardInput ? STDIN_FILENO : file.get();
    if (descriptor < 0)
        failWithError(name, "cannot be read", errno);
    struct stat facts {};
    if (fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode) &&
        static_cast<std::uint64_t>(facts.st_size) >= NSConnection::fieldLimitInBytes)
        fail(name, "is too large, the service takes less than 512 MiB");

    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(S_ISREG(facts.st_mode) ? facts.st_size : 0) + 1);
    std::size_t length = 0;
    for (;;) {
        if (length == bytes.size())
            bytes.resize(bytes.size() * 2 + 65536);
        const ssize_t count = readSome(descriptor, bytes.data() + length, bytes.size() - length);
        if (count < 0)
            failWithError(name, "cannot be read", errno);
        if (count == 0)
            break;
        length += static_cast<std::size_t>(count);
        if (length >= NSConnection::fieldLimitInBytes)
            fail(name, "is too large, the service takes less than 512 MiB");
    }
    bytes.resize(length);
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

void requireWritable(const std::string& name) {
    if (name == standardStream)
        return;
    struct stat facts;
    if (stat(name.c_str(), &facts) != 0)
        return requireWritableFolder(name);
    if (S_ISDIR(facts.st_mode))
        failWithError(name, "cannot be written", EISDIR);
    if (access(name.c_str(), W_OK) != 0)
        failWithError(name, "cannot be written", errno);
    // A file is replaced by a new one beside it.
    if (!isStream(facts.st_mode))
        requireWritableFolder(name);
}

void writeOutput(const std::string& name, const NSData& data, Output& standardOutput) {
    if (name == standardStream) {
        standardOutput.write(data.characters());
        standardOutput.flush();
        return;
    }
    struct stat facts;
    if (stat(name.c_str(), &facts) == 0 && isStream(facts.st_mode)) {
        FileDescriptor stream(open(name.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
        if (!stream || !writeAll(stream.get(), data.characters().data(), data.length()) || !stream.close())
            failWithError(name, "cannot be written", errno);
        return;
    }
    if (!data.writeToFile_atomically(pathOfFile(name), true))
        failWithError(name, "cannot be written", errno ? errno : EIO);
}

PackageOutput::PackageOutput(const std::string& destination)
    : destination_(withoutSlashesAtTheEnd(destination)) {
    requireWritableFolder(destination_);
    struct stat facts;
    if (lstat(destination_.c_str(), &facts) == 0) {
        std::error_code error;
        const bool isPackage =
            S_ISDIR(facts.st_mode) && (access((destination_ + "/TXT.rtf").c_str(), F_OK) == 0 ||
                                       std::filesystem::is_empty(destination_, error));
        if (!isPackage)
            fail(destination_, "is there already and is no RTFD package");
    }
    folder_ = folderOf(destination_) + "/.plumwick-XXXXXX";
    if (!mkdtemp(folder_.data()))
        failWithError(destination_, "cannot be written", errno);
    path_ = folder_ + "/" + lastComponentOf(destination_);
}

PackageOutput::~PackageOutput() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void PackageOutput::commit() {
    const char* from = path_.c_str();
    const char* to = destination_.c_str();
    if (access(from, F_OK) != 0)
        fail(destination_, "cannot be written, the service left nothing to put there");
    // Exchanged, the old package goes with the hidden folder.
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_EXCHANGE) == 0)
        return;
    const bool cannotExchange = errno == ENOENT || errno == EINVAL || errno == ENOSYS;
    if (cannotExchange && rename(from, to) == 0)
        return;
    const std::string old = folder_ + "/old";
    if (cannotExchange && rename(to, old.c_str()) == 0) {
        if (rename(from, to) == 0)
            return;
        const int error = errno;
        rename(old.c_str(), to);
        failWithError(destination_, "cannot be written", error);
    }
    failWithError(destination_, "cannot be written", errno);
}

} // namespace kelvo::cli
