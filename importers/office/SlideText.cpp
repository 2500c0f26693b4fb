#include "importers/office/SlideText.h"

#include "importers/office/DrawingText.h"
#include "importers/office/TextLimits.h"

#include <array>
#include <string>
#include <vector>

namespace kelvo::importers {
namespace {

constexpr std::size_t mostSlides = 1'000'000;

class PresentationHandler final : public XMLHandler {
public:
    static constexpr std::array elements{XMLElement{XMLSpace::slides, "sldId", 1}};

    bool startElement(int element, const XMLAttributes& attributes) override {
        if (element != 0)
            slides.emplace_back(attributes.value(XMLSpace::documentRelationships, "id"));
        return true;
    }
    void endElement(int) override {}
    void characters(std::string_view) override {}
    bool wantsMore() const override { return slides.size() < mostSlides; }

    /// What the presentation calls them.
    std::vector<std::string> slides;
};

} // namespace

std::size_t appendSlideText(TextBuilder& text, Package& package, std::string_view part) {
    PresentationHandler presentation;
    XMLReader reader(PresentationHandler::elements, presentation);
    package.read(part, reader);
    const auto relationships = relationshipsOf(package, part);
    const TargetsByIdentifier targets(relationships);
    for (const std::string& slide : presentation.slides) {
        if (package.isSpent() || text.size() > mostBytesOfText)
            break;
        const std::string target = targets.at(slide);
        appendDrawingText(text, package, target);
        const auto related = relationshipsOf(package, target);
        for (const std::string_view type : {"diagramData", "chart", "notesSlide", "comments"}) {
            for (const Relationship& each : related) {
                if (each.type == type)
                    appendDrawingText(text, package, each.target,
                                      type == "notesSlide" ? Placeholders::bodyOnly : Placeholders::shown);
            }
        }
    }
    return presentation.slides.size();
}

} // namespace kelvo::importers
