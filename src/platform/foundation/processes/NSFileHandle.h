#pragma once

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSData.h"

#include <memory>
#include <string>

namespace kelvo {

inline constexpr const char16_t* NSFileHandleOperationException = u"NSFileHandleOperationException";

/// An open file, or one end of a pipe. Shared, never copied; the last owner closes it. Not for use from two
/// threads at once.
///
/// Reading and writing throw NSException (NSFileHandleOperationException) when the handle was closed or the
/// kernel reports an error.
class NSFileHandle {
public:
    /// Takes the descriptor over.
    explicit NSFileHandle(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
    NSFileHandle(const NSFileHandle&) = delete;
    NSFileHandle& operator=(const NSFileHandle&) = delete;

    /// Reads nothing, swallows everything.
    static std::shared_ptr<NSFileHandle> fileHandleWithNullDevice();
    /// Null when it is no regular file that can be read.
    static std::shared_ptr<NSFileHandle> fileHandleForReadingAtPath(const NSString& path);

    /// -1 once it is closed.
    int fileDescriptor() const { return descriptor_.get(); }
    /// What is there to be read: of a pipe, waits until there is something; of a file, all of the rest. Empty
    /// at the end.
    NSData availableData();
    /// The same of a pipe without waiting: empty as well when nothing is there.
    NSData availableDataWithoutWaiting();
    /// Waits for the end, for a pipe until the last writer has closed it.
    NSData readDataToEndOfFile();
    /// Writes all, and waits where a pipe is full. A pipe that nobody reads is an error, not a signal.
    void writeData(const NSData& data);
    void closeFile() { descriptor_.close(); }

    /// Reads once into memory, from where the next reading operation takes it first; waits when nothing is
    /// there. False at the end. So whoever waits for a program can keep it from waiting for its reader.
    /// Throws NSException (NSMallocException) when more than the most that may wait to be taken does.
    bool readAhead();
    void setMaximumPendingBytes(std::size_t count) { maximumPendingBytes_ = count; }

private:
    void requireOpen() const;
    [[noreturn]] void throwError(const char16_t* operation) const;
    std::size_t readInto(std::string& bytes);
    NSData takeAvailable(bool mayWait);

    FileDescriptor descriptor_;
    std::string pending_;
    std::size_t maximumPendingBytes_ = 256U << 20;
};

} // namespace kelvo
