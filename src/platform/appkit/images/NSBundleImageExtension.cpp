#include "platform/appkit/images/NSBundleImageExtension.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"

#include <initializer_list>
#include <vector>

namespace kelvo {
namespace {

/// What image resources are kept as, the best first.
constexpr std::initializer_list<const char16_t*> extensions{u"pdf", u"eps", u"tiff", u"tif", u"icns",
                                                            u"png", u"jpg", u"jpeg", u"gif", u"bmp"};

bool isFile(const NSString& path) {
    bool isDirectory = false;
    return NSFileManager::defaultManager().fileExistsAtPath_isDirectory(path, &isDirectory) && !isDirectory;
}

} // namespace

NSString pathForImageResource(const NSBundle& bundle, const NSString& name) {
    if (bundle.isNil() || name.isEmpty() || name.characters().find(u'/') != std::u16string_view::npos)
        return nullptr;
    std::vector<NSString> names;
    if (!pathExtension(name).isEmpty())
        names.push_back(name);
    for (const char16_t* extension : extensions)
        names.push_back(stringByAppendingPathExtension(name, extension));
    for (const char16_t* resources : {u"Contents/Resources", u"Resources"}) {
        const NSString folder = stringByAppendingPathComponent(bundle.bundlePath(), resources);
        std::vector<NSString> places;
        for (const Value& language : NSBundle::preferredLocalizations())
            places.push_back(
                stringByAppendingPathComponent(folder, language.string().stringByAppendingString(u".lproj")));
        places.push_back(folder);
        for (const NSString& place : places) {
            for (const NSString& file : names) {
                NSString path = stringByAppendingPathComponent(place, file);
                if (isFile(path))
                    return path;
            }
        }
    }
    return nullptr;
}

} // namespace kelvo
