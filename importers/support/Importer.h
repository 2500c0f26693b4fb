#pragma once

#include "platform/foundation/Value.h"

#include <plumwick/mdimporter.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {

/// The longest text of a file, in UTF-16 code units: more than 10,000 pages.
inline constexpr std::size_t mostUnitsOfText = 16'000'000;
/// When to be done with a file, counted from the beginning of its import: before the 12 seconds that it has are over, so
/// that what was found by then can still be set.
inline constexpr double mostSecondsOfImport = 9;

/// The attributes of the file that is imported, for importers of this project.
class Attributes {
public:
    Attributes(MDAttributes* attributes, std::string_view contentType)
        : attributes_(attributes), contentType_(contentType) {}

    /// The uniform type identifier, in lower case.
    std::string_view contentType() const { return contentType_; }
    /// The whole file, mapped; empty when it is, is a folder, or could not be opened.
    std::string_view file() const;
    /// A file right within the folder that is imported; empty when there is none of that name.
    std::string_view fileInPackage(const char* name) const;
    /// The file as the office suite reads it, as one file of OpenDocument XML; empty when it does not, which is noted.
    std::string_view officeDocument() const;

    /// Nothing is set of what is nil, and of strings and arrays that are empty but for white space; see trimmed().
    void set(const char* name, const NSString& text);
    void set(const char* name, const NSArray& strings);
    void setInteger(const char* name, std::int64_t value);
    void setReal(const char* name, double value);
    void setBoolean(const char* name, bool value);
    void setDate(const char* name, NSDate date);
    /// "kMDItemTextContent", as it is, also when it is empty: the file has been read and has no text. What passes
    /// mostUnitsOfText is cut off before a character, and noted.
    void setText(std::u16string_view text);
    /// The same for bytes that are UTF-8 already, which go as they are. False, and nothing is set, when what would be
    /// kept of them is not UTF-8.
    bool setTextOfUTF8(std::string_view bytes);

    /// See mdimporter.h.
    void note(int kind, const char* sentence);

private:
    void setTextContent(std::string_view bytes, bool isCut);

    MDAttributes* attributes_;
    std::string_view contentType_;
};

/// Without white space and control characters at its ends, and with runs of them within as one space: what a title is.
NSString trimmed(const NSString& text);

/// Sets what it finds in the file. Exceptions end the import, and what was set is kept.
using Import = void(Attributes& attributes);

/// A new object of an importer, for its factory; null when `type` is not that of importers.
void* newImporter(const MDUUID& type, Import& import);

} // namespace kelvo::importers

/// Defines the factory of an importer, for the name in its Info.plist.
#define KELVO_IMPORTER(import)                                                                               \
    extern "C" [[gnu::visibility("default")]] void* MetadataImporterPluginFactory(void*,                     \
                                                                                  const MDUUID* type) {      \
        return kelvo::importers::newImporter(*type, import);                                                 \
    }
