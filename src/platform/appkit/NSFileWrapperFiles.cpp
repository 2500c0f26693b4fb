#include "platform/appkit/NSFileWrapper.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/files/Leftovers.h"
#include "platform/foundation/processes/NSFileHandle.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

namespace kelvo {
namespace {

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

constexpr int folderFlags = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::string withoutSlashesAtTheEnd(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string lastComponentOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace

/// Reads relative to open folders, so that what is renamed meanwhile leads nowhere else.
class NSFileWrapper::DiskReader {
public:
    std::shared_ptr<NSFileWrapper> readFile(FileDescriptor file) {
        struct stat status = {};
        if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0 ||
            static_cast<std::uint64_t>(status.st_size) > maximumSizeInBytes - totalLength_)
            return nullptr;
        const NSData contents = NSFileHandle(std::move(file)).readDataToEndOfFile();
        if (contents.length() > maximumSizeInBytes - totalLength_)
            return nullptr;
        totalLength_ += contents.length();
        return initRegularFileWithContents(contents);
    }

    std::shared_ptr<NSFileWrapper> readFolder(FileDescriptor descriptor, std::size_t depth) {
        if (!descriptor || depth > maximumDepth)
            return nullptr;
        const int number = descriptor.get();
        const std::unique_ptr<DIR, FolderCloser> folder(::fdopendir(::fcntl(number, F_DUPFD_CLOEXEC, 0)));
        std::vector<std::string> names;
        if (!folder || !listNames(folder.get(), names))
            return nullptr;
        auto wrapper = initDirectory();
        for (const std::string& name : names) {
            const auto child = readChild(number, name, depth);
            if (!child)
                return nullptr;
            child->preferredFilename_ =
                NSFileManager::defaultManager().stringWithFileSystemRepresentation(name);
            wrapper->addEntry(child->preferredFilename_, child);
        }
        return wrapper;
    }

private:
    bool listNames(DIR* folder, std::vector<std::string>& names) {
        errno = 0;
        while (const dirent* entry = ::readdir(folder)) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..")
                continue;
            if (++entryCount_ > maximumEntries)
                return false;
            names.emplace_back(name);
            errno = 0;
        }
        std::ranges::sort(names);
        return errno == 0;
    }

    std::shared_ptr<NSFileWrapper> readChild(int folder, const std::string& name, std::size_t depth) {
        struct stat status = {};
        if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return nullptr;
        if (S_ISDIR(status.st_mode))
            return readFolder(FileDescriptor(::openat(folder, name.c_str(), O_RDONLY | folderFlags)),
                              depth + 1);
        if (S_ISREG(status.st_mode))
            return readFile(FileDescriptor(
                ::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)));
        std::array<char, PATH_MAX> target;
        const ssize_t length =
            S_ISLNK(status.st_mode) ? ::readlinkat(folder, name.c_str(), target.data(), target.size()) : -1;
        return length < 0 ? nullptr
                          : initSymbolicLinkWithDestination(
                                NSFileManager::defaultManager().stringWithFileSystemRepresentation(
                                    {target.data(), static_cast<std::size_t>(length)}));
    }

    std::size_t totalLength_ = 0;
    std::size_t entryCount_ = 0;
};

