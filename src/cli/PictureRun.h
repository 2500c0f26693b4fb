#pragma once

#include "cli/ExitStatus.h"
#include "cli/Request.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"

#include <functional>
#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// What the line of a file says of its answer, behind its name; the path is that of the file.
using ColumnsOfAnswer = std::function<std::string(const NSDictionary& answer, const NSString& path)>;

/// Asks for pictures of files: of one all of the answer is printed, of several a line each; pictures are written and shown
/// as the options say. The request is the same for each but for the file.
ExitStatus runPictures(Session& session, const std::vector<std::string>& files, const Request& request,
                       ColumnsOfAnswer columns);

/// "640 × 480" of a size string of whole numbers or others; empty for one of nothing.
std::string printableSize(const NSString& size);

} // namespace kelvo::cli
