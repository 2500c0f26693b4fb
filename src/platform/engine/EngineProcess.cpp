#include "platform/engine/EngineProcess.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/engine/EngineKeys.h"
#include "platform/engine/EngineReports.h"
#include "platform/engine/EngineSocket.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/connections/NSRunLoopInternals.h"
#include "platform/foundation/files/PrivateFolder.h"
#include "platform/foundation/processes/NSTask.h"
#include "platform/foundation/processes/ProcessFacts.h"
#include "platform/ledger/EngineRegistry.h"
#include "platform/ledger/RequestNotes.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace kelvo {
namespace {

/// How long a child that has closed its socket, or was killed, may take to be gone.
constexpr double secondsToBeGone = 1;
/// Most answers come sooner than an event loop that waits for several things turns.
constexpr timeval shortWait{0, 1000};
/// All threads of an engine together may use the CPU for so many times as long as an answer may take, and for so many
/// seconds more.
constexpr double cpuSecondsPerSecond = 2;
constexpr double cpuSecondsMore = 2;

constexpr const char16_t* replaceSelector = u"replaceEngine";

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Empty until it is set.
std::string& givenFolderOfEngines() {
    static std::string folder;
    return folder;
}

std::string folderOfEngines() {
    const std::string& given = givenFolderOfEngines();
    return given.empty() ? folderOfThisProgram() : given;
}

NSString pathOf(const std::string& bytes) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(bytes);
}

/// Libraries obey hundreds of variables: they load modules that these name, talk to the services of a
/// desktop, send what they fetch through other machines. An engine inherits none but where programs and
/// temporary files are, the time zone, and what sanitizers are told. Its home is nowhere until it has made
/// itself one.
NSDictionary environmentOf(const EngineDescription& description) {
    auto environment = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{u"C.UTF-8", u"LANG"}, {u"/nonexistent", u"HOME"}});
    for (const char* name :
         {"PATH", "TMPDIR", "XDG_RUNTIME_DIR", "TZ", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name))
            environment.setObject_forKey(pathOf(value), NSString::stringWithUTF8String(name));
    }
    for (const auto& [name, value] : description.environment)
        environment.setObject_forKey(pathOf(value), NSString::stringWithUTF8String(name));
    return environment;
}

/// Of all its life until now.
double cpuSecondsOfProcess(pid_t process) {
    clockid_t clock{};
    timespec used{};
    if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &used) != 0)
        return 0;
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

/// "SIGSEGV".
NSString nameOfSignal(int signal) {
    const char* const name = ::sigabbrev_np(signal);
    return name ? NSString::stringWithUTF8String(std::string("SIG") + name)
                : stringWithFormat(u"signal %d", signal);
}

} // namespace

void setFolderOfEngines(std::string folder) {
    givenFolderOfEngines() = std::move(folder);
}

/// Reads and writes without waiting, as events of the run loop; whole frames are handled at its top.
struct EngineProcess::Internals final : NSRunLoopSource, NSObject {
    explicit Internals(EngineDescription given)
        : description(std::move(given)),
          folder(description.programName, description.folderParents, description.longestFolderPath) {}
    ~Internals() noexcept override {}

    void start();
    void stop();
    void send(EncodedEngineFrame frame);
    /// Reads once, by default as long as the socket's own short time; whether anything has come in.
    bool receiveOnce(int flags);
    /// Takes in what is there.
    void drain();
    kj::Promise<void> drainUntilGone();
    kj::Promise<void> pushTheRest();
    void handleFrame();
    /// Hands over what the engine has left in shared memory.
    void takeReports();
    void limitCPU(double timeoutSeconds);
    void noteUse(double cpuMilliseconds, std::uint64_t peakBytes) const;
    void replaceSoon();
    [[noreturn]] void fail(const char16_t* exceptionName, Outcome outcome, const NSString& sentence) const;
    [[noreturn]] void failAfterEnd();

    NSString title() const {
        return conversation && !conversation->title.isNil() ? conversation->title
                                                            : NSString(description.title);
    }

