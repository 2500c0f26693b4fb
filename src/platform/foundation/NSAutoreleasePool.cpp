#include "platform/foundation/NSAutoreleasePool.h"

#include <utility>

namespace kelvo {
namespace {

thread_local NSAutoreleasePool* innermostPool = nullptr;

} // namespace

NSAutoreleasePool::NSAutoreleasePool() : outer_(std::exchange(innermostPool, this)) {}

NSAutoreleasePool::~NSAutoreleasePool() {
    innermostPool = outer_;
    while (!objects_.empty())
        objects_.pop_back();
}

void NSAutoreleasePool::autorelease(std::shared_ptr<const void> object) {
    if (innermostPool) {
        innermostPool->objects_.push_back(std::move(object));
        return;
    }
    static thread_local std::vector<std::shared_ptr<const void>> keptForGood;
    keptForGood.push_back(std::move(object));
}

} // namespace kelvo
