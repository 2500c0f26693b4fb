#include "platform/appkit/rtfreader/RTFScanner.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

/// The rest of the tokens: words by their names, text in quotes, signs and bytes by their numbers.
std::string tokensOf(RTFScanner& scanner) {
    using Kind = RTFToken::Kind;
    std::string shown;
    for (RTFToken token = scanner.next(); token.kind != Kind::end; token = scanner.next()) {
        const std::string bytes(token.bytes);
        const std::string number = std::to_string(token.parameter);
        shown += shown.empty() ? "" : " ";
        shown += token.kind == Kind::groupOpen    ? "{"
                 : token.kind == Kind::groupClose ? "}"
                 : token.kind == Kind::word       ? bytes + (token.hasParameter ? "=" + number : "")
                 : token.kind == Kind::symbol     ? "sign" + number
                 : token.kind == Kind::hexByte    ? "byte" + number
                 : token.kind == Kind::text       ? "'" + bytes + "'"
                                                  : "binary'" + bytes + "'";
    }
    return shown;
}

using Row = std::tuple<const char*, std::string_view, const char*>;

TEST(RTFScannerTest, Tokens) {
    const Row rows[] = {
        {"words and groups", "{\\b\\b0\\b-1 x\\Ab y}", "{ b b=0 b=-1 'x' Ab 'y' }"},
        {"a hyphen before no digit is text", "\\b-x\\li-\\b--1", "b '-x' li '-' b '--1'"},
        {"one blank belongs to a word", "\\b  x\\b0  y\\b\tz", "b ' x' b=0 ' y' b '\tz'"},
        {"numbers are held", "\\a2147483646\\a2147483648\\a-2147483646\\a-99999999999999999999",
         "a=2147483646 a=2147483647 a=-2147483646 a=-2147483647"},
        {"bytes", "\\'4f\\'E4\\'00a\\'aFb", "byte79 byte228 byte0 'a' byte175 'b'"},
        {"bytes that are none", "\\'4g\\'g4\\'/0\\':0\\'@1", "'4g' 'g4' '/0' ':0' '@1'"},
        {"half a byte at the end", "\\'4", "'4'"},
        {"line ends and NUL are nothing", "a\rb\nc\r\nd\0e\r\n"sv, "'a' 'b' 'c' 'd' 'e'"},
        {"a line end after a backslash", "\\\r\n\\\r\\\nx", "sign10 sign10 sign10 'x'"},
        {"signs", "\\~\\{\\*\\\\\\\xE4", "sign126 sign123 sign42 sign92 sign228"},
        {"binary data", "\\bin3 {\\}x\\bin0 y\\bin-2 z\\bin 1\\bins2 \\bin9 ab",
         "binary'{\\}' 'x' binary'' 'y' binary'' 'z' binary'' '1' bins=2 binary'ab'"},
        {"a backslash at the end", "a\\", "'a'"},
        {"a number at the end", "\\a-1", "a=-1"},
        {"a hyphen at the end", "\\a-", "a '-'"},
    };
    for (const auto& [name, source, tokens] : rows) {
        RTFScanner scanner(source);
        EXPECT_EQ(tokensOf(scanner), tokens) << name;
    }
}

TEST(RTFScannerTest, PassesOverGroups) {
    const Row rows[] = {
        {"groups inside", "a{b{c}d}e}f", "} 'f'"},
        {"escaped braces", "\\}\\{\\\\}f", "} 'f'"},
        {"binary data with braces", "x\\bin3 }}}\\bin1 }}f", "} 'f'"},
        {"words that begin like it", "\\bing3 }f", "} 'f'"},
        {"binary data of no length", "\\bin}f", "} 'f'"},
        {"binary data of less than none", "\\bin-2 }f", "} 'f'"},
        {"binary data past the end", "\\bin9 }f", ""},
        {"the shortest binary data", "\\bin1", ""},
        {"a backslash at the end", "a\\", ""},
        {"a group that does not end", "{a}{b", ""},
    };
    for (const auto& [name, source, tokens] : rows) {
        RTFScanner scanner(source);
        scanner.skipGroup();
        EXPECT_EQ(tokensOf(scanner), tokens) << name;
    }
}

} // namespace
} // namespace kelvo
