#include "cli/RichTextOutput.h"

#include "cli/Files.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "platform/appkit/rtfreader/NSTextStorage.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"

namespace kelvo::cli {
namespace {

NSData plainRTF(const NSData& rtfd) {
    NSDictionary attributes;
    const auto text = NSTextStorage::initWithRTFD_documentAttributes(rtfd, &attributes);
    return text ? RTFFromRange_documentAttributes(text->copy(), {0, text->length()}, attributes) : NSData();
}

} // namespace

RichTextForm richTextFormOfName(std::string_view name) {
    const auto endsIn = [name](std::string_view extension) {
        return name.size() > extension.size() && name.ends_with(extension);
    };
    return endsIn(".rtfd")  ? RichTextForm::package
           : endsIn(".rtf") ? RichTextForm::plain
                            : RichTextForm::bytes;
}

void requireRichTextWritable(const std::string& name) {
    if (richTextFormOfName(name) == RichTextForm::package)
        PackageOutput{name};
    else
        requireWritable(name);
}

NSData writeRichText(Session& session, const NSData& rtfd, const std::string& name) {
    const RichTextForm form = richTextFormOfName(name);
    if (form == RichTextForm::package)
        return writePackage(session, rtfd, name) ? rtfd : NSData();
    NSData bytes = form == RichTextForm::plain ? plainRTF(rtfd) : rtfd;
    if (!bytes.isNil())
        writeOutput(name, bytes, session.output());
    return bytes;
}

bool writePackage(Session& session, const NSData& rtfd, const std::string& name) {
    PackageOutput package(name);
    Request request;
    request.operation = Operation::writeRTFDData;
    request.data = rtfd;
    request.file = pathOfFile(package.path());
    const Value isWritten = session.ask(request, FileKind::RTFD, printableFileName(name));
    if (isNoAnswer(isWritten))
        return false;
    package.commit();
    return true;
}

} // namespace kelvo::cli
