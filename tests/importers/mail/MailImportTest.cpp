#include "importers/mail/MailImport.h"

#include "support/Attributed.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::attributesOf;
using tests::one;

Attributed attributesOfMail(const std::string& file, const char* type = "com.apple.mail.email") {
    return attributesOf(importMail, file, type);
}

TEST(MailImport, SetsWhatAMessageSays) {
    const std::string mail = "From: =?iso-8859-1?q?J=F6rg?= <jorg@example.org>\n"
                             "To: Ada <ada@example.org>, per@example.org\nCc: Team: Bo <bo@example.org>;\n"
                             "Subject: =?utf-8?b?w4RwZmVs?=\n in a row\n"
                             "Date: Sat, 29 Feb 2020 12:34:56 +0530\nMessage-ID: <1@example.org>\n"
                             "Keywords: fruit, garden\nUser-Agent: Pen 1\n\nText\r\nof it\r\n";
    const Attributed expected{
        {"Subject", "Äpfel in a row"},
        {"Authors", "<Jörg>"},
        {"AuthorEmailAddresses", "<jorg@example.org>"},
        {"Recipients", "<Ada><per@example.org><Bo>"},
        {"RecipientEmailAddresses", "<ada@example.org><per@example.org><bo@example.org>"},
        {"ContentCreationDate", "2020-02-29 07:04:56 +0000"},
        {"Identifier", "1@example.org"},
        {"Keywords", "<fruit><garden>"},
        {"Creator", "Pen 1"},
        {"TextContent", "Text\nof it"}};
    EXPECT_EQ(attributesOfMail(mail), expected);
}

/// A message with these parts, each with its own header.
std::string mailOf(const std::string& subtype, const std::vector<std::string>& parts) {
    std::string mail = "Subject: x\nContent-Type: multipart/" + subtype + "; boundary=x\n\n";
    for (const std::string& part : parts)
        mail += "--x\n" + part + "\n";
    return mail + "--x--\n";
}