    bool hasPending() override { return isGone || reader.hasWholeFrame(); }
    bool performPending() override;
    Value performSelector_withObject(const NSString& selector, const Value& argument) override;

    const EngineDescription description;
    PrivateFolder folder;
    std::unique_ptr<NSTask> task;
    FileDescriptor socket;
    kj::Own<kj::UnixEventPort::FdObserver> observer;
    kj::Promise<void> reading = nullptr;
    kj::Promise<void> writing = nullptr;
    EngineFrameReader reader{EngineFrameData::sealedMemory};
    EngineFrameWriter writer;
    EngineReports reports;
    /// The child's end of the socket is closed, or it sent what cannot be understood.
    bool isGone = false;
    bool isBroken = false;
    bool isAsking = false;
    bool isToBeReplaced = false;
    bool isReady = false;
    NSString layers;
    unsigned answeredMessages = 0;
    /// In all its life until the present message, as far as it has told, and the limit of that.
    double cpuSecondsBefore = 0;
    double cpuSecondsAllowed = 0;
    const EngineConversation* conversation = nullptr;
    std::optional<Value> result;
    /// What the engine has noted about why it cannot work at all.
    NSString complaint;
};

void EngineProcess::Internals::start() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        fail(EngineMissingException, Outcome::missingEngine, u"there is no descriptor left for it");
    socket = FileDescriptor(ends[0]);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &shortWait, sizeof shortWait);
    const auto otherEnd = std::make_shared<NSFileHandle>(FileDescriptor(ends[1]));
    auto arguments = NSMutableArray::array();
    arguments.addObject(pathOf(folder.path()));
    for (const std::string& argument : description.arguments)
        arguments.addObject(pathOf(argument));
    auto child = std::make_unique<NSTask>();
    try {
        child->setStandardInput(otherEnd);
        reports = EngineReports::create();
        // Nothing is printed there: it is where a child can be handed a second descriptor.
        if (FileDescriptor memory(::fcntl(reports.descriptor(), F_DUPFD_CLOEXEC, 0)); memory)
            child->setStandardOutput(std::make_shared<NSFileHandle>(std::move(memory)));
        child->setLaunchPath(pathOf(folderOfEngines() + '/' + description.programName));
        child->setArguments(arguments);
        child->setEnvironment(environmentOf(description));
        child->setSession(NSTask::Session::own);
        child->launch();
    } catch (const NSException& exception) {
        NSLog(u"%@", exception.reason());
        socket.close();
        folder.remove();
        fail(EngineMissingException, Outcome::missingEngine,
             stringWithFormat(u"the %@ cannot be started", title()));
    }
    otherEnd->closeFile();
    task = std::move(child);
    observer = kj::heap<kj::UnixEventPort::FdObserver>(
        NSRunLoop::currentRunLoop().internals().io.unixEventPort, socket.get(),
        kj::UnixEventPort::FdObserver::OBSERVE_READ_WRITE);
    reading = drainUntilGone().eagerlyEvaluate([](kj::Exception&&) {});
}

void EngineProcess::Internals::stop() {
    reading = nullptr;
    writing = nullptr;
    observer = nullptr;
    socket.close();
    reader = EngineFrameReader(EngineFrameData::sealedMemory);
    writer = EngineFrameWriter();
    reports = EngineReports();
    isGone = isBroken = isReady = isToBeReplaced = false;
    layers = nullptr;
    complaint = nullptr;
    answeredMessages = 0;
    cpuSecondsBefore = cpuSecondsAllowed = 0;
    if (task) {
        noteEngineEnded(task->processIdentifier());
        // Before the child is collected, because its group may outlive it and must not outlive its number.
        ::kill(-task->processIdentifier(), SIGKILL);
        task->waitUntilExitForSeconds(secondsToBeGone);
        task = nullptr;
        NSTask::endStrayChildren();
    }
    folder.remove();
}

void EngineProcess::Internals::send(EncodedEngineFrame frame) {
    const bool isWriting = !writer.isEmpty();
    writer.add(std::move(frame));
    // Nothing is left to the event loop that need not be: what was begun there has to be finished there.
    if (!isWriting && writer.send(socket.get(), MSG_DONTWAIT) == EngineFrameWriter::Event::full)
        writing = pushTheRest().eagerlyEvaluate([](kj::Exception&&) {});
}

