#include "images/NamedImages.h"

#include "platform/appkit/images/NSBundleImageExtension.h"
#include "platform/appkit/workspace/NSWorkspace.h"
#include "platform/foundation/Value.h"

#include <unordered_map>

namespace kelvo::NSImageKelvoExtensions {
namespace {

using Images = std::unordered_map<NSString, std::shared_ptr<NSImage>>;

Images& namedImages() {
    static Images images;
    return images;
}

std::unordered_map<NSString, Images>& bundleImages() {
    static std::unordered_map<NSString, Images> images;
    return images;
}

/// Null stands for a type without an icon.
Images& fileTypeIcons() {
    static Images icons;
    return icons;
}

std::shared_ptr<NSImage> imageOfResource(const NSString& name, const NSBundle& bundle) {
    const NSString path = pathForImageResource(bundle, name);
    if (path.isNil())
        return nullptr;
    auto image = NSImage::initByReferencingFile(path);
    if (!image || image->representations().empty())
        return nullptr;
    return image;
}

} // namespace

std::shared_ptr<NSImage> cachedImageNamed(const NSString& name) {
    if (name.isNil())
        return nullptr;
    if (const auto found = namedImages().find(name); found != namedImages().end())
        return found->second;
    auto image = NSImage::imageNamed(name);
    if (image)
        namedImages().emplace(name, image);
    return image;
}

std::shared_ptr<NSImage> cachedImageNamed_size(const NSString& name, NSSize size) {
    const auto image = cachedImageNamed(name);
    if (!image)
        return nullptr;
    auto resized = image->copy();
    resized->setScalesWhenResized(true);
    resized->setSize(size);
    return resized;
}

std::shared_ptr<NSImage> cachedImageNamed_inBundle(const NSString& name, const NSBundle& bundle) {
    const NSString identifier = bundle.objectForInfoDictionaryKey(u"CFBundleIdentifier").string();
    if (identifier.isNil() || name.isNil())
        return nullptr;
    if (const auto images = bundleImages().find(identifier); images != bundleImages().end()) {
        if (const auto found = images->second.find(name); found != images->second.end())
            return found->second;
    }
    auto image = imageOfResource(name, bundle);
    if (!image)
        return nullptr;
    bundleImages()[identifier].emplace(name, image);
    image->setName(name);
    return image;
}

std::shared_ptr<NSImage> cachedImageNamed_inBundleForClass(const NSString& name, const std::type_info& type) {
    return cachedImageNamed_inBundle(name, NSBundle::bundleForClass(type));
}

std::shared_ptr<NSImage> imageNamed_inBundle(const NSString& name, const NSBundle& bundle) {
    auto image = imageOfResource(name, bundle);
    if (image)
        image->setName(name);
    return image;
}

std::shared_ptr<NSImage> imageNamed_inBundleForClass(const NSString& name, const std::type_info& type) {
    return imageNamed_inBundle(name, NSBundle::bundleForClass(type));
}

std::shared_ptr<NSImage> cachedImageForFileType(const NSString& fileType) {
    if (fileType.isNil())
        return nullptr;
    if (const auto found = fileTypeIcons().find(fileType); found != fileTypeIcons().end())
        return found->second;
    return fileTypeIcons()
        .emplace(fileType, NSWorkspace::sharedWorkspace().iconForFileType(fileType))
        .first->second;
}

} // namespace kelvo::NSImageKelvoExtensions
