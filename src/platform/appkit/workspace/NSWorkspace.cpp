#include "platform/appkit/workspace/NSWorkspace.h"

#include "platform/appkit/workspace/IconTheme.h"
#include "platform/foundation/Value.h"
#include "platform/launchservices/UTType.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace kelvo {
namespace {

constexpr float pointsOfIcon = 32;

NSString typeOfFileType(const NSString& fileType) {
    if (fileType.characters().starts_with(u'\''))
        return typeWithOSType(fileType);
    const NSString type = typeWithFilenameExtension(fileType, ItemKind::file);
    return type.isNil() ? typeWithFilenameExtension(fileType, ItemKind::folder) : type;
}

/// What the MIME database calls the icon of a whole class of types; empty when it says nothing of this one.
std::string genericIcon(const std::string& MIMEType) {
    std::ifstream list("/usr/share/mime/generic-icons");
    const std::string start = MIMEType + ":";
    for (std::string line; std::getline(list, line);) {
        if (line.starts_with(start))
            return line.substr(start.size());
    }
    return {};
}

/// What the icon may be called, the best name first: by each MIME type of the type and of what it conforms to, and then by
/// their kinds.
std::vector<std::string> iconNames(const NSString& type) {
    std::vector<std::string> names;
    std::vector<std::string> kinds;
    const auto add = [](std::vector<std::string>& list, const std::string& name) {
        if (!name.empty() && std::ranges::find(list, name) == list.end())
            list.push_back(name);
    };
    for (const Value& conformed : typesConformedToBy(type)) {
        if (conformed.string() == u"public.folder" || conformed.string() == u"public.directory")
            add(kinds, "folder");
        for (const Value& MIMEType : UTTypeCopyAllTagsWithClass(conformed.string(), UTTagClass::MIMEType)) {
            std::string name = MIMEType.string().UTF8String();
            const std::string generic = genericIcon(name);
            const std::string kind = name.substr(0, name.find('/'));
            std::ranges::replace(name, '/', '-');
            add(names, name);
            add(kinds, generic);
            add(kinds, kind + "-x-generic");
        }
    }
    add(kinds, "text-x-generic");
    names.insert(names.end(), kinds.begin(), kinds.end());
    return names;
}

} // namespace

NSWorkspace& NSWorkspace::sharedWorkspace() {
    static NSWorkspace workspace;
    return workspace;
}

std::shared_ptr<NSImage> NSWorkspace::iconForFileType(const NSString& fileType) {
    const NSString type = typeOfFileType(fileType);
    if (type.isNil())
        return nullptr;
    auto icon = std::make_shared<NSImage>(NSSize{pointsOfIcon, pointsOfIcon});
    icon->setScalesWhenResized(true);
    for (const IconFile& file : iconFiles(foldersOfIconThemes(), nameOfIconTheme(), iconNames(type))) {
        const auto image = NSImage::initByReferencingFile(NSString::stringByRepairingUTF8String(file.path));
        if (!image)
            continue;
        for (const auto& rep : image->representations()) {
            rep->setSize({static_cast<float>(file.size), static_cast<float>(file.size)});
            icon->addRepresentation(rep);
        }
    }
    return icon->representations().empty() ? nullptr : icon;
}

} // namespace kelvo
