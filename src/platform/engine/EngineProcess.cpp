#include "platform/engine/EngineProcess.h"

#include "platform/engine/EngineFrames.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/connections/NSRunLoopInternals.h"
#include "platform/foundation/processes/NSTask.h"
#include "platform/foundation/processes/ProcessFacts.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace kelvo {
namespace {

/// How long a child that was killed may take to be gone before nobody waits for it any more.
constexpr double secondsToBeGone = 1;

NSString pathBesideThisProgram(const std::string& name) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(folderOfThisProgram() + '/' +
                                                                              name);
}

/// Libraries obey hundreds of variables: they load modules that these name, talk to the services of a
/// desktop, send what they fetch through other machines. An engine inherits none but where programs and
/// temporary files are, the time zone, and what sanitizers are told. Its home is nowhere until it has made
/// itself one.
NSDictionary environmentOfEngines() {
    auto environment = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{u"C.UTF-8", u"LANG"}, {u"/nonexistent", u"HOME"}});
    for (const char* name :
         {"PATH", "TMPDIR", "XDG_RUNTIME_DIR", "TZ", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name))
            environment.setObject_forKey(
                NSFileManager::defaultManager().stringWithFileSystemRepresentation(value),
                NSString::stringWithUTF8String(name));
    }
    return environment;
}

} // namespace

/// Reads and writes without waiting, as events of the run loop; whole frames are handled at its top.
struct EngineProcess::Internals final : NSRunLoopSource {
    explicit Internals(std::string name) : programName(std::move(name)) {}
    ~Internals() noexcept override {}

    bool start();
    void stop();
    void send(EngineFrameKind kind, const Value& value);
    /// Takes in what is there.
    void drain();
    /// Sends what the socket takes.
    void push();
    kj::Promise<void> drainUntilGone();
    kj::Promise<void> pushTheRest();
    bool hasWholeFrame() const;
    std::string takeFrame();

    bool hasPending() override { return isGone || hasWholeFrame(); }
    bool performPending() override;

    const std::string programName;
    std::unique_ptr<NSTask> task;
    FileDescriptor socket;
    kj::Own<kj::UnixEventPort::FdObserver> observer;
    kj::Promise<void> reading = nullptr;
    kj::Promise<void> writing = nullptr;
    std::string incoming;
    std::string outgoing;
    std::size_t sent = 0;
    /// The child's end of the socket is closed, or it sent what cannot be understood.
    bool isGone = false;
    bool isAsking = false;
    const Questions* questions = nullptr;
    std::optional<Value> result;
};

bool EngineProcess::Internals::start() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return false;
    socket = FileDescriptor(ends[0]);
    const auto otherEnd = std::make_shared<NSFileHandle>(FileDescriptor(ends[1]));
    auto child = std::make_unique<NSTask>();
    try {
        child->setStandardInput(otherEnd);
        child->setLaunchPath(pathBesideThisProgram(programName));
        child->setEnvironment(environmentOfEngines());
        child->setSession(NSTask::Session::own);
        child->launch();
    } catch (const NSException& exception) {
        NSLog(u"%@", exception.reason());
        socket.close();
        return false;
    }
    otherEnd->closeFile();
    task = std::move(child);
    isGone = false;
    observer = kj::heap<kj::UnixEventPort::FdObserver>(
        NSRunLoop::currentRunLoop().internals().io.unixEventPort, socket.get(),
        kj::UnixEventPort::FdObserver::OBSERVE_READ_WRITE);
    reading = drainUntilGone().eagerlyEvaluate([](kj::Exception&&) {});
    return true;
}

void EngineProcess::Internals::stop() {
    reading = nullptr;
    writing = nullptr;
    observer = nullptr;
    socket.close();
    incoming.clear();
    outgoing.clear();
    sent = 0;
    isGone = false;
    if (!task)
        return;
    // Before the child is collected, because its group may outlive it and must not outlive its number.
    ::kill(-task->processIdentifier(), SIGKILL);
    task->waitUntilExitForSeconds(secondsToBeGone);
    task = nullptr;
}

void EngineProcess::Internals::send(EngineFrameKind kind, const Value& value) {
    const bool isWriting = !outgoing.empty();
    outgoing += bytesOfEngineFrame(kind, value);
    if (!isWriting)
        writing = pushTheRest().eagerlyEvaluate([](kj::Exception&&) {});
}

