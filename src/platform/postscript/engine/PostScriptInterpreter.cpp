#include "platform/postscript/engine/PostScriptInterpreter.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSStringFormat.h"

#include <ghostscript/gserrors.h>
#include <ghostscript/iapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::size_t longestLine = 512;

// Lines that the prologue writes to standard error. A program that writes them itself makes its own record untrue.
constexpr std::string_view pageMark = "%%kelvo page";
constexpr std::string_view refusalMark = "%%kelvo refused ";

/// Run before the library's own dictionary is closed. Ghostscript refuses files by itself, but then the program may hide
/// from everybody that it wanted one, and into the folder of temporary files it could write until the disk is full. So the
/// operators that take names of files tell, and refuse whatever the name is; Ghostscript's own procedures, which were bound
/// before, find fonts as ever.
constexpr const char* prologue = R"PS(
true setglobal
systemdict begin
/kelvoTell {
  dup type /stringtype eq {
    dup length 200 .min 0 exch getinterval
    (%stderr) (w) //file
    dup (\n%%kelvo refused ) writestring
    dup 3 -1 roll writestring
    dup (\n) writestring flushfile
  } { pop } ifelse
} bind executeonly def
/kelvoBeginPage {
  0 gt {
    (%stderr) (w) //file dup (\n%%kelvo page\n) writestring flushfile
    systemdict /quit get exec
  } if
} bind executeonly def
/kelvoRefuse {
  % operator's name, how far below it the name of the file stands
  count 2 sub 1 index gt { 1 add index //kelvoTell exec } { pop } ifelse
  /invalidfileaccess signalerror
} bind executeonly def
/file {
  count 2 ge { 1 index type /stringtype eq } { false } ifelse {
    1 index (%std) anchorsearch { pop pop //file } { pop /file 1 //kelvoRefuse exec } ifelse
  } { //file } ifelse
} bind executeonly def
/run { /run 0 //kelvoRefuse exec } bind executeonly def
/runlibfile { /runlibfile 0 //kelvoRefuse exec } bind executeonly def
/deletefile { /deletefile 0 //kelvoRefuse exec } bind executeonly def
/renamefile { /renamefile 1 //kelvoRefuse exec } bind executeonly def
/setpagedevice {
  dup type /dicttype eq { dup /OutputFile known } { false } ifelse {
    dup /OutputFile get //kelvoTell exec
    /setpagedevice /invalidfileaccess signalerror
  } { //setpagedevice } ifelse
} bind executeonly def
[ /kelvoTell /kelvoRefuse /.tempfile ] { currentdict exch undef } forall
end
systemdict readonly pop
false setglobal
)PS";

/// For programs that have a box of their own: what is seen of a picture is decided by whoever shows it.
constexpr const char* fixedPage = R"PS(
userdict begin
/setpagedevice { pop } bind def
[ /letter /legal /ledger /11x17 /note /lettersmall /a0 /a1 /a2 /a3 /a4 /a5 /a6 /a4small /b4 /b5 ] { {} def } forall
end
)PS";

/// For programs without one: the paper that they choose is shown whole, in the midst of the page that there is. What comes
/// before it are the sides of that page.
constexpr const char* pageOfOtherPaper = R"PS(
userdict begin
/kelvoPageHeight exch def /kelvoPageWidth exch def
/kelvoPaper {
  % width, height
  2 copy 0 gt exch 0 gt and {
    initgraphics
    kelvoPageWidth 2 index div kelvoPageHeight 2 index div 2 copy gt { exch } if pop 3 1 roll
    2 index mul kelvoPageHeight exch sub 2 div exch
    2 index mul kelvoPageWidth exch sub 2 div exch translate
    dup scale
  } { pop pop } ifelse
} bind def
/setpagedevice {
  dup type /dicttype eq { dup /OutputFile known } { false } ifelse {
    systemdict /setpagedevice get exec
  } {
    dup type /dicttype eq { dup /PageSize known } { false } ifelse {
      /PageSize get dup type dup /arraytype eq exch /packedarraytype eq or
      { dup length 2 eq } { false } ifelse { aload pop kelvoPaper } { pop } ifelse
    } { pop } ifelse
  } ifelse
} bind def
/letter { 612 792 kelvoPaper } bind def /lettersmall { 612 792 kelvoPaper } bind def
/note { 612 792 kelvoPaper } bind def /legal { 612 1008 kelvoPaper } bind def /ledger { 1224 792 kelvoPaper } bind def
/11x17 { 792 1224 kelvoPaper } bind def /a0 { 2384 3370 kelvoPaper } bind def /a1 { 1684 2384 kelvoPaper } bind def
/a2 { 1191 1684 kelvoPaper } bind def /a3 { 842 1191 kelvoPaper } bind def /a4 { 595 842 kelvoPaper } bind def
/a4small { 595 842 kelvoPaper } bind def /a5 { 420 595 kelvoPaper } bind def /a6 { 297 420 kelvoPaper } bind def
/b4 { 729 1032 kelvoPaper } bind def /b5 { 516 729 kelvoPaper } bind def
end
)PS";

struct ErrorName {
    int error;
    const char16_t* name;
};

constexpr ErrorName errorNames[] = {
    {gs_error_dictfull, u"dictfull"},
    {gs_error_dictstackoverflow, u"dictstackoverflow"},
    {gs_error_dictstackunderflow, u"dictstackunderflow"},
    {gs_error_execstackoverflow, u"execstackoverflow"},
    {gs_error_invalidaccess, u"invalidaccess"},
    {gs_error_invalidexit, u"invalidexit"},
    {gs_error_invalidfont, u"invalidfont"},
    {gs_error_invalidrestore, u"invalidrestore"},
    {gs_error_ioerror, u"ioerror"},
    {gs_error_limitcheck, u"limitcheck"},
    {gs_error_nocurrentpoint, u"nocurrentpoint"},
    {gs_error_rangecheck, u"rangecheck"},
    {gs_error_stackoverflow, u"stackoverflow"},
    {gs_error_stackunderflow, u"stackunderflow"},
    {gs_error_syntaxerror, u"syntaxerror"},
    {gs_error_typecheck, u"typecheck"},
    {gs_error_undefined, u"undefined"},
    {gs_error_undefinedfilename, u"undefinedfilename"},
    {gs_error_undefinedresource, u"undefinedresource"},
    {gs_error_undefinedresult, u"undefinedresult"},
    {gs_error_unmatchedmark, u"unmatchedmark"},
};

void noteFailure(int error, const PostScriptInterpreter::Note& note) {
    if (error == gs_error_Quit) {
        note(Outcome::nothing, u"its program draws no page");
    } else if (error == gs_error_VMerror) {
        note(Outcome::outOfMemory, u"its program takes more memory than it may");
    } else if (error == gs_error_invalidfileaccess) {
        note(Outcome::refused, u"its program wanted a file that it may not have");
    } else {
        const auto* const known = std::find_if(std::begin(errorNames), std::end(errorNames),
                                               [=](const ErrorName& entry) { return entry.error == error; });
        note(Outcome::broken, known == std::end(errorNames)
                                  ? NSString(u"its program fails")
                                  : stringWithFormat(u"its program fails (%@)", NSString(known->name)));
    }
}

/// Without what is in no name that people write.
NSString nameIn(std::string_view bytes) {
    std::string name(bytes);
    std::erase_if(name, [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; });
    return NSString::stringByRepairingUTF8String(name);
}

} // namespace

PostScriptInterpreter::PostScriptInterpreter(const std::string& folder) : output_(folder + "/page.pdf") {
    // Where it makes its temporary files, and which it then allows to be read.
    ::setenv("TMPDIR", folder.c_str(), 1);
    const std::string outputArgument = "-sOutputFile=" + output_;
    const char* const arguments[] = {"gs", "-q", "-dNOPAUSE", "-dNOPROMPT", "-dSAFER", "-dWRITESYSTEMDICT",
                                     "-dLastPage=1", "-dAutoRotatePages=/None",
                                     // As they are, and not as JPEGs of them.
                                     "-dAutoFilterColorImages=false", "-dAutoFilterGrayImages=false",
                                     "-dColorImageFilter=/FlateEncode", "-dGrayImageFilter=/FlateEncode",
                                     "-sDEVICE=pdfwrite", outputArgument.c_str()};
    std::vector<char*> writable;
    for (const char* const argument : arguments)
        writable.push_back(
            const_cast<char*>(argument)); // NOLINT(cppcoreguidelines-pro-type-const-cast): only read
    const bool isReady =
        gsapi_new_instance(&instance_, this) == 0 &&
        gsapi_set_stdio(instance_, readProgram, dropOutput, takeMessage) == 0 &&
        gsapi_set_arg_encoding(instance_, GS_ARG_ENCODING_UTF8) == 0 &&
        gsapi_init_with_args(instance_, static_cast<int>(writable.size()), writable.data()) == 0 &&
        run(prologue) == 0;
    if (!isReady) {
        close();
        throw NSException(EngineMissingException, u"Ghostscript is not installed as it should be");
    }
}

PostScriptInterpreter::~PostScriptInterpreter() {
    close();
}

void PostScriptInterpreter::close() {
    if (!instance_)
        return;
    gsapi_exit(instance_);
    gsapi_delete_instance(instance_);
    instance_ = nullptr;
}

int PostScriptInterpreter::run(const std::string& text) {
    int exitCode = 0;
    return gsapi_run_string_with_length(instance_, text.data(), static_cast<unsigned>(text.size()), 0,
                                        &exitCode);
}

int PostScriptInterpreter::readProgram(void* self, char* buffer, int length) {
    std::string_view& rest = static_cast<PostScriptInterpreter*>(self)->rest_;
    const std::size_t count = std::min(rest.size(), static_cast<std::size_t>(std::max(length, 0)));
    std::memcpy(buffer, rest.data(), count);
    rest.remove_prefix(count);
    return static_cast<int>(count);
}

int PostScriptInterpreter::dropOutput(void*, const char*, int length) {
    return length;
}

int PostScriptInterpreter::takeMessage(void* self, const char* text, int length) {
    auto& interpreter = *static_cast<PostScriptInterpreter*>(self);
    for (const char byte : std::string_view(text, static_cast<std::size_t>(std::max(length, 0)))) {
        if (byte == '\n')
            interpreter.takeLine(std::exchange(interpreter.line_, {}));
        else if (interpreter.line_.size() < longestLine)
            interpreter.line_ += byte;
    }
    return length;
}

void PostScriptInterpreter::takeLine(std::string_view line) {
    hasPage_ = hasPage_ || line == pageMark;
    if (wantedFile_.isNil() && line.starts_with(refusalMark))
        wantedFile_ = nameIn(line.substr(refusalMark.size()));
}

int PostScriptInterpreter::runProgram(std::string_view program, const PostScriptPage& page) {
    char setup[1024];
    std::snprintf(
        setup, sizeof setup,
        "<< /PageSize [%.9g %.9g] /BeginPage systemdict /kelvoBeginPage get"
        " /InputAttributes << 0 << /PageSize [%.9g %.9g] >> >> /Policies << /PageSize 3 >> >> setpagedevice"
        " %.9g %.9g scale %.9g %.9g translate\n",
        page.width, page.height, page.width, page.height, page.width / page.boxWidth,
        page.height / page.boxHeight, -page.left, -page.bottom);
    char sides[64];
    std::snprintf(sides, sizeof sides, "%.9g %.9g\n", page.width, page.height);
    const std::string paper = page.hasBox ? fixedPage : std::string(sides) + pageOfOtherPaper;
    if (const int error = run(setup + paper); error != 0)
        return error;
    rest_ = program;
    if (const int error = run("(%stdin) (r) file cvx exec\n"); error != 0)
        return error;
    return run("showpage\n");
}

NSData PostScriptInterpreter::firstPage(std::string_view program, const PostScriptPage& page,
                                        const Note& note) {
    const int error = runProgram(program, page);
    // The file is whole when the device has been closed.
    close();
    const bool hasPage = error == 0 || hasPage_;
    if (!wantedFile_.isNil()) {
        const NSString sentence =
            stringWithFormat(u"its program wanted a file that it may not have: %@", wantedFile_);
        note(Outcome::refused, sentence);
        if (hasPage)
            note(Outcome::answered, sentence);
    }
    if (hasPage)
        return NSData::dataWithContentsOfFile(NSString::stringWithUTF8String(output_));
    noteFailure(error, note);
    return nullptr;
}

} // namespace kelvo
