#include "platform/ledger/LedgerFile.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/ledger/RecordText.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <system_error>

namespace kelvo::ledger {
namespace {

constexpr auto fileSize = static_cast<off_t>(sizeof(File));

[[noreturn]] void fail(const std::string& path, int error) {
    throw std::system_error(error, std::generic_category(), path);
}

/// None when what stands there cannot be gone on with.
FileDescriptor existingFile(const std::string& path) {
    FileDescriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat facts;
    Header header;
    const bool isUsable = file && fstat(file.get(), &facts) == 0 && S_ISREG(facts.st_mode) &&
                          facts.st_uid == geteuid() && facts.st_nlink == 1 && facts.st_size == fileSize &&
                          pread(file.get(), &header, sizeof header, 0) == sizeof header && isOwn(header) &&
                          fchmod(file.get(), 0600) == 0;
    return isUsable ? std::move(file) : FileDescriptor();
}

/// A store into a block that is not there ends the process when the disk is full.
void reserve(const FileDescriptor& file, const std::string& path) {
    if (const int error = posix_fallocate(file.get(), 0, fileSize))
        fail(path, error);
}

FileDescriptor newFile(const std::string& path) {
    const std::string growing = path + ".new";
    unlink(growing.c_str());
    FileDescriptor file(open(growing.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file)
        fail(path, errno);
    try {
        if (fchmod(file.get(), 0600) != 0)
            fail(path, errno);
        reserve(file, path);
        Header header{};
        std::ranges::copy(magic, header.magic);
        header.layoutVersion = layoutVersion;
        header.recordSize = sizeof(Record);
        header.recordCount = recordCount;
        header.engineCount = engineCount;
        if (pwrite(file.get(), &header, sizeof header, 0) != sizeof header ||
            rename(growing.c_str(), path.c_str()) != 0)
            fail(path, errno);
    } catch (const std::system_error&) {
        unlink(growing.c_str());
        throw;
    }
    return file;
}

std::string_view textOf(const char* text, std::size_t length, std::size_t capacity) {
    return {text, std::min(length, capacity)};
}

NSString stringOf(std::string_view text) {
    return text.empty() ? NSString() : NSString::stringByRepairingUTF8String(text);
}

} // namespace

File* mappedFile(const std::string& path) {
    FileDescriptor file = existingFile(path);
    if (file)
        reserve(file, path);
    else
        file = newFile(path);
    void* const mapping = mmap(nullptr, sizeof(File), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (mapping == MAP_FAILED)
        fail(path, errno);
    return static_cast<File*>(mapping);
}

bool isOwn(const Header& header) {
    return std::string_view(header.magic, sizeof header.magic) == magic &&
           header.layoutVersion == layoutVersion && header.recordSize == sizeof(Record) &&
           header.recordCount == recordCount && header.engineCount == engineCount;
}

RequestRecord requestRecord(const Record& record) {
    RequestRecord result;
    result.sequence = record.sequence;
    result.token = record.token;
    result.operation = record.operation;
    result.begun = NSDate::dateWithTimeIntervalSince1970(static_cast<double>(record.begunNanoseconds) / 1e9);
    if (const auto path = textOf(record.path, record.pathLength, sizeof record.path); !path.empty())
        result.path = NSFileManager::defaultManager().stringWithFileSystemRepresentation(path);
    result.hasBytes = record.hasBytes != 0;
    result.byteCount = record.byteCount;
    result.byteHash = record.byteHash;
    result.isCompleted = record.state == RecordState::completed;
    if (!result.isCompleted)
        return result;
    result.outcome = record.outcome < outcomeCount ? static_cast<Outcome>(record.outcome) : Outcome::nothing;
    result.sentence = stringOf(textOf(record.sentence, record.sentenceLength, sizeof record.sentence));
    result.engine = stringOf(textOf(record.engine, record.engineLength, sizeof record.engine));
    result.milliseconds = record.milliseconds;
    result.cpuMilliseconds = record.cpuMilliseconds;
    result.engineCPUMilliseconds = record.engineCPUMilliseconds;
    result.peakBytes = record.peakBytes;
    result.enginePeakBytes = record.enginePeakBytes;
    result.refusedLoadCount = record.refusedLoadCount;
    result.refusedAddresses =
        unpackedTexts(textOf(record.refused, record.refusedLength, sizeof record.refused));
    return result;
}

EngineFacts engineFacts(const EngineSlot& slot) {
    return {stringOf(textOf(slot.name, slot.nameLength, sizeof slot.name)), slot.process,
            stringOf(textOf(slot.layers, slot.layersLength, sizeof slot.layers))};
}

} // namespace kelvo::ledger
