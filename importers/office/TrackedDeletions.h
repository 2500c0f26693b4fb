#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace kelvo::importers {

/// The deletions that an OpenDocument lists before its text, by their ids, and which of them are open at a place of it. A
/// writer keeps deleted text either in the list or in its place.
class TrackedDeletions {
public:
    /// More of them, and ids longer than anybody writes, are not kept.
    static constexpr std::size_t mostDeletions = 100'000;
    static constexpr std::size_t longestId = 256;

    void add(std::string_view id) {
        if (!id.empty() && id.size() <= longestId && areOpen_.size() < mostDeletions)
            areOpen_.emplace(id, false);
    }
    /// Of changes of every kind.
    void start(std::string_view id) { set(id, true); }
    void end(std::string_view id) { set(id, false); }

    bool isAnyOpen() const { return open_ > 0; }

private:
    void set(std::string_view id, bool isOpen) {
        const auto found = areOpen_.find(id);
        if (found == areOpen_.end() || found->second == isOpen)
            return;
        found->second = isOpen;
        open_ += isOpen ? 1 : -1;
    }

    /// In order, so that no choice of ids makes it slow.
    std::map<std::string, bool, std::less<>> areOpen_;
    int open_ = 0;
};

} // namespace kelvo::importers
