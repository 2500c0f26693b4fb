#pragma once

#include <memory>
#include <vector>

namespace kelvo {

/// Keeps what is handed to it until the end of its scope. Pools nest; each thread has its own stack of them,
/// and they end in the reverse order of their making.
///
/// Values are counted handles and need no pool. It is for the few results that are bare pointers into an
/// object nobody else holds, and so must outlive the call that made them.
class NSAutoreleasePool {
public:
    NSAutoreleasePool();
    NSAutoreleasePool(const NSAutoreleasePool&) = delete;
    NSAutoreleasePool& operator=(const NSAutoreleasePool&) = delete;
    ~NSAutoreleasePool();

    /// Keeps the object until the innermost pool of this thread ends; for good when there is none.
    static void autorelease(std::shared_ptr<const void> object);

private:
    NSAutoreleasePool* outer_;
    std::vector<std::shared_ptr<const void>> objects_;
};

} // namespace kelvo
