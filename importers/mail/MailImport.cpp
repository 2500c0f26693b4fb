#include "importers/mail/MailImport.h"

#include "importers/mail/MailFile.h"
#include "importers/mail/MailMessage.h"
#include "importers/support/Texts.h"

#include <algorithm>
#include <utility>

namespace kelvo::importers {
namespace {

void setPeople(Attributes& attributes, const Correspondents& authors, const Correspondents& recipients) {
    attributes.set("kMDItemAuthors", arrayOf(authors.names));
    attributes.set("kMDItemAuthorEmailAddresses", arrayOf(authors.addresses));
    attributes.set("kMDItemRecipients", arrayOf(recipients.names));
    attributes.set("kMDItemRecipientEmailAddresses", arrayOf(recipients.addresses));
}

void setDate(Attributes& attributes, const char* name, std::optional<double> seconds) {
    if (seconds)
        attributes.setDate(name, NSDate::dateWithTimeIntervalSince1970(*seconds));
}

void importMessage(Attributes& attributes, std::string_view file, const Deadline& deadline) {
    const std::optional<MailMessage> message = readMailMessage(file, mostUnitsOfText, deadline);
    if (!message) {
        attributes.note(MDNoteBroken, "the file is not a message");
        return;
    }
    attributes.set("kMDItemSubject", stringOf(message->subject));
    setPeople(attributes, message->authors, message->recipients);
    setDate(attributes, "kMDItemContentCreationDate", message->sent);
    attributes.set("kMDItemIdentifier", stringOf(message->identifier));
    attributes.set("kMDItemKeywords", arrayOf(message->keywords));
    attributes.set("kMDItemCreator", stringOf(message->writer));
    attributes.set("plumwick_attachments", arrayOf(message->attachments));
    if (message->isEncrypted)
        attributes.set("kMDItemSecurityMethod", u"Encrypted");
    attributes.setText(message->text);
    if (message->shortfall)
        attributes.note(MDNoteIncomplete, message->shortfall);
    else if (message->isEncrypted)
        attributes.note(MDNoteIncomplete, "a part of the message is encrypted");
}

/// What a mailbox's messages say together.
class MailboxReading {
public:
    explicit MailboxReading(const Deadline& deadline) : deadline_(deadline) {}

    void read(std::string_view mailbox) {
        while (const auto bytes = takeMessage(mailbox)) {
            if (text_.size() > mostUnitsOfText || deadline_.isOver()) {
                shortfall_ = "not all messages are read";
                return;
            }
            if (auto message = readMailMessage(*bytes, mostUnitsOfText - text_.size(), deadline_))
                add(*message);
        }
    }

    void setAttributes(Attributes& attributes) const {
        setPeople(attributes, authors_, recipients_);
        setDate(attributes, "kMDItemContentCreationDate", first_);
        setDate(attributes, "kMDItemContentModificationDate", last_);
        attributes.set("plumwick_attachments", arrayOf(attachments_));
        attributes.setInteger("plumwick_messages", messages_);
        attributes.setText(text_);
        if (messages_ == 0)
            attributes.note(MDNoteBroken, "there is no message in the mailbox");
        else if (shortfall_)
            attributes.note(MDNoteIncomplete, shortfall_);
    }

private:
    void add(const MailMessage& message) {
        ++messages_;
        authors_.add(message.authors);
        recipients_.add(message.recipients);
        if (message.sent) {
            first_ = std::min(first_.value_or(*message.sent), *message.sent);
            last_ = std::max(last_.value_or(*message.sent), *message.sent);
        }
        std::ranges::copy(message.attachments, std::back_inserter(attachments_));
        std::u16string heading(trimmed(stringOf(message.subject)).characters());
        for (const std::string& author : message.authors.names)
            heading.append(heading.empty() ? u"" : u"\n").append(trimmed(stringOf(author)).characters());
        for (const std::u16string_view piece :
             {std::u16string_view(heading), std::u16string_view(message.text)}) {
            if (!piece.empty() && !text_.empty())
                text_ += u"\n\n";
            text_ += piece;
        }
        if (message.shortfall)
            shortfall_ = message.shortfall;
    }

    const Deadline& deadline_;
    Correspondents authors_;
    Correspondents recipients_;
    std::optional<double> first_;
    std::optional<double> last_;
    std::vector<std::string> attachments_;
    std::int64_t messages_ = 0;
    std::u16string text_;
    const char* shortfall_ = nullptr;
};

} // namespace

void importMail(Attributes& attributes) {
    const Deadline deadline;
    static const bool isLoaded = (loadMailLibrary(), true);
    static_cast<void>(isLoaded);
    const std::string_view file = attributes.contentType() == "com.apple.mail.emlx"
                                      ? messageOfEMLX(attributes.file())
                                      : attributes.file();
    if (!isMailbox(file)) {
        importMessage(attributes, file, deadline);
        return;
    }
    std::string_view rest = file;
    takeMessage(rest);
    // One message that was cut out of a mailbox.
    if (rest.empty() && attributes.contentType() != "com.apple.mail.mbox") {
        rest = file;
        importMessage(attributes, *takeMessage(rest), deadline);
        return;
    }
    MailboxReading reading(deadline);
    reading.read(file);
    reading.setAttributes(attributes);
}

} // namespace kelvo::importers
