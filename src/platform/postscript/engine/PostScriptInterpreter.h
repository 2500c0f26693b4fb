#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSString.h"
#include "platform/ledger/Outcome.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace kelvo {

/// What is to be made of a program.
struct PostScriptPage {
    /// What is to be seen of what it draws, in points.
    double left = 0;
    double bottom = 0;
    double boxWidth = 0;
    double boxHeight = 0;
    /// How large that becomes.
    double width = 0;
    double height = 0;
    /// The box is the file's own, so that the program has no say in the size of the page.
    bool hasBox = false;
};

/// Ghostscript, ready for one program. There may be one in a process at a time.
class PostScriptInterpreter {
public:
    /// What becomes known of the program.
    using Note = std::function<void(Outcome, const NSString& sentence)>;

    /// The folder is the only one that it may write to. Throws NSException (EngineMissingException) when the library
    /// does not find its own files.
    explicit PostScriptInterpreter(const std::string& folder);
    PostScriptInterpreter(const PostScriptInterpreter&) = delete;
    PostScriptInterpreter& operator=(const PostScriptInterpreter&) = delete;
    ~PostScriptInterpreter();

    /// The first page as a PDF; nil when the program fails or draws none, which is noted. May be asked for once.
    NSData firstPage(std::string_view program, const PostScriptPage& page, const Note& note);

private:
    /// 0, or what is wrong, as the library counts errors.
    int run(const std::string& text);
    int runProgram(std::string_view program, const PostScriptPage& page);
    void close();

    void takeLine(std::string_view line);

    static int readProgram(void* self, char* buffer, int length);
    static int dropOutput(void* self, const char* text, int length);
    static int takeMessage(void* self, const char* text, int length);

    void* instance_ = nullptr;
    std::string output_;
    /// What is left of the program.
    std::string_view rest_;
    /// Of what is written to its standard error, the line that has not ended yet.
    std::string line_;
    bool hasPage_ = false;
    /// The first that was refused.
    NSString wantedFile_;
};

} // namespace kelvo
