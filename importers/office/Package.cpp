#include "importers/office/Package.h"

#include "importers/office/Gsf.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

constexpr std::size_t bytesAtOnce = std::size_t{64} << 10;
/// Each folder in it is looked up within the one before.
constexpr std::size_t longestPath = 1000;

/// Without slashes at its ends.
std::string_view trimmedPath(std::string_view path) {
    while (path.starts_with('/'))
        path.remove_prefix(1);
    while (path.ends_with('/'))
        path.remove_suffix(1);
    return path;
}

} // namespace

/// libgsf finds a name by going through its whole folder, so that each that is asked about is listed here once. Folders
/// whose names differ in case are one.
struct Package::Files {
    struct Folder {
        std::vector<HeldByGLib<GsfInfile>> files;
        /// By their names, in which of the files they are and where.
        std::unordered_multimap<std::string, std::pair<std::size_t, int>> places;
    };

    explicit Files(std::string_view file) {
        prepareGsf();
        const HeldByGLib<GsfInput> input(gsf_input_memory_new(reinterpret_cast<const guint8*>(file.data()),
                                                              static_cast<gsf_off_t>(file.size()), FALSE));
        root.reset(input ? gsf_infile_zip_new(input.get(), nullptr) : nullptr);
        if (root)
            append(folders[""], HeldByGLib<GsfInfile>(GSF_INFILE(g_object_ref(root.get()))));
    }

    static void append(Folder& folder, HeldByGLib<GsfInfile> files) {
        const int count = gsf_infile_num_children(files.get());
        for (int index = 0; index < count; ++index) {
            if (const char* const name = gsf_infile_name_by_index(files.get(), index))
                folder.places.emplace(asciiLowerCased(std::string(name)),
                                      std::pair(folder.files.size(), index));
        }
        folder.files.push_back(std::move(files));
    }

    static bool isFolder(GsfInput* input) {
        return GSF_IS_INFILE(input) && gsf_infile_num_children(GSF_INFILE(input)) >= 0;
    }

    const Folder& folder(std::string_view path) {
        const std::string key = asciiLowerCased(std::string(path));
        if (const auto known = folders.find(key); known != folders.end())
            return known->second;
        Folder made;
        forEachNamed(path, [&](HeldByGLib<GsfInput> child) {
            if (isFolder(child.get()))
                append(made, HeldByGLib<GsfInfile>(GSF_INFILE(child.release())));
            return true;
        });
        return folders.emplace(key, std::move(made)).first->second;
    }

    HeldByGLib<GsfInput> file(std::string_view path) {
        HeldByGLib<GsfInput> found;
        forEachNamed(path, [&](HeldByGLib<GsfInput> child) {
            if (!isFolder(child.get()))
                found = std::move(child);
            return !found;
        });
        return found;
    }

    /// In the order in which they are in the zip file, until it answers false.
    template <typename Visit>
    void forEachNamed(std::string_view path, const Visit& visit) {
        path = trimmedPath(path);
        if (path.empty() || path.size() > longestPath)
            return;
        const std::size_t slash = path.rfind('/');
        const bool isAtRoot = slash == std::string_view::npos;
        const Folder& parent = folder(isAtRoot ? std::string_view() : path.substr(0, slash));
        const auto [begin, end] =
            parent.places.equal_range(asciiLowerCased(std::string(path.substr(isAtRoot ? 0 : slash + 1))));
        std::vector<std::pair<std::size_t, int>> places;
        std::transform(begin, end, std::back_inserter(places), [](const auto& each) { return each.second; });
        std::ranges::sort(places);
        for (const auto& [files, index] : places) {
            HeldByGLib<GsfInput> child(gsf_infile_child_by_index(parent.files[files].get(), index));
            if (child && !visit(std::move(child)))
                return;
        }
    }

    HeldByGLib<GsfInfile> root;
    std::map<std::string, Folder, std::less<>> folders;
};

Package::Package(std::string_view file, Clock::time_point deadline)
    : files_(std::make_unique<Files>(file)), deadline_(deadline) {}

Package::~Package() = default;

bool Package::isOpen() const {
    return files_->root != nullptr;
}

bool Package::has(std::string_view name) const {
    return files_->file(name) != nullptr;
}

bool Package::read(std::string_view name, XMLReader& reader, MarkupSkimmer* skimmer) {
    const HeldByGLib<GsfInput> input = files_->file(name);
    if (!input)
        return false;
    auto left = static_cast<std::size_t>(std::max<gsf_off_t>(gsf_input_remaining(input.get()), 0));
    bool goesOn = true;
    while (left > 0 && goesOn) {
        const std::size_t length = std::min(left, bytesAtOnce);
        isSpent_ = bytesLeft_ < length || Clock::now() > deadline_;
        if (isSpent_) {
            note(bytesLeft_ < length ? "the document is larger than is read"
                                     : "there was no time for all of the document");
            return true;
        }
        const guint8* const bytes = gsf_input_read(input.get(), length, nullptr);
        if (!bytes) {
            note("a part of the document is damaged");
            return true;
        }
        bytesLeft_ -= length;
        left -= length;
        const std::string_view piece(reinterpret_cast<const char*>(bytes), length);
        goesOn = reader.read(skimmer ? skimmer->read(piece) : piece);
    }
    if (goesOn && (!skimmer || reader.read(skimmer->finish())))
        reader.finish();
    note(reader.fault());
    return true;
}

std::string pathOfRelationships(std::string_view part) {
    const std::size_t slash = part.rfind('/');
    const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
    return std::string(part.substr(0, start)) + "_rels/" + std::string(part.substr(start)) + ".rels";
}

} // namespace kelvo::importers