std::shared_ptr<NSFileWrapper> NSFileWrapper::initWithPath(const NSString& path) {
    const NSFileManager& manager = NSFileManager::defaultManager();
    const auto bytes = manager.fileSystemRepresentationWithPath(path);
    struct stat status = {};
    if (!bytes || ::stat(bytes->c_str(), &status) != 0)
        return nullptr;
    try {
        auto wrapper =
            S_ISDIR(status.st_mode)
                ? DiskReader().readFolder(
                      FileDescriptor(::open(bytes->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), 0)
                : DiskReader().readFile(openRegularFile(*bytes));
        if (wrapper)
            wrapper->preferredFilename_ =
                manager.stringWithFileSystemRepresentation(lastComponentOf(withoutSlashesAtTheEnd(*bytes)));
        return wrapper;
    } catch (const NSException&) {
        return nullptr;
    }
}

namespace {

std::string bytesOfName(const NSString& name) {
    return NSFileManager::defaultManager().fileSystemRepresentationWithPath(name).value_or(std::string());
}

/// Everything can be written as far as the names and the depth go.
bool isWritable(const NSFileWrapper& wrapper, std::size_t depth) {
    if (depth > NSFileWrapper::maximumDepth)
        return false;
    if (wrapper.isSymbolicLink())
        return !bytesOfName(wrapper.symbolicLinkDestination()).empty();
    return std::ranges::all_of(wrapper.fileWrappers(), [depth](const NSFileWrapper::Entry& entry) {
        return NSFileWrapper::isUsableFilename(entry.first) && isWritable(*entry.second, depth + 1);
    });
}

// What stands under such a name goes with the next write into the same folder, so no other program's names
// may look like it.
constexpr std::string_view hiddenPrefix = ".plumwick-";
constexpr std::size_t hiddenLetters = 12;

std::string hiddenName(std::string_view prefix = hiddenPrefix) {
    std::array<unsigned char, hiddenLetters> random = {};
    static_cast<void>(::getrandom(random.data(), random.size(), 0));
    std::string name(prefix);
    for (const unsigned char byte : random)
        name += static_cast<char>('a' + byte % 26);
    return name;
}

/// Two steps: stage() writes everything that is new under hidden names beside its place, commit() renames.
/// What was staged and not committed goes with this object.
class PackageWriter {
public:
    explicit PackageWriter(bool atomically) : atomically_(atomically) {}
    PackageWriter(const PackageWriter&) = delete;
    PackageWriter& operator=(const PackageWriter&) = delete;
    ~PackageWriter() {
        for (const Staged& entry : staged_) {
            if (!entry.isInPlace)
                remove(*entry.wrapper, entry.folder, entry.hiddenName);
            else if (!isCommitted_ && !entry.wasThere)
                remove(*entry.wrapper, entry.folder, entry.name);
        }
    }

    bool write(const NSFileWrapper& wrapper, const std::string& path) {
        const std::string name = lastComponentOf(path);
        if (name.empty() || name == "." || name == "..")
            return false;
        const std::string parent = path.substr(0, path.size() - name.size());
        if (!openFolder(AT_FDCWD, parent.empty() ? "." : parent, 0))
            return false;
        const int place = folders_.back().get();
        // Just here a link is followed: the entries of a package are what its writer makes them.
        const bool isStaged = wrapper.isDirectory() && !atomically_ && isLink(place, name)
                                  ? stageInto(wrapper, place, name, 0)
                                  : stage(wrapper, place, name);
        if (!isStaged || !commit())
            return false;
        for (const std::string& old : replaced_)
            removeEntry(folders_.front().get(), old);
        return true;
    }

private:
    struct Staged {
        const NSFileWrapper* wrapper;
        int folder;
        std::string name;
        std::string hiddenName;
        bool wasThere;
        /// What is there makes way for it as a whole, because renaming alone would not take its place.
        bool exchanges;
        bool isInPlace = false;
    };

    static bool isLink(int folder, const std::string& name) {
        struct stat status = {};
        return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
    }

    bool stage(const NSFileWrapper& wrapper, int folder, const std::string& name) {
        struct stat status = {};
        const bool exists = ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
        const bool isFolder = exists && S_ISDIR(status.st_mode);
        if (isFolder && wrapper.isDirectory() && !atomically_)
            return stageInto(wrapper, folder, name, O_NOFOLLOW);
        const bool isReplaceable = isFolder ? wrapper.isDirectory()
                                            : (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode)) &&
                                                  (!wrapper.isDirectory() || atomically_);
        if (exists && !isReplaceable)
            return false;
        staged_.push_back({&wrapper, folder, name, hiddenName(), exists, exists && wrapper.isDirectory()});
        const bool keepsMode = exists && S_ISREG(status.st_mode) && wrapper.isRegularFile();
        return create(wrapper, folder, staged_.back().hiddenName, keepsMode ? status.st_mode & 0777 : 0);
    }

    /// What an interrupted write has left there goes first, unless another write is under way.
    bool openFolder(int parent, const std::string& path, int flags) {
        FileDescriptor folder(::openat(parent, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
        if (!folder) {
            // One may be written without being read.
            folder = FileDescriptor(::openat(parent, path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | flags));
        } else {
            if (isFolderOutOfUse(folder.get()))
                forEachLeftover(folder.get(), hiddenPrefix, hiddenLetters,
                                [&](const std::string& name) { removeEntry(folder.get(), name); });
            markFolderInUse(folder.get());
        }
        folders_.push_back(std::move(folder));
        return static_cast<bool>(folders_.back());
    }

    bool stageInto(const NSFileWrapper& wrapper, int folder, const std::string& name, int flags) {
        if (!openFolder(folder, name, flags))
            return false;
        const int own = folders_.back().get();
        return std::ranges::all_of(wrapper.fileWrappers(), [&](const NSFileWrapper::Entry& entry) {
            return stage(*entry.second, own, bytesOfName(entry.first));
        });
    }

    /// `mode` 0 leaves it to the umask.
    bool create(const NSFileWrapper& wrapper, int folder, const std::string& name, mode_t mode) {
        if (wrapper.isSymbolicLink())
            return ::symlinkat(bytesOfName(wrapper.symbolicLinkDestination()).c_str(), folder,
                               name.c_str()) == 0;
        if (wrapper.isRegularFile())
            return createFile(wrapper.regularFileContents().characters(), folder, name, mode);
        if (::mkdirat(folder, name.c_str(), 0777) != 0)
            return false;
        const FileDescriptor own(::openat(folder, name.c_str(), O_PATH | folderFlags));
        return own && std::ranges::all_of(wrapper.fileWrappers(), [&](const NSFileWrapper::Entry& entry) {
                   return create(*entry.second, own.get(), bytesOfName(entry.first), 0);
               });
    }

    bool createFile(std::string_view contents, int folder, const std::string& name, mode_t mode) {
        FileDescriptor file(
            ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (!file)
            return false;
        bool isWritten = writeAll(file.get(), contents.data(), contents.size());
        isWritten = isWritten && (mode == 0 || ::fchmod(file.get(), mode) == 0);
        isWritten = isWritten && (!atomically_ || ::fsync(file.get()) == 0);
        return file.close() && isWritten;
    }

    bool commit() {
        isCommitted_ = std::ranges::all_of(staged_, [this](Staged& entry) { return putInPlace(entry); });
        return isCommitted_;
    }

    bool putInPlace(Staged& entry) {
        const char* from = entry.hiddenName.c_str();
        const char* to = entry.name.c_str();
        if (entry.exchanges) {
            if (::renameat2(entry.folder, from, entry.folder, to, RENAME_EXCHANGE) == 0) {
                replaced_.push_back(entry.hiddenName);
                return entry.isInPlace = true;
            }
            // Not every file system can exchange.
            // The only copy until the new one is there, so it must not look like a leftover meanwhile.
            const std::string old = hiddenName(".replaced-");
            if ((errno != EINVAL && errno != ENOSYS) ||
                ::renameat(entry.folder, to, entry.folder, old.c_str()) != 0)
                return false;
            entry.isInPlace = ::renameat(entry.folder, from, entry.folder, to) == 0;
            if (entry.isInPlace)
                replaced_.push_back(old);
            else
                ::renameat(entry.folder, old.c_str(), entry.folder, to);
            return entry.isInPlace;
        }
        return entry.isInPlace = ::renameat(entry.folder, from, entry.folder, to) == 0;
    }

    /// Just what create() may have made.
    static void remove(const NSFileWrapper& wrapper, int folder, const std::string& name) {
        if (!wrapper.isDirectory()) {
            ::unlinkat(folder, name.c_str(), 0);
            return;
        }
        const FileDescriptor own(::openat(folder, name.c_str(), O_PATH | folderFlags));
        if (!own)
            return;
        for (const auto& [childName, child] : wrapper.fileWrappers())
            remove(*child, own.get(), bytesOfName(childName));
        ::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
    }

    bool atomically_;
    bool isCommitted_ = false;
    /// Open until the end, because what is staged names them.
    std::vector<FileDescriptor> folders_;
    std::vector<Staged> staged_;
    /// Hidden names beside the path.
    std::vector<std::string> replaced_;
};

} // namespace

bool NSFileWrapper::writeToFile_atomically_updateFilenames(const NSString& path, bool atomically,
                                                           bool) const {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    return bytes && isWritable(*this, 0) &&
           PackageWriter(atomically).write(*this, withoutSlashesAtTheEnd(*bytes));
}

} // namespace kelvo
