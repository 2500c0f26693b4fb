#include "platform/appkit/documents/DocumentEngineMessages.h"
#include "platform/appkit/documents/engine/Confinement.h"
#include "platform/appkit/documents/engine/DocumentTrouble.h"
#include "platform/appkit/documents/engine/OfficeLibrary.h"
#include "platform/engine/EngineExceptions.h"
#include "platform/engine/program/EngineProgram.h"
#include "platform/foundation/NSException.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <variant>

namespace kelvo::documentengine {
namespace {

/// What becomes part of a path has to be a plain extension.
bool isExtension(std::string_view text) {
    return !text.empty() && text.size() <= 8 &&
           std::ranges::all_of(text, [](char letter) { return letter >= 'a' && letter <= 'z'; });
}

DocumentTrouble troubleWithFailure(OfficeLibrary::Failure failure, std::string_view document,
                                   std::string_view extension) {
    switch (failure) {
    case OfficeLibrary::Failure::unreadable:
        break;
    case OfficeLibrary::Failure::noRoom:
        return {Outcome::missingEngine, u"there is no room for temporary files"};
    case OfficeLibrary::Failure::otherKind:
        return {Outcome::unsupported, u"it is an office document, but no text document"};
    case OfficeLibrary::Failure::unwritable:
        return {Outcome::broken, u"the document was read, but nothing could be written of it"};
    }
    return troubleWithDocument(document, extension);
}

class DocumentProgram final : public EngineProgram {
public:
    void load() override {
        const auto folder = officeProgramFolder();
        if (!folder)
            throw NSException(EngineMissingException, u"LibreOffice Writer is not installed");
        officeFolder_ = *folder;
    }

    ConfinementProfile profile(const std::string& folder) override {
        return profileOfOffice(officeFolder_, folder);
    }

    void prepare(const std::string& folder) override {
        if (folder.empty())
            throw NSException(EngineMissingException,
                              u"there is no temporary folder for the document engine");
        moveInto(folder);
        office_ = OfficeLibrary::load(officeFolder_, folder);
        if (!office_)
            throw NSException(EngineMissingException, u"LibreOffice does not start");
    }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        const NSDictionary fields = message.dictionary();
        const NSData document = fields.objectForKey(documentKey).data();
        const std::string extension = fields.objectForKey(extensionKey).string().UTF8String();
        if (document.isNil() || !isExtension(extension))
            return {};
        if (const NSString missing = missingProgram(extension); !missing.isNil()) {
            channel.note(Outcome::missingEngine, missing);
            return {};
        }
        const bool isFlat = fields.objectForKey(formatKey).string() == flatOpenDocumentFormat;
        auto result = office_->convert(document.characters(), extension,
                                       isFlat ? OfficeFormat::flatOpenDocument : OfficeFormat::RTF);
        if (auto* const converted = std::get_if<std::string>(&result)) {
            if (const NSString loss = lossOfDocument(document.characters(), extension); !loss.isNil())
                channel.note(Outcome::answered, loss);
            return NSData::dataWithBytesNoCopy(std::move(*converted));
        }
        const DocumentTrouble trouble =
            troubleWithFailure(std::get<OfficeLibrary::Failure>(result), document.characters(), extension);
        channel.note(trouble.outcome, trouble.sentence);
        return {};
    }

private:
    /// The suite's programs come as packages of their own; without the one for it a document is no document.
    NSString missingProgram(std::string_view extension) const {
        const bool isWorkbook = extension == "xls";
        if (!isWorkbook && extension != "ppt")
            return nullptr;
        std::error_code ignored;
        if (std::filesystem::exists(officeFolder_ / (isWorkbook ? "libsclo.so" : "libsdlo.so"), ignored))
            return nullptr;
        return isWorkbook ? u"LibreOffice Calc is not installed" : u"LibreOffice Impress is not installed";
    }

    std::filesystem::path officeFolder_;
    std::unique_ptr<OfficeLibrary> office_;
};

} // namespace
} // namespace kelvo::documentengine

int main(int argumentCount, char** arguments) {
    kelvo::documentengine::DocumentProgram program;
    const int status = kelvo::runEngine(program, argumentCount, arguments);
    // Without the destructors of the office suite, which has threads that still use what they would destroy.
    ::_exit(status);
}
