#pragma once

#include "importers/support/Importer.h"
#include "platform/foundation/NSString.h"

#include <array>
#include <climits>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kelvo::importers {

/// What a page says of itself. Of several statements those count that are made in the way that says it best, and of
/// these the first, or all where an attribute has several values.
class PageFacts {
public:
    /// A meta element, or an html element for its language.
    void readTag(std::string_view name, std::u16string_view tag);
    /// What stands in the title element, character references and all.
    void readTitle(std::u16string_view title);

    void setAttributes(Attributes& attributes) const;

private:
    enum class Fact : std::uint8_t {
        title,
        authors,
        keywords,
        description,
        languages,
        creator,
        copyright,
        created,
        modified,
        count
    };
    struct Name;
    static const Name names[];

    struct Statement {
        int rank = INT_MAX;
        std::vector<NSString> values;
    };

    void add(Fact fact, int rank, std::u16string_view value);
    const Statement& statement(Fact fact) const { return statements_[static_cast<std::size_t>(fact)]; }
    NSString first(Fact fact) const;
    NSArray all(Fact fact) const;

    std::array<Statement, static_cast<std::size_t>(Fact::count)> statements_;
};

} // namespace kelvo::importers
