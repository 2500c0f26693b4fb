#pragma once

#include "platform/foundation/FileIO.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kelvo {

/// Memory that an EngineProcess and its EngineChannel share, where the engine leaves frames ahead of an answer. What stands
/// there outlives the engine, however it ends, and wakes nobody up. Its length is sealed: neither side can take it away
/// from under the other.
class EngineReports {
public:
    static constexpr std::size_t sizeInBytes = std::size_t{64} << 10;

    /// None: nothing fits.
    EngineReports() = default;
    /// That behind the descriptor, if it is such memory.
    explicit EngineReports(FileDescriptor memory);
    /// New and empty; none where the system has no more.
    static EngineReports create();
    EngineReports(EngineReports&& other) noexcept;
    EngineReports& operator=(EngineReports&& other) noexcept;
    ~EngineReports();

    bool isThere() const noexcept { return layout_ != nullptr; }
    /// To be handed to the child; -1 when there is none.
    int descriptor() const noexcept { return memory_.get(); }
    /// Whether there was room for all of it.
    bool append(std::string_view frame) noexcept;
    /// A copy of what has been appended since the last call. Whoever wrote it: it may be anything.
    std::string take();

private:
    struct Layout;
    FileDescriptor memory_;
    Layout* layout_ = nullptr;
};

} // namespace kelvo
