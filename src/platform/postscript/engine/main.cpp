#include "platform/engine/program/EngineProgram.h"
#include "platform/foundation/NSException.h"
#include "platform/postscript/PostScriptEngineMessages.h"
#include "platform/postscript/engine/PostScriptInterpreter.h"

#include <memory>
#include <optional>

namespace kelvo {
namespace {

using namespace postscriptengine;

class PostScriptProgram final : public EngineProgram {
public:
    ConfinementProfile profile(const std::string& folder) override {
        ConfinementProfile profile = EngineProgram::profile(folder);
        profile.readable = {"/usr/share/ghostscript", "/etc/ghostscript",       "/var/lib/ghostscript",
                            "/usr/share/fonts",       "/usr/local/share/fonts", "/etc/fonts",
                            "/usr/share/fontconfig",  "/var/cache/fontconfig",  "/usr/share/color/icc",
                            "/usr/share/poppler/cMap"};
        profile.addressSpaceBytes = std::uint64_t{512} << 20;
        profile.largestFileBytes = std::uint64_t{256} << 20;
        return profile;
    }

    void prepare(const std::string& folder) override {
        interpreter_ = std::make_unique<PostScriptInterpreter>(folder);
    }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        const NSDictionary fields = message.dictionary();
        const NSData file = fields.objectForKey(fileKey).data();
        const NSRange range{static_cast<std::size_t>(numberIn(fields, beginKey)),
                            static_cast<std::size_t>(numberIn(fields, lengthKey))};
        // It has become another by its first program, and would do anything for a second.
        const auto interpreter = std::move(interpreter_);
        if (!interpreter || !rangeFits(range, file.length()))
            return {};
        PostScriptPage page;
        page.left = numberIn(fields, leftKey);
        page.bottom = numberIn(fields, bottomKey);
        page.boxWidth = numberIn(fields, boxWidthKey);
        page.boxHeight = numberIn(fields, boxHeightKey);
        page.width = numberIn(fields, widthKey);
        page.height = numberIn(fields, heightKey);
        page.hasBox = numberIn(fields, hasBoxKey) != 0;
        return interpreter->firstPage(
            file.characters().substr(range.location, range.length), page,
            [&channel](Outcome outcome, const NSString& sentence) { channel.note(outcome, sentence); });
    }

private:
    static double numberIn(const NSDictionary& fields, const char16_t* key) {
        const NSNumber* const number = fields.objectForKey(key).numberIfAny();
        return number ? number->doubleValue() : 0;
    }

    std::unique_ptr<PostScriptInterpreter> interpreter_;
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    kelvo::PostScriptProgram program;
    return kelvo::runEngine(program, argumentCount, arguments);
}
