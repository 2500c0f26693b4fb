#include "platform/appkit/NSFileWrapper.h"

#include "platform/foundation/NSFileManager.h"

#include <array>
#include <ctime>
#include <optional>
#include <string>

namespace kelvo {
namespace {

// "rtfd", a zero, and the type of a folder. All numbers are little-endian and 32 bits wide.
constexpr std::string_view signature("rtfd\0\0\0\0\3\0\0\0", 12);
constexpr std::uint32_t fileType = 1;
constexpr std::uint32_t folderType = 3;
/// In place of a file's length: the length and a padding follow that brings the contents onto a page
/// boundary.
constexpr std::uint32_t paddedMark = 0x80000000;

// Names that are not those of files.
constexpr std::string_view recordsName = ".";
constexpr std::string_view soleFileName = "..";
constexpr std::string_view preferredName = "__@PreferredName@__";
constexpr std::string_view preferredNameInUTF8 = "__@UTF8PreferredName@__";

constexpr std::uint32_t fileMode = 0666;
constexpr std::uint32_t folderMode = 0777;

bool isReserved(std::string_view name) {
    return name.empty() || name == recordsName || name == soleFileName || name == preferredName ||
           name == preferredNameInUTF8;
}

std::string bytesOfName(const NSString& name) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(name);
    return bytes ? *bytes : name.UTF8String();
}

NSString nameOfBytes(std::string_view bytes) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(bytes);
}

} // namespace

class NSFileWrapper::SerializedReader {
public:
    explicit SerializedReader(const NSData& data) : data_(data), bytes_(data.characters()) {}

    std::shared_ptr<NSFileWrapper> read() {
        if (!bytes_.starts_with(signature))
            return nullptr;
        Folder top;
        if (!readFolder({signature.size(), bytes_.size() - signature.size()}, 0, top))
            return nullptr;
        std::shared_ptr<NSFileWrapper> wrapper = top.wrapper;
        if (!top.soleFile.isNil() && wrapper->entries_.empty())
            wrapper = initRegularFileWithContents(top.soleFile);
        wrapper->preferredFilename_ = top.preferredFilename;
        return wrapper;
    }

private:
    struct Folder {
        std::shared_ptr<NSFileWrapper> wrapper = initDirectory();
        NSString preferredFilename;
        NSData soleFile;
    };

    /// Takes numbers and stretches of bytes from the front of a range.
    class Cursor {
    public:
        Cursor(std::string_view bytes, NSRange range)
            : bytes_(bytes), location_(range.location), end_(range.location + range.length) {}

        std::size_t left() const { return end_ - location_; }
        bool take(std::uint32_t& number) {
            if (left() < 4)
                return false;
            number = 0;
            for (std::size_t index = 4; index-- > 0;)
                number = number << 8 | static_cast<unsigned char>(bytes_[location_ + index]);
            location_ += 4;
            return true;
        }
        bool take(std::size_t length, NSRange& range) {
            if (length > left())
                return false;
            range = {location_, length};
            location_ += length;
            return true;
        }

    private:
        std::string_view bytes_;
        std::size_t location_;
        std::size_t end_;
    };

    std::string_view charactersInRange(NSRange range) const {
        return bytes_.substr(range.location, range.length);
    }

    bool readFolder(NSRange range, std::size_t depth, Folder& folder) {
        Cursor cursor(bytes_, range);
        std::uint32_t count = 0;
        // Each entry takes at least the lengths of its name and of itself.
        if (depth > maximumDepth || !cursor.take(count) || count > cursor.left() / 8)
            return false;
        entryCount_ += count;
        if (entryCount_ > maximumEntries)
            return false;
        std::vector<NSRange> names(count);
        std::vector<std::uint32_t> lengths(count);
        for (NSRange& name : names) {
            std::uint32_t length = 0;
            if (!cursor.take(length) || !cursor.take(length, name))
                return false;
        }
        for (std::uint32_t& length : lengths) {
            if (!cursor.take(length))
                return false;
        }
        for (std::size_t index = 0; index < count; ++index) {
            NSRange entry;
            if (!cursor.take(lengths[index], entry) ||
                !readEntry(charactersInRange(names[index]), entry, depth, folder))
                return false;
        }
        return true;
    }

