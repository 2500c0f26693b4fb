#include "platform/appkit/documents/engine/OfficeLibrary.h"

#include "platform/appkit/documents/engine/FrozenDocument.h"
#include "platform/appkit/documents/engine/OfficeSettings.h"

// The kinds of documents are declared with the calls that may change.
#define LOK_USE_UNSTABLE_API
#include <LibreOfficeKit/LibreOfficeKitEnums.h>
#include <LibreOfficeKit/LibreOfficeKitInit.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

namespace kelvo::documentengine {
namespace {

namespace fs = std::filesystem;

struct DocumentDeleter {
    void operator()(LibreOfficeKitDocument* document) const { document->pClass->destroy(document); }
};

/// Whatever happens to what is written into them.
class FileRemoval {
public:
    explicit FileRemoval(std::vector<fs::path> files) : files_(std::move(files)) {}
    FileRemoval(const FileRemoval&) = delete;
    FileRemoval& operator=(const FileRemoval&) = delete;
    ~FileRemoval() {
        std::error_code ignored;
        for (const fs::path& file : files_)
            fs::remove(file, ignored);
    }

private:
    std::vector<fs::path> files_;
};

bool isProgramFolder(const fs::path& folder) {
    std::error_code ignored;
    return fs::exists(folder / "libswlo.so", ignored) && (fs::exists(folder / "libsofficeapp.so", ignored) ||
                                                          fs::exists(folder / "libmergedlo.so", ignored));
}

std::vector<fs::path> foldersOfPath() {
    std::vector<fs::path> folders;
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "";
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        // Relative entries depend on where the service was started, and are nobody's intention.
        if (rest.starts_with('/'))
            folders.emplace_back(rest.substr(0, colon));
        rest.remove_prefix(colon == std::string_view::npos ? rest.size() : colon + 1);
    }
    return folders;
}

/// "/opt/libreoffice7.6/program" and its like, the latest first.
std::vector<fs::path> foldersOfOwnInstallations() {
    std::vector<fs::path> folders;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/opt", ignored)) {
        if (entry.path().filename().string().starts_with("libreoffice"))
            folders.push_back(entry.path() / "program");
    }
    std::ranges::sort(folders, std::greater());
    return folders;
}

std::string fileURL(const fs::path& path) {
    // The folder's path is our own, but the one above it comes from the environment.
    constexpr std::string_view unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char character : path.string()) {
        if (unreserved.find(character) != std::string_view::npos) {
            url += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            url += '%';
            url += digits[byte >> 4];
            url += digits[byte & 15];
        }
    }
    return url;
}

/// By which the suite knows the format; null when there is none of such documents.
const char* extensionOf(OfficeFormat format, int documentType) {
    if (format == OfficeFormat::RTF)
        return documentType == LOK_DOCTYPE_TEXT ? "rtf" : nullptr;
    switch (documentType) {
    case LOK_DOCTYPE_TEXT:
        return "fodt";
    case LOK_DOCTYPE_SPREADSHEET:
        return "fods";
    case LOK_DOCTYPE_PRESENTATION:
        return "fodp";
    case LOK_DOCTYPE_DRAWING:
        return "fodg";
    default:
        return nullptr;
    }
}

} // namespace

std::optional<fs::path> officeProgramFolder() {
    std::error_code ignored;
    for (const fs::path& folder : foldersOfPath()) {
        const fs::path program = fs::canonical(folder / "soffice", ignored).parent_path();
        if (isProgramFolder(program))
            return program;
    }
    std::vector<fs::path> usual{"/usr/lib/libreoffice/program", "/usr/lib64/libreoffice/program",
                                "/usr/local/lib/libreoffice/program"};
    std::ranges::copy(foldersOfOwnInstallations(), std::back_inserter(usual));
    const auto found = std::ranges::find_if(usual, isProgramFolder);
    return found == usual.end() ? std::nullopt : std::optional(*found);
}

std::unique_ptr<OfficeLibrary> OfficeLibrary::load(const fs::path& programFolder, const fs::path& folder) {
    const fs::path profile = folder / "profile";
    if (!writeOfficeSettings(profile))
        return nullptr;
    LibreOfficeKit* const kit = lok_init_2(programFolder.c_str(), fileURL(profile).c_str());
    if (!kit)
        return nullptr;
    return std::unique_ptr<OfficeLibrary>(new OfficeLibrary(folder, kit));
}

std::variant<std::string, OfficeLibrary::Failure>
OfficeLibrary::convert(std::string_view document, const std::string& extension, OfficeFormat format) {
    const fs::path source = folder_ / ("document." + extension);
    const fs::path destination = folder_ / "document-as";
    const FileRemoval removal({source, destination});
    {
        std::ofstream file(source, std::ios::binary);
        const std::string copy = frozenDocument(document, extension);
        file.write(copy.data(), static_cast<std::streamsize>(copy.size()));
        if (!file.flush())
            return Failure::noRoom;
    }
    // Without the optional feature for passwords an encrypted document fails at once, and batch mode answers
    // every other question for us. The level 3 lets run no macro that is not from a trusted place.
    const std::unique_ptr<LibreOfficeKitDocument, DocumentDeleter> loaded{
        kit_->pClass->documentLoadWithOptions(kit_, fileURL(source).c_str(),
                                              "Batch=true,MacroSecurityLevel=3")};
    if (!loaded)
        return Failure::unreadable;
    const char* const extensionOfFormat = extensionOf(format, loaded->pClass->getDocumentType(loaded.get()));
    if (!extensionOfFormat)
        return Failure::otherKind;
    if (loaded->pClass->saveAs(loaded.get(), fileURL(destination).c_str(), extensionOfFormat, nullptr) == 0)
        return Failure::unwritable;
    std::ifstream file(destination, std::ios::binary);
    std::string result{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad() || result.empty())
        return Failure::unwritable;
    return result;
}

} // namespace kelvo::documentengine
