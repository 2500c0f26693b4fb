#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

struct _LibreOfficeKit;

namespace kelvo::documentengine {

/// The folder with the libraries of an installed office suite that has a word processor: of the one that the
/// command "soffice" starts, else of one in the usual places. Absent when there is none.
std::optional<std::filesystem::path> officeProgramFolder();

enum class OfficeFormat : std::uint8_t { RTF, flatOpenDocument };

/// The office suite, loaded into this process for good: it cannot be taken down without crashing now and
/// then.
class OfficeLibrary {
public:
    /// `folder` is for its settings and temporary files alone. Null when the suite cannot be loaded.
    static std::unique_ptr<OfficeLibrary> load(const std::filesystem::path& programFolder,
                                               const std::filesystem::path& folder);

    enum class Failure : std::uint8_t { noRoom, unreadable, otherKind, unwritable };

    /// The document in that format, or why there is none: `unreadable` when it is encrypted or damaged, `otherKind` when it
    /// is read as something that there is no such format of. May end the process, or never return.
    std::variant<std::string, Failure> convert(std::string_view document, const std::string& extension,
                                               OfficeFormat format);

private:
    OfficeLibrary(std::filesystem::path folder, _LibreOfficeKit* kit)
        : folder_(std::move(folder)), kit_(kit) {}

    std::filesystem::path folder_;
    _LibreOfficeKit* kit_;
};

} // namespace kelvo::documentengine
