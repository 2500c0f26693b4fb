#include "importers/calendar/CalendarImport.h"

#include "support/Attributed.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::attributesOf;
using tests::one;

Attributed attributesOfFile(const std::string& file) {
    return attributesOf(importCalendar, file, "com.apple.ical.ics");
}

TEST(CalendarImport, SetsWhatAnEventSays) {
    const std::string file =
        "BEGIN:VCALENDAR\r\nPRODID:-//Pen//1\r\nBEGIN:VTIMEZONE\r\nTZID:x\r\nBEGIN:STANDARD\r\n"
        "DTSTART:16010101T000000\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\nBEGIN:VEVENT\r\nUID:1\r\nSUMMARY:High\\,"
        " wat\r\n er\r\n"
        "DTSTART;TZID=Europe/Berlin:20200701T120000\r\nDURATION:PT1H30M\r\nLOCATION:Quay \xC3\xA9\r\n"
        "ORGANIZER;CN=\"Ek: "
        "Per\":mailto:per@x.org\r\nATTENDEE;CN=Ada:MAILTO:ada@x.org\r\nATTENDEE:mailto:bo@x.org\r\n"
        "DESCRIPTION:Bring\\nboots\r\nCATEGORIES:sea,moon\r\nCREATED:20200101T000000Z\r\n"
        "LAST-MODIFIED:20200102T000000Z\r\nURL:http://"
        "x.org\r\nBEGIN:VALARM\r\nDESCRIPTION:no\r\nEND:VALARM\r\n"
        "END:VEVENT\r\nEND:VCALENDAR\r\n";
    const Attributed expected{{"Title", "High, water"},
                              {"Creator", "-//Pen//1"},
                              {"Identifier", "1"},
                              {"NamedLocation", "Quay é"},
                              {"Authors", "<Ek: Per>"},
                              {"AuthorEmailAddresses", "<per@x.org>"},
                              {"Participants", "<Ada><bo@x.org>"},
                              {"EmailAddresses", "<ada@x.org><bo@x.org>"},
                              {"Keywords", "<sea><moon>"},
                              {"URL", "http://x.org"},
                              {"plumwick_events", "1"},
                              {"plumwick_firstDate", "2020-07-01 10:00:00 +0000"},
                              {"plumwick_lastDate", "2020-07-01 11:30:00 +0000"},
                              {"ContentCreationDate", "2020-01-01 00:00:00 +0000"},
                              {"ContentModificationDate", "2020-01-02 00:00:00 +0000"},
                              {"TextContent", "High, water\nQuay é\nEk: Per\nAda\nbo@x.org\nBring\nboots"}};
    EXPECT_EQ(attributesOfFile(file), expected);
}

TEST(CalendarImport, SetsWhatACardSays) {
    const std::string file =
        "BEGIN:VCARD\nVERSION:3.0\nFN:Ada Lindqvist\nN:Lindqvist;Ada;;;\nORG:Quay\\; Sons;Boats\n"
        "item1.EMAIL;TYPE=INTERNET:ada@x.org\nTEL;VALUE=uri:tel:+46-1\nIMPP:xmpp:ada@y.org\n"
        "ADR;TYPE=HOME:;;Street 1;Lund;Skåne;222;Sverige\nNOTE:Has a boat\nPHOTO;ENCODING=b:" +
        std::string(3'000'000, 'A') + "\n BBBB\nREV:2020-02-29T00:00:00Z\nUID:urn:uuid:7\nEND:VCARD\n";
    const Attributed expected{{"Title", "Ada Lindqvist"},
                              {"Participants", "<Ada Lindqvist>"},
                              {"Organizations", "<Quay; Sons>"},
                              {"EmailAddresses", "<ada@x.org>"},
                              {"PhoneNumbers", "<+46-1>"},
                              {"InstantMessageAddresses", "<ada@y.org>"},
                              {"City", "Lund"},
                              {"StateOrProvince", "Skåne"},
                              {"Country", "Sverige"},
                              {"Identifier", "7"},
                              {"ContentModificationDate", "2020-02-29 00:00:00 +0000"},
                              {"plumwick_contacts", "1"},
                              {"TextContent", "Ada Lindqvist\nQuay; Sons, Boats\nada@x.org\n+46-1\n"
                                              "Street 1, Lund, Skåne, 222, Sverige\nHas a boat"}};
    EXPECT_EQ(attributesOfFile(file), expected);
}

