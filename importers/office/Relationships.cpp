#include "importers/office/Relationships.h"

#include "importers/support/PartPath.h"
#include <algorithm>
#include <array>
#include <utility>

namespace kelvo::importers {
namespace {

constexpr std::size_t mostRelationships = 1'000'000;
constexpr std::array elements{XMLElement{XMLSpace::relationships, "Relationship", 1}};

class RelationshipsHandler final : public XMLHandler {
public:
    explicit RelationshipsHandler(std::string_view part) : part_(part) {}

    bool startElement(int element, const XMLAttributes& attributes) override {
        if (element == 0 || attributes.value(XMLSpace::none, "TargetMode") == "External")
            return true;
        const std::string_view type = attributes.value(XMLSpace::none, "Type");
        found.push_back({std::string(attributes.value(XMLSpace::none, "Id")),
                         std::string(type.substr(type.rfind('/') + 1)),
                         pathOfReference(part_, attributes.value(XMLSpace::none, "Target"))});
        return true;
    }
    void endElement(int) override {}
    void characters(std::string_view) override {}
    bool wantsMore() const override { return found.size() < mostRelationships; }

    std::vector<Relationship> found;

private:
    std::string_view part_;
};

} // namespace

std::vector<Relationship> relationshipsOf(Package& package, std::string_view part) {
    RelationshipsHandler handler(part);
    XMLReader reader(elements, handler);
    package.read(pathOfRelationships(part), reader);
    return std::move(handler.found);
}

TargetsByIdentifier::TargetsByIdentifier(const std::vector<Relationship>& relationships) {
    for (const Relationship& each : relationships)
        targets_.try_emplace(each.identifier, each.target);
}

std::string TargetsByIdentifier::at(std::string_view identifier) const {
    const auto found = targets_.find(identifier);
    return found == targets_.end() ? std::string() : std::string(found->second);
}

std::string targetByType(const std::vector<Relationship>& relationships, std::string_view type) {
    const auto found = std::ranges::find(relationships, type, &Relationship::type);
    return found == relationships.end() ? std::string() : found->target;
}

} // namespace kelvo::importers
