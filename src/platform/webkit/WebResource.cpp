#include "platform/webkit/WebResource.h"

#include "platform/foundation/encodings/NSStringEncoding.h"

#include <utility>

namespace kelvo {

struct WebResource::Fields {
    NSData data;
    NSURL URL;
    NSString MIMEType;
    NSString textEncodingName;
    NSString frameName;
};

WebResource::WebResource(NSData data, NSURL URL, NSString MIMEType, NSString textEncodingName,
                         NSString frameName)
    : fields_(std::make_shared<const Fields>(Fields{std::move(data), std::move(URL), std::move(MIMEType),
                                                    std::move(textEncodingName), std::move(frameName)})) {}

NSData WebResource::data() const {
    return fields_ ? fields_->data : NSData();
}

NSURL WebResource::URL() const {
    return fields_ ? fields_->URL : NSURL();
}

NSString WebResource::MIMEType() const {
    return fields_ ? fields_->MIMEType : NSString();
}

NSString WebResource::textEncodingName() const {
    return fields_ ? fields_->textEncodingName : NSString();
}

NSString WebResource::_stringValue() const {
    constexpr std::size_t longest = maximumSizeInBytes / sizeof(char16_t);
    if (!textEncodingName().isEmpty() || data().length() > longest)
        return nullptr;
    return stringWithMarkedData(data(), nullptr);
}

NSString WebResource::frameName() const {
    return fields_ ? fields_->frameName : NSString();
}

} // namespace kelvo