TEST(CalendarImport, ReadsWhatFilesHold) {
    const auto card = [](const std::string& lines) { return "BEGIN:VCARD\n" + lines + "\nEND:VCARD\n"; };
    const auto event = [](const std::string& lines) {
        return "BEGIN:VCALENDAR\nBEGIN:VEVENT\n" + lines + "\nEND:VEVENT\nEND:VCALENDAR\n";
    };
    std::string deep;
    for (int depth = 0; depth < 100'000; ++depth)
        deep += "BEGIN:VCALENDAR\n";
    const struct {
        const char* name;
        std::string file;
        const char* attribute;
        const char* value;
    } rows[] = {
        {"quoted-printable", card("FN;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:J=F6=\nrg"), "Title",
         "Jörg"},
        {"quoted-printable without a name", card("FN;QUOTED-PRINTABLE:J=C3=B6rg"), "Title", "Jörg"},
        {"raw Latin 1", card("FN:J\xF6rg"), "Title", "Jörg"},
        {"fold within a letter", card("FN:J\xC3\n \xB6rg"), "Title", "Jörg"},
        {"two cards", card("FN:A") + card("FN:B"), "plumwick_contacts", "2"},
        {"two cards have no title", card("FN:A") + card("FN:B"), "Title", "absent"},
        {"a card each", card("FN:A") + card("FN:B"), "TextContent", "A\n\nB"},
        {"name in parts", card("N;ENCODING=QUOTED-PRINTABLE:Lindqvist;Ada;J=C3=B6,Bo;Dr."), "Title",
         "Ada Jö Bo Lindqvist"},
        {"family only", card("N:Lindqvist\nFN:"), "Participants", "<Lindqvist>"},
        {"names in parts stand first",
         card("TEL:1\nN:;A\nTEL:2") + card("N:;no\nTEL:3\nFN:B") + card("TEL:4\nN:;C"), "TextContent",
         "A\n1\n2\n\n3\nB\n\nC\n4"},
        {"no name in parts", card("N:;;;;\nTEL:1"), "TextContent", "1"},
        {"cut short in parts", "BEGIN:VCARD\nN:;A\nTEL", "Title", "A"},
        {"calendar's name", "BEGIN:VCALENDAR\nX-WR-CALNAME:Tides\nEND:VCALENDAR", "Title", "Tides"},
        {"empty calendar", "BEGIN:VCALENDAR\nEND:VCALENDAR", "plumwick_events", "0"},
        {"summer time", event("DTSTART;TZID=Europe/Berlin:20200701T020000"), "plumwick_firstDate",
         "2020-07-01 00:00:00 +0000"},
        {"unknown zone", event("DTSTART;TZID=Mine:20200301T020000"), "plumwick_firstDate",
         "2020-03-01 07:00:00 +0000"},
        {"day", event("DTSTART;VALUE=DATE:20200301"), "plumwick_firstDate", "2020-03-01 05:00:00 +0000"},
        {"day in a zone", event("DTSTART;TZID=Asia/Tokyo;VALUE=DATE:20200301"), "plumwick_firstDate",
         "2020-03-01 05:00:00 +0000"},
        {"no zone", event("DTSTART:20200308T030000"), "plumwick_firstDate", "2020-03-08 07:00:00 +0000"},
        {"one day", event("DTEND;VALUE=DATE:20200802\nDTSTART;VALUE=DATE:20200801"), "plumwick_lastDate",
         "2020-08-01 04:00:00 +0000"},
        {"one day to itself", event("DTSTART:20200801\nDTEND:20200801"), "plumwick_firstDate",
         "2020-08-01 04:00:00 +0000"},
        {"days past summer time", event("DTSTART:20201031\nDTEND:20201103"), "plumwick_lastDate",
         "2020-11-02 05:00:00 +0000"},
        {"days by their number", event("DURATION:P2D\nDTSTART:20201031"), "plumwick_lastDate",
         "2020-11-01 04:00:00 +0000"},
        {"up to midnight", event("DTSTART:20200801T120000Z\nDTEND:20200802T000000Z"), "plumwick_lastDate",
         "2020-08-02 00:00:00 +0000"},
        {"events of a day", event("DTSTART:20200801\nDTEND:20200802") + event("DTSTART:20200701"),
         "plumwick_lastDate", "2020-08-01 04:00:00 +0000"},
        {"no day", event("DTSTART:20200230T000000Z"), "plumwick_firstDate", "absent"},
        {"to do", "BEGIN:VCALENDAR\nBEGIN:VTODO\nDUE:20200229T120000Z\nEND:VTODO", "DueDate",
         "2020-02-29 12:00:00 +0000"},
        {"cut short", "BEGIN:VCARD\nFN:A\nTEL", "Title", "A"},
        {"in each other", deep + card("FN:A"), "plumwick_contacts", "1"},
        {"empty", "", "note", "broken: there is neither a calendar nor a contact in the file"},
        {"text", "Dear: Sir", "note", "broken: there is neither a calendar nor a contact in the file"},
    };
    const tests::ScopedVariable zone("TZ", "America/New_York");
    for (const auto& row : rows)
        EXPECT_EQ(one(attributesOfFile(row.file), row.attribute), row.value) << row.name;
}

} // namespace
} // namespace kelvo::importers
