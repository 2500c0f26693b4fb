#include "cli/PictureOutput.h"

#include "cli/ExitStatus.h"
#include "cli/Files.h"
#include "cli/Printable.h"
#include "client/ServiceProgram.h"
#include "platform/engine/EngineProcess.h"
#include "platform/imageio/CGImageDestination.h"
#include "platform/imageio/CGImageSource.h"
#include "platform/imageio/ImageEngine.h"
#include "platform/ledger/RequestNotes.h"

#include <algorithm>

namespace kelvo::cli {
namespace {

[[noreturn]] void fail(const std::string& subject, const char* what, const RequestNotes& notes) {
    throw CommandError(ExitStatus::noAnswer,
                       subject + ": its thumbnail cannot be " + what +
                           (notes.sentence().isNil() ? "" : ": " + printable(notes.sentence())));
}

} // namespace

PictureEngine::PictureEngine() {
    setFolderOfEngines(folderOfServiceProgram());
}

PictureEngine::~PictureEngine() {
    ImageEngine::sharedEngine().stop();
}

std::optional<PictureForm> pictureFormOfName(std::string_view name) {
    struct Row {
        std::string_view ending;
        PictureForm form;
    };
    constexpr Row rows[] = {{".tiff", PictureForm::TIFF},
                            {".tif", PictureForm::TIFF},
                            {".png", PictureForm::PNG},
                            {".jpeg", PictureForm::JPEG},
                            {".jpg", PictureForm::JPEG}};
    if (name == standardStream || name.starts_with("/dev/"))
        return PictureForm::TIFF;
    for (const Row& row : rows) {
        const std::string_view end = name.substr(name.size() - std::min(name.size(), row.ending.size()));
        const bool isEnding = std::ranges::equal(end, row.ending, [](char one, char wanted) {
            return (one >= 'A' && one <= 'Z' ? one - 'A' + 'a' : one) == wanted;
        });
        if (isEnding)
            return row.form;
    }
    return std::nullopt;
}

CGImage imageOfThumbnail(const NSData& thumbnail, const std::string& subject) {
    const RequestNotes notes;
    const CGImageSource source = CGImageSourceCreateWithData(thumbnail, nullptr);
    CGImage image = CGImageSourceCreateImageAtIndex(source, 0, nullptr);
    if (image.isNil())
        fail(subject, "read", notes);
    return image;
}

NSData pictureOfThumbnail(const NSData& thumbnail, PictureForm form, const std::string& subject) {
    if (form == PictureForm::TIFF)
        return thumbnail;
    const CGImage image = imageOfThumbnail(thumbnail, subject);
    const RequestNotes notes;
    NSData picture = dataOfImage(image, form == PictureForm::PNG ? u"public.png" : u"public.jpeg", nullptr);
    if (picture.isNil())
        fail(subject, form == PictureForm::PNG ? "written as PNG" : "written as JPEG", notes);
    return picture;
}

} // namespace kelvo::cli
