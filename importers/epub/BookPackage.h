#pragma once

#include "importers/support/Deadline.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {

/// What a package document says, in UTF-8, with white space as it is there.
struct BookPackage {
    std::string title;
    std::vector<std::string> authors;
    std::vector<std::string> contributors;
    std::vector<std::string> languages;
    std::vector<std::string> publishers;
    std::vector<std::string> subjects;
    std::string description;
    std::string rights;
    std::string coverage;
    std::string identifier;
    std::string published;
    std::string modified;
    std::string producer; ///< the program
    /// The paths of what is read one after the other, in the archive.
    std::vector<std::string> spine;
};

/// The path of the package document that META-INF/container.xml names; empty when it names none.
std::string pathOfPackage(std::string_view container, const Deadline& deadline);

/// `path` is that of the document itself. Absent when it is none.
std::optional<BookPackage> readBookPackage(std::string_view document, std::string_view path,
                                           const Deadline& deadline);

/// The paths of what META-INF/encryption.xml says is encrypted.
std::vector<std::string> encryptedPaths(std::string_view document, const Deadline& deadline);

/// The path in the archive that a reference in the document leads to, without what follows "#", and with no way out.
std::string pathOfLink(std::string_view document, std::string_view reference);

} // namespace kelvo::importers
