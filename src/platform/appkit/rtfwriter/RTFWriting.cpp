#include "platform/appkit/rtfwriter/RTFWriting.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/rtfwriter/RTFWriter.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/encodings/CFString.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace kelvo {
namespace {

constexpr const char16_t* textName = u"TXT.rtf";

/// A name that comes back from the text as it went in: without what its reader trims, and not that of the
/// text itself.
NSString nameForText(const NSString& wanted) {
    std::u16string units(wanted.characters());
    for (char16_t& unit : units)
        unit = unit < 0x20 || unit == 0x7F ? u'-' : unit;
    units.erase(0, units.find_first_not_of(u' '));
    units.erase(units.find_last_not_of(u' ') + 1);
    const NSString name{std::u16string_view(units)};
    return CFStringCompareCaseInsensitive(name, NSString(textName)) == 0 ? NSString(u"TXT-2.rtf") : name;
}

/// Puts the attachments into a package; one that stands in the text twice is one file.
class Package {
public:
    std::string add(const NSTextAttachment& attachment) {
        const auto [found, isNew] = names_.try_emplace(attachment.fileWrapper.get());
        if (isNew)
            found->second = addFile(attachment.fileWrapper);
        return found->second;
    }

    std::shared_ptr<NSFileWrapper> finish(std::string text) {
        const auto file =
            NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytesNoCopy(std::move(text)));
        file->setPreferredFilename(textName);
        folder_->addFileWrapper(file);
        return folder_;
    }

private:
    std::string addFile(const std::shared_ptr<const NSFileWrapper>& file) {
        const NSString wanted = nameForText(file->preferredFilename());
        NSString name = wanted;
        const auto present = folder_->fileWrapperForName(wanted);
        if (!present || !(*present == *file)) {
            if (wanted == file->preferredFilename()) {
                name = folder_->addFileWrapper(file);
            } else {
                const auto renamed = std::make_shared<NSFileWrapper>(*file);
                renamed->setPreferredFilename(wanted);
                name = folder_->addFileWrapper(renamed);
            }
        }
        return *NSFileManager::defaultManager().fileSystemRepresentationWithPath(name);
    }

    std::shared_ptr<NSFileWrapper> folder_ = NSFileWrapper::initDirectory();
    std::unordered_map<const NSFileWrapper*, std::string> names_;
};

} // namespace

NSData RTFFromRange_documentAttributes(const NSAttributedString& text, NSRange range,
                                       const NSDictionary& documentAttributes) {
    const NSAttributedString part = text.attributedSubstringFromRange(range);
    if (part.isNil())
        return nullptr;
    RTFWriter writer(part, [](const NSTextAttachment&) { return std::string(); });
    return NSData::dataWithBytesNoCopy(writer.write(documentAttributes));
}

std::shared_ptr<NSFileWrapper>
RTFDFileWrapperFromRange_documentAttributes(const NSAttributedString& text, NSRange range,
                                            const NSDictionary& documentAttributes) {
    const NSAttributedString part = text.attributedSubstringFromRange(range);
    if (part.isNil())
        return nullptr;
    Package package;
    RTFWriter writer(part,
                     [&package](const NSTextAttachment& attachment) { return package.add(attachment); });
    return package.finish(writer.write(documentAttributes));
}

NSData RTFDFromRange_documentAttributes(const NSAttributedString& text, NSRange range,
                                        const NSDictionary& documentAttributes) {
    const auto package = RTFDFileWrapperFromRange_documentAttributes(text, range, documentAttributes);
    return package ? package->serializedRepresentation() : NSData();
}

} // namespace kelvo
