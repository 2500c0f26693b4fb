#include "cli/MovieCommand.h"

#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "protocol/ResultKeys.h"

#include <fmt/format.h>

#include <cmath>

namespace kelvo::cli {
namespace {

/// "0:07", "1:02:03".
std::string lengthOf(const NSDictionary& answer) {
    constexpr double mostSeconds = 1e9;
    const NSNumber* const number = answer.objectForKey(ResultDurationKey).numberIfAny();
    const double seconds = number ? number->doubleValue() : 0;
    if (!(seconds >= 0 && seconds <= mostSeconds))
        return "?";
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                        : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

/// "640 × 480" of "{640, 480}"; "sound" of nothing.
std::string sizeOf(const NSDictionary& answer) {
    const NSString size = answer.objectForKey(ResultSizeKey).string();
    const std::string text = printable(size);
    const std::size_t comma = text.find(", ");
    if (comma == text.npos || text.front() != '{' || text.back() != '}' || size == NSStringFromSize({}))
        return "sound";
    return text.substr(1, comma - 1) + " × " + text.substr(comma + 2, text.size() - comma - 3);
}

ExitStatus runFile(Session& session, const std::string& file) {
    requireReadable(file);
    Request request;
    request.operation = Operation::posterImageForMovieWithFile;
    request.file = pathOfFile(file);
    const NSDictionary answer = session.ask(request, FileKind::movie, printableFileName(file)).dictionary();
    const bool isAnswered = isAnswer(request.operation, answer);
    if (session.options().printsJSON)
        session.printJSON(withFile(file, answer));
    if (!isAnswered)
        return session.complainOfNoAnswer(printableFileName(file));
    if (session.options().printsJSON)
        return ExitStatus::answered;
    const bool hasPicture = !answer.objectForKey(ResultThumbnailKey).isNil();
    session.output().write(fmt::format("{:>8}  {:>12}  {:<10}  {}\n", lengthOf(answer), sizeOf(answer),
                                       hasPicture ? "picture" : "no picture", printableFileName(file)));
    // What has been answered is seen while the next file is at work.
    session.output().flush();
    return ExitStatus::answered;
}

} // namespace

ExitStatus runMovies(Session& session, const std::vector<std::string>& files) {
    return runEachFile(
        session, files, [&session](const std::string& file) { return runFile(session, file); },
        EachFile::inItsLine);
}

} // namespace kelvo::cli
