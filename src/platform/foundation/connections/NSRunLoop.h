#pragma once

#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/Value.h"

#include <memory>
#include <vector>

namespace kelvo {

inline constexpr const char16_t* NSDefaultRunLoopMode = u"kCFRunLoopDefaultMode";

/// Something a run loop serves besides delayed performs, such as the requests of a connection.
class NSRunLoopSource {
public:
    virtual ~NSRunLoopSource();

    /// Whether performPending has something to perform now.
    virtual bool hasPending() = 0;
    /// Performs at most one piece of the work that has come in, and says whether there was any. Called at the
    /// top of the run loop only, never from within an event of the transport, so that it may run the loop
    /// again.
    virtual bool performPending() = 0;
};

/// The event loop of one thread. What it runs may run it again (a nested run): events and delayed performs go
/// on meanwhile, and each source decides what it lets through.
class NSRunLoop {
public:
    struct Internals;

    NSRunLoop(const NSRunLoop&) = delete;
    NSRunLoop& operator=(const NSRunLoop&) = delete;
    ~NSRunLoop();

    /// The calling thread's loop, made at its first use.
    static NSRunLoop& currentRunLoop();

    /// Serves until neither a source nor a delayed perform is left, which is at once when there is none.
    void run();
    /// Serves until something was performed or the date has come. False, at once, when there is neither a
    /// source nor a delayed perform in the mode.
    bool runMode_beforeDate(const NSString& mode, NSDate limitDate);

    /// After that many seconds (0 or less: at the next turn) the loop sends the selector to the target, once,
    /// when it runs in one of the modes. The loop holds the target until then. An exception the target throws
    /// leaves the run; the perform is spent.
    void performSelector_target_argument_afterDelay_inModes(const NSString& selector,
                                                            std::shared_ptr<NSObject> target,
                                                            const Value& argument, double delaySeconds,
                                                            const std::vector<NSString>& modes);
    /// In the default mode.
    void performSelector_target_argument_afterDelay(const NSString& selector,
                                                    std::shared_ptr<NSObject> target, const Value& argument,
                                                    double delaySeconds);
    /// Forgets every pending perform of this target and selector with an equal argument.
    void cancelPerformSelector_target_argument(const NSString& selector,
                                               const std::shared_ptr<NSObject>& target,
                                               const Value& argument);

    /// The loop does not own the source; it is removed before it goes away.
    void addSource(NSRunLoopSource& source);
    void removeSource(NSRunLoopSource& source);
    /// Has the loop ask its sources again; for a source's own events, on the loop's thread.
    void wakeUp();

    /// For the transport.
    Internals& internals() { return *internals_; }

private:
    NSRunLoop();
    bool isWorkWaiting(const NSString& mode) const;
    bool performTurn(const NSString& mode);
    bool performDue(const NSString& mode);
    bool performSource();

    std::unique_ptr<Internals> internals_;
};

} // namespace kelvo
