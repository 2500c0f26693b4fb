#include "platform/webkit/PageFiles.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {
namespace {

enum class Kind { unknown, shown, script };

constexpr std::size_t bytesThatTell = 512;

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> known) {
    return std::find(known.begin(), known.end(), text) != known.end();
}

Kind kindByName(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos)
        return Kind::unknown;
    const std::string extension = asciiLowerCased(std::string(name.substr(dot + 1)));
    if (isOneOf(extension, {"js", "mjs", "cjs", "javascript"}))
        return Kind::script;
    const bool isShown =
        isOneOf(extension, {"png", "apng", "gif", "jpg", "jpeg", "jpe",  "jfif", "webp", "bmp", "dib",
                            "ico", "cur",  "svg", "tif", "tiff", "avif", "heic", "heif", "jxl", "jp2"}) ||
        isOneOf(extension, {"css", "ttf", "otf", "ttc", "otc", "woff", "woff2"}) ||
        isOneOf(extension, {"html", "htm", "xhtml", "xht", "shtml", "xml", "xsl", "xslt"});
    return isShown ? Kind::shown : Kind::unknown;
}

/// By what no script begins with.
Kind kindByContents(std::string_view bytes) {
    const auto begins = [&](std::string_view mark, std::size_t at = 0) {
        return bytes.size() >= at && bytes.substr(at, mark.size()) == mark;
    };
    using namespace std::string_view_literals;
    for (const std::string_view mark :
         {"\x89PNG\r\n\x1A\n"sv, "GIF87a"sv, "GIF89a"sv, "\xFF\xD8\xFF"sv, "II*\0"sv, "MM\0*"sv, "\0\0\1\0"sv,
          "\0\0\2\0"sv, "\xFF\x0A"sv, "OTTO"sv, "\0\1\0\0"sv, "true\0"sv, "ttcf\0"sv, "wOFF\0"sv, "wOF2\0"sv})
        if (begins(mark))
            return Kind::shown;
    if ((begins("RIFF") && begins("WEBP", 8)) ||
        (begins("ftyp", 4) && (begins("avif", 8) || begins("heic", 8) || begins("mif1", 8))) ||
        (begins("BM") && begins("\0\0\0\0"sv, 6)))
        return Kind::shown;

    if (begins("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n\f"), bytes.size()));
    const std::string text = asciiLowerCased(std::string(bytes.substr(0, 16)));
    for (const std::string_view mark : {"<!doctype"sv, "<?xml"sv, "<html"sv, "<head"sv, "<body"sv, "<svg"sv})
        if (text.compare(0, mark.size(), mark) == 0)
            return Kind::shown;
    return Kind::unknown;
}

/// Absent unless it is a regular file that can be read.
std::optional<std::string> beginningOfFile(const std::string& path) {
    const FileDescriptor file = openRegularFile(path);
    std::array<char, bytesThatTell> bytes;
    const ssize_t count = file ? readSome(file.get(), bytes.data(), bytes.size()) : -1;
    return count < 0 ? std::nullopt : std::optional<std::string>(std::in_place, bytes.data(), count);
}

/// Where a file URL of this machine leads, links resolved. Empty when nothing is there.
std::string pathOfURL(const NSURL& url) {
    const NSString host = url.host();
    if (!url.isFileURL() || !(host.isEmpty() || host == u"localhost"))
        return {};
    const auto path = NSFileManager::defaultManager().fileSystemRepresentationWithPath(url.path());
    struct Free {
        void operator()(char* text) const { std::free(text); }
    };
    const std::unique_ptr<char, Free> resolved(path ? realpath(path->c_str(), nullptr) : nullptr);
    return resolved ? resolved.get() : std::string();
}

} // namespace

PageFiles::PageFiles(const NSURL& pageURL) {
    const std::string folder =
        pageURL.isFileURL() ? pathOfURL(NSURL::URLWithString_relativeToURL(u".", pageURL).absoluteURL())
                            : std::string();
    // Not every script of the machine is that of a page in its root.
    if (folder.size() > 1)
        scriptFolder_ = folder + '/';
}

bool PageFiles::mayLoad(const NSURL& url) const {
    const std::string path = pathOfURL(url);
    struct stat status {};
    // What is no regular file is not even opened: that would wait for a writer, or rewind a tape.
    if (path.empty() || stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    switch (kindByName(path)) {
    case Kind::shown:
        return true;
    case Kind::script:
        return !scriptFolder_.empty() && path.compare(0, scriptFolder_.size(), scriptFolder_) == 0;
    case Kind::unknown:
        break;
    }
    const auto beginning = beginningOfFile(path);
    return beginning && kindByContents(*beginning) == Kind::shown;
}

} // namespace kelvo
