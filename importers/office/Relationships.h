#pragma once

#include "importers/office/Package.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvo::importers {

/// One part refers to another.
struct Relationship {
    std::string identifier;
    /// The last word of its type: "worksheet".
    std::string type;
    /// The path of the part in the package.
    std::string target;
};

/// In their order, without those that lead out of the package. Empty when the part says of none; an empty name is that of
/// the package.
std::vector<Relationship> relationshipsOf(Package& package, std::string_view part);

/// Of those of a part, by what it calls them. They must outlive this object.
class TargetsByIdentifier {
public:
    explicit TargetsByIdentifier(const std::vector<Relationship>& relationships);

    /// Empty when there is none.
    std::string at(std::string_view identifier) const;

private:
    std::unordered_map<std::string_view, std::string_view> targets_;
};

/// The first; empty when there is none.
std::string targetByType(const std::vector<Relationship>& relationships, std::string_view type);

} // namespace kelvo::importers
