#include "markup/WebKitAdditions.h"

#include "markup/MarkupDecoding.h"
#include "url/URLUtilities.h"

namespace kelvo {

NSURL baseURL(const WebArchive& archive) {
    return archive.mainResource().URL();
}

NSString documentSource(const WebArchive& archive) {
    return documentSource(archive.mainResource());
}

NSString documentSource(const WebResource& resource) {
    if (!isMarkupMIMEType(resource.MIMEType()))
        return nullptr;
    if (NSString text = resource._stringValue(); !text.isNil())
        return text;
    return XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
        resource.data(), resource.textEncodingName(), NSISOLatin1StringEncoding, resource.URL());
}

namespace WebKitAdditions {

NSString documentSourceOfFile_baseURL(const NSString& path, NSURL* baseURL) {
    const WebArchive archive = archiveOfFile(path);
    if (baseURL)
        *baseURL = kelvo::baseURL(archive);
    return documentSource(archive);
}

NSString documentSourceOfFile(const NSString& path) {
    return documentSourceOfFile_baseURL(path, nullptr);
}

WebArchive archiveOfFile(const NSString& path) {
    return WebArchive::initWithData(NSData::dataWithContentsOfFileWhenNeeded(path));
}

} // namespace WebKitAdditions

} // namespace kelvo
