#pragma once

#include "platform/launchservices/MIMEMagic.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvo {

/// The shared MIME database of the system: what files say by their first bytes, and how MIME types belong together.
class MIMEDatabase {
public:
    /// Read at the first call and kept. Where the system has none the log says so once, and all answers are empty.
    static const MIMEDatabase& system();

    /// With the files "magic", "aliases" and "subclasses" of a folder, as far as they are there and can be read.
    explicit MIMEDatabase(const std::string& folder);

    const MIMEMagic& magic() const noexcept { return magic_; }
    /// The type by all its names, then those that it is a kind of by all theirs, the nearest first. The type given is
    /// the first.
    std::vector<std::string> namesOf(std::string_view type) const;
    /// Whether its files can be read as text.
    bool isText(std::string_view type) const;

private:
    using Relation = std::unordered_map<std::string, std::vector<std::string>>;

    MIMEMagic magic_;
    Relation otherNames_;
    Relation kindsAbove_;
};

} // namespace kelvo