TEST(MailImport, ReadsWhatPeopleSend) {
    const std::string plain = "Content-Type: text/plain\n\nplain";
    const std::string page =
        "Content-Type: text/html; charset=koi8-r\n\n<title>no</title><p>\xC4\xC1<br>&eacute;";
    const std::string attached = "Content-Type: text/plain\nContent-Disposition: attachment; filename=\"";
    const std::string nested = "Content-Type: message/rfc822\n\nSubject: Inner\n\ninner text";
    const std::string start = "Subject: x\n";
    const std::string flowed = start + "Content-Type: text/plain; format=Flowed";
    const std::string chinese = "Content-Type: text/plain; charset=gb2312\n\n\xC4\xE3";
    const struct {
        const char* name;
        std::string file;
        const char* type;
        const char* attribute;
        std::string value;
    } rows[] = {
        {"plain before HTML", mailOf("alternative", {plain, page}), "eml", "TextContent", "plain"},
        {"HTML for want of plain text", mailOf("alternative", {"\n  \n", page}), "eml", "TextContent",
         "да\né"},
        {"all parts", mailOf("mixed", {plain, page}), "eml", "TextContent", "plain\n\nда\né"},
        {"attachments are named only", mailOf("mixed", {plain, attached + "a.txt\"\n\nsecret"}), "eml",
         "TextContent", "plain"},
        {"names",
         mailOf("mixed", {attached + "a.txt\"\n\n", attached + "=?utf-8?q?=C3=A9.txt?=\"\n\n", nested}),
         "eml", "plumwick_attachments", "<a.txt><é.txt><Inner>"},
        {"name in pieces",
         mailOf("mixed", {"Content-Disposition: attachment; filename*0*=utf-8''%C3%A9;\n"
                          " filename*1*=b.txt\n\n"}),
         "eml", "plumwick_attachments", "<éb.txt>"},
        {"a message within", mailOf("mixed", {plain, nested}), "eml", "TextContent",
         "plain\n\nInner\n\ninner text"},
        {"digest", mailOf("digest", {"\nSubject: One\n\nfirst"}), "eml", "TextContent", "One\n\nfirst"},
        {"encrypted", mailOf("encrypted; protocol=\"application/pgp-encrypted\"", {plain}), "eml", "note",
         "answered: a part of the message is encrypted"},
        {"quoted-printable", start + "Content-Transfer-Encoding: quoted-printable\n\nna=C3=\n=AFve", "eml",
         "TextContent", "naïve"},
        {"unknown charset", start + "Content-Type: text/plain; charset=x-none\n\n\xE9", "eml", "TextContent",
         "é"},
        {"ASCII that is none", start + "Content-Type: text/plain; charset=us-ascii\n\n\xC3\xA9", "eml",
         "TextContent", "é"},
        {"raw UTF-8 header", "Subject: \xC3\xA9\n\n", "eml", "Subject", "é"},
        {"raw Latin header", "Subject: \xE9t\xE9\n\n", "eml", "Subject", "été"},
        {"raw header of the text's charset", "Subject: \xC4\xE3\xBA\xC3\n" + chinese, "eml", "Subject",
         "你好"},
        {"raw people of the text's charset",
         "From: \xC4\xE3 <a@x.org>\nTo: \"\xBA\xC3\" <b@x.org>\n" + chinese, "eml", "Authors", "<你>"},
        {"more than the charset has by its name",
         start + "Content-Type: text/plain; charset=gb2312\n\n\xD6\xEC\xE9\x46\xBB\xF9", "eml", "TextContent",
         "朱镕基"},
        {"raw header in UTF-8 over another text", "Subject: \xC3\xA9\n" + chinese, "eml", "Subject", "é"},
        {"raw header of a part's charset",
         "From: \xD0\xD2 <a@x.org>\n" + mailOf("mixed", {"\nno charset", page}), "eml", "Authors", "<пр>"},
        {"raw header over wide text", "Subject: \xE9t\xE9s\nContent-Type: text/plain; charset=utf-16\n\n",
         "eml", "Subject", "étés"},
        {"raw header of a message within",
         mailOf("mixed", {"Content-Type: text/plain; charset=koi8-r\n\n",
                          "Content-Type: message/rfc822\n\nSubject: \xC4\xE3\n" + chinese}),
         "eml", "plumwick_attachments", "<你>"},
        {"flowed lines", flowed + "\n\na \r\nb  \nc\nd\n", "eml", "TextContent", "a b  c\nd"},
        {"lines that do not flow", start + "\na \nb", "eml", "TextContent", "a \nb"},
        {"flowed lines without spaces", flowed + "; DelSp=Yes\n\na \nb  \nc", "eml", "TextContent", "ab c"},
        {"quoted flowed lines", flowed + "\n\n> a \n> b \n>> c \n>>d\ne", "eml", "TextContent",
         "> a b \n>> c d\ne"},
        {"stuffed lines", flowed + "\n\na \n  b\n >c\n From d", "eml", "TextContent", "a  b\n>c\nFrom d"},
        {"signature", flowed + "\n\na \n-- \nAda", "eml", "TextContent", "a \n-- \nAda"},
        {"empty lines between flowed ones", flowed + "\n\na \n\nb \n> \nc", "eml", "TextContent",
         "a \n\nb \n>\nc"},
        {"nothing written", start + "\n", "eml", "TextContent", ""},
        {"length first", "13  \nSubject: x\n\ntext<?xml version=\"1.0\"?>", "emlx", "TextContent", "t"},
        {"length past the end", "999\nSubject: x\n\ntext", "emlx", "TextContent", "text"},
        {"no length", "Subject: x\n\ntext", "emlx", "TextContent", "text"},
        {"UTF-16",
         std::string("\xFF\xFE") +
             [] {
                 std::string wide;
                 for (const char byte :
                      std::string("Subject: x\nContent-Type: text/plain; charset=utf-16\n\nwide"))
                     wide += {byte, '\0'};
                 return wide;
             }(),
         "eml", "TextContent", "wide"},
        {"mailbox",
         "From a Mon Jan  1 00:00:00 2001\nSubject: One\nFrom: Ada <a@x.org>\n\nFrom here\n\n"
         "From b Mon Jan  1 00:00:00 2001\nSubject: Two\n\nsecond\n",
         "mbox", "TextContent", "One\nAda\n\nFrom here\n\nTwo\n\nsecond"},
        {"mailbox without empty lines",
         "From a\nSubject: One\n\n1\nFrom b Mon Jan  1 00:00:00 2001\nSubject: Two\n\n2", "mbox",
         "plumwick_messages", "2"},
        {"mailbox of hyphens", "From - \nSubject: One\n\n1\nFrom - \nSubject: Two\n\n2", "mbox",
         "plumwick_messages", "2"},
        {"one message of a mailbox", "From a Mon Jan  1 00:00:00 2001\nSubject: One\n\ntext", "eml",
         "Subject", "One"},
        {"empty", "", "eml", "note", "broken: the file is not a message"},
        {"something else", "{\\rtf1 no}\n\ntext", "eml", "note", "broken: the file is not a message"},
        {"no mailbox", "Subject", "mbox", "note", "broken: the file is not a message"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(one(attributesOfMail(row.file, (std::string("com.apple.mail.") +
                                                  (row.type == std::string("eml") ? "email" : row.type))
                                                     .c_str()),
                      row.attribute),
                  row.value)
            << row.name;
}

TEST(MailImport, EndsWhateverTheMessageHolds) {
    const auto repeated = [](const std::string& piece, std::size_t count) {
        std::string all;
        for (std::size_t each = 0; each < count; ++each)
            all += piece;
        return all;
    };
    std::string deep = "Subject: x\n";
    for (int depth = 0; depth < 10'000; ++depth) {
        const std::string boundary = 'b' + std::to_string(depth);
        deep += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
    }
    const std::string manyParts = "the message has more parts than are read";
    const std::string longHeader = "the header of the message is longer than is read";
    const struct {
        const char* name;
        std::string file;
        std::string note;
    } rows[] = {
        {"10,000 parts in each other", deep, "absent"},
        {"messages in each other", "Subject: x\n" + repeated("Content-Type: message/rfc822\n\n", 10'000),
         "answered: " + manyParts},
        {"more parts than are read", mailOf("mixed", std::vector<std::string>(70'000, "\n")),
         "answered: " + manyParts},
        {"a subject of 10 MB", "Subject: x" + std::string(10'000'000, 'y') + "\n\ntext",
         "answered: " + longHeader},
        {"encoded words of 10 MB", "Subject: x" + repeated(" =?utf-8?q?=C3=A9?=\n", 500'000) + "\ntext",
         "answered: " + longHeader},
        {"millions of people", "Subject: x\nTo: " + repeated("a@b,", 2'500'000) + "\n\ntext",
         "answered: " + longHeader},
        {"groups in groups", "Subject: x\nTo: " + repeated("a:", 100'000) + "\n\ntext",
         "answered: " + longHeader},
        {"groups in a message within", mailOf("digest", {"\nTo: " + repeated("a:", 100'000) + "\n\n"}),
         "answered: " + manyParts},
        {"100,000 fields", "Subject: x\n" + repeated("X-Field: of a header\n", 100'000) + "\ntext",
         "answered: " + longHeader},
    };
    for (const auto& row : rows) {
        const Attributed attributes = attributesOfMail(row.file);
        EXPECT_EQ(one(attributes, "Subject").substr(0, 1), "x") << row.name;
        EXPECT_EQ(one(attributes, "note"), row.note.empty() ? "absent" : row.note) << row.name;
    }
}

} // namespace
} // namespace kelvo::importers
