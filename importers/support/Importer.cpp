#include "importers/support/Importer.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/units/UTF8.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>

namespace kelvo::importers {
namespace {

struct ImporterObject {
    const MDImporterInterface* functions;
    Import* import;
    std::uint32_t references;
};

bool isSame(const MDUUID& left, const MDUUID& right) {
    return std::ranges::equal(left.bytes, right.bytes);
}

ImporterObject& object(void* self) {
    return *static_cast<ImporterObject*>(self);
}

std::uint32_t addReference(void* self) {
    return ++object(self).references;
}

std::uint32_t release(void* self) {
    const std::uint32_t left = --object(self).references;
    if (left == 0)
        delete &object(self);
    return left;
}

std::int32_t queryInterface(void* self, MDUUID interface, void** result) {
    // IUnknown, which every object has.
    constexpr MDUUID unknown{{0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    if (!isSame(interface, MDImporterInterfaceID()) && !isSame(interface, unknown)) {
        *result = nullptr;
        return MD_E_NOINTERFACE;
    }
    addReference(self);
    *result = self;
    return MD_S_OK;
}

unsigned char importData(void* self, MDAttributes* given, const char* contentType, const char*) {
    Attributes attributes(given, contentType);
    std::string name;
    std::string reason;
    try {
        object(self).import(attributes);
        return 1;
    } catch (const NSException& exception) {
        name = exception.name().UTF8String();
        reason = exception.reason().UTF8String();
    }
    given->functions->raise(given, name.c_str(), reason.c_str());
    return 0;
}

constexpr MDImporterInterface interfaceOfImporters{nullptr, queryInterface, addReference, release,
                                                   importData};

bool isBlank(char16_t unit) {
    return unit <= u' ' || unit == 0x7F || unit == 0xA0;
}

/// How many bytes of UTF-8 there are before there would be more units of it than are kept; absent when they are not
/// UTF-8.
std::optional<std::size_t> lengthOfUTF8(std::string_view bytes) {
    const std::span all(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    // What is decoded is only counted.
    std::array<char16_t, 4096> units;
    std::size_t length = 0;
    for (std::size_t left = mostUnitsOfText; left > 0 && length < bytes.size();) {
        const UTF8Decoding decoded =
            decodeUTF8(all.subspan(length), units.data(), std::min(left, units.size()));
        if (decoded.hadErrors)
            return std::nullopt;
        if (decoded.unitsWritten == 0)
            break;
        length += decoded.bytesRead;
        left -= decoded.unitsWritten;
    }
    return length;
}

} // namespace

std::string_view Attributes::file() const {
    std::size_t length = 0;
    const void* const bytes = attributes_->functions->fileBytes(attributes_, &length);
    return {static_cast<const char*>(bytes), length};
}

std::string_view Attributes::fileInPackage(const char* name) const {
    std::size_t length = 0;
    const void* const bytes = attributes_->functions->packageFileBytes(attributes_, name, &length);
    return {static_cast<const char*>(bytes), length};
}

std::string_view Attributes::officeDocument() const {
    std::size_t length = 0;
    const void* const bytes = attributes_->functions->officeDocumentBytes(attributes_, &length);
    return {static_cast<const char*>(bytes), length};
}

void Attributes::set(const char* name, const NSString& text) {
    if (const NSString shown = trimmed(text); !shown.isEmpty()) {
        const std::string bytes = shown.UTF8String();
        attributes_->functions->setString(attributes_, name, bytes.data(), bytes.size());
    }
}

void Attributes::set(const char* name, const NSArray& strings) {
    std::vector<std::string> texts;
    for (const Value& each : strings) {
        if (const NSString shown = trimmed(each.string()); !shown.isEmpty())
            texts.push_back(shown.UTF8String());
    }
    std::vector<MDValue> values;
    for (const std::string& text : texts) {
        MDValue value{MDValueString, 0, {}};
        value.as.span = {text.data(), text.size()};
        values.push_back(value);
    }
    if (!values.empty())
        attributes_->functions->setArray(attributes_, name, values.data(), values.size());
}

void Attributes::setInteger(const char* name, std::int64_t value) {
    attributes_->functions->setInteger(attributes_, name, value);
}

void Attributes::setReal(const char* name, double value) {
    attributes_->functions->setReal(attributes_, name, value);
}

void Attributes::setBoolean(const char* name, bool value) {
    attributes_->functions->setBoolean(attributes_, name, value ? 1 : 0);
}

void Attributes::setDate(const char* name, NSDate date) {
    attributes_->functions->setDate(attributes_, name, date.timeIntervalSince1970());
}

void Attributes::setText(std::u16string_view text) {
    const bool isCut = text.size() > mostUnitsOfText;
    if (isCut)
        text = text.substr(0, mostUnitsOfText - (isTrailSurrogate(text[mostUnitsOfText]) ? 1 : 0));
    setTextContent(UTF8StringOfCharacters(text), isCut);
}

bool Attributes::setTextOfUTF8(std::string_view bytes) {
    const auto length = lengthOfUTF8(bytes);
    if (!length)
        return false;
    setTextContent(bytes.substr(0, *length), *length < bytes.size());
    return true;
}

void Attributes::setTextContent(std::string_view bytes, bool isCut) {
    if (isCut)
        note(MDNoteIncomplete, "the text is longer than is kept");
    attributes_->functions->setString(attributes_, "kMDItemTextContent", bytes.data(), bytes.size());
}

void Attributes::note(int kind, const char* sentence) {
    attributes_->functions->note(attributes_, kind, sentence);
}

NSString trimmed(const NSString& text) {
    if (text.isNil())
        return nullptr;
    std::u16string result;
    for (const char16_t unit : text.characters()) {
        if (!isBlank(unit))
            result += unit;
        else if (!result.empty() && result.back() != u' ')
            result += u' ';
    }
    if (result.ends_with(u' '))
        result.pop_back();
    return NSString(std::u16string_view(result));
}

void* newImporter(const MDUUID& type, Import& import) {
    if (!isSame(type, MDImporterTypeID()))
        return nullptr;
    return new ImporterObject{&interfaceOfImporters, &import, 1};
}

} // namespace kelvo::importers
