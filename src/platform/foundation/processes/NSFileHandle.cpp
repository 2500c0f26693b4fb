#include "platform/foundation/processes/NSFileHandle.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace kelvo {
namespace {

// A write to a pipe without a reader raises SIGPIPE, which ends the process. For the scope it is blocked in
// this thread, and one that the scope itself has raised is taken back.
class BrokenPipeGuard {
public:
    BrokenPipeGuard() {
        ::sigemptyset(&pipeSignal_);
        ::sigaddset(&pipeSignal_, SIGPIPE);
        sigset_t pending;
        ::sigpending(&pending);
        wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &pipeSignal_, &previous_);
    }
    BrokenPipeGuard(const BrokenPipeGuard&) = delete;
    BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;
    ~BrokenPipeGuard() {
        const timespec now = {};
        while (!wasPending_ && ::sigtimedwait(&pipeSignal_, nullptr, &now) < 0 && errno == EINTR) {
        }
        ::pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    }

private:
    sigset_t pipeSignal_;
    sigset_t previous_;
    bool wasPending_;
};

} // namespace

std::shared_ptr<NSFileHandle> NSFileHandle::fileHandleWithNullDevice() {
    return std::make_shared<NSFileHandle>(FileDescriptor(::open("/dev/null", O_RDWR | O_CLOEXEC)));
}

std::shared_ptr<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(const NSString& path) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    FileDescriptor file = bytes ? openRegularFile(*bytes) : FileDescriptor();
    return file ? std::make_shared<NSFileHandle>(std::move(file)) : nullptr;
}

NSData NSFileHandle::availableData() {
    requireOpen();
    struct stat status = {};
    if (::fstat(descriptor_.get(), &status) == 0 && S_ISREG(status.st_mode))
        return readDataToEndOfFile();
    return takeAvailable(true);
}

NSData NSFileHandle::availableDataWithoutWaiting() {
    requireOpen();
    return takeAvailable(false);
}

NSData NSFileHandle::takeAvailable(bool mayWait) {
    // As much as the largest pipe holds, so that a writer that never stops does not hold this up.
    constexpr int mostReads = 16;
    for (int reads = pending_.empty() && mayWait ? 0 : 1; reads < mostReads; ++reads) {
        int waitingBytes = 0;
        if (reads > 0 && (::ioctl(descriptor_.get(), FIONREAD, &waitingBytes) != 0 || waitingBytes <= 0))
            break;
        if (readInto(pending_) == 0)
            break;
    }
    return NSData::dataWithBytesNoCopy(std::exchange(pending_, {}));
}

NSData NSFileHandle::readDataToEndOfFile() {
    requireOpen();
    std::string bytes = std::exchange(pending_, {});
    while (readInto(bytes) > 0)
        checkedSizeInBytes(bytes.size(), 1);
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

void NSFileHandle::writeData(const NSData& data) {
    requireOpen();
    const BrokenPipeGuard guard;
    if (!writeAll(descriptor_.get(), data.bytes().data(), data.length()))
        throwError(u"writing");
}

bool NSFileHandle::readAhead() {
    requireOpen();
    if (pending_.size() > maximumPendingBytes_)
        throw NSException(NSMallocException, u"A program writes more than can be kept until it is read.");
    return readInto(pending_) > 0;
}

void NSFileHandle::requireOpen() const {
    if (!descriptor_)
        throw NSException(NSFileHandleOperationException, u"The file handle is closed.");
}

void NSFileHandle::throwError(const char16_t* operation) const {
    const std::string message = std::system_category().message(errno);
    throw NSException(NSFileHandleOperationException,
                      NSString(u"Error while ")
                          .stringByAppendingString(operation)
                          .stringByAppendingString(u": ")
                          .stringByAppendingString(NSString::stringByRepairingUTF8String(message)));
}

std::size_t NSFileHandle::readInto(std::string& bytes) {
    constexpr std::size_t step = 65536; // what a pipe holds
    const std::size_t length = bytes.size();
    if (bytes.capacity() - length < step)
        bytes.reserve(std::max(bytes.capacity() * 2, length + step));
    bytes.resize(length + step);
    const ssize_t count = readSome(descriptor_.get(), bytes.data() + length, step);
    const int error = errno;
    bytes.resize(length + (count > 0 ? static_cast<std::size_t>(count) : 0));
    if (count < 0) {
        errno = error;
        throwError(u"reading");
    }
    return static_cast<std::size_t>(count);
}

} // namespace kelvo
