#pragma once

#include <span>
#include <string_view>

namespace kelvo {

/// A uniform type, and the names by which it goes elsewhere. Lists are separated by blanks.
struct DeclaredType {
    std::string_view identifier;
    /// The types that each file of this one is of, too.
    std::string_view conformsTo;
    /// Without dots at the beginning, in the letters in which they are written.
    std::string_view extensions = {};
    std::string_view MIMETypes = {};
    /// Classic type codes of four characters each, with nothing in between.
    std::string_view typeCodes = {};
};

/// All of them. Of rows that share an extension, a MIME type or a type code the first has it; of an extension the
/// first among the types of folders and the first among the others.
std::span<const DeclaredType> declaredTypes();

} // namespace kelvo