void EngineProcess::Internals::push() {
    while (sent < outgoing.size()) {
        const ssize_t count =
            ::send(socket.get(), outgoing.data() + sent, outgoing.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0)
            sent += static_cast<std::size_t>(count);
        else if (errno == EAGAIN)
            return;
        else if (errno != EINTR)
            break; // reading sees the end as well, after what the child has said last
    }
    outgoing = std::string();
    sent = 0;
}

kj::Promise<void> EngineProcess::Internals::pushTheRest() {
    push();
    if (outgoing.empty())
        return kj::READY_NOW;
    return observer->whenBecomesWritable().then([this] { return pushTheRest(); });
}

void EngineProcess::Internals::drain() {
    char buffer[64 * 1024];
    while (!isGone) {
        const ssize_t count = ::recv(socket.get(), buffer, sizeof buffer, MSG_DONTWAIT);
        if (count > 0)
            incoming.append(buffer, static_cast<std::size_t>(count));
        else if (count < 0 && errno == EAGAIN)
            break;
        else if (count == 0 || errno != EINTR)
            isGone = true;
    }
    if (incoming.size() >= engineFrameHeadLength && !contentsLengthOfEngineFrame(incoming))
        isGone = true;
    if (hasPending())
        NSRunLoop::currentRunLoop().wakeUp();
}

kj::Promise<void> EngineProcess::Internals::drainUntilGone() {
    drain();
    if (isGone)
        return kj::READY_NOW;
    return observer->whenBecomesReadable().then([this] { return drainUntilGone(); });
}

bool EngineProcess::Internals::hasWholeFrame() const {
    const auto length = contentsLengthOfEngineFrame(incoming);
    return length && incoming.size() - engineFrameHeadLength >= *length;
}

std::string EngineProcess::Internals::takeFrame() {
    const std::size_t length = engineFrameHeadLength + *contentsLengthOfEngineFrame(incoming);
    std::string rest = incoming.substr(length);
    incoming.resize(length);
    return std::exchange(incoming, std::move(rest));
}

bool EngineProcess::Internals::performPending() {
    if (!isAsking)
        return false;
    if (!hasWholeFrame()) {
        if (isGone)
            result = Value();
        return isGone;
    }
    const auto frame = engineFrameWithBytes(takeFrame());
    if (!frame)
        result = Value();
    else if (frame->kind == EngineFrameKind::answer)
        result = frame->value;
    else if (frame->kind == EngineFrameKind::question)
        send(EngineFrameKind::reply, *questions ? (*questions)(frame->value) : Value());
    return true;
}

EngineProcess::EngineProcess(std::string programName)
    : internals_(std::make_unique<Internals>(std::move(programName))) {}

EngineProcess::~EngineProcess() {
    stop();
}

Value EngineProcess::ask(const Value& message, double timeoutSeconds, const Questions& questions) {
    Internals& own = *internals_;
    if (own.isAsking)
        return {};
    NSRunLoop& loop = NSRunLoop::currentRunLoop();
    // A child that ended since the last message is replaced.
    if (own.task) {
        own.drain();
        if (own.isGone)
            stop();
    }
    if (!own.task && !own.start())
        return {};

    // Whatever ends this early leaves no child in the middle of a message.
    struct Asking {
        explicit Asking(EngineProcess& asked, NSRunLoop& runLoop) : process(asked), loop(runLoop) {
            process.internals_->isAsking = true;
            loop.addSource(*process.internals_);
        }
        Asking(const Asking&) = delete;
        Asking& operator=(const Asking&) = delete;
        ~Asking() {
            loop.removeSource(*process.internals_);
            process.internals_->isAsking = false;
            process.internals_->questions = nullptr;
            if (!isAnswered)
                process.stop();
        }

        EngineProcess& process;
        NSRunLoop& loop;
        bool isAnswered = false;
    } asking(*this, loop);

    own.questions = &questions;
    own.result.reset();
    own.send(EngineFrameKind::message, message);
    const NSDate limit = NSDate::dateWithTimeIntervalSinceReferenceDate(
        NSDate::date().timeIntervalSinceReferenceDate() + timeoutSeconds);
    while (!own.result && limit.timeIntervalSinceDate(NSDate::date()) > 0)
        loop.runMode_beforeDate(NSDefaultRunLoopMode, limit);
    asking.isAnswered = own.result && !own.isGone;
    return own.result.value_or(Value());
}

void EngineProcess::stop() {
    internals_->stop();
}

pid_t EngineProcess::processIdentifier() const {
    return internals_->task ? internals_->task->processIdentifier() : 0;
}

} // namespace kelvo