kj::Promise<void> EngineProcess::Internals::pushTheRest() {
    // That the other side is gone reading sees as well, after what the child has said last.
    if (writer.send(socket.get(), MSG_DONTWAIT) != EngineFrameWriter::Event::full)
        return kj::READY_NOW;
    return observer->whenBecomesWritable().then([this] { return pushTheRest(); });
}

bool EngineProcess::Internals::receiveOnce(int flags) {
    const auto event = reader.receive(socket.get(), flags);
    isBroken = event == EngineFrameReader::Event::broken;
    isGone = isBroken || event == EngineFrameReader::Event::ended;
    return event == EngineFrameReader::Event::some;
}

void EngineProcess::Internals::drain() {
    // A frame at a time: one that sends without end fills no memory.
    while (!isGone && !reader.hasWholeFrame() && receiveOnce(MSG_DONTWAIT)) {
    }
    if (hasPending())
        NSRunLoop::currentRunLoop().wakeUp();
}

kj::Promise<void> EngineProcess::Internals::drainUntilGone() {
    drain();
    if (isGone)
        return kj::READY_NOW;
    return observer->whenBecomesReadable().then([this] { return drainUntilGone(); });
}

void EngineProcess::Internals::handleFrame() {
    const auto frame = reader.takeFrame();
    if (!frame) {
        isBroken = isGone = true;
        return;
    }
    switch (frame->kind) {
    case EngineFrameKind::greeting:
        isReady = true;
        layers = frame->value.string();
        noteEngineStarted(description.programName, task->processIdentifier(), layers.UTF8String());
        break;
    case EngineFrameKind::note: {
        const NSDictionary fields = frame->value.dictionary();
        const NSNumber* const number = fields.objectForKey(enginekeys::outcome).numberIfAny();
        const int outcome = number ? number->intValue() : -1;
        const NSString sentence = fields.objectForKey(enginekeys::sentence).string();
        if (outcome < 0 || outcome >= static_cast<int>(outcomeCount) || sentence.isNil())
            break;
        if (!isReady)
            complaint = sentence;
        else
            noteOutcome(static_cast<Outcome>(outcome), sentence);
        break;
    }
    case EngineFrameKind::question:
        send({EngineFrameKind::reply,
              conversation->questions ? conversation->questions(frame->value) : Value()});
        break;
    case EngineFrameKind::report:
        // From the first that comes in this way on all do.
        takeReports();
        if (conversation->reports)
            conversation->reports(frame->value);
        break;
    case EngineFrameKind::answer:
        takeReports();
        if (!isBroken)
            result = frame->value;
        break;
    case EngineFrameKind::message:
    case EngineFrameKind::reply:
        isBroken = isGone = true;
        break;
    }
}

void EngineProcess::Internals::takeReports() {
    const std::string bytes = reports.take();
    for (std::string_view rest = bytes; !rest.empty();) {
        const auto head = EngineFrameHead::withBytes(rest);
        std::optional<EngineFrame> frame;
        if (head && head->kind == EngineFrameKind::report && head->descriptorCount == 0 &&
            head->length <= rest.size() - EngineFrameHead::size)
            frame = decodedEngineFrame(*head, std::string(rest.substr(EngineFrameHead::size, head->length)),
                                       {}, EngineFrameData::sealedMemory);
        if (!frame) {
            isBroken = isGone = true;
            return;
        }
        if (conversation->reports)
            conversation->reports(frame->value);
        rest.remove_prefix(EngineFrameHead::size + head->length);
    }
}

bool EngineProcess::Internals::performPending() {
    if (!isAsking || result || !hasPending())
        return false;
    if (reader.hasWholeFrame())
        handleFrame();
    // The end of what has come in brings nothing that wakes the loop again.
    if (!result)
        drain();
    return true;
}