    bool readEntry(std::string_view name, NSRange range, std::size_t depth, Folder& folder) {
        Cursor cursor(bytes_, range);
        std::uint32_t type = 0;
        if (!cursor.take(type))
            return false;
        if (type == fileType) {
            std::uint32_t length = 0;
            std::uint32_t padding = 0;
            NSRange contents;
            if (!cursor.take(length))
                return false;
            if (length == paddedMark &&
                (!cursor.take(length) || !cursor.take(padding) || !cursor.take(padding, contents)))
                return false;
            if (!cursor.take(length, contents))
                return false;
            addFile(name, data_.subdataWithRange(contents), folder);
        } else if (type == folderType) {
            Folder child;
            if (!readFolder({range.location + 4, range.length - 4}, depth + 1, child))
                return false;
            if (isReserved(name))
                return true;
            const NSString childName = nameOfBytes(name);
            child.wrapper->preferredFilename_ =
                child.preferredFilename.isNil() ? childName : child.preferredFilename;
            add(childName, child.wrapper, folder);
        }
        return true;
    }

    void addFile(std::string_view name, const NSData& contents, Folder& folder) {
        if (!isReserved(name)) {
            const auto file = initRegularFileWithContents(contents);
            file->preferredFilename_ = nameOfBytes(name);
            add(file->preferredFilename_, file, folder);
        } else if (name == soleFileName) {
            folder.soleFile = contents;
        } else if (name == preferredNameInUTF8 ||
                   (name == preferredName && folder.preferredFilename.isNil())) {
            folder.preferredFilename = nameOfBytes(contents.characters());
        }
    }

    static void add(const NSString& name, const std::shared_ptr<NSFileWrapper>& child, Folder& folder) {
        if (name.characters().find_first_of(std::u16string_view(u"/\0", 2)) == std::u16string_view::npos)
            folder.wrapper->addEntry(name, child);
    }

    NSData data_;
    std::string_view bytes_;
    std::size_t entryCount_ = 0;
};

std::shared_ptr<NSFileWrapper> NSFileWrapper::initWithSerializedRepresentation(const NSData& data) {
    return SerializedReader(data).read();
}

namespace {

class SerializedWriter {
public:
    std::optional<std::string> write(const NSFileWrapper& wrapper) {
        if (wrapper.isSymbolicLink())
            return std::nullopt;
        bytes_ = signature;
        const bool isWhole = writeFolder(wrapper, wrapper.preferredFilename(),
                                         wrapper.isRegularFile() ? &wrapper : nullptr, 0);
        return isWhole ? std::optional(std::move(bytes_)) : std::nullopt;
    }

private:
    struct Item {
        std::string name;
        /// Null: the bytes.
        const NSFileWrapper* wrapper;
        std::string bytes;
    };

