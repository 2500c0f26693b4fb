#include "platform/foundation/connections/NSRunLoop.h"

#include "platform/foundation/connections/NSRunLoopInternals.h"

#include <algorithm>
#include <cmath>

namespace kelvo {
namespace {

using Clock = NSRunLoop::Internals::Clock;

// Far enough for any service, near enough for the clock's arithmetic.
constexpr double longestWaitSeconds = 100.0 * 365 * 86400;
// A longer wait needs no timer.
constexpr double longestTimerSeconds = longestWaitSeconds / 2;

Clock::time_point fromNow(double seconds) {
    const double bounded = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, longestWaitSeconds);
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(bounded));
}

bool runsInMode(const NSRunLoop::Internals::Perform& perform, const NSString& mode) {
    return std::ranges::find(perform.modes, mode) != perform.modes.end();
}

} // namespace

NSRunLoopSource::~NSRunLoopSource() = default;

NSRunLoop::NSRunLoop() : internals_(std::make_unique<Internals>()) {}

NSRunLoop::~NSRunLoop() = default;

NSRunLoop& NSRunLoop::currentRunLoop() {
    static thread_local NSRunLoop loop;
    return loop;
}

void NSRunLoop::run() {
    while (
        runMode_beforeDate(NSDefaultRunLoopMode, NSDate::dateWithTimeIntervalSinceReferenceDate(HUGE_VAL))) {
    }
}

bool NSRunLoop::runMode_beforeDate(const NSString& mode, NSDate limitDate) {
    Internals& own = *internals_;
    const Clock::time_point limit = fromNow(limitDate.timeIntervalSinceDate(NSDate::date()));
    bool hasJustWaited = false;
    for (;;) {
        if (isWorkWaiting(mode)) {
            // Events come in even when there is always something to perform.
            if (!hasJustWaited)
                own.io.waitScope.poll();
            if (performTurn(mode))
                return true;
        }
        const auto nextDue = std::ranges::find_if(
            own.performs, [&mode](const auto& entry) { return runsInMode(entry.second, mode); });
        const bool isAnyDue = nextDue != own.performs.end();
        if (own.sources.empty() && !isAnyDue)
            return false;
        if (Clock::now() >= limit)
            return true;
        const Clock::time_point until = isAnyDue ? std::min(limit, nextDue->first.first) : limit;
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(until - Clock::now());
        auto signal = kj::newPromiseAndFulfiller<void>();
        own.wake = kj::mv(signal.fulfiller);
        if (std::chrono::duration<double>(left).count() < longestTimerSeconds) {
            // The timer's own notion of now is as old as its last wait.
            const auto deadline = kj::systemPreciseMonotonicClock().now() + left.count() * kj::NANOSECONDS;
            signal.promise = signal.promise.exclusiveJoin(own.io.provider->getTimer().atTime(deadline));
        }
        signal.promise.wait(own.io.waitScope);
        own.wake = nullptr;
        hasJustWaited = true;
    }
}

bool NSRunLoop::isWorkWaiting(const NSString& mode) const {
    const auto now = Clock::now();
    return std::ranges::any_of(internals_->performs,
                               [&](const auto& entry) {
                                   return entry.first.first <= now && runsInMode(entry.second, mode);
                               }) ||
           std::ranges::any_of(internals_->sources,
                               [](NSRunLoopSource* source) { return source->hasPending(); });
}

bool NSRunLoop::performTurn(const NSString& mode) {
    // One of each, so that a perform that is always due does not hold up requests.
    const bool hasPerformed = performDue(mode);
    return performSource() || hasPerformed;
}

bool NSRunLoop::performDue(const NSString& mode) {
    auto& performs = internals_->performs;
    const auto now = Clock::now();
    for (auto each = performs.begin(); each != performs.end() && each->first.first <= now; ++each) {
        if (!runsInMode(each->second, mode))
            continue;
        const Internals::Perform due = std::move(each->second);
        performs.erase(each);
        due.target->performSelector_withObject(due.selector, due.argument);
        return true;
    }
    return false;
}

bool NSRunLoop::performSource() {
    // A source may add or remove sources while it performs.
    const std::vector<NSRunLoopSource*>& present = internals_->sources;
    const std::vector<NSRunLoopSource*> sources = present;
    return std::ranges::any_of(sources, [&present](NSRunLoopSource* source) {
        return std::ranges::find(present, source) != present.end() && source->performPending();
    });
}

void NSRunLoop::performSelector_target_argument_afterDelay_inModes(const NSString& selector,
                                                                   std::shared_ptr<NSObject> target,
                                                                   const Value& argument, double delaySeconds,
                                                                   const std::vector<NSString>& modes) {
    if (!target)
        return;
    Internals& own = *internals_;
    own.performs.emplace(std::pair(fromNow(delaySeconds), own.performsMade++),
                         Internals::Perform{selector, std::move(target), argument, modes});
    wakeUp();
}

void NSRunLoop::performSelector_target_argument_afterDelay(const NSString& selector,
                                                           std::shared_ptr<NSObject> target,
                                                           const Value& argument, double delaySeconds) {
    performSelector_target_argument_afterDelay_inModes(selector, std::move(target), argument, delaySeconds,
                                                       {NSDefaultRunLoopMode});
}

void NSRunLoop::cancelPerformSelector_target_argument(const NSString& selector,
                                                      const std::shared_ptr<NSObject>& target,
                                                      const Value& argument) {
    std::erase_if(internals_->performs, [&](const auto& entry) {
        const Internals::Perform& perform = entry.second;
        return perform.target == target && perform.selector == selector && perform.argument == argument;
    });
}

void NSRunLoop::addSource(NSRunLoopSource& source) {
    internals_->sources.push_back(&source);
    wakeUp();
}

void NSRunLoop::removeSource(NSRunLoopSource& source) {
    std::erase(internals_->sources, &source);
    wakeUp();
}

void NSRunLoop::wakeUp() {
    KJ_IF_MAYBE (signal, internals_->wake) {
        (*signal)->fulfill();
    }
}

} // namespace kelvo