void EngineProcess::Internals::limitCPU(double timeoutSeconds) {
    // The limit counts a warm engine's whole life. It is moved on when too little of it, or too much, is left.
    const double needed = cpuSecondsMore + cpuSecondsPerSecond * std::max(timeoutSeconds, 0.0);
    const double left = cpuSecondsAllowed - cpuSecondsBefore;
    if (left >= needed && left <= 2 * needed)
        return;
    cpuSecondsAllowed = std::ceil(cpuSecondsBefore + 1.5 * needed);
    const rlimit limit{static_cast<rlim_t>(cpuSecondsAllowed), RLIM_INFINITY};
    ::prlimit(task->processIdentifier(), RLIMIT_CPU, &limit, nullptr);
}

void EngineProcess::Internals::noteUse(double cpuMilliseconds, std::uint64_t peakBytes) const {
    if (RequestNotes* const notes = RequestNotes::current())
        notes->noteEngine({description.programName, cpuMilliseconds, peakBytes});
}

void EngineProcess::Internals::replaceSoon() {
    isToBeReplaced = true;
    NSRunLoop::currentRunLoop().performSelector_target_argument_afterDelay(replaceSelector,
                                                                           shared_from_this(), Value(), 0);
}

Value EngineProcess::Internals::performSelector_withObject(const NSString& selector, const Value& argument) {
    if (selector != replaceSelector)
        return NSObject::performSelector_withObject(selector, argument);
    if (isToBeReplaced && !isAsking) {
        stop();
        try {
            start();
        } catch (const NSException&) {
            // The next message says so.
        }
    }
    return {};
}

void EngineProcess::Internals::fail(const char16_t* exceptionName, Outcome outcome,
                                    const NSString& sentence) const {
    noteOutcome(outcome, sentence);
    throw NSException(exceptionName, sentence);
}

void EngineProcess::Internals::failAfterEnd() {
    const bool hasSpoken = isReady;
    const NSString reason = complaint;
    const double before = cpuSecondsBefore;
    if (!isBroken && task->waitForEndForSeconds(secondsToBeGone)) {
        const auto ended = std::move(task);
        noteEngineEnded(ended->processIdentifier());
        ::kill(-ended->processIdentifier(), SIGKILL);
        ended->waitUntilExitForSeconds(secondsToBeGone);
        stop();
        NSTask::endStrayChildren();
        noteUse(std::max(0.0, ended->cpuMilliseconds() - before * 1000), 0);
        const int status = ended->terminationStatus();
        if (ended->wasEndedBySignal()) {
            switch (status) {
            case SIGSYS:
                fail(EngineRefusedException, Outcome::refused,
                     u"reading it wanted something that is not allowed, and was stopped");
            case SIGXCPU:
                fail(EngineTimeoutException, Outcome::timedOut, u"reading it took more time than it may");
            case SIGKILL:
                fail(EngineOutOfMemoryException, Outcome::outOfMemory,
                     u"the system ended its reading for want of memory");
            case SIGXFSZ:
                fail(EngineRefusedException, Outcome::refused,
                     u"reading it wanted to write more than is allowed, and was stopped");
            default:
                fail(EngineCrashedException, Outcome::crashed,
                     stringWithFormat(u"reading it crashed the %@ (%@)", title(), nameOfSignal(status)));
            }
        }
        if (status == engineStatusOutOfMemory)
            fail(EngineOutOfMemoryException, Outcome::outOfMemory,
                 u"reading it took more memory than it may");
        if (status == engineStatusFileCut)
            fail(EngineFileCutException, Outcome::broken, u"it was cut short while it was read");
        if (!reason.isNil())
            fail(EngineMissingException, Outcome::missingEngine, reason);
        if (!hasSpoken)
            fail(EngineMissingException, Outcome::missingEngine,
                 stringWithFormat(u"the %@ does not start", title()));
        fail(EngineCrashedException, Outcome::crashed,
             stringWithFormat(u"reading it ended the %@ (status %d)", title(), status));
    }
    stop();
    fail(EngineCrashedException, Outcome::crashed,
         stringWithFormat(u"reading it made the %@ answer nonsense", title()));
}

EngineProcess::EngineProcess(EngineDescription description)
    : internals_(std::make_shared<Internals>(std::move(description))) {}