    void appendNumber(std::uint32_t number) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes_.push_back(static_cast<char>(number >> shift & 0xFF));
    }
    void setNumber(std::size_t location, std::size_t number) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes_[location++] = static_cast<char>(number >> shift & 0xFF);
    }
    bool appendFile(std::string_view contents) {
        if (contents.size() + bytes_.size() > maximumSizeInBytes)
            return false;
        appendNumber(fileType);
        appendNumber(static_cast<std::uint32_t>(contents.size()));
        bytes_ += contents;
        return true;
    }

    static std::string lossyASCII(std::u16string_view units) {
        std::string bytes;
        for (const char16_t unit : units)
            bytes.push_back(unit < 0x80 ? static_cast<char>(unit) : '?');
        return bytes;
    }

    /// Dates and rights of the items so far.
    static std::string records(const std::vector<Item>& items, const NSFileWrapper* soleFile) {
        SerializedWriter writer;
        const auto now = static_cast<std::uint32_t>(std::time(nullptr));
        writer.appendNumber(static_cast<std::uint32_t>(items.size()));
        for (const Item& item : items) {
            writer.appendNumber(static_cast<std::uint32_t>(item.name.size()));
            writer.bytes_ += item.name;
        }
        for (std::size_t index = 0; index < items.size(); ++index)
            writer.appendNumber(16);
        for (const Item& item : items) {
            writer.appendNumber(soleFile ? 0 : now);
            writer.appendNumber(item.wrapper->isDirectory() ? folderMode : fileMode);
            // What the platform writes there; what it means is not known.
            writer.appendNumber(soleFile ? 2 : 0);
            writer.appendNumber(soleFile ? 1 : 0);
        }
        return std::move(writer.bytes_);
    }

    static std::vector<Item> itemsOf(const NSFileWrapper& folder, const NSString& preferredFilename,
                                     const NSFileWrapper* soleFile) {
        std::vector<Item> items;
        if (soleFile)
            items.push_back({std::string(soleFileName), soleFile, {}});
        for (const auto& [name, child] : folder.fileWrappers()) {
            std::string bytes = bytesOfName(name);
            if (!child->isSymbolicLink() && !isReserved(bytes))
                items.push_back({std::move(bytes), child.get(), {}});
        }
        std::optional<Item> last;
        if (!items.empty())
            last = Item{std::string(recordsName), nullptr, records(items, soleFile)};
        if (!preferredFilename.isNil()) {
            items.push_back({std::string(preferredName), nullptr, lossyASCII(preferredFilename)});
            items.push_back({std::string(preferredNameInUTF8), nullptr, bytesOfName(preferredFilename)});
        }
        if (last)
            items.push_back(std::move(*last));
        return items;
    }

    /// `soleFile` stands for itself instead of a folder, or is null.
    bool writeFolder(const NSFileWrapper& folder, const NSString& preferredFilename,
                     const NSFileWrapper* soleFile, std::size_t depth) {
        const std::vector<Item> items = itemsOf(folder, preferredFilename, soleFile);
        entryCount_ += items.size();
        if (depth > NSFileWrapper::maximumDepth || entryCount_ > NSFileWrapper::maximumEntries)
            return false;
        appendNumber(static_cast<std::uint32_t>(items.size()));
        for (const Item& item : items) {
            appendNumber(static_cast<std::uint32_t>(item.name.size()));
            bytes_ += item.name;
        }
        const std::size_t lengths = bytes_.size();
        bytes_.append(4 * items.size(), '\0');
        for (std::size_t index = 0; index < items.size(); ++index) {
            const Item& item = items[index];
            const std::size_t start = bytes_.size();
            if (!writeItem(item, depth) || bytes_.size() > maximumSizeInBytes)
                return false;
            setNumber(lengths + 4 * index, bytes_.size() - start);
        }
        return true;
    }

    bool writeItem(const Item& item, std::size_t depth) {
        if (!item.wrapper)
            return appendFile(item.bytes);
        if (item.wrapper->isRegularFile())
            return appendFile(item.wrapper->regularFileContents().characters());
        appendNumber(folderType);
        const NSString& preferred = item.wrapper->preferredFilename();
        const bool isNamedAlike = !preferred.isNil() && bytesOfName(preferred) == item.name;
        return writeFolder(*item.wrapper, isNamedAlike ? NSString() : preferred, nullptr, depth + 1);
    }

    std::string bytes_;
    std::size_t entryCount_ = 0;
};

} // namespace

NSData NSFileWrapper::serializedRepresentation() const {
    auto bytes = SerializedWriter().write(*this);
    return bytes ? NSData::dataWithBytesNoCopy(std::move(*bytes)) : NSData();
}

} // namespace kelvo
