#include "images/ImageFileTypes.h"

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/files/NSHFSFileTypes.h"
#include "platform/imageio/CGImageSource.h"
#include "platform/launchservices/UTType.h"
#include "text/NSStringExtensions.h"
#include "text/StringComparison.h"

#include <algorithm>
#include <initializer_list>

namespace kelvo::NSImageKelvoExtensions {

namespace {

constexpr const char16_t* typeOfPDF = u"'PDF '";

bool isOneOf(const NSString& extension, std::initializer_list<const char16_t*> extensions) {
    return std::ranges::any_of(extensions,
                               [&](const char16_t* name) { return isEqualToStringNoCase(extension, name); });
}

NSString inCase(NSMutableString extension, void (*changeCase)(NSMutableString&)) {
    changeCase(extension);
    return extension.takeString();
}

/// What the image class calls imageFileTypes.
NSMutableArray fileTypesOf(const NSArray& identifiers) {
    NSMutableArray types = NSMutableArray::array();
    for (const Value& identifier : identifiers) {
        for (const Value& extension :
             UTTypeCopyAllTagsWithClass(identifier.string(), UTTagClass::filenameExtension)) {
            types.addObject(inCase(NSMutableString(extension.string()), CFStringLowercase));
            types.addObject(inCase(NSMutableString(extension.string()), CFStringUppercase));
        }
        for (const Value& code : UTTypeCopyAllTagsWithClass(identifier.string(), UTTagClass::typeCode))
            types.addObject(
                NSString(u"'").stringByAppendingString(code.string()).stringByAppendingString(u"'"));
    }
    return types;
}

} // namespace

NSArray ImageFileTypes() {
    static NSArray kept;
    if (!kept.isNil())
        return kept;
    const NSArray identifiers = CGImageSourceCopyTypeIdentifiers();
    NSMutableArray types = fileTypesOf(identifiers);
    types.addObjectsFromArray(
        NSArray::arrayWithObjects({u"jpe", u"JPE", u"ps", u"PS", u"eps", u"EPS", u"ai", u"AI"}));
    // A decoder that was out of order for once must not keep images from being images for good.
    if (identifiers.count() > 0)
        kept = types;
    return types;
}

NSArray PDFFileTypes() {
    return NSArray::arrayWithObjects({typeOfPDF, u"pdf", u"PDF", u"ps", u"PS", u"eps", u"EPS", u"ai", u"AI"});
}

NSArray PDFBundleTypes() {
    return NSArray::arrayWithObjects({u"pdfd", u"PDFD"});
}

bool isImageFile(const NSString& path) {
    return isImageExtension_type(pathExtension(path), NSHFSTypeOfFile(path));
}

bool isImageExtension_type(const NSString& extension, const NSString& type) {
    const NSArray types = ImageFileTypes();
    return containsStringNoCase(types, extension) || (!type.isEmpty() && containsString(types, type));
}

bool isUTIImageFile(const NSString& /*path*/) {
    return false;
}

bool isWebImageExtension(const NSString& extension) {
    return isOneOf(extension, {u"jpg", u"jpe", u"jp2", u"gif", u"png", u"jpeg"});
}

bool isPDFFile(const NSString& path) {
    return isPDFExtension_type(pathExtension(path), NSHFSTypeOfFile(path));
}

bool isPDFExtension_type(const NSString& extension, const NSString& type) {
    return type == typeOfPDF || isOneOf(extension, {u"pdf", u"ps", u"eps", u"ai"});
}

bool isRealPDFFile(const NSString& path) {
    return isRealPDFExtension_type(pathExtension(path), NSHFSTypeOfFile(path));
}

bool isRealPDFExtension_type(const NSString& extension, const NSString& type) {
    return isOneOf(extension, {u"pdf"}) || type == typeOfPDF;
}

bool isPDFBundle(const NSString& path) {
    return isPDFBundleExtension(pathExtension(path));
}

bool isPDFBundleExtension(const NSString& extension) {
    return isOneOf(extension, {u"pdfd"});
}

} // namespace kelvo::NSImageKelvoExtensions
