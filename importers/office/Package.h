#pragma once

#include "importers/office/MarkupSkimmer.h"
#include "importers/office/XMLReader.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace kelvo::importers {

/// What may be unpacked of one file: several times the largest documents that there are.
inline constexpr std::size_t mostBytesUnpacked = std::size_t{1} << 30;

/// The parts of a document that is a zip file. Names are looked up without regard to the case of ASCII letters, a "/" at
/// their beginning does not count, and of parts with one name the first is there.
class Package {
public:
    using Clock = std::chrono::steady_clock;

    /// The bytes must outlive this object. Reading ends at the deadline.
    Package(std::string_view file, Clock::time_point deadline);
    Package(const Package&) = delete;
    Package& operator=(const Package&) = delete;
    ~Package();

    /// Whether it is a zip file with a directory.
    bool isOpen() const;
    bool has(std::string_view name) const;
    /// What the skimmer (may be null) leaves goes to the reader. False when there is no such part. What keeps it from being read to its end is told by fault().
    bool read(std::string_view name, XMLReader& reader, MarkupSkimmer* skimmer = nullptr);

    /// The first thing that went wrong, in words; null when nothing did.
    const char* fault() const { return fault_; }
    /// The time or what may be unpacked is used up: there is no use in reading another part.
    bool isSpent() const { return isSpent_; }

private:
    struct Files;

    void note(const char* fault) {
        if (fault && !fault_)
            fault_ = fault;
    }

    std::unique_ptr<Files> files_;
    Clock::time_point deadline_;
    std::size_t bytesLeft_ = mostBytesUnpacked;
    const char* fault_ = nullptr;
    bool isSpent_ = false;
};

/// Where a part says what it refers to: "xl/_rels/workbook.xml.rels".
std::string pathOfRelationships(std::string_view part);

} // namespace kelvo::importers
