#include "cli/MovieCommand.h"

#include "cli/PictureRun.h"
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

} // namespace

ExitStatus runMovies(Session& session, const std::vector<std::string>& files) {
    Request request;
    request.operation = Operation::posterImageForMovieWithFile;
    return runPictures(session, files, request, [](const NSDictionary& answer, const NSString&) {
        const std::string size = printableSize(answer.objectForKey(ResultSizeKey).string());
        const bool hasPicture = !answer.objectForKey(ResultThumbnailKey).isNil();
        return fmt::format("{:>8}  {:>12}  {}", lengthOf(answer), size.empty() ? "sound" : size,
                           hasPicture ? "picture" : "no picture");
    });
}

} // namespace kelvo::cli
