#include "importers/calendar/CalendarImport.h"

#include "importers/calendar/CalendarTime.h"
#include "importers/calendar/ContentLine.h"
#include "importers/support/Deadline.h"
#include "importers/support/Texts.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

/// An attribute holds no more.
constexpr std::size_t mostOfAKind = 10'000;
constexpr std::size_t deepestNesting = 1000;
constexpr double secondsOfDay = 86'400;

/// Each once, in their order.
class Texts {
public:
    void add(const std::string& text) {
        if (!text.empty() && texts_.size() < mostOfAKind && known_.insert(text).second)
            texts_.push_back(text);
    }
    NSArray array() const { return arrayOf(texts_); }
    std::string first() const { return texts_.empty() ? std::string() : texts_.front(); }

private:
    std::vector<std::string> texts_;
    std::unordered_set<std::string> known_;
};

/// Without those that are empty.
std::string joined(const std::vector<std::string>& parts, const char* separator) {
    std::string text;
    for (const std::string& part : parts) {
        if (!part.empty())
            text.append(text.empty() ? "" : separator).append(part);
    }
    return text;
}

/// "mailto:", "tel:" and what else addresses begin with.
std::string withoutScheme(const std::string& address) {
    for (const std::string_view scheme :
         {"mailto:", "tel:", "xmpp:", "sip:", "aim:", "skype:", "urn:uuid:"}) {
        if (equalsASCIIIgnoringCase(std::string_view(address).substr(0, scheme.size()), scheme))
            return address.substr(scheme.size());
    }
    return address;
}

bool hasScheme(const std::string& address, std::string_view scheme) {
    return equalsASCIIIgnoringCase(std::string_view(address).substr(0, scheme.size()), scheme);
}

class Reading {
public:
    explicit Reading(std::string_view file) : lines_(file) {}

    void read() {
        while (const auto line = lines_.next()) {
            if (text_.size() > mostUnitsOfText || deadline_.isOver()) {
                isCut_ = true;
                break;
            }
            if (line->name == "BEGIN")
                begin(textOfValue(line->value));
            else if (line->name == "END")
                end();
            else if (isIn("VCARD"))
                readCard(*line);
            else if (!open_.empty() && isEntry(open_.back()))
                readEntry(*line);
            else if (isIn("VCALENDAR"))
                readCalendar(*line);
        }
        includeSpan();
        nameCard();
    }

    void setAttributes(Attributes& attributes) const {
        if (entries_ + cards_ == 0 && !isCalendar_) {
            attributes.note(MDNoteBroken, "there is neither a calendar nor a contact in the file");
            return;
        }
        const bool isSingle = entries_ + cards_ == 1;
        attributes.set("kMDItemTitle", stringOf(!title_.empty() ? title_
                                                : isSingle      ? names_.first()
                                                                : std::string()));
        if (isSingle) {
            attributes.set("kMDItemNamedLocation", stringOf(locations_.first()));
            attributes.set("kMDItemURL", stringOf(URLs_.first()));
            attributes.set("kMDItemIdentifier", stringOf(identifiers_.first()));
            attributes.set("kMDItemCity", stringOf(city_));
            attributes.set("kMDItemStateOrProvince", stringOf(region_));
            attributes.set("kMDItemCountry", stringOf(country_));
        }
        attributes.set("kMDItemDescription", stringOf(description_));
        attributes.set("kMDItemAuthors", organizers_.array());
        attributes.set("kMDItemAuthorEmailAddresses", organizerAddresses_.array());
        attributes.set("kMDItemParticipants", participants_.array());
        attributes.set("kMDItemEmailAddresses", mailAddresses_.array());
        attributes.set("kMDItemPhoneNumbers", phoneNumbers_.array());
        attributes.set("kMDItemInstantMessageAddresses", messageAddresses_.array());
        attributes.set("kMDItemOrganizations", organizations_.array());
        attributes.set("kMDItemKeywords", keywords_.array());
        attributes.set("kMDItemCreator", stringOf(program_));
        setDate(attributes, "plumwick_firstDate", first_);
        setDate(attributes, "plumwick_lastDate", last_);
        setDate(attributes, "kMDItemDueDate", due_);
        setDate(attributes, "kMDItemContentCreationDate", created_);
        setDate(attributes, "kMDItemContentModificationDate", modified_);
        if (cards_ > 0)
            attributes.setInteger("plumwick_contacts", cards_);
        if (isCalendar_)
            attributes.setInteger("plumwick_events", entries_);
        attributes.setText(stringOf(text_).characters());
        if (isCut_)
            attributes.note(MDNoteIncomplete, "not all of the file is read");
    }

private:
    using Time = std::optional<double>;
    using Day = std::optional<std::chrono::local_days>;

