#include "platform/launchservices/UTType.h"

#include "platform/foundation/Value.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/launchservices/DeclaredTypes.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>
#include <vector>

namespace kelvo {
namespace {

constexpr std::size_t codeLength = 4;

std::string asKey(std::u16string_view text) {
    return asciiLowerCased(UTF8StringOfCharacters(text));
}

std::vector<std::string> partsAsWritten(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

std::vector<std::string> partsOf(std::string_view list) {
    std::vector<std::string> parts = partsAsWritten(list);
    for (std::string& part : parts)
        part = asciiLowerCased(std::move(part));
    return parts;
}

/// Where the rows of the table are found. Keys are in lower case but for type codes.
class TypeIndex {
public:
    static const TypeIndex& shared() {
        static const TypeIndex index;
        return index;
    }

    using Rows = std::unordered_map<std::string, const DeclaredType*>;
    std::array<Rows, 2> byExtension;
    Rows byMIMEType;
    Rows byTypeCode;

    /// The type and all that it conforms to, in lower case.
    std::vector<std::string> conformedTo(std::string type) const {
        std::vector<std::string> types{std::move(type)};
        for (std::size_t index = 0; index < types.size(); ++index) {
            for (std::string& next : parentsOf(types[index])) {
                if (std::ranges::find(types, next) == types.end())
                    types.push_back(std::move(next));
            }
        }
        return types;
    }

    /// Null for a type that nobody has declared.
    const DeclaredType* rowOf(const std::string& type) const {
        const auto row = byIdentifier_.find(type);
        return row == byIdentifier_.end() ? nullptr : row->second;
    }

    NSString identifierOf(const std::string& type) const {
        const DeclaredType* const row = rowOf(type);
        return NSString::stringWithUTF8String(row ? row->identifier : type);
    }

private:
    TypeIndex() {
        for (const DeclaredType& row : declaredTypes())
            byIdentifier_.emplace(asciiLowerCased(std::string(row.identifier)), &row);
        for (const DeclaredType& row : declaredTypes()) {
            const auto types = conformedTo(asciiLowerCased(std::string(row.identifier)));
            const bool isOfFolders = std::ranges::find(types, "public.directory") != types.end();
            for (std::string& extension : partsOf(row.extensions))
                byExtension[isOfFolders ? 1 : 0].emplace(std::move(extension), &row);
            for (std::string& type : partsOf(row.MIMETypes))
                byMIMEType.emplace(std::move(type), &row);
            for (std::size_t place = 0; place < row.typeCodes.size(); place += codeLength)
                byTypeCode.emplace(row.typeCodes.substr(place, codeLength), &row);
        }
    }

    std::vector<std::string> parentsOf(const std::string& type) const {
        if (const DeclaredType* const row = rowOf(type))
            return partsOf(row->conformsTo);
        const auto dynamic = dynamicTypeWithIdentifier(NSString::stringByRepairingUTF8String(type));
        if (!dynamic || dynamic->conformsTo.isNil())
            return {};
        return {asKey(dynamic->conformsTo)};
    }

    Rows byIdentifier_;
};

NSString identifierIn(const TypeIndex::Rows& rows, const std::string& key) {
    const auto found = rows.find(key);
    return found == rows.end() ? nullptr : NSString::stringWithUTF8String(found->second->identifier);
}

} // namespace

NSString typeWithFilenameExtension(std::u16string_view extension, ItemKind item) {
    return identifierIn(TypeIndex::shared().byExtension[item == ItemKind::folder ? 1 : 0], asKey(extension));
}

NSString typeWithMIMEType(std::u16string_view MIMEType) {
    std::string key = asKey(MIMEType);
    std::erase(key, ' ');
    const TypeIndex::Rows& rows = TypeIndex::shared().byMIMEType;
    const NSString type = identifierIn(rows, key);
    return type.isNil() ? identifierIn(rows, key.substr(0, key.find(';'))) : type;
}

NSString typeWithOSType(std::u16string_view quotedCode) {
    if (quotedCode.size() != codeLength + 2)
        return nullptr;
    return identifierIn(TypeIndex::shared().byTypeCode,
                        UTF8StringOfCharacters(quotedCode.substr(1, codeLength)));
}

NSArray UTTypeCopyAllTagsWithClass(const NSString& identifier, UTTagClass tagClass) {
    auto tags = NSMutableArray::array();
    const DeclaredType* const row = TypeIndex::shared().rowOf(asKey(identifier));
    if (!row)
        return tags;
    std::vector<std::string> names;
    if (tagClass == UTTagClass::filenameExtension)
        names = partsAsWritten(row->extensions);
    else if (tagClass == UTTagClass::MIMEType)
        names = partsAsWritten(row->MIMETypes);
    else if (tagClass == UTTagClass::typeCode)
        for (std::size_t place = 0; place < row->typeCodes.size(); place += codeLength)
            names.emplace_back(row->typeCodes.substr(place, codeLength));
    for (const std::string& name : names)
        tags.addObject(NSString::stringWithUTF8String(name));
    return tags;
}

bool UTTypeConformsTo(std::u16string_view identifier, std::u16string_view other) {
    const auto types = TypeIndex::shared().conformedTo(asKey(identifier));
    return std::ranges::find(types, asKey(other)) != types.end();
}

NSArray typesConformedToBy(const NSString& identifier) {
    const TypeIndex& index = TypeIndex::shared();
    auto types = NSMutableArray::array();
    for (const std::string& type : index.conformedTo(asKey(identifier)))
        types.addObject(index.identifierOf(type));
    return types;
}

} // namespace kelvo
