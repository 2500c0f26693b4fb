#pragma once

#include "platform/foundation/Value.h"

#include <memory>
#include <typeinfo>

namespace kelvo {

/// A folder with an information property list, and as a rule with code. Shared by reference;
/// default-constructed it is nil, and every answer of nil is nil.
class NSBundle {
public:
    NSBundle() noexcept = default;
    NSBundle(std::nullptr_t) noexcept {}

    /// Nil when there is no folder at the path. Nothing else is asked of the folder: one without any
    /// information is a bundle too. Each call gives a bundle of its own.
    static NSBundle bundleWithPath(const NSString& path);

    /// The bundle that the class came with: that of the program or library whose code has it. What does not lie
    /// in the folder for code of a bundle ("Name.x/Contents/Linux", "…/MacOS") is taken for a bundle of its
    /// folder.
    static NSBundle bundleForClass(const std::type_info& type);
    /// The languages that the application speaks with its user, the best one first, as folders and tables of
    /// translations name them: of each its code with and without the country ("de_AT", "de") and, where there is
    /// one, its classic name ("German"). From LC_ALL, LC_MESSAGES, LANG and LANGUAGE, as gettext does; empty
    /// when the user has not chosen any.
    static NSArray preferredLocalizations();

    bool isNil() const noexcept { return !parts_; }
    bool isIdenticalTo(const NSBundle& other) const noexcept { return parts_ == other.parts_; }

    /// The path as it was given, without slashes at its end.
    NSString bundlePath() const;
    /// The first of Contents/Info.plist, Resources/Info.plist and Info.plist that is a regular file, read
    /// when it is first asked for and then kept. Nil when none of them exists, when it is larger than 16
    /// MiB, and when it does not hold a dictionary.
    NSDictionary infoDictionary() const;
    Value objectForInfoDictionaryKey(const NSString& key) const;
    /// The file named by "CFBundleExecutable", or "<name>.so", or "lib<name>.so", in Contents/Linux, Contents/MacOS or the
    /// bundle's folder, in this order: where a bundle has code for both, the first is what can be loaded
    /// here. Nil when there is no such regular file, and when the name is empty or has a slash in it. Whether
    /// it may be executed is not examined.
    NSString executablePath() const;

private:
    struct Parts;
    std::shared_ptr<Parts> parts_;
};

} // namespace kelvo
