#include "platform/engine/program/EngineChannel.h"

#include "platform/engine/EngineKeys.h"
#include "platform/foundation/files/Leftovers.h"

#include <charconv>
#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace kelvo {
namespace {

constexpr std::chrono::seconds timeToExit{2};

void removeFolder(const std::string& folder) {
    std::error_code ignored;
    if (!folder.empty())
        std::filesystem::remove_all(folder, ignored);
}

/// Outlives whatever keeps the main thread busy.
void waitAndEnd(int descriptor, const std::string& folder) {
    pollfd other{descriptor, POLLRDHUP, 0};
    while (::poll(&other, 1, -1) <= 0) {
    }
    std::this_thread::sleep_for(timeToExit);
    removeFolder(folder);
    // An engine leads a group of its own; where it was started by hand it may not, and ends alone.
    ::kill(::getpgrp() == ::getpid() ? 0 : ::getpid(), SIGKILL);
}

std::uint64_t cpuMicroseconds() {
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<std::uint64_t>(used.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(used.tv_nsec) / 1000;
}

/// The most that was resident since the last reset, by the kernel's own text.
std::uint64_t peakBytes(int status) {
    char text[4096];
    const ssize_t length = ::pread(status, text, sizeof text, 0);
    const std::string_view lines(text, static_cast<std::size_t>(length > 0 ? length : 0));
    constexpr std::string_view name = "\nVmHWM:";
    std::size_t place = lines.find(name);
    if (place == lines.npos)
        return 0;
    place = lines.find_first_of("0123456789", place);
    std::uint64_t kibibytes = 0;
    if (place != lines.npos)
        std::from_chars(lines.data() + place, lines.data() + lines.size(), kibibytes);
    return kibibytes << 10;
}

} // namespace

EngineChannel::EngineChannel(EngineFrameData accepted)
    : descriptor_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)),
      reader_(accepted),
      reports_(FileDescriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3))),
      peakReset_(::open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC)),
      status_(::open("/proc/self/status", O_RDONLY | O_CLOEXEC)) {
    std::signal(SIGPIPE, SIG_IGN);
    const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ::dup2(nothing.get(), STDIN_FILENO);
    if (reports_.isThere())
        ::dup2(FileDescriptor(::open("/dev/null", O_WRONLY | O_CLOEXEC)).get(), STDOUT_FILENO);
}

void EngineChannel::endWithOtherSide(const std::string& folder) {
    folder_ = folder;
    // This process outlives the other one's mark by a while.
    if (!folder.empty())
        folderUse_ = openFolderInUse(AT_FDCWD, folder);
    std::thread(waitAndEnd, descriptor_, folder).detach();
}

EngineChannel::~EngineChannel() {
    removeFolder(folder_);
}

bool EngineChannel::write(EncodedEngineFrame frame) {
    writer_.add(std::move(frame));
    return writer_.send(descriptor_, 0) == EngineFrameWriter::Event::done;
}

std::optional<Value> EngineChannel::read(EngineFrameKind expected) {
    while (!reader_.hasWholeFrame()) {
        if (reader_.receive(descriptor_, 0) != EngineFrameReader::Event::some)
            return std::nullopt;
    }
    auto frame = reader_.takeFrame();
    if (!frame || frame->kind != expected)
        return std::nullopt;
    return std::move(frame->value);
}

bool EngineChannel::greet(const NSString& layers) {
    return write({EngineFrameKind::greeting, layers});
}

std::optional<Value> EngineChannel::nextMessage() {
    auto message = read(EngineFrameKind::message);
    areReportsSent_ = false;
    isWatchingPeak_ = reader_.lastHead().asksForPeak;
    // Since now, not since the start of a warm engine; 5 resets the peak alone (proc(5)).
    if (isWatchingPeak_ && peakReset_)
        static_cast<void>(::pwrite(peakReset_.get(), "5", 1, 0));
    return message;
}

bool EngineChannel::note(Outcome outcome, const NSString& sentence) {
    return write({EngineFrameKind::note,
                  NSMutableDictionary::dictionaryWithObjectsAndKeys(
                      {{NSNumber::numberWithInt(static_cast<int>(outcome)), enginekeys::outcome},
                       {sentence, enginekeys::sentence}})});
}

bool EngineChannel::report(const Value& part) {
    EncodedEngineFrame frame(EngineFrameKind::report, part);
    if (!areReportsSent_ && frame.descriptors.empty() && reports_.append(frame.bytes))
        return true;
    areReportsSent_ = true;
    return write(std::move(frame));
}

bool EngineChannel::answer(const Value& result) {
    EngineFrameHead head;
    head.kind = EngineFrameKind::answer;
    head.cpuMicroseconds = cpuMicroseconds();
    head.peakBytes = isWatchingPeak_ && status_ ? peakBytes(status_.get()) : 0;
    return write({head, result});
}

std::optional<Value> EngineChannel::ask(const Value& question) {
    if (!write({EngineFrameKind::question, question}))
        return std::nullopt;
    return read(EngineFrameKind::reply);
}

} // namespace kelvo
