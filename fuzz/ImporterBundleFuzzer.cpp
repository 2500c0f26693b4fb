// What a bundle says of itself: the types that it declares, its factories and their functions.

#include "Input.h"
#include "mdimport/ImporterBundles.h"
#include "platform/foundation/Value.h"
#include "platform/plugins/CFPlugInInstance.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
    using namespace kelvo;
    static const tests::TemporaryFolder folder;
    folder.write("X.mdimporter/Contents/Info.plist",
                 std::string_view(reinterpret_cast<const char*>(bytes), length));
    const NSString path = NSString::stringWithUTF8String(folder.path("X.mdimporter"));

    NSMutableArray types = NSMutableArray::array();
    require(appendContentTypesOfImporter(types, path) || types.count() == 0);
    for (const Value& type : types)
        require(type.isString());
    NSMutableArray importers = NSMutableArray::array();
    loadPluginsFromFolder(importers, NSString::stringWithUTF8String(folder.path()));
    const CFPlugIn plugIn = CFPlugInCreate(NSURL::fileURLWithPath(path));
    if (const auto factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(importerTypeIdentifier, plugIn)) {
        for (const CFUUID& factory : *factories)
            nameOfFactoryFunction(factory, plugIn);
    }
    plugIn.bundle().executablePath();
    return 0;
}
