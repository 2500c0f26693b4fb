#pragma once

#include "importers/office/OfficeFacts.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace kelvo::importers {

/// What a compound file says of the document in it.
class CompoundDocument {
public:
    /// The bytes must outlive this object.
    explicit CompoundDocument(std::string_view file);
    CompoundDocument(const CompoundDocument&) = delete;
    CompoundDocument& operator=(const CompoundDocument&) = delete;
    ~CompoundDocument();

    /// Whether it is a compound file.
    bool isOpen() const;
    bool isEncrypted() const;
    /// From its sets of properties, whichever there are.
    OfficeFacts facts() const;

private:
    std::string stream(const char* name, std::size_t mostBytes) const;

    struct File;
    std::unique_ptr<File> file_;
};

} // namespace kelvo::importers
