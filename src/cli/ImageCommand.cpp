#include "cli/ImageCommand.h"

#include "cli/AnswerOutput.h"
#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/KindFacts.h"
#include "cli/PictureOutput.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "cli/TerminalPicture.h"
#include "cli/TextView.h"
#include "cli/ThumbnailFolder.h"
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

constexpr std::size_t widestName = 72;

/// Of characters, as most fonts of terminals show them.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (byte & '\xC0') != '\x80'; }));
}

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
    for (const char16_t* const key : {ResultPixelSizeKey, ResultSizeKey}) {
        const NSSize* const size = answer.objectForKey(key).sizeIfAny();
        if (size && (width <= 0 || height <= 0)) {
            width = static_cast<std::int64_t>(size->width);
            height = static_cast<std::int64_t>(size->height);
        }
    }
    return width > 0 && height > 0 ? fmt::format("{} × {}", width, height) : "size not known";
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

/// The work on the files of one run.
class ImageRun {
public:
    ImageRun(Session& session, const std::vector<std::string>& files)
        : session_(session), hasSeveral_(files.size() > 1) {
        const Options& options = session.options();
        requireAnswerWritable(session, AnswerBytes::picture);
        if (options.showsPicture)
            graphics_ = graphicsOfTerminal(session.output());
        if (options.folder)
            folder_.emplace(*options.folder, files);
        for (const std::string& file : files)
            nameWidth_ = std::max(nameWidth_, std::min(widthOf(printableFileName(file)), widestName));
    }

    ExitStatus run(const std::string& file) {
        const Options& options = session_.options();
        const std::string subject = printableFileName(file);
        requireReadable(file);
        Request request;
        request.operation = Operation::imageWithContentsOfFile;
        request.file = pathOfFile(file);
        request.wantsPDFText = options.wantsPDFText;
        request.mayUseImporters = options.mayUseImporters;
        const Value result = session_.ask(request, kindOfFile(request.file), subject);
        if (isNoAnswer(result)) {
            if (options.printsJSON)
                session_.printJSON(result);
            return session_.complainOfNoAnswer(subject);
        }
        NSMutableDictionary answer(result.dictionary());
        const NSData thumbnail = answer.objectForKey(ResultThumbnailKey).data();
        WrittenBytes written;
        ExitStatus status = writeAnswer(session_, thumbnail, AnswerBytes::picture, subject, written);
        if (folder_)
            status = writeIntoFolder(file, thumbnail, written);
        if (!written.fileName.empty())
            answer.setObject_forKey(written.data, ResultThumbnailKey);
        if (graphics_ && !thumbnail.isNil())
            session_.output().write(drawingOf(imageOfThumbnail(thumbnail, subject), *graphics_));
        print(file, request.file, answer, written);
        return status;
    }

private:
    ExitStatus writeIntoFolder(const std::string& file, const NSData& thumbnail, WrittenBytes& written) {
        const std::string subject = printableFileName(file);
        if (thumbnail.isNil()) {
            session_.complain(subject + ": the answer has no thumbnail to write");
            return ExitStatus::noAnswer;
        }
        const NSData picture = pictureOfThumbnail(thumbnail, PictureForm::PNG, subject);
        const std::string name = folder_->nameFor(file);
        writeOutput(name, picture, session_.output());
        written = {picture, name};
        return ExitStatus::answered;
    }

    void print(const std::string& file, const NSString& path, const NSDictionary& answer,
               const WrittenBytes& written) {
        const Options& options = session_.options();
        if (options.printsJSON)
            return session_.printJSON(withFile(file, answer), written);
        if (options.output == standardStream)
            return;
        Output& output = session_.output();
        if (!hasSeveral_)
            return output.write(textOfResult(answer, written, output));
        const std::string name = printableFileName(file);
        const std::string padding(widthOf(name) < nameWidth_ ? nameWidth_ - widthOf(name) : 0, ' ');
        const auto& outcome = session_.outcome();
        const bool isNoted = outcome && !outcome->sentence.isNil();
        output.write(
            fmt::format("{}{}  {:>12}  {}{}\n", output.styled(Style::strong, name), padding,
                        sizeOfAnswer(answer), kindOfAnswer(path),
                        isNoted ? "  " + output.styled(Style::warning, printable(outcome->sentence)) : ""));
    }

    Session& session_;
    bool hasSeveral_;
    std::optional<TerminalGraphics> graphics_;
    std::optional<ThumbnailFolder> folder_;
    std::size_t nameWidth_ = 0;
};

} // namespace

ExitStatus runImage(Session& session, const std::vector<std::string>& files) {
    const PictureEngine engine;
    ImageRun images(session, files);
    return runEachFile(
        session, files, [&images](const std::string& file) { return images.run(file); },
        files.size() > 1 ? EachFile::inItsLine : EachFile::underItsName);
}

} // namespace kelvo::cli
