#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

// Where importers are and what they say of themselves. An importer is a bundle "Name.mdimporter"; one that says that
// it registers itself at run time ("CFPlugInDynamicRegistration") cannot be used. A bundle that is missing or says
// nothing at all can be, and declares no types.

/// Appends the paths of the folder's importers that can be used, in the order of its listing.
void loadPluginsFromFolder(NSMutableArray& importers, const NSString& folder);

/// The importers in all of the platform's folders: those in applications first, then the user's, the machine's and the
/// system's.
NSMutableArray importersInFolders();
/// The paths in a listing of the system's tool: those in the user's folder, the machine's, the system's, each the last
/// first, and then all others in the order of the listing. Nil when the text holds no list, or an empty one; strings
/// are the only elements that count.
NSMutableArray importersInListing(const NSString& listing);

/// Appends the content types that the bundle declares that it imports, in lower case, each as often as it does so.
/// False when it has no declaration for importers, which differs from one without types.
bool appendContentTypesOfImporter(NSMutableArray& types, const NSString& path);

} // namespace kelvo
