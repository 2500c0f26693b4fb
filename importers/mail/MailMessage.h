#pragma once

#include "importers/support/Deadline.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {

/// People by their names, else their addresses; each of both lists once.
struct Correspondents {
    std::vector<std::string> names;
    std::vector<std::string> addresses;

    void add(const std::string& name, const std::string& address);
    void add(const Correspondents& others);
};

/// What a message says, in UTF-8 but for the text.
struct MailMessage {
    std::string subject;
    Correspondents authors;
    Correspondents recipients;
    /// In seconds since 1970.
    std::optional<double> sent;
    std::string identifier;
    std::vector<std::string> keywords;
    std::string writer; ///< the program
    std::u16string text;
    std::vector<std::string> attachments;
    bool isEncrypted = false;
    /// Why there is not all of it; null when there is.
    const char* shortfall = nullptr;
};

/// Once, before the first message.
void loadMailLibrary();

/// Absent when the bytes are no message: when they have none of the fields that messages have. No more text is read than
/// `mostUnits`, but for what one part holds.
std::optional<MailMessage> readMailMessage(std::string_view bytes, std::size_t mostUnits,
                                           const Deadline& deadline);

} // namespace kelvo::importers
