#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// What the first bytes of files say about their MIME type, by the rules of the shared MIME database (its file
/// "magic"). The rules come with the system; the bytes may be anything.
class MIMEMagic {
public:
    /// Rules of a priority below `leastPriority`, which match what merely begins like something, are left out. What
    /// follows a rule that is not well-formed is not read: that and all before it of the same type do not count.
    MIMEMagic(std::string_view file, int leastPriority);

    bool isEmpty() const noexcept { return types_.empty(); }
    /// How many bytes from the beginning of a file can matter; 1 MiB at most.
    std::size_t reachInBytes() const noexcept { return reachInBytes_; }
    /// The type whose rules match and have the highest priority, the first of several; empty when none does. Valid as
    /// long as this object.
    std::string_view typeOfBytes(std::string_view beginning) const;

private:
    /// Holds when its bytes stand at one of the places and one of the rules below it holds, if there are any.
    struct Rule {
        unsigned level = 0;
        std::size_t firstPlace = 0;
        std::size_t placeCount = 1;
        std::string bytes;
        /// Of the same length, or empty.
        std::string mask;
    };
    struct Type {
        std::string name;
        std::vector<Rule> rules;
    };

    class Reader;
    static bool holds(const Rule& rule, std::string_view beginning);
    static bool holdsAny(const Rule* rule, const Rule* end, unsigned level, std::string_view beginning);

    std::vector<Type> types_;
    std::size_t reachInBytes_ = 0;
};

} // namespace kelvo
