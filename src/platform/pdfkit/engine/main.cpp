#include "platform/engine/program/EngineProgram.h"
#include "platform/pdfkit/PDFEngineMessages.h"
#include "platform/pdfkit/engine/OpenDocument.h"

#include <algorithm>
#include <memory>

#include <malloc.h>

namespace kelvo {
namespace {

using namespace pdfengine;

class PDFProgram final : public EngineProgram {
public:
    ConfinementProfile profile(const std::string& folder) override {
        ConfinementProfile profile = EngineProgram::profile(folder);
        profile.readable = {"/usr/share/poppler", "/usr/share/fonts",      "/usr/local/share/fonts",
                            "/etc/fonts",         "/usr/share/fontconfig", "/var/cache/fontconfig"};
        return profile;
    }

    void prepare(const std::string&) override {
        keepPDFLibraryWarm();
        silenceLibraries();
    }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        const NSDictionary fields = message.dictionary();
        const std::int64_t number = numberIn(fields, numberKey);
        if (const NSData data = fields.objectForKey(documentKey).data(); !data.isNil()) {
            close();
            document_ = OpenDocument::open(data, number);
            return document_ ? Value(document_->facts()) : Value();
        }
        if (!document_ || document_->number() != number)
            return NSNumber::numberWithBool(notOpen);
        if (fields.objectForKey(pageKey).isNil()) {
            close();
            return {};
        }
        const std::int64_t page = numberIn(fields, pageKey);
        switch (static_cast<Want>(numberIn(fields, wantKey))) {
        case Want::text:
            return document_->text(page);
        case Want::styledText:
            return document_->styledText(page);
        case Want::mediaBox:
            return document_->mediaBox(page);
        case Want::cropBox:
            return document_->cropBox(page);
        case Want::sizeAsRead:
            return document_->sizeAsRead(page);
        case Want::pixels:
            return pixels(fields, page, channel);
        }
        return {};
    }

private:
    Value pixels(const NSDictionary& fields, std::int64_t page, EngineChannel& channel) const {
        PixelRequest request;
        request.width = static_cast<std::size_t>(std::max<std::int64_t>(numberIn(fields, widthKey), 0));
        request.height = static_cast<std::size_t>(std::max<std::int64_t>(numberIn(fields, heightKey), 0));
        request.isTransparent = numberIn(fields, transparentKey) > 0;
        try {
            return document_->pixels(page, request);
        } catch (const PageFailure& failure) {
            channel.note(Outcome::broken, failure.sentence());
            return {};
        }
    }

    static std::int64_t numberIn(const NSDictionary& fields, const char16_t* key) {
        const NSNumber* const number = fields.objectForKey(key).numberIfAny();
        return number ? number->longLongValue() : -1;
    }

    void close() {
        if (!document_)
            return;
        document_ = nullptr;
        // A large document leaves much that the next does not need.
        ::malloc_trim(0);
    }

    std::unique_ptr<OpenDocument> document_;
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    kelvo::PDFProgram program;
    return kelvo::runEngine(program, argumentCount, arguments);
}
