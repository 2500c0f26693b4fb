#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/files/NSBundle.h"

#include <memory>
#include <typeinfo>

namespace kelvo::NSImageKelvoExtensions {

// Images by name. What is called cached is found once and kept until the process ends, for all who ask: who wants to change
// one copies it. What is not found is null, and looked for again by the next who asks.

/// See NSImage::imageNamed.
std::shared_ptr<NSImage> cachedImageNamed(const NSString& name);
/// A copy, of that size.
std::shared_ptr<NSImage> cachedImageNamed_size(const NSString& name, NSSize size);

/// An image resource of a bundle, by its own name from then on. Bundles are known by their identifiers
/// ("CFBundleIdentifier"): null for one without.
std::shared_ptr<NSImage> cachedImageNamed_inBundle(const NSString& name, const NSBundle& bundle);
/// Of the bundle that the class came with.
std::shared_ptr<NSImage> cachedImageNamed_inBundleForClass(const NSString& name, const std::type_info& type);
/// A new one each time.
std::shared_ptr<NSImage> imageNamed_inBundle(const NSString& name, const NSBundle& bundle);
std::shared_ptr<NSImage> imageNamed_inBundleForClass(const NSString& name, const std::type_info& type);

/// The icon of files of that type, an extension or a quoted type code, as the workspace has it. That there is none is kept
/// as well.
std::shared_ptr<NSImage> cachedImageForFileType(const NSString& fileType);

} // namespace kelvo::NSImageKelvoExtensions
