#include "cli/ImageCommand.h"

#include "cli/KindFacts.h"
#include "cli/PictureRun.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "platform/imageio/CGImageProperties.h"
#include "platform/launchservices/LaunchServices.h"
#include "platform/launchservices/UTType.h"
#include "protocol/ResultKeys.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace kelvo::cli {
namespace {

std::int64_t numberIn(const NSDictionary& facts, const char16_t* key) {
    const NSNumber* const number = facts.objectForKey(key).numberIfAny();
    return number ? number->longLongValue() : 0;
}

/// As it is seen: "3024 × 4032".
std::string sizeOfAnswer(const NSDictionary& answer) {
    const NSDictionary properties = answer.objectForKey(ResultPropertiesKey).dictionary();
    std::int64_t width = numberIn(properties, kCGImagePropertyPixelWidth);
    std::int64_t height = numberIn(properties, kCGImagePropertyPixelHeight);
    constexpr std::int64_t firstLyingOrientation = 5;
    if (numberIn(properties, kCGImagePropertyOrientation) >= firstLyingOrientation)
        std::swap(width, height);
    if (width > 0 && height > 0)
        return fmt::format("{} × {}", width, height);
    const std::string size = printableSize(answer.objectForKey(ResultPixelSizeKey).string());
    return size.empty() ? "size not known" : size;
}

/// "JPEG", "PDF": what files of the type are called by their names.
std::string kindOfAnswer(const NSString& path) {
    const NSString type = LSCopyItemAttribute(path, kLSItemContentType);
    const NSArray endings = UTTypeCopyAllTagsWithClass(type, UTTagClass::filenameExtension);
    if (endings.count() == 0)
        return std::string(nameOfKind(FileKind::image));
    std::string ending = printable(endings.objectAtIndex(0).string());
    std::ranges::transform(ending, ending.begin(), [](char one) {
        return one >= 'a' && one <= 'z' ? static_cast<char>(one - 'a' + 'A') : one;
    });
    return ending;
}

} // namespace

ExitStatus runImage(Session& session, const std::vector<std::string>& files) {
    Request request;
    request.operation = Operation::imageWithContentsOfFile;
    request.wantsPDFText = session.options().wantsPDFText;
    request.mayUseImporters = session.options().mayUseImporters;
    return runPictures(session, files, request, [](const NSDictionary& answer, const NSString& path) {
        return fmt::format("{:>12}  {}", sizeOfAnswer(answer), kindOfAnswer(path));
    });
}

} // namespace kelvo::cli
