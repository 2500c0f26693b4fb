#include "cli/PictureRun.h"

#include "cli/AnswerOutput.h"
#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/OutputFolder.h"
#include "cli/PictureOutput.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "cli/TerminalPicture.h"
#include "cli/TextView.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/Value.h"
#include "protocol/RequestOutcome.h"
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

/// The work on the files of one run.
class PictureRun {
public:
    PictureRun(Session& session, const std::vector<std::string>& files, const Request& request,
               ColumnsOfAnswer columns)
        : session_(session), request_(request), columns_(std::move(columns)), hasSeveral_(files.size() > 1) {
        const Options& options = session.options();
        requireAnswerWritable(session, AnswerBytes::picture);
        if (options.showsPicture)
            graphics_ = graphicsOfTerminal(session.output());
        if (options.folder)
            folder_.emplace(*options.folder, files, ".png");
        for (const std::string& file : files)
            nameWidth_ = std::max(nameWidth_, std::min(widthOf(printableFileName(file)), widestName));
    }

    ExitStatus run(const std::string& file) {
        const std::string subject = printableFileName(file);
        requireReadable(file);
        Request request = request_;
        request.file = pathOfFile(file);
        const Value result = session_.ask(request, kindOfFile(request.file), subject);
        if (isNoAnswer(result) || !isAnswer(request.operation, result.dictionary())) {
            if (session_.options().printsJSON)
                session_.printJSON(result.isNil() ? result : withFile(file, result.dictionary()));
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
            fmt::format("{}{}  {}{}\n", output.styled(Style::strong, name), padding, columns_(answer, path),
                        isNoted ? "  " + output.styled(Style::warning, printable(outcome->sentence)) : ""));
    }

    Session& session_;
    Request request_;
    ColumnsOfAnswer columns_;
    bool hasSeveral_;
    std::optional<TerminalGraphics> graphics_;
    std::optional<OutputFolder> folder_;
    std::size_t nameWidth_ = 0;
};

} // namespace

ExitStatus runPictures(Session& session, const std::vector<std::string>& files, const Request& request,
                       ColumnsOfAnswer columns) {
    const PictureEngine engine;
    PictureRun run(session, files, request, std::move(columns));
    return runEachFile(
        session, files, [&run](const std::string& file) { return run.run(file); },
        files.size() > 1 ? EachFile::inItsLine : EachFile::underItsName);
}

std::string printableSize(const NSString& size) {
    const NSSize read = NSSizeFromString(size);
    return read == NSSize{} ? std::string() : fmt::format("{} × {}", read.width, read.height);
}

} // namespace kelvo::cli