    /// Of an entry; of days, `day` is there as well.
    struct Span {
        struct Edge {
            Time time;
            Day day;
        };

        Day dayAfter() const {
            if (!start.day || !duration)
                return end.day;
            return *start.day + std::chrono::days(static_cast<int>(*duration / secondsOfDay));
        }

        Edge start;
        Edge end;
        Time duration;
    };

    struct Card {
        bool isNamed = false;
        std::string name; ///< from its parts
        std::size_t textStart = 0;
    };

    static void setDate(Attributes& attributes, const char* name, Time seconds) {
        if (seconds)
            attributes.setDate(name, NSDate::dateWithTimeIntervalSince1970(*seconds));
    }

    static bool isEntry(std::string_view component) {
        return component == "VEVENT" || component == "VTODO" || component == "VJOURNAL";
    }

    bool isIn(std::string_view component) const { return !open_.empty() && open_.back() == component; }

    void begin(std::string component) {
        for (char& byte : component)
            byte = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 32) : byte;
        isCalendar_ = isCalendar_ || component == "VCALENDAR";
        if (component == "VCARD") {
            nameCard();
            card_.textStart = text_.size();
            ++cards_;
        }
        if (isEntry(component)) {
            includeSpan();
            ++entries_;
        }
        if (open_.size() < deepestNesting)
            open_.push_back(std::move(component));
        isApart_ = true;
    }

    void end() {
        if (open_.empty())
            return;
        if (isEntry(open_.back()))
            includeSpan();
        else if (isIn("VCARD"))
            nameCard();
        open_.pop_back();
    }

    void write(const std::string& text) {
        const std::size_t start = text.find_first_not_of(" \t\r\n");
        if (start == text.npos)
            return;
        if (!text_.empty())
            text_ += isApart_ ? "\n\n" : "\n";
        isApart_ = false;
        text_.append(text, start, text.find_last_not_of(" \t\r\n") + 1 - start);
    }

    static void include(Time& earliest, Time& latest, Time time) {
        if (!time)
            return;
        earliest = std::min(earliest.value_or(*time), *time);
        latest = std::max(latest.value_or(*time), *time);
    }

    void readCalendar(const ContentLine& line) {
        if (line.name == "X-WR-CALNAME" || line.name == "NAME")
            title_ = textOfValue(line.value);
        else if (line.name == "X-WR-CALDESC" || line.name == "DESCRIPTION")
            description_ = textOfValue(line.value);
        else if (line.name == "PRODID")
            program_ = textOfValue(line.value);
    }

    void readEntry(const ContentLine& line) {
        const std::string text = textOfValue(line.value);
        if (line.name == "SUMMARY" || line.name == "LOCATION" || line.name == "DESCRIPTION" ||
            line.name == "COMMENT" || line.name == "CONTACT")
            write(text);
        if (line.name == "SUMMARY")
            names_.add(text);
        else if (line.name == "LOCATION")
            locations_.add(text);
        else if (line.name == "ORGANIZER")
            readPerson(line, text, organizers_, organizerAddresses_);
        else if (line.name == "ATTENDEE")
            readPerson(line, text, participants_, mailAddresses_);
        else
            readTimeOrOther(line, text);
    }

    void readPerson(const ContentLine& line, const std::string& address, Texts& names, Texts& addresses) {
        const std::string name(line.parameter("CN"));
        const bool isMail = hasScheme(address, "mailto:") || address.find('@') != address.npos;
        const std::string mail = isMail ? withoutScheme(address) : std::string();
        names.add(!name.empty() ? name : isMail ? mail : address);
        addresses.add(mail);
        write(name.empty() ? withoutScheme(address) : name);
    }

    void readTimeOrOther(const ContentLine& line, const std::string& text) {
        const Time time = timeOfCalendar(text, line.parameter("TZID"));
        Time ignored;
        if (line.name == "DTSTART")
            span_.start = {time, dayOfCalendar(text)};
        else if (line.name == "DTEND")
            span_.end = {time, dayOfCalendar(text)};
        else if (line.name == "DURATION")
            span_.duration = durationOfCalendar(text);
        else if (line.name == "DUE")
            include(due_, ignored, time);
        else if (line.name == "CREATED" || line.name == "DCREATED")
            include(created_, ignored, time);
        else if (line.name == "LAST-MODIFIED")
            include(ignored, modified_, time);
        else
            readOther(line, text);
    }

    /// When all of the entry's times are known. Days end with the one before that which stands as their end.
    void includeSpan() {
        const Span span = std::exchange(span_, {});
        Time end = span.end.time;
        if (const auto day = span.dayAfter())
            end = beginningOfDay(*day - std::chrono::days(1));
        else if (span.start.time && span.duration)
            end = *span.start.time + *span.duration;
        include(first_, last_, span.start.time);
        if (end)
            include(first_, last_, std::max(*end, span.start.time.value_or(*end)));
    }

    /// What entries and cards have in common.
    void readOther(const ContentLine& line, const std::string& text) {
        if (line.name == "CATEGORIES") {
            for (const std::string& keyword : partsOfValue(line.value, ','))
                keywords_.add(keyword);
        } else if (line.name == "URL") {
            URLs_.add(text);
        } else if (line.name == "UID") {
            identifiers_.add(withoutScheme(text));
        }
    }

    void readCard(const ContentLine& line) {
        const std::string text = textOfValue(line.value);
        if (line.name == "FN") {
            card_.isNamed = card_.isNamed || !text.empty();
            addName(text);
        } else if (line.name == "N") {
            card_.name = nameInParts(line.value);
        } else if (line.name == "ORG") {
            const std::vector<std::string> parts = partsOfValue(line.value, ';');
            organizations_.add(parts.front());
            write(joined(parts, ", "));
        } else if (line.name == "ADR" || line.name == "LABEL") {
            readAddress(line);
        } else if (line.name == "TEL") {
            phoneNumbers_.add(withoutScheme(text));
            write(withoutScheme(text));
        } else if (line.name == "EMAIL") {
            mailAddresses_.add(withoutScheme(text));
            write(withoutScheme(text));
        } else if (line.name == "IMPP" || line.name == "X-AIM" || line.name == "X-JABBER" ||
                   line.name == "X-ICQ" || line.name == "X-MSN" || line.name == "X-SKYPE") {
            messageAddresses_.add(withoutScheme(text));
        } else if (line.name == "NOTE" || line.name == "NICKNAME" || line.name == "TITLE" ||
                   line.name == "ROLE") {
            write(text);
        } else if (line.name == "PRODID") {
            program_ = text;
        } else if (line.name == "REV") {
            Time ignored;
            include(ignored, modified_, timeOfCalendar(text, {}));
        } else {
            readOther(line, text);
        }
    }

    void addName(const std::string& name) {
        names_.add(name);
        participants_.add(name);
        write(name);
    }

    /// Family, given, more of the given ones, and what stands before and behind it.
    static std::string nameInParts(std::string_view value) {
        std::vector<std::string> parts = partsOfValue(value, ';');
        parts.resize(3);
        return joined(
            {joined(partsOfValue(parts[1], ','), " "), joined(partsOfValue(parts[2], ','), " "), parts[0]},
            " ");
    }

    /// Cards of the old version need not have the name as it is shown. When all of the card is known.
    void nameCard() {
        const Card card = std::exchange(card_, {});
        card_.textStart = text_.size();
        if (card.isNamed || card.name.empty())
            return;
        const std::string rest = text_.substr(card.textStart);
        text_.resize(card.textStart);
        isApart_ = true;
        addName(card.name);
        write(rest);
    }

    void readAddress(const ContentLine& line) {
        const std::vector<std::string> parts = partsOfValue(line.value, ';');
        write(joined(parts, ", "));
        // Box, extension, street, city, region, code, country.
        if (line.name != "ADR" || parts.size() < 7 || !city_.empty())
            return;
        city_ = parts[3];
        region_ = parts[4];
        country_ = parts[6];
    }

    ContentLineReader lines_;
    Deadline deadline_;
    /// The components that one is in.
    std::vector<std::string> open_;
    bool isCalendar_ = false;
    bool isCut_ = false;
    std::int64_t entries_ = 0;
    std::int64_t cards_ = 0;
    std::string title_;
    std::string description_;
    std::string program_;
    std::string city_;
    std::string region_;
    std::string country_;
    Texts names_;
    Texts locations_;
    Texts organizers_;
    Texts organizerAddresses_;
    Texts participants_;
    Texts mailAddresses_;
    Texts phoneNumbers_;
    Texts messageAddresses_;
    Texts organizations_;
    Texts keywords_;
    Texts URLs_;
    Texts identifiers_;
    Span span_;
    Card card_;
    Time first_;
    Time last_;
    Time due_;
    Time created_;
    Time modified_;
    std::string text_;
    /// What is written next is of something else.
    bool isApart_ = false;
};

} // namespace

void importCalendar(Attributes& attributes) {
    Reading reading(attributes.file());
    reading.read();
    reading.setAttributes(attributes);
}

} // namespace kelvo::importers