EngineProcess::~EngineProcess() {
    stop();
}

Value EngineProcess::ask(const Value& message, double timeoutSeconds,
                         const EngineConversation& conversation) {
    Internals& own = *internals_;
    if (own.isAsking)
        throw NSException(NSGenericException, u"The engine is at work on another message.");
    EngineFrameHead head;
    head.kind = EngineFrameKind::message;
    head.asksForPeak = RequestNotes::current() != nullptr;
    EncodedEngineFrame frame(head, message);
    NSRunLoop& loop = NSRunLoop::currentRunLoop();
    // A child that ended since the last message, or has gone on talking, is replaced.
    if (own.task) {
        own.drain();
        if (own.isGone || (own.isToBeReplaced && !conversation.continues) ||
            (own.answeredMessages > 0 && !own.reader.isEmpty()))
            stop();
    }
    if (!own.task && conversation.continues)
        own.fail(EngineCrashedException, Outcome::crashed,
                 stringWithFormat(u"the %@ has ended",
                                  conversation.title.isNil() ? own.title() : conversation.title));
    if (!own.task)
        own.start();

    // Whatever ends this early leaves no child in the middle of a message.
    struct Asking {
        explicit Asking(EngineProcess& asked, NSRunLoop& runLoop) : process(asked), loop(runLoop) {
            process.internals_->isAsking = true;
            loop.addSource(*process.internals_);
        }
        Asking(const Asking&) = delete;
        Asking& operator=(const Asking&) = delete;
        ~Asking() {
            Internals& internals = *process.internals_;
            loop.removeSource(internals);
            internals.isAsking = false;
            internals.conversation = nullptr;
            if (!isAnswered)
                process.stop();
        }

        EngineProcess& process;
        NSRunLoop& loop;
        bool isAnswered = false;
    } asking(*this, loop);

    own.conversation = &conversation;
    own.result.reset();
    own.limitCPU(timeoutSeconds);
    const double end = monotonicSeconds() + timeoutSeconds;
    // Of a message that nobody waited for any more.
    own.reports.take();
    own.send(std::move(frame));
    if (own.isReady) {
        own.receiveOnce(0);
        own.performPending();
    }
    while (!own.result && !own.isGone && monotonicSeconds() < end)
        loop.runMode_beforeDate(NSDefaultRunLoopMode, NSDate::dateWithTimeIntervalSinceReferenceDate(
                                                          NSDate::date().timeIntervalSinceReferenceDate() +
                                                          end - monotonicSeconds()));
    if (own.result) {
        const EngineFrameHead& answer = own.reader.lastHead();
        const double cpuSeconds = static_cast<double>(answer.cpuMicroseconds) / 1e6;
        own.noteUse(std::max(0.0, cpuSeconds - own.cpuSecondsBefore) * 1000, answer.peakBytes);
        own.cpuSecondsBefore = cpuSeconds;
        asking.isAnswered = true;
        ++own.answeredMessages;
        const EngineDescription& bounds = own.description;
        if ((bounds.mostMessages > 0 && own.answeredMessages >= bounds.mostMessages) ||
            (bounds.mostResidentBytes > 0 &&
             residentBytesOfProcess(own.task->processIdentifier()) > bounds.mostResidentBytes))
            own.replaceSoon();
        return *std::exchange(own.result, std::nullopt);
    }
    own.takeReports();
    if (own.isGone)
        own.failAfterEnd();
    own.noteUse((cpuSecondsOfProcess(own.task->processIdentifier()) - own.cpuSecondsBefore) * 1000,
                residentBytesOfProcess(own.task->processIdentifier()));
    own.fail(EngineTimeoutException, Outcome::timedOut,
             own.isReady ? NSString(u"reading it took more time than it may")
                         : stringWithFormat(u"the %@ was not ready in time", own.title()));
}

void EngineProcess::stop() {
    internals_->stop();
}

pid_t EngineProcess::processIdentifier() const {
    return internals_->task ? internals_->task->processIdentifier() : 0;
}

NSString EngineProcess::layers() const {
    return internals_->layers;
}

} // namespace kelvo
